#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace quester {

// Why an operation failed. `notFound` is kept apart from real failures so that
// callers can treat a missing item as an ordinary answer.
enum class ErrorCode {
    notFound,
    invalidArgument,
    ioError,
    corrupt,
    permissionDenied,
    unsupported,
    cancelled,
    timedOut,
    internal,
};

// The name of a code as written here ("notFound", "ioError", ...).
inline const char* errorCodeName(ErrorCode code) {
    switch (code) {
        case ErrorCode::notFound:
            return "notFound";
        case ErrorCode::invalidArgument:
            return "invalidArgument";
        case ErrorCode::ioError:
            return "ioError";
        case ErrorCode::corrupt:
            return "corrupt";
        case ErrorCode::permissionDenied:
            return "permissionDenied";
        case ErrorCode::unsupported:
            return "unsupported";
        case ErrorCode::cancelled:
            return "cancelled";
        case ErrorCode::timedOut:
            return "timedOut";
        case ErrorCode::internal:
            return "internal";
    }
    return "internal";
}

struct Error {
    ErrorCode code = ErrorCode::internal;
    std::string message;

    // "<message> (<code name>)", or the code name alone without a message.
    std::string description() const {
        if (message.empty()) return errorCodeName(code);
        return message + " (" + errorCodeName(code) + ")";
    }
};

// A value or an `Error`. Exceptions never cross a subsystem boundary; this does.
template <typename T>
class [[nodiscard]] Result {
public:
    Result(T value) : state(std::move(value)) {}
    Result(Error error) : state(std::move(error)) {}

    bool ok() const { return std::holds_alternative<T>(state); }
    explicit operator bool() const { return ok(); }

    T& value() & { return std::get<T>(state); }
    const T& value() const& { return std::get<T>(state); }
    T&& value() && { return std::get<T>(std::move(state)); }
    T& operator*() & { return value(); }
    const T& operator*() const& { return value(); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

    const Error& error() const { return std::get<Error>(state); }
    bool isNotFound() const { return !ok() && error().code == ErrorCode::notFound; }

    T valueOr(T fallback) const& { return ok() ? value() : std::move(fallback); }

private:
    std::variant<T, Error> state;
};

// The result of an operation that gives nothing back but may fail.
class [[nodiscard]] Status {
public:
    Status() = default;
    Status(Error error) : failure(std::move(error)) {}
    static Status success() { return {}; }

    bool ok() const { return !failure.has_value(); }
    explicit operator bool() const { return ok(); }
    const Error& error() const { return *failure; }

private:
    std::optional<Error> failure;
};

inline Error makeError(ErrorCode code, std::string message) {
    return Error{code, std::move(message)};
}

}  // namespace quester
