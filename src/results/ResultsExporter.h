#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/FileSystem.h"
#include "results/ResultDateText.h"
#include "results/UINode.h"
#include "support/Result.h"

namespace quester {

class Preferences;

// Writes listed results to a text file, one row per item under a header:
// comma-separated (", " between fields, spreadsheet formulas defused, quoting
// where needed) or tab-delimited (tabs, line breaks and backslashes escaped).
// UTF-8 without a byte order mark, "\n" line ends; bytes of a name that aren't
// UTF-8 become U+FFFD, so every item gets its row. Not thread-safe; the application runs it on the main loop.
class ResultsExporter {
public:
    enum class Format { text, csv };

    // What the file dialog answers: the chosen path and format, or none
    // when the user cancels. It starts from the remembered name and format.
    struct SaveChoice {
        std::string path;
        Format format = Format::csv;
    };
    using SavePanel = std::function<std::optional<SaveChoice>(const std::string& fileName, Format format)>;

    static constexpr const char* fileNamePreference = "ResultsExporter:FileName";
    static constexpr const char* lastFormatPreference = "ResultsExporter:LastFormat";

    // "CSV", "Text (tab-delimited)".
    static const char* menuTitle(Format format);
    // "csv", "txt".
    static const char* fileExtension(Format format);
    // The name kept in the preferences: "csv", "text".
    static const char* preferenceName(Format format);
    static std::optional<Format> formatFromPreferenceName(const std::string& name);
    // The formats in menu order: CSV first.
    static std::vector<Format> menuFormats();

    // `preferences` must outlive the exporter.
    ResultsExporter(Preferences& preferences, SavePanel savePanel);

    // With `testingPath` writes there as `currentFormat`; otherwise asks the
    // save panel, remembers the chosen name and format, and writes. A cancel
    // writes nothing and is no error.
    Status exportResultsAction(const UINode::NodeList& results, const std::optional<std::string>& testingPath,
                               const ResultDateText& dates);

    // The header and one line per node, as the file holds them.
    static std::string exportedText(Format format, const UINode::NodeList& results, const ResultDateText& dates);
    // Creates or replaces `output` with `exportedText`, in one step: a reader
    // sees the old file or the whole new one. Fails with the system's reason
    // when the file can't be made or written, and then leaves no file behind.
    static Status exportResults(Format format, const UINode::NodeList& results, const std::string& output,
                                const ResultDateText& dates, FileSystem& fileSystem = FileSystem::real());

    // One field after the CSV rules: a leading "=", "+", "-", "@", tab or
    // carriage return gets an apostrophe; a quote, comma or line break puts
    // the field in quotes with its quotes doubled.
    static std::string csvField(const std::string& field);
    // One tab-delimited field: a backslash, tab, line feed or carriage return
    // is written "\\", "\t", "\n" or "\r", so that a field never adds a
    // column or a row.
    static std::string tsvField(const std::string& field);

    Format currentFormat = Format::csv;

private:
    Preferences& preferences;
    SavePanel savePanel;
};

}  // namespace quester
