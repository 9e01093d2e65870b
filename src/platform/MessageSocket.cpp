#include "platform/MessageSocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <mutex>

namespace quester {

namespace {

Error socketError(const char* what, int code) {
    return Error{ErrorCode::ioError, std::string(what) + ": " + std::strerror(code)};
}

// One lock for every socket's sends: messages are small beside the work they
// ask for, and a process holds one or two of these sockets.
std::mutex& sendLock() {
    static std::mutex lock;
    return lock;
}

int millisecondsUntil(std::chrono::steady_clock::time_point deadline) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::max<std::int64_t>(0, std::min<std::int64_t>(left.count(), INT32_MAX)));
}

}  // namespace

Result<std::pair<MessageSocket, MessageSocket>> MessageSocket::makePair() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return socketError("socketpair", errno);
    return std::pair<MessageSocket, MessageSocket>{MessageSocket(ends[0]), MessageSocket(ends[1])};
}

MessageSocket::MessageSocket(MessageSocket&& other) noexcept : fd(std::exchange(other.fd, -1)) {}

MessageSocket& MessageSocket::operator=(MessageSocket&& other) noexcept {
    if (this != &other) {
        if (fd >= 0) ::close(fd);
        fd = std::exchange(other.fd, -1);
    }
    return *this;
}

MessageSocket::~MessageSocket() {
    if (fd >= 0) ::close(fd);
}

void MessageSocket::shutdown() {
    ::shutdown(fd, SHUT_RDWR);
}

Status MessageSocket::send(std::string_view payload, int descriptor) {
    if (payload.size() > maxMessageSize) return Error{ErrorCode::invalidArgument, "message too large"};
    std::string frame(4, '\0');
    auto size = static_cast<std::uint32_t>(payload.size());
    for (int i = 0; i < 4; ++i) frame[i] = static_cast<char>((size >> (8 * i)) & 0xFF);
    frame.append(payload);
    std::lock_guard guard(sendLock());
    return sendAll(frame.data(), frame.size(), descriptor);
}

Status MessageSocket::sendAll(const char* bytes, std::size_t count, int descriptor) {
    std::size_t sent = 0;
    while (sent < count) {
        iovec part{const_cast<char*>(bytes + sent), count - sent};
        msghdr header{};
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
        if (descriptor >= 0 && sent == 0) {
            header.msg_control = control.data();
            header.msg_controllen = control.size();
            cmsghdr* message = CMSG_FIRSTHDR(&header);
            message->cmsg_level = SOL_SOCKET;
            message->cmsg_type = SCM_RIGHTS;
            message->cmsg_len = CMSG_LEN(sizeof(int));
            std::memcpy(CMSG_DATA(message), &descriptor, sizeof(int));
        }
        ssize_t done = ::sendmsg(fd, &header, MSG_NOSIGNAL);
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) return socketError("send", errno);
        sent += static_cast<std::size_t>(done);
    }
    return {};
}

Status MessageSocket::receiveExactly(char* into, std::size_t count, int* descriptor,
                                     std::chrono::steady_clock::time_point deadline) {
    std::size_t got = 0;
    while (got < count) {
        pollfd watch{fd, POLLIN, 0};
        int ready = ::poll(&watch, 1, millisecondsUntil(deadline));
        if (ready < 0 && errno == EINTR) continue;
        if (ready < 0) return socketError("poll", errno);
        if (ready == 0) return Error{ErrorCode::timedOut, "no message in time"};
        iovec part{into + got, count - got};
        msghdr header{};
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
        header.msg_control = control.data();
        header.msg_controllen = control.size();
        ssize_t done = ::recvmsg(fd, &header, MSG_CMSG_CLOEXEC);
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) return socketError("receive", errno);
        if (done == 0) return Error{ErrorCode::ioError, "the other end closed"};
        for (cmsghdr* message = CMSG_FIRSTHDR(&header); message; message = CMSG_NXTHDR(&header, message)) {
            if (message->cmsg_level != SOL_SOCKET || message->cmsg_type != SCM_RIGHTS) continue;
            int passed;
            std::memcpy(&passed, CMSG_DATA(message), sizeof(int));
            if (descriptor && *descriptor < 0) {
                *descriptor = passed;
            } else {
                ::close(passed);
            }
        }
        got += static_cast<std::size_t>(done);
    }
    return {};
}

Result<MessageSocket::Message> MessageSocket::receive(std::chrono::milliseconds timeout) {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    Message message;
    std::array<char, 4> length{};
    if (auto status = receiveExactly(length.data(), 4, &message.descriptor, deadline); !status) return status.error();
    std::uint32_t size = 0;
    for (int i = 0; i < 4; ++i) size |= static_cast<std::uint32_t>(static_cast<unsigned char>(length[i])) << (8 * i);
    auto dropDescriptor = [&] {
        if (message.descriptor >= 0) ::close(message.descriptor);
    };
    if (size > maxMessageSize) {
        dropDescriptor();
        return Error{ErrorCode::ioError, "message too large"};
    }
    message.payload.resize(size);
    // Once a message has begun, its rest is not held to the caller's deadline.
    auto bodyDeadline = std::max(deadline, std::chrono::steady_clock::now() + std::chrono::seconds(30));
    if (auto status = receiveExactly(message.payload.data(), size, &message.descriptor, bodyDeadline); !status) {
        dropDescriptor();
        return status.error();
    }
    return message;
}

}  // namespace quester
