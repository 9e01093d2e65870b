#include "ExplainCommand.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "commands/StandardCommandFactories.h"
#include "query/CommandRecogniser.h"
#include "query/CommandClassName.h"
#include "query/QueryContainer.h"
#include "stores/Preferences.h"

#include "ExitStatus.h"
#include "Terminal.h"

namespace quester::cli {
namespace {

struct ExplainOptions {
    std::string query;
    bool json = false;
    std::string color = "auto";
};

// A readable infix form: words as typed, commands in brackets by their wording.
std::string describe(const BooleanExpr& expr, const QueryContainer& query, bool nested) {
    auto group = [nested](std::string text) { return nested ? "(" + text + ")" : text; };
    switch (expr.kind()) {
        case BooleanExpr::Kind::empty: return "";
        case BooleanExpr::Kind::word: return "\"" + expr.wordValue().textOriginalCase + "\"";
        case BooleanExpr::Kind::command: {
            size_t index = static_cast<size_t>(expr.commandIndex());
            if (index >= query.commandsFoundInQuery().size()) return "[?]";
            return "[" + query.commandsFoundInQuery()[index]->commandToString() + "]";
        }
        case BooleanExpr::Kind::notExpr: return "NOT " + describe(expr.left(), query, true);
        case BooleanExpr::Kind::andExpr:
            return group(describe(expr.left(), query, true) + " AND " + describe(expr.right(), query, true));
        case BooleanExpr::Kind::orExpr:
            return group(describe(expr.left(), query, true) + " OR " + describe(expr.right(), query, true));
    }
    return "";
}

std::vector<std::string> typedTexts(const std::vector<SentenceComponent>& words) {
    std::vector<std::string> texts;
    for (const auto& word : words) texts.push_back(word.textOriginalCase);
    return texts;
}

nlohmann::ordered_json explanationJSON(const QueryContainer& query) {
    nlohmann::ordered_json commands = nlohmann::ordered_json::array();
    for (const auto& command : query.commandsFoundInQuery()) {
        nlohmann::ordered_json entry{{"type", commandClassName(*command)}, {"text", command->commandToString()}};
        const auto engine = command->missingEngine();
        entry["available"] = !engine.has_value();
        if (engine) entry["missingEngine"] = *engine;
        commands.push_back(std::move(entry));
    }
    nlohmann::ordered_json explanation;
    explanation["searchWords"] = query.searchWords();
    explanation["searchWordsWithMinus"] = typedTexts(query.searchWordsWithMinus());
    explanation["orStringGroups"] = query.orStringGroups();
    explanation["commands"] = commands;
    explanation["unrecognised"] = typedTexts(query.invalidCommandAreaWords());
    explanation["booleanExpr"] = describe(query.booleanExpr(), query, false);
    explanation["location"] = query.whereLocation() ? nlohmann::ordered_json(query.whereLocation()->locationName) : nullptr;
    explanation["isWordBasedSearch"] = query.isWordBasedSearch();
    return explanation;
}

bool isUnrecognised(const QueryContainer& query, const SentenceComponent& word) {
    for (const auto& invalid : query.invalidCommandAreaWords()) {
        if (invalid.position == word.position && invalid.textOriginalCase == word.textOriginalCase) return true;
    }
    return false;
}

// The sentence again, with each word no command took marked, in red on a terminal.
std::string markedSentence(const QueryContainer& query, bool colour) {
    std::string text;
    bool colonWritten = false;
    for (const auto& word : query.allWords()) {
        if (word.isAfterAColon && !colonWritten) {
            text += text.empty() ? ": " : " : ";
            colonWritten = true;
        } else if (!text.empty()) {
            text += ' ';
        }
        std::string typed = word.wasInQuotes ? "\"" + word.textOriginalCase + "\"" : word.textOriginalCase;
        if (!isUnrecognised(query, word)) {
            text += typed;
        } else {
            text += colour ? "\033[1;31m[?" + typed + "]\033[0m" : "[?" + typed + "]";
        }
    }
    return text;
}

std::string joined(const std::vector<std::string>& texts, const char* separator) {
    std::string text;
    for (const auto& piece : texts) text += (text.empty() ? "" : separator) + piece;
    return text.empty() ? "(none)" : text;
}

void printForPerson(const QueryContainer& query, bool colour) {
    fmt::print("Query:          {}\n", markedSentence(query, colour));
    fmt::print("Search words:   {}\n", joined(query.searchWords(), ", "));
    fmt::print("Excluded words: {}\n", joined(typedTexts(query.searchWordsWithMinus()), ", "));
    std::vector<std::string> groups;
    for (const auto& group : query.orStringGroups()) groups.push_back(joined(group, " "));
    fmt::print("OR groups:      {}\n", joined(groups, " | "));
    fmt::print("Commands:{}\n", query.commandsFoundInQuery().empty() ? "       (none)" : "");
    for (const auto& command : query.commandsFoundInQuery()) {
        const auto engine = command->missingEngine();
        fmt::print("  {:<26} {}{}\n", commandClassName(*command), command->commandToString(),
                   engine ? "  (not available: needs " + *engine + ")" : "");
    }
    if (!query.invalidCommandAreaWords().empty()) {
        fmt::print("Unrecognised:   {}  (marked [?...] above)\n", joined(typedTexts(query.invalidCommandAreaWords()), ", "));
    }
    std::string expression = describe(query.booleanExpr(), query, false);
    fmt::print("Expression:     {}\n", expression.empty() ? "(everything)" : expression);
    fmt::print("Location:       {}\n", query.whereLocation() ? query.whereLocation()->locationName : "(default)");
    fmt::print("Word-based:     {}\n", query.isWordBasedSearch() ? "yes" : "no");
}

void runExplain(const ExplainOptions& options) {
    CommandRecogniser parser(standardCommandFactories());
    Preferences& preferences = Preferences::shared();
    QueryPreferences queryPreferences{preferences.boolValue("diacriticInsensitiveSearch"),
                                      preferences.boolValue("showAppsFoundAnywhere")};
    QueryContainer query(options.query, parser, std::nullopt, false, queryPreferences);
    if (options.json) {
        // Words that aren't UTF-8 are written with U+FFFD: JSON holds text only.
        std::puts(explanationJSON(query).dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
    } else {
        printForPerson(query, Terminal::wantsColour(options.color, STDOUT_FILENO));
    }
}

}  // namespace

void addExplainCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<ExplainOptions>();
    CLI::App* explain = app.add_subcommand("explain", "Show how a query is understood, without searching");
    explain->footer(exitStatusHelp);
    explain->add_option("query,--query", options->query,
                        "The query, as typed in the query field; one that begins with a minus word may stand "
                        "anywhere, or after --")
        ->required();
    explain->add_flag("--json", options->json, "Print the explanation as JSON");
    Terminal::addColorOption(*explain, options->color);
    explain->callback([options, &exitStatus] {
        runExplain(*options);
        exitStatus = ExitStatus::found;
    });
}

}  // namespace quester::cli
