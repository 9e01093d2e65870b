#pragma once

#include "query/CommandBase.h"

namespace quester {

// A search of the mail store for messages holding words: `mailsearch "invoice"`.
// The mail source and the message reader are their own subsystem; until they
// are wired in the command brings no source and gives no verdict.
class MailSearchCommand final : public CommandBase<MailSearchCommand> {
public:
    // args[0] is the content word; with the flag to_from=1, args[1] and args[2]
    // are the "to" and "from" words.
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    explicit MailSearchCommand(std::string content, std::string to = {}, std::string from = {})
        : content(std::move(content)), to(std::move(to)), from(std::move(from)) {}

    std::string commandToString() const override { return "mailsearch " + quotedText(content, false); }
    std::string commandExample() const override { return "mailsearch " + quotedText(content, true); }
    CommandApplyResult commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) override {
        return CommandApplyResult::skip;
    }
    bool commandStopsWordBasedSearches() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::MailSearches; }
    std::optional<std::string> missingEngine() const override { return "mail search"; }
    bool sameParameters(const MailSearchCommand&) const { return true; }

    // `content` split at commas, empty pieces dropped, nothing trimmed.
    std::vector<std::string> wordsToSearchFor() const;

    std::string content;
    std::string to;
    std::string from;
};

}  // namespace quester
