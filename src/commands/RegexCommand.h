#pragma once

#include <memory>

#include <unicode/uversion.h>

#include "query/CommandBase.h"

U_NAMESPACE_BEGIN
class RegexPattern;
U_NAMESPACE_END

namespace quester {

// A regular expression searched anywhere in the lower-cased name: "regex ^a.*z$",
// negated "regex ^tmp not". A pattern that doesn't compile makes the command
// neutral. One name costs a bounded amount of matching (a name that needs more
// doesn't match), and a stopped search ends a match under way.
class RegexCommand final : public CommandBase<RegexCommand> {
public:
    // "regex" or "regexNot" (or the flag not=1); args[0] is the pattern's word.
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    RegexCommand(std::string pattern, bool isNot);

    std::string commandToString() const override;
    std::string commandExample() const override;
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::Regex; }
    bool sameParameters(const RegexCommand& other) const { return regex == other.regex && isNot == other.isNot; }

    const std::string& pattern() const { return regex; }
    // Compiles anew; the editor row calls it.
    void setPattern(std::string pattern);
    bool isNegated() const { return isNot; }
    bool compiled() const { return matcher != nullptr; }

private:
    void compile();

    std::string regex;
    bool isNot = false;
    // Immutable once compiled, so copies share it; each search makes its own matcher.
    std::shared_ptr<const icu::RegexPattern> matcher;
};

}  // namespace quester
