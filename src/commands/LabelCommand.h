#pragma once

#include "query/CommandBase.h"

namespace quester {

// Items with (or, negated, without) a tag whose name holds a text: "tag red".
// The tags are matched as one lower-case text joined by blanks, so "red"
// matches "Dark Red", and a text may span two neighbouring tags.
class LabelCommand final : public CommandBase<LabelCommand> {
public:
    // "label" or "labelExcluding"; args[0] is a word whose lower-case text is the tag.
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    LabelCommand(std::string labelName, bool notTag) : labelName(std::move(labelName)), notTag(notTag) {}

    std::string commandToString() const override { return (notTag ? "not tag " : "tag ") + quotedIfNeeded(labelName); }
    std::string commandExample() const override { return (notTag ? "not tag **" : "tag **") + labelName + "**"; }
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                       const QueryContainer& forQuery) override;
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::FileTags; }
    bool sameParameters(const LabelCommand& other) const {
        return labelName == other.labelName && notTag == other.notTag;
    }

    std::string labelName;
    bool notTag = false;
};

}  // namespace quester
