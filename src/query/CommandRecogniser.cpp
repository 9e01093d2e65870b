#include "query/CommandRecogniser.h"

#include <map>

namespace quester {

namespace {

VariableArguments argumentsOf(const TemplateWordStatsResult& match) {
    VariableArguments args;
    for (const auto& stat : match.stats) {
        if (stat.variableParserResult && stat.variableParserResult->value.has_value())
            args.push_back(stat.variableParserResult->value);
    }
    return args;
}

}  // namespace

CommandRecogniser::CommandRecogniser(CommandFactories factories, VariableSources sources)
    : CommandRecogniser(LanguageParseCache::shared().allTemplates(), std::move(factories), std::move(sources)) {}

CommandRecogniser::CommandRecogniser(std::shared_ptr<const std::vector<SentenceTemplate>> templates,
                                     CommandFactories factories, VariableSources sources)
    : parse(std::move(templates), std::move(sources)), factories(std::move(factories)) {
    for (const auto& factory : this->factories) {
        if (!factory) continue;
        for (const std::string& name : factory->commandNames()) factoryByName.emplace(name, factory.get());
    }
}

const CommandFactory* CommandRecogniser::factoryFor(const std::string& commandName) const {
    const auto found = factoryByName.find(commandName);
    return found == factoryByName.end() ? nullptr : found->second;
}

CommandRecogniserResult CommandRecogniser::makeCommands(const std::vector<SentenceComponent>& input) const {
    CommandRecogniserResult made;
    for (const TemplateWordStatsResult& match : parse.matchesFor(input)) {
        const CommandFactory* factory = factoryFor(match.sentenceTemplate->command);
        if (factory == nullptr) continue;
        CommandPtr command =
            factory->create(match.sentenceTemplate->command, argumentsOf(match), match.sentenceTemplate->flags);
        if (!command) continue;
        std::vector<SentenceComponent> parts = match.consumedParts();
        command->setCommandConsumedParts(parts);
        made.commands.push_back(std::move(command));
        made.consumedParts.insert(made.consumedParts.end(), parts.begin(), parts.end());
    }
    // A criterion typed twice is kept once, and the kept command takes the
    // words of its repeats too: they were understood, not left over.
    std::map<std::string, std::vector<SentenceComponent>> partsByText;
    std::vector<CommandPtr> kept;
    for (CommandPtr& command : made.commands) {
        const auto [entry, isNew] = partsByText.try_emplace(command->commandToString());
        const std::vector<SentenceComponent>& parts = command->commandConsumedParts();
        entry->second.insert(entry->second.end(), parts.begin(), parts.end());
        if (isNew) kept.push_back(std::move(command));
    }
    for (const CommandPtr& command : kept)
        command->setCommandConsumedParts(std::move(partsByText[command->commandToString()]));
    made.commands = std::move(kept);
    return made;
}

}  // namespace quester
