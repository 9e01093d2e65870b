#pragma once

#include "query/CommandBase.h"
#include "query/SearchResult.h"

namespace quester {

// What the three metadata-index commands share: a keyword and a quoted text,
// and a search that the metadata index answers alone, so that only what it
// supplied passes. `Derived` names its keyword in `static constexpr keyword`.
template <typename Derived>
class SpotlightTextCommand : public CommandBase<Derived> {
public:
    // args[0] is a word whose typed text is the content.
    static CommandPtr create(std::string_view, const VariableArguments& args, const TemplateFlags&) {
        const auto* word = argumentAt<SentenceComponent>(args, 0);
        if (!word) return nullptr;
        return std::make_shared<Derived>(word->textOriginalCase);
    }

    explicit SpotlightTextCommand(std::string content) : content(std::move(content)) {}

    std::string commandToString() const override {
        return std::string(Derived::keyword) + " " + quotedText(content, false);
    }
    std::string commandExample() const override {
        return std::string(Derived::keyword) + " " + quotedText(content, true);
    }
    CommandApplyResult commandImpApply(SearchResult& to, SearchDataSourceDelegate*, const QueryContainer&) override {
        return to.searchResultSuppliedBy == SearchResultSupplier::spotlight ? CommandApplyResult::accept
                                                                            : CommandApplyResult::exclude;
    }
    bool commandStopsWordBasedSearches() const override { return stopsWordBasedSearches; }
    std::optional<AvailableHelpFileNames> helpFileName() const override { return AvailableHelpFileNames::Spotlight; }
    std::optional<std::string> missingEngine() const override { return "a metadata index"; }
    bool sameParameters(const Derived&) const { return true; }

    std::string content;
    bool stopsWordBasedSearches = true;
};

}  // namespace quester
