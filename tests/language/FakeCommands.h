#pragma once

#include <string>
#include <vector>

#include "query/CommandFactory.h"
#include "query/CommandRecogniser.h"

namespace quester::testing {

// A command that prints its template command name and the values it was made
// from, so that tests can see what the parser handed to a factory.
class FakeCommand : public Command {
public:
    FakeCommand(std::string name, std::string arguments, TemplateFlags flags);

    std::string commandToString() const override;
    std::string commandExample() const override { return commandToString(); }
    CommandApplyResult commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) override;
    bool isReplaceableWith(const Command& otherCmd) const override;
    std::shared_ptr<Command> copy() const override;

    std::string name;
    std::string arguments;
    TemplateFlags flags;
};

// Serves the given names; refuses every name in `refused`.
class FakeFactory : public CommandFactory {
public:
    explicit FakeFactory(std::vector<std::string> names, std::vector<std::string> refused = {});

    std::vector<std::string> commandNames() const override { return names; }
    CommandPtr create(std::string_view commandName, const VariableArguments& args,
                      const TemplateFlags& flags) const override;

private:
    std::vector<std::string> names;
    std::vector<std::string> refused;
};

// Every value a variable can produce, printed: "Documents", "10mb", "[allWords]".
std::string describe(const VariableArguments& args);

// The command names the program's own template table asks factories for.
std::vector<std::string> templateCommandNames();

// The words of `text` after its colon, parentheses split, as a query hands them over.
std::vector<SentenceComponent> commandArea(std::string_view text);

// Each command's text, in the order they were made.
std::vector<std::string> printed(const CommandRecogniserResult& result);

}  // namespace quester::testing
