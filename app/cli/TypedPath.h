#pragma once

#include <filesystem>
#include <string>

#include "support/PathText.h"

namespace quester::cli {

// A path as typed, made absolute against the working folder, with "." and
// ".." worked out and no slash at the end; the text itself when that fails.
inline std::string absoluteTypedPath(const std::string& typed) {
    std::error_code error;
    const std::string absolute = std::filesystem::absolute(typed, error).lexically_normal().string();
    return error ? typed : std::string(withoutTrailingSlash(absolute));
}

}  // namespace quester::cli
