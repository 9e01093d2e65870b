// Any bytes as a database file: opened read-only and immutable, its tables
// scanned for a few words in each mode. Nothing may crash or hang, and the
// found rows stay within their bounds.

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "content/SQLiteContentSearcher.h"
#include "language/UnicodeText.h"

namespace {

// SQLite opens by path, so each input is written to one file of this
// process, removed when the process ends.
struct DatabaseFile {
    const std::string path = "/tmp/fuzz_sqlite_searcher." + std::to_string(::getpid()) + ".db";
    ~DatabaseFile() { ::unlink(path.c_str()); }
};

const std::string& databasePath() {
    static const DatabaseFile file;
    return file.path;
}

void checkFound(const std::vector<quester::FoundItem>& found) {
    if (found.size() > quester::SQLiteContentSearcher::shownRows + 1) std::abort();
    for (const auto& item : found) {
        if (item.type == quester::FoundItem::Category::message) continue;
        if (item.type != quester::FoundItem::Category::row) std::abort();
        if (quester::graphemeCount(item.title) > static_cast<int>(quester::SQLiteContentSearcher::maxTitleCharacters)) {
            std::abort();
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The header is given, so that every input gets past the first check.
    static constexpr std::string_view header("SQLite format 3\0", 16);
    {
        std::ofstream file(databasePath(), std::ios::binary | std::ios::trunc);
        file.write(header.data(), header.size());
        if (size > header.size()) {
            file.write(reinterpret_cast<const char*>(data) + header.size(),
                       static_cast<std::streamsize>(size - header.size()));
        }
    }
    const quester::SQLiteContentSearcher searcher;
    if (!searcher.canSearch(databasePath())) std::abort();
    const quester::ContentProgress none = quester::ContentProgress::none();
    checkFound(searcher.search(databasePath(), {"a", "É"}, false, false, none));
    checkFound(searcher.search(databasePath(), {"1", "x"}, true, false, none));
    checkFound(searcher.search(databasePath(), {"Ab"}, false, true, none));
    return 0;
}
