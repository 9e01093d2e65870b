#include "content/TarContentSearcher.h"

#include "content/ArchiveFile.h"
#include "content/EntryNameSearch.h"
#include "content/TarArchive.h"
#include "platform/ReadableFile.h"

namespace quester {

bool TarContentSearcher::canSearch(const std::string& path) const {
    return ArchiveFile::conformsTo(path, "public.tar-archive", "tar");
}

std::vector<FoundItem> TarContentSearcher::search(const std::string& path, const std::vector<std::string>& words,
                                                  bool allWords, bool caseSensitive,
                                                  const ContentProgress& progress) const {
    const auto listEntries = [](const std::string& tarPath) {
        const auto file = ReadableFile::open(tarPath);
        return file ? TarArchive::parseFile(*file) : std::vector<TarArchive::Entry>{};
    };
    return EntryNameSearch::inFile(path, words, allWords, caseSensitive, false, progress, listEntries,
                                   [](const TarArchive::Entry& entry, std::string_view name) {
                                       FoundItem item;
                                       item.type = entry.category;
                                       item.title = std::string(name);
                                       item.location = entry.path;
                                       item.size = entry.size;
                                       item.modified = entry.modified;
                                       return item;
                                   });
}

}  // namespace quester
