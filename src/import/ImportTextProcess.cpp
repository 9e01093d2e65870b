#include "import/ImportTextProcess.h"

#include <nlohmann/json.hpp>

#include "import/ImportTextMessages.h"

namespace quester {

namespace {

using namespace ImportTextMessages;
using nlohmann::json;

constexpr std::chrono::hours waitForever{24 * 365};

std::uint64_t packCancel(CancelMessage message, std::uint32_t hash) {
    return static_cast<std::uint64_t>(message) | (static_cast<std::uint64_t>(hash) << 32);
}

}  // namespace

ImportTextProcess::ImportTextProcess(MessageSocket socket) : socket(std::move(socket)) {}

ImportTextProcess::~ImportTextProcess() {
    if (worker.joinable()) worker.detach();
}

int ImportTextProcess::serve() {
    for (;;) {
        auto message = socket.receive(waitForever);
        if (!message) return 0;
        json request = json::parse(message->payload, nullptr, false);
        std::string op = request.is_object() ? request.value("op", "") : "";
        if (op == start) {
            send({{"op", started}});
        } else if (op == importText || op == wordsInFile) {
            startJob(request, message->descriptor);
            continue;
        } else if (op == cancel) {
            auto kind = static_cast<CancelMessage>(request.value("message", 0));
            cancelWord = packCancel(kind, request.value("hash", 0u));
        } else if (op == quit) {
            return 0;
        } else {
            log("import helper: unknown request " + message->payload.substr(0, 200));
        }
        // A descriptor sent with anything but a document is closed unread.
        if (message->descriptor >= 0) (void)ReadableFile::adopt(message->descriptor, "");
    }
}

void ImportTextProcess::startJob(const json& request, int descriptor) {
    if (worker.joinable()) worker.join();
    std::string path = request.value("path", "");
    ReadableFile file = ReadableFile::adopt(descriptor, path);
    currentFileHash = hashFile(path);
    cancelWord = 0;
    worker = std::thread([this, request, file = std::move(file)]() mutable { runJob(request, std::move(file)); });
}

void ImportTextProcess::runJob(const json& request, ReadableFile file) {
    json reply{{"op", ImportTextMessages::reply}};
    try {
        reply.update(answer(request, file));
    } catch (const std::exception& error) {
        // Out of memory under the helper's limit, or a reader that threw:
        // this document gives nothing and the helper goes on.
        log("import helper: " + file.path() + ": " + error.what());
    }
    send(reply);
}

json ImportTextProcess::answer(const json& request, const ReadableFile& file) {
    lastProgressSent = {};
    setProgress(0);
    auto progress = [this](float percentage) { setProgress(percentage); };
    auto shouldCancel = [this] { return didCancel(); };
    bool useOCR = request.value("useOCR", false);
    if (file.descriptor() < 0) return {};
    if (request.value("op", "") == wordsInFile) {
        WordCounts words = importer.wordsInFile(file, useOCR, progress, shouldCancel);
        if (didCancel()) return {};
        return {{"words", words}};
    }
    auto result = importer.importFileText(file, request.value("importRawTextAllowed", false),
                                          request.value("maxLength", INT64_MAX), useOCR, progress, shouldCancel);
    if (didCancel() || !result) return {};
    return {{"result", *result}};
}

bool ImportTextProcess::didCancel() const {
    std::uint64_t word = cancelWord;
    auto kind = static_cast<CancelMessage>(word & 0xFF);
    if (kind == CancelMessage::clear) return false;
    if (kind == CancelMessage::cancelFile) return static_cast<std::uint32_t>(word >> 32) == currentFileHash;
    return true;
}

void ImportTextProcess::setProgress(float percentage) {
    auto now = std::chrono::steady_clock::now();
    if (now - lastProgressSent < progressUpdatesDelay) return;
    lastProgressSent = now;
    send({{"op", progress}, {"percentage", percentage}, {"hash", currentFileHash.load()}});
}

void ImportTextProcess::log(const std::string& line) {
    send({{"op", ImportTextMessages::log}, {"line", line}});
}

void ImportTextProcess::send(const json& message) {
    // A program that went away ends this process at the next receive.
    (void)socket.send(message.dump(-1, ' ', false, json::error_handler_t::replace));
}

}  // namespace quester
