#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "content/ContentSearcher.h"

namespace quester {

// Searches the rows of SQLite database files: every text of every user
// table, a row at a time, with bounds on tables, rows and text so that a huge
// or hostile file costs little. The file is opened read-only and immutable,
// so a search never writes, locks or replays a journal. Holds no state.
class SQLiteContentSearcher final : public ContentSearcher {
public:
    static constexpr std::size_t maxTables = 2'000;
    static constexpr std::size_t maxRowsPerTable = 200'000;
    // Characters (Unicode scalars) kept of one column.
    static constexpr std::size_t maxColumnCharacters = 4'096;
    // User-perceived characters of a row's title.
    static constexpr std::size_t maxTitleCharacters = 200;
    static constexpr std::size_t rowsBetweenChecks = 1'024;
    static constexpr std::size_t shownRows = 10;
    static constexpr std::string_view moreRowsMessage = "More than 10 rows match. Showing the first 10.";

    // A file named ".sqlite", ".sqlite3" or ".db" that starts with the
    // SQLite header.
    bool canSearch(const std::string& path) const override;
    // The matching rows, at most `shownRows`, followed by a message item
    // when more matched.
    std::vector<FoundItem> search(const std::string& path, const std::vector<std::string>& words, bool allWords,
                                  bool caseSensitive, const ContentProgress& progress) const override;

    // The "file:" URI that opens `path` read-only and immutable, with the
    // characters a URI reserves percent-encoded.
    static std::string immutableURI(std::string_view path);
};

}  // namespace quester
