#pragma once

#include <cstdint>
#include <string>

#include "support/Result.h"

namespace quester {

// A failure reported by the LMDB library: one case per named return code, in
// the library's order from -30799 up, and `other` for any code besides them
// (the system's errno values, such as ENOSPC or EACCES).
class LMDBError {
public:
    enum class Kind : std::int32_t {
        keyExists = -30799,
        notFound,
        pageNotFound,
        corrupted,
        panic,
        versionMismatch,
        invalid,
        mapFull,
        dbsFull,
        readersFull,
        tlsFull,
        txnFull,
        cursorFull,
        pageFull,
        mapResized,
        incompatible,
        badReaderSlot,
        badTransaction,
        badValueSize,
        badDBI,
        other,
    };

    explicit LMDBError(int returnCode);

    Kind kind() const { return errorKind; }
    int returnCode() const { return code; }
    // The case's name ("mapFull"), or "other(<code>)".
    std::string name() const;
    // As the program's error: `notFound` for a missing key, `corrupt` for a
    // damaged or foreign file, `ioError` for the rest; the message holds the
    // case and the library's own words.
    Error asError(const std::string& context) const;

private:
    int code;
    Kind errorKind;
};

// Success for 0, else the error of `returnCode` with `context` in its message.
Status lmdbStatus(int returnCode, const std::string& context);

}  // namespace quester
