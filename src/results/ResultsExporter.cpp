#include "results/ResultsExporter.h"

#include <algorithm>
#include <array>

#include "platform/AtomicFile.h"
#include "results/DisplayText.h"
#include "stores/Preferences.h"
#include "support/PathText.h"
#include "support/Utf8Text.h"

namespace quester {

namespace {

constexpr std::array<const char*, 7> headerNames{"name",          "path", "size",       "mod date",
                                                 "creation date", "kind", "parent name"};

std::string dateField(std::int64_t seconds, const ResultDateText& dates) {
    std::string text = dates.dateToString(seconds);
    std::replace(text.begin(), text.end(), ',', ' ');
    return text;
}

std::vector<std::string> rowFields(const UINode& node, const ResultDateText& dates) {
    const UINode::Changable changes = node.dynamic();
    return {std::string(node.fileName()),
            node.fileURL().path(),
            std::to_string(changes.totalSize),
            dateField(node.modificationDate, dates),
            dateField(node.creationDate, dates),
            changes.displayKind,
            node.displayInside()};
}

std::string joinedLine(const std::vector<std::string>& fields, ResultsExporter::Format format) {
    const char* separator = format == ResultsExporter::Format::csv ? ", " : "\t";
    std::string line;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (i > 0) line += separator;
        const std::string text = withReplacementCharacters(fields[i]);
        line +=
            format == ResultsExporter::Format::csv ? ResultsExporter::csvField(text) : ResultsExporter::tsvField(text);
    }
    return line + "\n";
}

}  // namespace

const char* ResultsExporter::menuTitle(Format format) {
    return format == Format::csv ? "CSV" : "Text (tab-delimited)";
}

const char* ResultsExporter::fileExtension(Format format) {
    return format == Format::csv ? "csv" : "txt";
}

const char* ResultsExporter::preferenceName(Format format) {
    return format == Format::csv ? "csv" : "text";
}

std::optional<ResultsExporter::Format> ResultsExporter::formatFromPreferenceName(const std::string& name) {
    if (name == "csv") return Format::csv;
    if (name == "text") return Format::text;
    return std::nullopt;
}

std::vector<ResultsExporter::Format> ResultsExporter::menuFormats() {
    return {Format::csv, Format::text};
}

ResultsExporter::ResultsExporter(Preferences& preferences, SavePanel savePanel)
    : preferences(preferences), savePanel(std::move(savePanel)) {}

std::string ResultsExporter::csvField(const std::string& field) {
    static const std::string formulaStarts = "=+-@\t\r";
    std::string safe = field;
    if (!safe.empty() && formulaStarts.find(safe.front()) != std::string::npos) safe.insert(0, "'");
    if (safe.find_first_of("\",\n\r") == std::string::npos) return safe;
    std::string quoted = "\"";
    for (char c : safe) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + "\"";
}

std::string ResultsExporter::tsvField(const std::string& field) {
    if (field.find_first_of("\\\t\n\r") == std::string::npos) return field;
    std::string escaped;
    for (char c : field) {
        switch (c) {
            case '\\':
                escaped += "\\\\";
                break;
            case '\t':
                escaped += "\\t";
                break;
            case '\n':
                escaped += "\\n";
                break;
            case '\r':
                escaped += "\\r";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

Status ResultsExporter::exportResultsAction(const UINode::NodeList& results,
                                            const std::optional<std::string>& testingPath,
                                            const ResultDateText& dates) {
    if (testingPath) return exportResults(currentFormat, results, *testingPath, dates);
    const std::string fileName = preferences.stringValue(fileNamePreference).value_or("Results.csv");
    const auto remembered = preferences.stringValue(lastFormatPreference);
    if (remembered) currentFormat = formatFromPreferenceName(*remembered).value_or(currentFormat);
    const auto choice = savePanel ? savePanel(fileName, currentFormat) : std::nullopt;
    if (!choice) return Status::success();
    currentFormat = choice->format;
    const Status stored = preferences.setValues({{fileNamePreference, lastPathComponent(choice->path)},
                                                 {lastFormatPreference, preferenceName(choice->format)}});
    if (!stored) return stored;
    return exportResults(choice->format, results, choice->path, dates);
}

std::string ResultsExporter::exportedText(Format format, const UINode::NodeList& results, const ResultDateText& dates) {
    std::string text = joinedLine({headerNames.begin(), headerNames.end()}, format);
    for (const auto& node : results) text += joinedLine(rowFields(*node, dates), format);
    return text;
}

Status ResultsExporter::exportResults(Format format, const UINode::NodeList& results, const std::string& output,
                                      const ResultDateText& dates, FileSystem& fileSystem) {
    return replaceFileAtomically(output, exportedText(format, results, dates), fileSystem, 0644, MissingFolder::fail);
}

}  // namespace quester
