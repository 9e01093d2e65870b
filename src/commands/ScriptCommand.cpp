#include "commands/ScriptCommand.h"

#include <algorithm>

#include "language/UnicodeText.h"
#include "support/PathText.h"

namespace quester {

namespace {

std::string wordsAsText(const std::vector<SentenceComponent>& words) {
    std::string text;
    for (const auto& word : words) {
        if (!text.empty()) text += ' ';
        text += word.wasInQuotes ? quotedText(word.textOriginalCase, false) : word.textOriginalCase;
    }
    return text;
}

}  // namespace

CommandPtr ScriptCommand::create(std::string_view, const VariableArguments& args, const TemplateFlags&) {
    const auto* target = argumentAt<ScriptTarget>(args, 0);
    if (!target) return nullptr;
    const auto* words = argumentAt<std::vector<SentenceComponent>>(args, 1);
    return std::make_shared<ScriptCommand>(*target, words ? *words : std::vector<SentenceComponent>{});
}

std::string ScriptCommand::scriptWord(const std::string& scriptPath) {
    std::string name = lastPathComponent(scriptPath);
    std::string extension = pathExtension(name);
    if (!extension.empty()) name.resize(name.size() - extension.size() - 1);
    name = lowercased(name);
    std::erase_if(name, [](char c) { return c == ' '; });
    return name;
}

std::string ScriptCommand::commandToString() const {
    if (type.kind == ScriptTarget::Kind::shortcut) return "shortcut " + type.value;
    std::string text = scriptWord(type.value);
    if (!varArg.empty()) text += " " + wordsAsText(varArg);
    return text;
}

}  // namespace quester
