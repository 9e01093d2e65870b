#include "TextCommand.h"

#include <fmt/core.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "import/ImportTextXPC.h"
#include "results/DisplayText.h"

#include "ExitStatus.h"
#include "Terminal.h"

namespace quester::cli {
namespace {

struct TextOptions {
    std::vector<std::string> files;
    bool ocr = false;
    bool words = false;
    std::string format = "text";
};

// What one file gave: its text or words, or the reason it gave nothing.
struct FileOutcome {
    std::optional<Error> error;
    std::optional<ImportTextResult> result;
    std::optional<WordCounts> words;

    bool hasText(bool useOCR) const {
        if (words) return !words->empty();
        return result && result->allText(useOCR).has_value();
    }
};

// Lines and tabs pass; every other control character, which could move the
// cursor or recolour the screen, is shown as "?".
std::string terminalSafeDocumentText(std::string_view text) {
    std::string safe;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find_first_of("\n\t", start);
        if (end == std::string_view::npos) end = text.size();
        safe += terminalSafeText(text.substr(start, end - start));
        if (end < text.size()) safe += text[end];
        start = end + 1;
    }
    return safe;
}

std::vector<std::pair<std::string, std::uint32_t>> mostFrequentFirst(const WordCounts& words) {
    std::vector<std::pair<std::string, std::uint32_t>> sorted(words.begin(), words.end());
    std::sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) {
        return a.second != b.second ? a.second > b.second : a.first < b.first;
    });
    return sorted;
}

nlohmann::json pageTexts(const std::optional<ImportTextPages>& pages) {
    auto texts = nlohmann::json::array();
    for (const auto& page : pages.value_or(ImportTextPages{})) texts.push_back(page.text);
    return texts;
}

nlohmann::ordered_json jsonRecord(const std::string& path, const FileOutcome& outcome) {
    nlohmann::ordered_json record{{"path", path}};
    if (outcome.words) {
        auto words = nlohmann::ordered_json::array();
        for (const auto& [word, count] : mostFrequentFirst(*outcome.words)) {
            words.push_back({{"word", word}, {"count", count}});
        }
        record["words"] = words;
        return record;
    }
    record["text"] = pageTexts(outcome.result ? outcome.result->text : std::nullopt);
    record["ocrText"] = pageTexts(outcome.result ? outcome.result->ocrText : std::nullopt);
    return record;
}

std::string plainOutput(const FileOutcome& outcome, bool useOCR) {
    if (outcome.words) {
        std::string lines;
        for (const auto& [word, count] : mostFrequentFirst(*outcome.words))
            lines += fmt::format("{}\t{}\n", count, word);
        return lines;
    }
    auto text = outcome.result ? outcome.result->allText(useOCR) : std::nullopt;
    if (!text) return {};
    return text->empty() || text->back() == '\n' ? *text : *text + "\n";
}

FileOutcome readFile(ImportTextXPC& service, const std::string& path, const TextOptions& options) {
    FileOutcome outcome;
    if (options.words) {
        auto [error, words] = service.wordsInFile(path, options.ocr);
        outcome.error = error;
        outcome.words = words.value_or(WordCounts{});
        return outcome;
    }
    service.importText(path, false, INT64_MAX, options.ocr, {}, [&](auto error, auto result) {
        outcome.error = std::move(error);
        outcome.result = std::move(result);
    });
    return outcome;
}

void printOutcome(const std::string& path, const FileOutcome& outcome, const TextOptions& options, bool withHeader) {
    if (options.format == "json") {
        std::fputs(
            (jsonRecord(path, outcome).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n")
                .c_str(),
            stdout);
        return;
    }
    bool onTerminal = Terminal::isTerminal(STDOUT_FILENO);
    std::string text = plainOutput(outcome, options.ocr);
    if (withHeader) {
        std::string shown = onTerminal ? terminalSafeText(path) : path;
        std::fputs(fmt::format("==> {} <==\n", shown).c_str(), stdout);
    }
    std::fputs((onTerminal ? terminalSafeDocumentText(text) : text).c_str(), stdout);
}

int runText(const TextOptions& options) {
    ImportTextXPC& service = ImportTextXPC::shared();
    bool anyText = false;
    bool anyError = false;
    for (const auto& path : options.files) {
        FileOutcome outcome = readFile(service, path, options);
        if (outcome.error) {
            std::fprintf(stderr, "quester: %s\n", outcome.error->message.c_str());
            anyError = true;
            continue;
        }
        anyText = anyText || outcome.hasText(options.ocr);
        printOutcome(path, outcome, options, options.files.size() > 1);
    }
    std::fflush(stdout);
    if (anyError) return ExitStatus::failed;
    return anyText ? ExitStatus::found : ExitStatus::nothingFound;
}

}  // namespace

void addTextCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<TextOptions>();
    CLI::App* command = app.add_subcommand("text", "Print the text of documents as Quester reads them");
    command->add_option("files", options->files, "Documents: PDF, office files, HTML, RTF, plain text, images")
        ->required();
    command->add_flag("--ocr", options->ocr, "Also recognise text in images and in the pages of PDFs");
    command->add_flag("--words", options->words, "Print each word with its count, most frequent first");
    command
        ->add_option("--format", options->format, "text, or json: one {\"path\", \"text\", \"ocrText\"} record a line")
        ->check(CLI::IsMember({"text", "json"}));
    command->footer("Exit status: 0 a document gave text, 1 the documents gave none, 2 a file couldn't be read.");
    command->callback([options, &exitStatus] { exitStatus = runText(*options); });
}

}  // namespace quester::cli
