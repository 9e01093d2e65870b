#include "import/ImportTextXPC.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>

#include "import/ImportTextMessages.h"
#include "platform/FileSystem.h"
#include "platform/UniformTypeTable.h"
#include "support/LogFunc.h"

namespace quester {

namespace {

using namespace ImportTextMessages;
using nlohmann::json;
using SteadyClock = std::chrono::steady_clock;

constexpr std::uint64_t smallTextLimit = 1'048'576;
constexpr std::chrono::seconds helperStartLimit{10};
constexpr std::chrono::milliseconds progressForwardDelay{200};

// Counts a job from the moment it queues until it ends.
class OperationScope {
public:
    explicit OperationScope(std::atomic<int>& count) : count(count) { ++count; }
    ~OperationScope() { --count; }
    OperationScope(const OperationScope&) = delete;
    OperationScope& operator=(const OperationScope&) = delete;

private:
    std::atomic<int>& count;
};

}  // namespace

ImportServiceOptions ImportServiceOptions::fromEnvironment() {
    ImportServiceOptions options;
    const char* helper = std::getenv("QUESTER_IMPORT_HELPER");
    options.helperPath = helper && *helper ? helper : ChildProcess::besideOwnExecutable("quester-import");
    return options;
}

ImportTextXPC::ImportTextXPC(ImportServiceOptions options) : options(std::move(options)) {
    restWatcher = std::thread([this] { quitWhenRested(); });
}

ImportTextXPC::~ImportTextXPC() {
    {
        std::lock_guard guard(restLock);
        stopping = true;
    }
    restChanged.notify_all();
    restWatcher.join();
    std::lock_guard job(jobLock);
    shutdown();
}

ImportTextXPC& ImportTextXPC::shared() {
    static ImportTextXPC instance;
    return instance;
}

Status ImportTextXPC::startup() {
    std::lock_guard job(jobLock);
    auto running = runningHelper();
    if (!running) return running.error();
    return {};
}

// Read at once, one byte past the limit to tell a bigger file: content
// search asks this of every file it reads, and a status call first would
// look the path up twice.
std::optional<std::string_view> ImportTextXPC::plainSmallText(const std::string& path, std::string& buffer) const {
    const auto& types = UniformTypeTable::shared();
    if (!types.conformsTo(types.typeOfItem(path, false), "public.plain-text")) return std::nullopt;
    Result<std::string_view> bytes = FileSystem::real().readFileInto(path, buffer, smallTextLimit + 1);
    if (!bytes || bytes->size() > smallTextLimit) return std::nullopt;
    return *bytes;
}

std::pair<std::optional<Error>, std::optional<WordCounts>> ImportTextXPC::wordsInFile(const std::string& path,
                                                                                      bool useOCR,
                                                                                      ProgressHandler progressHandler) {
    if (!localImporter.canImportTextFrom(path, useOCR)) return {std::nullopt, std::nullopt};
    auto reply =
        runJob({{"op", ImportTextMessages::wordsInFile}, {"path", path}, {"useOCR", useOCR}}, path, progressHandler);
    if (!reply) return {reply.error(), std::nullopt};
    if (!reply->contains("words")) return {std::nullopt, std::nullopt};
    return {std::nullopt, reply->at("words").get<WordCounts>()};
}

void ImportTextXPC::importText(
    const std::string& path, bool importRawTextAllowed, std::int64_t maxLength, bool useOCR,
    ProgressHandler progressHandler,
    const std::function<void(std::optional<Error>, std::optional<ImportTextResult>)>& handler) {
    json request{{"op", ImportTextMessages::importText},
                 {"path", path},
                 {"importRawTextAllowed", importRawTextAllowed},
                 {"maxLength", maxLength},
                 {"useOCR", useOCR}};
    auto reply = runJob(std::move(request), path, progressHandler);
    if (!reply) return handler(reply.error(), std::nullopt);
    std::optional<ImportTextResult> result;
    if (reply->contains("result") && reply->at("result").is_object()) {
        ImportTextResult decoded = reply->at("result").get<ImportTextResult>();
        if (decoded.text || decoded.ocrText) result = std::move(decoded);
    }
    handler(std::nullopt, std::move(result));
}

void ImportTextXPC::cancel(const std::string& path) {
    std::lock_guard guard(helperLock);
    if (!helper) return;
    json message{{"op", ImportTextMessages::cancel},
                 {"message", static_cast<int>(CancelMessage::cancelFile)},
                 {"hash", hashFile(path)}};
    (void)helper->socket.send(message.dump());
}

std::optional<int> ImportTextXPC::helperProcessId() const {
    std::lock_guard guard(helperLock);
    if (!helper) return std::nullopt;
    return helper->process.pid();
}

Result<json> ImportTextXPC::runJob(json request, const std::string& path, const ProgressHandler& progress) {
    OperationScope operation(operations);
    std::lock_guard job(jobLock);
    auto file = ReadableFile::open(path);
    if (!file) return file.error();
    auto running = runningHelper();
    if (!running) return running.error();
    LogFunc("Start " + path);
    Helper& current = **running;
    if (auto sent = current.socket.send(request.dump(), file->descriptor()); !sent) {
        return dropHelper("couldn't be sent " + path + ": " + sent.error().message);
    }
    auto reply = awaitReply(current, path, progress);
    lastUsed = SteadyClock::now().time_since_epoch().count();
    LogFunc("End: " + path);
    return reply;
}

Result<json> ImportTextXPC::awaitReply(Helper& current, const std::string& path, const ProgressHandler& progress) {
    auto deadline = SteadyClock::now() + options.timeLimit;
    std::uint32_t hash = hashFile(path);
    auto lastForwarded = SteadyClock::time_point{};
    for (;;) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - SteadyClock::now());
        auto message = current.socket.receive(std::max(left, std::chrono::milliseconds(0)));
        if (!message && message.error().code == ErrorCode::timedOut) {
            auto seconds = std::chrono::duration_cast<std::chrono::seconds>(options.timeLimit).count();
            return dropHelper("took longer than " + std::to_string(seconds) + " s reading " + path);
        }
        if (!message) return dropHelper("stopped while reading " + path);
        json body = json::parse(message->payload, nullptr, false);
        std::string op = body.is_object() ? body.value("op", "") : "";
        if (op == ImportTextMessages::reply) return body;
        if (op == ImportTextMessages::log) LogFunc(body.value("line", ""));
        if (op == ImportTextMessages::progress && progress && body.value("hash", 0u) == hash &&
            SteadyClock::now() - lastForwarded > progressForwardDelay) {
            lastForwarded = SteadyClock::now();
            progress(std::clamp(body.value("percentage", 0.0f), 0.0f, 100.0f));
        }
    }
}

