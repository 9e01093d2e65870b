#include "FakeCommands.h"

#include <algorithm>
#include <any>

#include "language/ContentSearchFlag.h"
#include "language/DateCommandWhat.h"
#include "language/DateCommandWhen.h"
#include "language/FileSizeArgs.h"
#include "language/ScriptTarget.h"
#include "language/TimeUnit.h"

namespace quester::testing {

namespace {

std::string describeOne(const std::any& value) {
    if (const auto* word = std::any_cast<SentenceComponent>(&value)) return word->textOriginalCase;
    if (const auto* text = std::any_cast<std::string>(&value)) return *text;
    if (const auto* number = std::any_cast<int>(&value)) return std::to_string(*number);
    if (const auto* size = std::any_cast<FileSizeArgs>(&value))
        return std::to_string(size->value).substr(0, 4) + toString(size->units);
    if (const auto* what = std::any_cast<DateCommandWhat>(&value)) return toString(*what);
    if (const auto* when = std::any_cast<DateCommandWhen>(&value))
        return "when" + std::to_string(static_cast<int>(when->when));
    if (const auto* unit = std::any_cast<TimeUnit>(&value)) return "unit" + std::to_string(static_cast<int>(*unit));
    if (const auto* script = std::any_cast<ScriptTarget>(&value)) return "script:" + script->value;
    if (const auto* flags = std::any_cast<std::vector<ContentSearchFlag>>(&value)) {
        std::string out = "[";
        for (ContentSearchFlag flag : *flags) out += std::to_string(static_cast<int>(flag));
        return out + "]";
    }
    if (const auto* words = std::any_cast<std::vector<SentenceComponent>>(&value))
        return "words" + std::to_string(words->size());
    return "?";
}

}  // namespace

std::string describe(const VariableArguments& args) {
    std::string out;
    for (const std::any& value : args) out += (out.empty() ? "" : "|") + describeOne(value);
    return out;
}

std::vector<std::string> templateCommandNames() {
    std::vector<std::string> names;
    for (const auto& sentenceTemplate : *LanguageParseCache::shared().allTemplates())
        names.push_back(sentenceTemplate.command);
    return names;
}

std::vector<SentenceComponent> commandArea(std::string_view text) {
    std::vector<SentenceComponent> area;
    for (auto& word : SentenceComponent::parseWords(text, nullptr, true)) {
        if (word.isAfterAColon) area.push_back(std::move(word));
    }
    return area;
}

std::vector<std::string> printed(const CommandRecogniserResult& result) {
    std::vector<std::string> out;
    for (const auto& command : result.commands) out.push_back(command->commandToString());
    return out;
}

FakeCommand::FakeCommand(std::string name, std::string arguments, TemplateFlags flags)
    : name(std::move(name)), arguments(std::move(arguments)), flags(std::move(flags)) {}

std::string FakeCommand::commandToString() const {
    return arguments.empty() ? name : name + "(" + arguments + ")";
}

CommandApplyResult FakeCommand::commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) {
    return CommandApplyResult::skip;
}

bool FakeCommand::isReplaceableWith(const Command& otherCmd) const {
    const auto* other = dynamic_cast<const FakeCommand*>(&otherCmd);
    return other != nullptr && other->name == name;
}

std::shared_ptr<Command> FakeCommand::copy() const {
    return std::make_shared<FakeCommand>(name, arguments, flags);
}

FakeFactory::FakeFactory(std::vector<std::string> names, std::vector<std::string> refused)
    : names(std::move(names)), refused(std::move(refused)) {}

CommandPtr FakeFactory::create(std::string_view commandName, const VariableArguments& args,
                               const TemplateFlags& flags) const {
    if (std::find(refused.begin(), refused.end(), commandName) != refused.end()) return nullptr;
    return std::make_shared<FakeCommand>(std::string(commandName), describe(args), flags);
}

}  // namespace quester::testing
