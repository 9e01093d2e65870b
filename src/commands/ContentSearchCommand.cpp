#include "commands/ContentSearchCommand.h"

#include <algorithm>

namespace quester {

namespace {

// The template's flags that are switched on, as flag values.
std::vector<ContentSearchFlag> templateFlags(const TemplateFlags& flags) {
    std::vector<ContentSearchFlag> found;
    for (const auto& [key, value] : flags) {
        auto flag = contentSearchFlagFromName(key);
        if (flag && value == "1") found.push_back(*flag);
    }
    return found;
}

bool holds(const std::vector<ContentSearchFlag>& flags, ContentSearchFlag flag) {
    return std::find(flags.begin(), flags.end(), flag) != flags.end();
}

// A list typed with its own quotes keeps them, escaped, inside the outer ones.
std::string escapeQuotes(const std::string& words) {
    if (words.size() >= 2 && words.front() == '"' && words.back() == '"') {
        return "\\\"" + words.substr(1, words.size() - 2) + "\\\"";
    }
    return words;
}

}  // namespace

CommandPtr ContentSearchCommand::create(std::string_view commandName, const VariableArguments& args,
                                        const TemplateFlags& flags) {
    if (commandName != "textContent") return nullptr;
    const auto* words = argumentAt<SentenceComponent>(args, 0);
    if (!words) return nullptr;
    auto options = templateFlags(flags);
    std::string excluded;
    size_t flagListIndex = 1;
    if (holds(options, ContentSearchFlag::without)) {
        const auto* without = argumentAt<SentenceComponent>(args, 1);
        if (!without) return nullptr;
        excluded = without->textOriginalCase;
        flagListIndex = 2;
    }
    if (const auto* listed = argumentAt<std::vector<ContentSearchFlag>>(args, flagListIndex)) {
        options.insert(options.end(), listed->begin(), listed->end());
    }
    return std::make_shared<ContentSearchCommand>(words->textOriginalCase, excluded, options);
}

ContentSearchCommand::ContentSearchCommand(std::string wordsToSearchFor, std::string wordsToExclude,
                                           const std::vector<ContentSearchFlag>& flags)
    : wordsToSearchForString(std::move(wordsToSearchFor)),
      wordsToExcludeString(std::move(wordsToExclude)),
      allWords(holds(flags, ContentSearchFlag::allWords)),
      caseSensitive(holds(flags, ContentSearchFlag::caseSensitive)),
      wholeWord(holds(flags, ContentSearchFlag::wholeWords)),
      searchBinaryFiles(holds(flags, ContentSearchFlag::allFiles)),
      useOCR(holds(flags, ContentSearchFlag::useOCR)) {}

std::string ContentSearchCommand::commandToText(bool example) const {
    std::string words = escapeQuotes(wordsToSearchForString);
    std::string text = "content " + (example ? "\"**" + words + "**\"" : "\"" + words + "\"");
    if (!wordsToExcludeString.empty()) text += " without \"" + wordsToExcludeString + "\"";
    if (wholeWord) text += " whole words";
    if (allWords) text += " all words";
    if (searchBinaryFiles) text += " all files";
    if (useOCR) text += " use OCR";
    if (caseSensitive) text += " case sensitive";
    return text;
}

}  // namespace quester
