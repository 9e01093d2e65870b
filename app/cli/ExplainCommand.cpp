#include "ExplainCommand.h"

#include <fmt/core.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "commands/StandardCommandFactories.h"
#include "query/CommandClassName.h"
#include "query/CommandRecogniser.h"
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

std::string leafText(const BooleanExpr& leaf, const QueryContainer& query) {
    switch (leaf.kind()) {
        case BooleanExpr::Kind::word:
            return "\"" + leaf.wordValue().textOriginalCase + "\"";
        case BooleanExpr::Kind::command: {
            size_t index = static_cast<size_t>(leaf.commandIndex());
            if (index >= query.commandsFoundInQuery().size()) return "[?]";
            return "[" + query.commandsFoundInQuery()[index]->commandToString() + "]";
        }
        default:
            return "";
    }
}

// A readable infix form: words as typed, commands in brackets by their wording,
// every inner join in parentheses. Walked with a list of its own rather than by
// recursion, so that no tree can exhaust the stack.
std::string describe(const BooleanExpr& root, const QueryContainer& query) {
    struct Step {
        const BooleanExpr* expr;
        bool nested;
        bool operandsDone;
    };
    std::vector<Step> steps{{&root, false, false}};
    std::vector<std::string> texts;
    while (!steps.empty()) {
        const Step step = steps.back();
        steps.pop_back();
        const BooleanExpr& expr = *step.expr;
        const bool isNot = expr.kind() == BooleanExpr::Kind::notExpr;
        const bool isJoin = expr.kind() == BooleanExpr::Kind::andExpr || expr.kind() == BooleanExpr::Kind::orExpr;
        if (!isNot && !isJoin) {
            texts.push_back(leafText(expr, query));
        } else if (!step.operandsDone) {
            steps.push_back({step.expr, step.nested, true});
            if (isJoin) steps.push_back({&expr.right(), true, false});
            steps.push_back({&expr.left(), true, false});
        } else if (isNot) {
            texts.back() = "NOT " + texts.back();
        } else {
            std::string right = std::move(texts.back());
            texts.pop_back();
            const char* join = expr.kind() == BooleanExpr::Kind::andExpr ? " AND " : " OR ";
            std::string joined = texts.back() + join + right;
            texts.back() = step.nested ? "(" + joined + ")" : std::move(joined);
        }
    }
    return texts.back();
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
    explanation["booleanExpr"] = describe(query.booleanExpr(), query);
    explanation["location"] =
        query.whereLocation() ? nlohmann::ordered_json(query.whereLocation()->locationName) : nullptr;
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
        fmt::print("Unrecognised:   {}  (marked [?...] above)\n",
                   joined(typedTexts(query.invalidCommandAreaWords()), ", "));
    }
    std::string expression = describe(query.booleanExpr(), query);
    fmt::print("Expression:     {}\n", expression.empty() ? "(everything)" : expression);
    fmt::print("Location:       {}\n", query.whereLocation() ? query.whereLocation()->locationName : "(default)");
    fmt::print("Word-based:     {}\n", query.isWordBasedSearch() ? "yes" : "no");
}

// A query refused for its size was not read, so there is nothing to explain:
// the reason and a failing status. Any other refusal is explained in full, and
// the reason follows on standard error.
int runExplain(const ExplainOptions& options) {
    CommandRecogniser parser(standardCommandFactories());
    Preferences& preferences = Preferences::shared();
    QueryPreferences queryPreferences{preferences.boolValue("diacriticInsensitiveSearch"),
                                      preferences.boolValue("showAppsFoundAnywhere")};
    QueryContainer query(options.query, parser, std::nullopt, false, queryPreferences);
    const bool wasRead = !query.allWords().empty() || !query.refusalReason();
    if (wasRead && options.json) {
        // Words that aren't UTF-8 are written with U+FFFD: JSON holds text only.
        std::puts(explanationJSON(query).dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
    } else if (wasRead) {
        printForPerson(query, Terminal::wantsColour(options.color, STDOUT_FILENO));
    }
    if (query.refusalReason()) {
        std::fflush(stdout);
        std::fprintf(stderr, "quester: %s%s\n", wasRead ? "a search would refuse this query: " : "",
                     query.refusalReason()->c_str());
    }
    return wasRead ? ExitStatus::found : ExitStatus::failed;
}

}  // namespace

void addExplainCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<ExplainOptions>();
    CLI::App* explain = app.add_subcommand("explain", "Show how a query is understood, without searching");
    explain->footer(exitStatusHelp);
    explain
        ->add_option("query,--query", options->query,
                     "The query, as typed in the query field; one that begins with a minus word may stand "
                     "anywhere, or after --")
        ->required();
    explain->add_flag("--json", options->json, "Print the explanation as JSON");
    Terminal::addColorOption(*explain, options->color);
    explain->callback([options, &exitStatus] { exitStatus = runExplain(*options); });
}

}  // namespace quester::cli
