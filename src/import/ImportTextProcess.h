#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <thread>

#include <nlohmann/json_fwd.hpp>

#include "import/ImportText.h"
#include "platform/MessageSocket.h"

namespace quester {

// The import helper's side of the conversation: reads requests from the
// program, runs one document at a time on a worker thread (so cancel
// messages are read while a reader is busy), and sends progress, log lines
// and the reply. The documents come as descriptors the program opened; the
// helper opens none itself.
class ImportTextProcess {
public:
    static constexpr std::chrono::milliseconds progressUpdatesDelay{200};

    explicit ImportTextProcess(MessageSocket socket);
    ImportTextProcess(const ImportTextProcess&) = delete;
    ImportTextProcess& operator=(const ImportTextProcess&) = delete;
    ~ImportTextProcess();

    // Serves until "quit" or until the program's end of the socket closes;
    // gives the exit status. A job still running then is abandoned: the
    // caller ends the process at once.
    int serve();
    // Sends a line for the program's log.
    void log(const std::string& line);

private:
    void startJob(const nlohmann::json& request, int descriptor);
    void runJob(const nlohmann::json& request, ReadableFile file);
    nlohmann::json answer(const nlohmann::json& request, const ReadableFile& file);
    bool didCancel() const;
    void setProgress(float percentage);
    void send(const nlohmann::json& message);

    MessageSocket socket;
    ImportText importer;
    std::thread worker;
    std::atomic<std::uint32_t> currentFileHash{0};
    // The last cancel message: its kind in the low byte, the file hash above.
    std::atomic<std::uint64_t> cancelWord{0};
    std::chrono::steady_clock::time_point lastProgressSent;
};

}  // namespace quester
