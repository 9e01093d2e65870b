#include "content/SQLiteContentSearcher.h"

#include <sqlite3.h>
#include <unicode/utf8.h>

#include <array>
#include <memory>
#include <optional>

#include "content/ArchiveFile.h"
#include "content/WordMatcher.h"
#include "language/UnicodeText.h"
#include "support/PathText.h"
#include "support/Utf8Text.h"

namespace quester {

namespace {

constexpr std::string_view header("SQLite format 3\0", 16);

struct DatabaseCloser {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
struct StatementFinalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, DatabaseCloser>;
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

Database openReadOnly(const std::string& path) {
    sqlite3* opened = nullptr;
    const int status = sqlite3_open_v2(SQLiteContentSearcher::immutableURI(path).c_str(), &opened,
                                       SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, nullptr);
    Database database(opened);
    if (status != SQLITE_OK) return nullptr;
    // The file is anyone's: its schema must not run functions with side effects.
    sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    return database;
}

Statement prepare(sqlite3* database, const std::string& sql) {
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(database, sql.c_str(), -1, &prepared, nullptr) != SQLITE_OK) {
        sqlite3_finalize(prepared);
        return nullptr;
    }
    return Statement(prepared);
}

std::vector<std::string> userTables(sqlite3* database) {
    std::vector<std::string> tables;
    const Statement statement =
        prepare(database, "SELECT name FROM sqlite_master WHERE type='table' AND name NOT LIKE 'sqlite_%'");
    if (!statement) return tables;
    while (tables.size() < SQLiteContentSearcher::maxTables && sqlite3_step(statement.get()) == SQLITE_ROW) {
        const auto* name = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 0));
        if (name != nullptr) tables.emplace_back(name);
    }
    return tables;
}

std::string quotedName(std::string_view name) {
    std::string quoted = "\"";
    for (const char c : name) {
        quoted += c;
        if (c == '"') quoted += '"';
    }
    return quoted + "\"";
}

// The first `count` Unicode scalars of `text`.
std::string_view leadingScalars(std::string_view text, std::size_t count) {
    if (text.size() <= count) return text;
    std::int32_t offset = 0;
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::size_t taken = 0; taken < count && offset < length; ++taken) U8_FWD_1(text.data(), offset, length);
    return text.substr(0, static_cast<std::size_t>(offset));
}

std::string rowTitle(std::string_view text) {
    std::string repaired = repairedUTF8(trimmedWhitespace(text));
    const std::vector<std::string_view> characters = graphemes(repaired);
    if (characters.size() <= SQLiteContentSearcher::maxTitleCharacters) return repaired;
    const std::string_view last = characters[SQLiteContentSearcher::maxTitleCharacters - 1];
    return repaired.substr(0, static_cast<std::size_t>(last.data() + last.size() - repaired.data()));
}

// One table's rows tested against the words, the first hits added to `found`.
class TableScan {
public:
    TableScan(sqlite3* database, const std::string& table, const WordMatcher& matcher)
        : table(table), matcher(matcher) {
        statement = prepare(database, "SELECT rowid, * FROM " + quotedName(table));
        if (!statement) statement = prepare(database, "SELECT * FROM " + quotedName(table));
    }

    void run(const ContentProgress& progress, std::vector<FoundItem>& found) {
        if (!statement) return;
        for (std::size_t row = 0; row < SQLiteContentSearcher::maxRowsPerTable && found.size() <= shownLimit; ++row) {
            if (row % SQLiteContentSearcher::rowsBetweenChecks == 0 && progress.cancelled()) return;
            if (sqlite3_step(statement.get()) != SQLITE_ROW) return;
            if (auto item = matchingRow()) found.push_back(std::move(*item));
        }
    }

private:
    static constexpr std::size_t shownLimit = SQLiteContentSearcher::shownRows;

    std::optional<FoundItem> matchingRow() {
        sqlite3_stmt* row = statement.get();
        std::string text;
        std::string preparedText;
        std::optional<std::string_view> matchedText;
        const char* matchedName = nullptr;
        const int columns = sqlite3_column_count(row);
        for (int column = 0; column < columns; ++column) {
            if (sqlite3_column_type(row, column) == SQLITE_BLOB) continue;
            const auto* value = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
            const std::string_view cut = leadingScalars(
                value ? std::string_view(value, static_cast<std::size_t>(sqlite3_column_bytes(row, column)))
                      : std::string_view{},
                SQLiteContentSearcher::maxColumnCharacters);
            const std::string prepared = matcher.prepared(cut);
            if (!matchedText && matcher.matchesPrepared(prepared)) {
                matchedText = cut;
                matchedName = sqlite3_column_name(row, column);
            }
            text.append(cut).append("\n");
            preparedText.append(prepared).append("\n");
        }
        if (!matcher.matchesPrepared(preparedText)) return std::nullopt;
        FoundItem item;
        item.type = FoundItem::Category::row;
        item.title = rowTitle(matchedText ? *matchedText : text);
        item.entry = matchedName ? repairedUTF8(matchedName) : std::string();
        item.location = table + " [row " + std::to_string(sqlite3_column_int64(row, 0)) + "]";
        return item;
    }

    const std::string& table;
    const WordMatcher& matcher;
    Statement statement;
};

}  // namespace

bool SQLiteContentSearcher::canSearch(const std::string& path) const {
    const std::string extension = ArchiveFile::lowercasedExtension(path);
    if (extension != "sqlite" && extension != "sqlite3" && extension != "db") return false;
    const auto start = ArchiveFile::readPrefix(path, header.size());
    return start && *start == header;
}

std::vector<FoundItem> SQLiteContentSearcher::search(const std::string& path, const std::vector<std::string>& words,
                                                     bool allWords, bool caseSensitive,
                                                     const ContentProgress& progress) const {
    const WordMatcher matcher(words, allWords, caseSensitive);
    if (!matcher.hasWords()) return {};
    std::vector<FoundItem> found;
    {
        const Database database = openReadOnly(path);
        if (!database) return {};
        const std::vector<std::string> tables = userTables(database.get());
        for (std::size_t index = 0; index < tables.size(); ++index) {
            if (progress.cancelled() || found.size() > shownRows) break;
            progress.reportPercentage(static_cast<float>(index) / static_cast<float>(tables.size()) * 100);
            TableScan(database.get(), tables[index], matcher).run(progress, found);
        }
    }
    if (found.size() > shownRows) {
        found.resize(shownRows);
        FoundItem message;
        message.type = FoundItem::Category::message;
        message.title = std::string(moreRowsMessage);
        found.push_back(std::move(message));
    }
    return found;
}

std::string SQLiteContentSearcher::immutableURI(std::string_view path) {
    static constexpr std::array<char, 16> hexDigits{'0', '1', '2', '3', '4', '5', '6', '7',
                                                    '8', '9', 'A', 'B', 'C', 'D', 'E', 'F'};
    // "file:" and a path that starts with "//" would read as a host name;
    // an empty host in front keeps every absolute path a path.
    std::string uri = path.starts_with('/') ? "file://" : "file:";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                           (byte >= '0' && byte <= '9') || byte == '/' || byte == '-' || byte == '.' || byte == '_' ||
                           byte == '~';
        if (plain) {
            uri += c;
        } else {
            uri += '%';
            uri += hexDigits[byte >> 4];
            uri += hexDigits[byte & 0xF];
        }
    }
    return uri + "?immutable=1";
}

}  // namespace quester
