#pragma once

#include "query/CommandBase.h"

namespace quester {

// Items of a kind: "is pdf", "is image", "is music", "is public.data". A kind
// word that stands for a type identifier is judged by the conformance of the
// item's type; any word is also looked for in what is known of the item's kind.
// Judges by name, so it costs no file-system call, except for "executable":
// a file is a program by its execute permission and its first bytes.
class UTICommand final : public CommandBase<UTICommand> {
public:
    // args[0] is the kind word of "~uti".
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    explicit UTICommand(std::string wantedUTI) : wantedUTI(std::move(wantedUTI)) {}

    std::string commandToString() const override { return "is " + quotedIfNeeded(wantedUTI); }
    std::string commandExample() const override { return "is **" + wantedUTI + "**"; }
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::Kind; }
    bool sameParameters(const UTICommand& other) const { return wantedUTI == other.wantedUTI; }

    std::string wantedUTI;
};

}  // namespace quester
