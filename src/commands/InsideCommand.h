#pragma once

#include <optional>

#include "query/CommandBase.h"
#include "query/CommandWithScope.h"

namespace quester {

// Limits a search to a folder: an absolute path ("inside ~/Documents") covers
// the folder and everything below it; a bare word ("inside Documents") covers
// every item whose parent path holds that text.
class InsideCommand final : public CommandBase<InsideCommand>, public CommandWithScope {
public:
    // args[0] is a word whose typed text is the path.
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    // Reads the file system once, to resolve symbolic links of an absolute path.
    explicit InsideCommand(std::string insidePath);

    std::string commandToString() const override { return "inside " + quotedIfNeeded(insidePath); }
    std::string commandExample() const override { return "inside **folder**"; }
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::Inside; }
    bool sameParameters(const InsideCommand& other) const { return insidePath == other.insidePath; }
    std::optional<std::string> scopePath() const override { return absoluteScopePath; }

    std::string insidePath;
    bool isAbsolutePath = false;
    std::optional<std::string> absoluteScopePath;
    std::string normalisedAbsoluteBase;
};

// A leading "~" replaced by the user's home folder.
std::string expandingTildeInPath(const std::string& path);

}  // namespace quester
