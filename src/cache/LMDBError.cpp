#include "cache/LMDBError.h"

#include <array>

#include <fmt/format.h>
#include <lmdb.h>

namespace quester {

namespace {

constexpr int firstNamedCode = static_cast<int>(LMDBError::Kind::keyExists);
constexpr int lastNamedCode = static_cast<int>(LMDBError::Kind::badDBI);

constexpr std::array<const char*, lastNamedCode - firstNamedCode + 1> kindNames = {
    "keyExists",  "notFound",     "pageNotFound",  "corrupted",      "panic",        "versionMismatch", "invalid",
    "mapFull",    "dbsFull",      "readersFull",   "tlsFull",        "txnFull",      "cursorFull",      "pageFull",
    "mapResized", "incompatible", "badReaderSlot", "badTransaction", "badValueSize", "badDBI",
};

bool isDamage(LMDBError::Kind kind) {
    switch (kind) {
        case LMDBError::Kind::pageNotFound:
        case LMDBError::Kind::corrupted:
        case LMDBError::Kind::panic:
        case LMDBError::Kind::versionMismatch:
        case LMDBError::Kind::invalid:
        case LMDBError::Kind::incompatible:
            return true;
        default:
            return false;
    }
}

}  // namespace

LMDBError::LMDBError(int returnCode)
    : code(returnCode),
      errorKind(returnCode >= firstNamedCode && returnCode <= lastNamedCode ? static_cast<Kind>(returnCode)
                                                                            : Kind::other) {}

std::string LMDBError::name() const {
    if (errorKind == Kind::other) return fmt::format("other({})", code);
    return kindNames[static_cast<std::size_t>(code - firstNamedCode)];
}

Error LMDBError::asError(const std::string& context) const {
    ErrorCode category = ErrorCode::ioError;
    if (errorKind == Kind::notFound) category = ErrorCode::notFound;
    if (isDamage(errorKind)) category = ErrorCode::corrupt;
    return makeError(category, fmt::format("{}: {} ({})", context, mdb_strerror(code), name()));
}

Status lmdbStatus(int returnCode, const std::string& context) {
    if (returnCode == 0) return Status::success();
    return LMDBError(returnCode).asError(context);
}

}  // namespace quester
