#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "content/ContentProgress.h"
#include "platform/FileSystem.h"
#include "platform/ReadableFile.h"
#include "query/FoundItem.h"

namespace quester {

// The entry list of a tar file and the bytes of its entries, read by hand
// over bytes the caller holds (they must outlive the archive): ustar, GNU
// long names and pax path records. Malformed input never throws: the walk
// stops and the entries before the damage stand. A plain value; all
// functions are re-entrant.
class TarArchive {
public:
    // Why an entry couldn't be extracted; `unwritable` when the target can't be written.
    enum class ExtractError { notFound, corrupt, tooLarge, cancelled, unwritable };

    struct Entry {
        std::string path;  // with invalid UTF-8 replaced by U+FFFD
        FoundItem::Category category = FoundItem::Category::file;
        std::uint64_t size = 0;
        std::int64_t modified = 0;  // seconds since 1970, 0 when unreadable
        std::int64_t dataOffset = 0;
    };

    // An entry's bytes inside the archive, or why they can't be had.
    struct Contents {
        std::string_view bytes;
        std::optional<ExtractError> error;
    };

    static constexpr std::size_t blockSize = 512;
    // Entries read from one archive at most; parsing stops there quietly.
    static constexpr std::size_t maxEntries = 500'000;
    // The longest GNU long name kept, in bytes.
    static constexpr std::size_t maxLongNameBytes = 8'192;
    // The largest entry that is extracted (exactly this size is allowed).
    static constexpr std::uint64_t maxExtractedSize = 2'000'000'000;

    explicit TarArchive(std::string_view data);

    std::string_view data() const { return bytes; }
    const std::vector<Entry>& entries() const { return entryList; }

    // The entries of `data`: a walk over 512-byte headers that passes over a
    // lone block of zeros, ends at two in a row, at a header whose size can't
    // be read, at the end of the data or after `maxEntries`.
    static std::vector<Entry> parseBlocks(std::string_view data);
    // The same walk over a file, reading the headers (and the name records)
    // where they lie and passing over the entries' data, so an archive of any
    // size is listed in little memory.
    static std::vector<Entry> parseFile(const ReadableFile& file);
    // The first entry whose path equals `path`, or null.
    const Entry* entry(std::string_view path) const;
    // The bytes of `entry`: tooLarge over `maxBytes`, corrupt when they run
    // past the end of the data.
    Contents contents(const Entry& entry, std::uint64_t maxBytes = maxExtractedSize) const;

    // Writes the entry at `entryPath` of the tar file `from` to `to`, copied
    // from the file a round at a time, then gives its "._" sidecar, if the
    // archive holds one whole, to AppleDouble.
    // Errors in this order: cancelled; corrupt when the file can't be read;
    // notFound; tooLarge; corrupt when the data run past the end; unwritable.
    static std::optional<ExtractError> extract(const std::string& from, const std::string& entryPath,
                                               const std::string& to,
                                               const ContentProgress& progress = ContentProgress::none(),
                                               FileSystem& fileSystem = FileSystem::real());
    // The sidecar beside `entryPath` ("a/._b" for "a/b"); none for a folder
    // or for a sidecar itself.
    static std::optional<std::string> sidecarPath(std::string_view entryPath);
    // A number field: base-256 when the first byte has bit 7 set, else octal
    // digits with zero bytes and blanks passed over; none for any other byte
    // or a value beyond the signed 64-bit range.
    static std::optional<std::int64_t> octal(std::string_view field);
    // The bytes up to the first zero, as repaired UTF-8.
    static std::string cString(std::string_view field);
    // Whether the header carries the POSIX "ustar\0" magic.
    static bool isPosixUstar(std::string_view header);
    // The "path" value of pax extended header records ("<length> <key>=<value>\n");
    // none when no record before the first malformed one names a path.
    static std::optional<std::string> paxPath(std::string_view records);

private:
    std::string_view bytes;
    std::vector<Entry> entryList;
};

}  // namespace quester
