#include "support/SourceLocation.h"

#include <array>

namespace quester {

std::string sourceFileStem(std::string_view filePath) {
    auto slash = filePath.rfind('/');
    std::string_view name = slash == std::string_view::npos ? filePath : filePath.substr(slash + 1);
    static constexpr std::array<std::string_view, 9> kSourceExtensions = {".cpp", ".cc", ".cxx", ".c",    ".h",
                                                                          ".hpp", ".hh", ".mm",  ".swift"};
    for (std::string_view extension : kSourceExtensions) {
        if (name.size() > extension.size() && name.ends_with(extension)) {
            return std::string(name.substr(0, name.size() - extension.size()));
        }
    }
    return std::string(name);
}

std::string callSiteName(SourceLocation where) {
    return sourceFileStem(where.file_name()) + " #" + std::to_string(where.line());
}

}  // namespace quester
