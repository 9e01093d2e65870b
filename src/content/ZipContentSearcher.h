#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "content/ContentSearcher.h"
#include "platform/FileSystem.h"

namespace quester {

// Searches zip files by entry name and extracts single entries, over the
// zip reader of the import layer. Holds no state.
class ZipContentSearcher final : public ContentSearcher {
public:
    // Why an entry couldn't be extracted; `unwritable` when the target can't be written.
    enum class ExtractError { notFound, unsupportedMethod, corrupt, tooLarge, cancelled, unwritable };

    // A file whose type conforms to zip (a jar too), or named ".zip".
    bool canSearch(const std::string& path) const override;
    std::vector<FoundItem> search(const std::string& path, const std::vector<std::string>& words, bool allWords,
                                  bool caseSensitive, const ContentProgress& progress) const override;

    // Writes the entry at `entryPath` of the zip file `from` to `to`, then
    // gives its sidecar in "__MACOSX/", if the archive holds a good one, to
    // AppleDouble. Errors in this order: corrupt when the file can't be read;
    // notFound; then those of decoding; unwritable.
    static std::optional<ExtractError> extract(const std::string& from, const std::string& entryPath,
                                               const std::string& to,
                                               const ContentProgress& progress = ContentProgress::none(),
                                               FileSystem& fileSystem = FileSystem::real());
    // Where an archiver keeps the sidecar of `entryPath`: "__MACOSX/a/._b" for
    // "a/b"; none for what lies in "__MACOSX/" already and for a folder.
    static std::optional<std::string> sidecarPath(std::string_view entryPath);
};

}  // namespace quester
