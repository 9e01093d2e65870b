#pragma once

#include <string>

#include "commands/LengthLimit.h"
#include "query/CommandBase.h"

namespace quester {

// What the name and path length criteria share. `Derived` gives `static
// constexpr const char* what` ("name", "path") and `static std::string
// measuredText(const SearchResult&)`.
template <typename Derived>
class LengthCommand : public CommandBase<Derived> {
public:
    // "<what>MaxLength" or "<what>MinLength"; args[0] is the integer count. A
    // negative count measures nothing, so the words stay not understood.
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags&) {
        const auto* count = argumentAt<int>(args, 0);
        if (!count || *count < 0) return nullptr;
        std::string what = Derived::what;
        if (commandName == what + "MaxLength") return std::make_shared<Derived>(LengthChoice::max, *count);
        if (commandName == what + "MinLength") return std::make_shared<Derived>(LengthChoice::min, *count);
        return nullptr;
    }

    LengthCommand(LengthChoice choice, int count) : choice(choice), count(count) {}

    std::string commandToString() const override { return lengthCommandText(Derived::what, choice, count, false); }
    std::string commandExample() const override { return lengthCommandText(Derived::what, choice, count, true); }
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate*, const QueryContainer&) override {
        return judgeLength(Derived::measuredText(to), choice, count);
    }
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override {
        return AvailableHelpFileNames::NamePathLength;
    }
    bool sameParameters(const Derived& other) const { return choice == other.choice; }

    LengthChoice choice;
    int count;
};

}  // namespace quester
