#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "support/Result.h"

namespace quester {

// One end of a connected pair of local stream sockets that carries whole
// messages: each is a 4-byte little-endian length and that many bytes, and
// may bring one open file descriptor along. Sending is safe from several
// threads at once (each message goes out whole); receiving is for one thread.
// Closed when destroyed.
class MessageSocket {
public:
    // The largest message either side accepts.
    static constexpr std::size_t maxMessageSize = 1u << 30;

    struct Message {
        std::string payload;
        // A descriptor that came with it, now owned by the receiver; -1 when none.
        int descriptor = -1;
    };

    // Two connected ends, both close-on-exec.
    static Result<std::pair<MessageSocket, MessageSocket>> makePair();
    // Takes ownership of a descriptor that is one end of such a pair.
    static MessageSocket adopt(int descriptor) { return MessageSocket(descriptor); }

    MessageSocket(MessageSocket&& other) noexcept;
    MessageSocket& operator=(MessageSocket&& other) noexcept;
    MessageSocket(const MessageSocket&) = delete;
    MessageSocket& operator=(const MessageSocket&) = delete;
    ~MessageSocket();

    int descriptor() const { return fd; }
    // Sends `payload`, and `descriptor` along with it unless it is -1 (the
    // caller keeps its own copy). ioError when the other end is gone.
    Status send(std::string_view payload, int descriptor = -1);
    // The next message, waiting at most `timeout`: timedOut when none came in
    // time, ioError when the other end closed or sent something malformed.
    Result<Message> receive(std::chrono::milliseconds timeout);
    // Ends both directions now, waking a receiver in another thread.
    void shutdown();

private:
    explicit MessageSocket(int descriptor) : fd(descriptor) {}
    Status sendAll(const char* bytes, std::size_t count, int descriptor);
    Status receiveExactly(char* into, std::size_t count, int* descriptor,
                          std::chrono::steady_clock::time_point deadline);

    int fd = -1;
};

}  // namespace quester
