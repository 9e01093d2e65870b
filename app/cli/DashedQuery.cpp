#include "DashedQuery.h"

#include <CLI/CLI.hpp>

namespace quester::cli {

namespace {

const CLI::App* subcommandNamed(const CLI::App& app, const std::string& name) {
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        if (command->get_name() == name) return command;
    }
    return nullptr;
}

// The option that `argument` ("--in", "--in=x", "-0") names, if any.
const CLI::Option* namedOption(const CLI::App& command, const std::string& argument) {
    return command.get_option_no_throw(argument.substr(0, argument.find('=')));
}

bool takesSeparateValue(const CLI::Option& option, const std::string& argument) {
    return option.get_items_expected_min() > 0 && argument.find('=') == std::string::npos;
}

bool looksLikeMinusWords(const std::string& argument) {
    return argument.size() > 1 && argument[0] == '-' && argument[1] != '-';
}

}  // namespace

std::vector<std::string> withDashedQueryExplicit(const CLI::App& app, const std::vector<std::string>& arguments) {
    std::vector<std::string> result;
    const CLI::App* command = nullptr;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (command == nullptr) {
            if (i > 0) command = subcommandNamed(app, argument);
            result.push_back(argument);
            continue;
        }
        if (argument == "--") {
            for (++i; i < arguments.size(); ++i) result.push_back("--query=" + arguments[i]);
            break;
        }
        if (argument.size() < 2 || argument[0] != '-') {
            result.push_back(argument);
        } else if (const CLI::Option* option = namedOption(*command, argument)) {
            result.push_back(argument);
            if (takesSeparateValue(*option, argument) && i + 1 < arguments.size()) result.push_back(arguments[++i]);
        } else {
            result.push_back(looksLikeMinusWords(argument) ? "--query=" + argument : argument);
        }
    }
    return result;
}

}  // namespace quester::cli