Result<ImportTextXPC::Helper*> ImportTextXPC::runningHelper() {
    if (helper) return helper.get();
    auto ends = MessageSocket::makePair();
    if (!ends) return ends.error();
    // Recognition's worker threads only compete with each other on a busy
    // machine; one document at a time reads fastest on one thread.
    // The helper speaks only through its socket; what its libraries print
    // (a damaged picture's decoder, say) would land on the user's terminal.
    ChildProcess::Options spawn{options.helperPath,  {},   ends->second.descriptor(),
                                options.memoryLimit, true, {"OMP_THREAD_LIMIT=1"}};
    auto process = ChildProcess::spawn(spawn);
    if (!process) return process.error();
    auto started = std::make_unique<Helper>(Helper{std::move(*process), std::move(ends->first)});
    if (auto sent = started->socket.send(json{{"op", start}}.dump()); !sent) return sent.error();
    auto answer = started->socket.receive(helperStartLimit);
    if (!answer) {
        return Error{ErrorCode::ioError,
                     "the import helper " + options.helperPath + " didn't start (" + started->process.wait() + ")"};
    }
    std::lock_guard guard(helperLock);
    helper = std::move(started);
    return helper.get();
}

Error ImportTextXPC::dropHelper(const std::string& why) {
    std::unique_ptr<Helper> ended;
    {
        std::lock_guard guard(helperLock);
        ended = std::move(helper);
    }
    ended->process.kill();
    std::string how = ended->process.wait();
    std::string message = "the import helper " + why + " (" + how + "); the file is skipped";
    LogFunc(message);
    return Error{ErrorCode::ioError, message};
}

void ImportTextXPC::shutdown() {
    std::unique_ptr<Helper> ended;
    {
        std::lock_guard guard(helperLock);
        ended = std::move(helper);
    }
    if (!ended) return;
    (void)ended->socket.send(json{{"op", quit}}.dump());
    ended->socket.shutdown();
}

void ImportTextXPC::quitWhenRested() {
    auto checkEvery = std::min<std::chrono::milliseconds>(options.keepAlive, std::chrono::seconds(60));
    std::unique_lock guard(restLock);
    while (!restChanged.wait_for(guard, checkEvery, [this] { return stopping; })) {
        auto rested = SteadyClock::now() - SteadyClock::time_point(SteadyClock::duration(lastUsed.load()));
        if (operations > 0 || rested < options.keepAlive) continue;
        std::unique_lock job(jobLock, std::try_to_lock);
        if (job.owns_lock()) shutdown();
    }
}

}  // namespace quester
