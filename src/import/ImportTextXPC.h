#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include <nlohmann/json_fwd.hpp>

#include "import/ImportText.h"
#include "platform/ChildProcess.h"
#include "platform/MessageSocket.h"
#include "support/Result.h"

namespace quester {

struct ImportServiceOptions {
    // The helper executable: $QUESTER_IMPORT_HELPER, else "quester-import"
    // beside this program's executable.
    std::string helperPath;
    // How long one document may take before its helper is killed.
    std::chrono::milliseconds timeLimit{std::chrono::seconds(60)};
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    // A sanitizer reserves terabytes of address space for its shadow memory,
    // so a sanitized helper can't live under an address-space limit.
    static constexpr bool canLimitAddressSpace = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    static constexpr bool canLimitAddressSpace = false;
#else
    static constexpr bool canLimitAddressSpace = true;
#endif
#else
    static constexpr bool canLimitAddressSpace = true;
#endif
    // The helper's address space (RLIMIT_AS); 0 for no limit.
    std::uint64_t memoryLimit = canLimitAddressSpace ? 2ull << 30 : 0;
    // Rest after which the helper is ended; it starts again on the next need.
    std::chrono::milliseconds keepAlive{std::chrono::seconds(60)};

    static ImportServiceOptions fromEnvironment();
};

// The program's side of the import helper: starts `quester-import` on first
// need, hands it each document as a descriptor this process opened, waits
// for the answer while forwarding progress, and ends the helper after a
// minute of rest. One document at a time: callers from any thread queue on
// the job lock. A document that crashes the helper, or runs past the time
// limit, costs that document only: the helper is killed, the caller gets an
// error, and the next document starts a new helper.
class ImportTextXPC {
public:
    using ProgressHandler = std::function<void(float)>;

    explicit ImportTextXPC(ImportServiceOptions options = ImportServiceOptions::fromEnvironment());
    ImportTextXPC(const ImportTextXPC&) = delete;
    ImportTextXPC& operator=(const ImportTextXPC&) = delete;
    ~ImportTextXPC();

    // The program's one instance.
    static ImportTextXPC& shared();

    // Starts the helper now rather than at the first document.
    Status startup();
    // The bytes of a plain text file of at most 1 MiB, read in the program
    // with no helper into `buffer` (as `FileSystem::readFileInto` uses it);
    // none for any other file, or one that can't be read.
    std::optional<std::string_view> plainSmallText(const std::string& path, std::string& buffer) const;
    // The document's words with their counts; an error when the file can't be
    // opened or the helper failed on it; no error and no words when it has no
    // reader. Progress arrives on the calling thread, at most 5 times a second.
    std::pair<std::optional<Error>, std::optional<WordCounts>> wordsInFile(const std::string& path, bool useOCR,
                                                                           ProgressHandler progressHandler = {});
    // The document's pages, as `ImportText::importFileText` gives them, read
    // by the helper; `handler` runs on the calling thread before this returns.
    void importText(const std::string& path, bool importRawTextAllowed, std::int64_t maxLength, bool useOCR,
                    ProgressHandler progressHandler,
                    const std::function<void(std::optional<Error>, std::optional<ImportTextResult>)>& handler);
    // Asks the helper to stop reading `path`; a later document is not affected.
    void cancel(const std::string& path);

    // Documents queued or being read; other work defers to text import while
    // it is above 0.
    int operationCount() const { return operations; }
    // The running helper's process id, if one runs.
    std::optional<int> helperProcessId() const;
    const ImportText& importer() const { return localImporter; }

private:
    struct Helper {
        ChildProcess process;
        MessageSocket socket;
    };

    Result<nlohmann::json> runJob(nlohmann::json request, const std::string& path, const ProgressHandler& progress);
    Result<nlohmann::json> awaitReply(Helper& helper, const std::string& path, const ProgressHandler& progress);
    Result<Helper*> runningHelper();
    Error dropHelper(const std::string& why);
    void shutdown();
    void quitWhenRested();

    ImportServiceOptions options;
    ImportText localImporter;
    std::mutex jobLock;
    // Guards `helper` for threads other than the one running a job.
    mutable std::mutex helperLock;
    std::unique_ptr<Helper> helper;
    std::atomic<int> operations{0};
    std::atomic<std::chrono::steady_clock::rep> lastUsed{0};
    std::mutex restLock;
    std::condition_variable restChanged;
    bool stopping = false;
    std::thread restWatcher;
};

}  // namespace quester
