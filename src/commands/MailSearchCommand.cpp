#include "commands/MailSearchCommand.h"

#include "support/PathText.h"

namespace quester {

CommandPtr MailSearchCommand::create(std::string_view, const VariableArguments& args, const TemplateFlags& flags) {
    const auto* content = argumentAt<SentenceComponent>(args, 0);
    if (!content) return nullptr;
    auto toFrom = flags.find("to_from");
    if (toFrom == flags.end() || toFrom->second != "1")
        return std::make_shared<MailSearchCommand>(content->textOriginalCase);
    const auto* to = argumentAt<SentenceComponent>(args, 1);
    const auto* from = argumentAt<SentenceComponent>(args, 2);
    if (!to || !from) return nullptr;
    return std::make_shared<MailSearchCommand>(content->textOriginalCase, to->textOriginalCase, from->textOriginalCase);
}

std::vector<std::string> MailSearchCommand::wordsToSearchFor() const {
    return splitNonEmpty(content, ',');
}

}  // namespace quester
