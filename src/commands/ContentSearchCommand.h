#pragma once

#include "language/ContentSearchFlag.h"
#include "query/CommandBase.h"

namespace quester {

// Looks for words inside files: `content "yearly total"`, with the options
// `without "draft"`, whole words, all words, all files, use OCR, case sensitive.
// Reading files is the content-search subsystem's; until it is wired in the
// command gives no verdict.
class ContentSearchCommand final : public CommandBase<ContentSearchCommand> {
public:
    // "textContent". args[0] is the words; with the flag without=1, args[1] the
    // words to exclude; then, optionally, the list of "~contentSearchFlags".
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    ContentSearchCommand() = default;
    ContentSearchCommand(std::string wordsToSearchFor, std::string wordsToExclude,
                         const std::vector<ContentSearchFlag>& flags);

    std::string commandToString() const override { return commandToText(false); }
    std::string commandExample() const override { return commandToText(true); }
    CommandApplyResult commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) override {
        return CommandApplyResult::skip;
    }
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::TextContent; }
    std::optional<std::string> missingEngine() const override { return "content search"; }
    CommandRole commandRole() const override { return CommandRole::contentSearch; }
    bool sameParameters(const ContentSearchCommand& other) const {
        return wordsToSearchForString.empty() == other.wordsToSearchForString.empty();
    }

    std::string wordsToSearchForString;
    std::string wordsToExcludeString;
    bool allWords = false;
    bool caseSensitive = false;
    bool wholeWord = false;
    bool searchBinaryFiles = false;  // "all files"
    bool useOCR = false;
    bool wasExistingCommand = false;
    bool removeCommand = false;

private:
    std::string commandToText(bool example) const;
};

}  // namespace quester
