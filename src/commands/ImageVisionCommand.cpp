#include "commands/ImageVisionCommand.h"

namespace quester {

CommandPtr ImageVisionCommand::create(std::string_view commandName, const VariableArguments& args,
                                      const TemplateFlags&) {
    const auto* terms = argumentAt<SentenceComponent>(args, 0);
    if (!terms) return nullptr;
    bool allItems = commandName.find("ImageVisionAllItems") != std::string_view::npos;
    return std::make_shared<ImageVisionCommand>(terms->textOriginalCase, allItems);
}

}  // namespace quester
