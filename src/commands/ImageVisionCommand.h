#pragma once

#include "query/CommandBase.h"

namespace quester {

// Images by what an image classifier sees in them: `image includes "dog,cat"`
// (one term is enough), `image is "beach,palm tree"` (every term). The
// classifier is its own subsystem; until it is wired in the command gives no verdict.
class ImageVisionCommand final : public CommandBase<ImageVisionCommand> {
public:
    // "ImageVision" or "ImageVisionAllItems"; args[0] is the terms' word.
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    ImageVisionCommand(std::string searchString, bool allItems)
        : searchString(std::move(searchString)), allItems(allItems) {}

    std::string commandToString() const override { return prefix() + quotedText(searchString, false); }
    std::string commandExample() const override { return prefix() + quotedText(searchString, true); }
    CommandApplyResult commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) override {
        return CommandApplyResult::skip;
    }
    bool commandSupportsBooleanCombination() const override { return true; }
    std::optional<AvailableHelpFileNames> helpFileName() const override {
        return AvailableHelpFileNames::ImageRecognition;
    }
    std::optional<std::string> missingEngine() const override { return "image recognition"; }
    bool sameParameters(const ImageVisionCommand& other) const { return allItems == other.allItems; }

    std::string searchString;
    bool allItems = false;
    bool notTag = false;

private:
    std::string prefix() const { return allItems ? "image is " : "image includes "; }
};

}  // namespace quester
