#include "commands/LabelCommand.h"

namespace quester {

CommandPtr LabelCommand::create(std::string_view commandName, const VariableArguments& args, const TemplateFlags&) {
    const auto* word = argumentAt<SentenceComponent>(args, 0);
    if (!word) return nullptr;
    if (commandName != "label" && commandName != "labelExcluding") return nullptr;
    return std::make_shared<LabelCommand>(word->textLowered, commandName == "labelExcluding");
}

}  // namespace quester
