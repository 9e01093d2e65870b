#pragma once

#include <string>
#include <string_view>
#include <version>

#if defined(__cpp_lib_source_location)
#include <source_location>
#endif

namespace quester {

#if defined(__cpp_lib_source_location)
using SourceLocation = std::source_location;
#else
// Clang before 15 lacks the builtin that libstdc++'s std::source_location
// needs; the older builtins give the same three facts at the call site.
class SourceLocation {
public:
    static constexpr SourceLocation current(const char* file = __builtin_FILE(), unsigned line = __builtin_LINE(),
                                            const char* function = __builtin_FUNCTION()) noexcept {
        SourceLocation where;
        where.file = file;
        where.lineNumber = line;
        where.function = function;
        return where;
    }
    constexpr const char* file_name() const noexcept { return file; }
    constexpr unsigned line() const noexcept { return lineNumber; }
    constexpr unsigned column() const noexcept { return 0; }
    constexpr const char* function_name() const noexcept { return function; }

private:
    const char* file = "";
    unsigned lineNumber = 0;
    const char* function = "";
};
#endif

// The last component of a source file's path without its source extension:
// "/x/y/UINodeModel.cpp" gives "UINodeModel". Other extensions stay
// ("notes.txt" stays whole), so do dots inside the stem ("A.b.cpp" gives "A.b").
std::string sourceFileStem(std::string_view filePath);

// "<file stem> #<line>": the name of a queue or the key of a delayed call,
// so that a name in a report leads back to the code that made it.
std::string callSiteName(SourceLocation where = SourceLocation::current());

}  // namespace quester
