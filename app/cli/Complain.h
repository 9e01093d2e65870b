#pragma once

#include <cstdio>
#include <string>

namespace quester::cli {

// Says on standard error what went wrong: "quester: <message>".
inline void complain(const std::string& message) {
    std::fprintf(stderr, "quester: %s\n", message.c_str());
}

}  // namespace quester::cli
