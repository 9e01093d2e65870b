#pragma once

#include "language/ScriptTarget.h"
#include "query/CommandBase.h"

namespace quester {

// Names a script or a shortcut to run on the results: "tidyup now",
// `shortcut "music quiz"`. Every item passes; running belongs to automation.
class ScriptCommand final : public CommandBase<ScriptCommand> {
public:
    // args[0] is the ScriptTarget of "~scriptName"; args[1], when it is a list of
    // words, the arguments.
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    ScriptCommand(ScriptTarget type, std::vector<SentenceComponent> varArg)
        : type(std::move(type)), varArg(std::move(varArg)) {}

    // A script's name as the language reads it: without extension, lower-case,
    // with no blanks ("Tidy Up.sh" is "tidyup").
    static std::string scriptWord(const std::string& scriptPath);

    std::string commandToString() const override;
    std::string commandExample() const override { return "shortcut \"music quiz\""; }
    CommandApplyResult commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) override {
        return CommandApplyResult::accept;
    }
    bool commandStopsWordBasedSearches() const override { return stopsWordBasedSearches; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::Scripts; }
    std::optional<std::string> missingEngine() const override { return "scripts"; }
    bool sameParameters(const ScriptCommand&) const { return true; }

    ScriptTarget type;
    std::vector<SentenceComponent> varArg;
    bool stopsWordBasedSearches = true;
};

}  // namespace quester
