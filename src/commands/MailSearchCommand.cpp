#include "commands/MailSearchCommand.h"

namespace quester {

std::vector<std::string> splitDroppingEmpty(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find(separator, start);
        if (end == std::string_view::npos) end = text.size();
        if (end > start) pieces.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return pieces;
}

CommandPtr MailSearchCommand::create(std::string_view, const VariableArguments& args, const TemplateFlags& flags) {
    const auto* content = argumentAt<SentenceComponent>(args, 0);
    if (!content) return nullptr;
    auto toFrom = flags.find("to_from");
    if (toFrom == flags.end() || toFrom->second != "1") return std::make_shared<MailSearchCommand>(content->textOriginalCase);
    const auto* to = argumentAt<SentenceComponent>(args, 1);
    const auto* from = argumentAt<SentenceComponent>(args, 2);
    if (!to || !from) return nullptr;
    return std::make_shared<MailSearchCommand>(content->textOriginalCase, to->textOriginalCase, from->textOriginalCase);
}

std::vector<std::string> MailSearchCommand::wordsToSearchFor() const { return splitDroppingEmpty(content, ','); }

}  // namespace quester
