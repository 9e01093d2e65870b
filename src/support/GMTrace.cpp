#include "support/GMTrace.h"

#include "support/SourceLocation.h"

namespace quester {

GMTrace& GMTrace::shared() {
    static GMTrace trace;
    return trace;
}

void GMTrace::add(std::string_view message, SourceLocation where) {
    std::string crumb = sourceFileStem(where.file_name()) + ":" + std::to_string(where.line()) + " ";
    crumb += message;
    lines.access([&](std::vector<std::string>& list) { list.push_back(std::move(crumb)); });
}

void GMTrace::start(std::string_view message, SourceLocation where) {
    clear();
    add(message, where);
}

void GMTrace::clear() {
    lines.access([](std::vector<std::string>& list) { list.clear(); });
}

std::string GMTrace::description() const {
    return lines.access([](const std::vector<std::string>& list) {
        std::string joined;
        for (const auto& line : list) {
            if (!joined.empty()) joined += ',';
            joined += line;
        }
        return joined;
    });
}

}  // namespace quester
