#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "language/LanguageParse.h"
#include "language/SentenceComponent.h"
#include "language/SentenceTemplate.h"
#include "language/VariableSources.h"
#include "query/CommandFactory.h"

namespace quester {

// What the parser made of the command area: the commands, in template order, and
// every word that any of them took (also the words of dropped duplicates).
struct CommandRecogniserResult {
    std::vector<CommandPtr> commands;
    std::vector<SentenceComponent> consumedParts;
};

// The language parser with the table of command factories: the template
// matches of the command area become commands. The language knows templates
// and words only; which command a template's name stands for is decided here.
// Immutable once made; parses may run on several threads at once.
class CommandRecogniser {
public:
    // The program's template table with the given factories.
    explicit CommandRecogniser(CommandFactories factories, VariableSources sources = {});
    // Any template table, for tests and tools.
    CommandRecogniser(std::shared_ptr<const std::vector<SentenceTemplate>> templates, CommandFactories factories,
                      VariableSources sources = {});

    // The commands of the words after the colon. Never throws; words that no
    // command takes are simply left over. A factory that refuses its
    // arguments leaves the match's words unrecognised. Of commands that print
    // alike, the first is kept and the repeat's words count as recognised.
    CommandRecogniserResult makeCommands(const std::vector<SentenceComponent>& input) const;

    const LanguageParse& languageParse() const { return parse; }

private:
    const CommandFactory* factoryFor(const std::string& commandName) const;

    LanguageParse parse;
    CommandFactories factories;
    std::unordered_map<std::string, const CommandFactory*> factoryByName;
};

}  // namespace quester
