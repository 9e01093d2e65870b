#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct z_stream_s;

namespace quester {

// The entry list of a zip file and the decoding of its entries, read by hand
// over bytes the caller holds (a mapping or a buffer that must outlive the
// archive). Only what a search or an import needs: stored and deflated
// entries of a plain (non-ZIP64) archive. Malformed input never throws: it
// gives fewer entries, or an extraction error. A plain value; all functions
// are re-entrant.
class ZipArchive {
public:
    // What an entry stands for, from its Unix mode or its name.
    enum class Category { link, directory, file };

    // Why an entry couldn't be extracted.
    enum class ExtractError { notFound, unsupportedMethod, corrupt, tooLarge, cancelled };

    // One record of the central directory.
    struct Entry {
        std::string path;  // the stored name, with invalid UTF-8 replaced by U+FFFD
        Category category = Category::file;
        std::int64_t modified = 0;  // seconds since 1970 from the DOS stamp, 0 when it has none
        std::uint32_t crc32 = 0;
        std::uint16_t method = 0;
        std::int64_t compressedSize = 0;
        std::int64_t uncompressedSize = 0;
        std::int64_t localHeaderOffset = 0;
    };

    // Reports and the stop flag of long work; both may be empty.
    struct Progress {
        std::function<void(float)> report;
        std::function<bool()> isCancelled;

        void reportPercent(float percent) const {
            if (report) report(percent);
        }
        bool cancelled() const { return isCancelled && isCancelled(); }
    };

    // An entry's decoded bytes, or why there are none.
    struct Extracted {
        std::string bytes;
        std::optional<ExtractError> error;
    };

    // An entry's content read piece by piece, so that a large entry is never
    // held whole. Decodes lazily from the archive's bytes, which must outlive
    // it. Movable, one thread at a time.
    class EntryReader {
    public:
        EntryReader(EntryReader&&) noexcept;
        EntryReader& operator=(EntryReader&&) noexcept;
        ~EntryReader();

        // Fills the front of `into` with the next bytes and gives their count;
        // 0 once the entry is done or has failed (see `error`). Never gives
        // more than the entry's size or the reader's byte cap in total: past
        // the cap it fails with tooLarge, past the size with corrupt. At the
        // end the size and CRC-32 are checked, a mismatch is corrupt.
        std::size_t read(std::span<char> into);
        // Why reading stopped early; none while reading or after a good end.
        std::optional<ExtractError> error() const { return failure; }
        // True once the whole entry was read and checked.
        bool finished() const { return state == State::finished; }
        // Bytes given so far.
        std::uint64_t produced() const { return producedBytes; }

    private:
        friend class ZipArchive;
        enum class State { reading, finished, failed };
        struct StreamDeleter {
            void operator()(z_stream_s* stream) const;
        };

        EntryReader(const Entry& entry, std::string_view compressed, std::uint64_t maxBytes);
        explicit EntryReader(ExtractError error);
        std::size_t decode(char* out, std::size_t room);
        std::size_t copyStored(char* out, std::size_t room);
        std::size_t inflateRaw(char* out, std::size_t room);
        std::size_t probePastCap();
        void accept(const char* bytes, std::size_t count);
        void finish();
        void fail(ExtractError error);

        std::string_view input;
        std::unique_ptr<z_stream_s, StreamDeleter> stream;
        std::uint16_t method = 0;
        std::uint64_t expectedSize = 0;
        std::uint32_t expectedCrc = 0;
        std::uint64_t cap = 0;
        std::uint64_t producedBytes = 0;
        std::uint64_t storedOffset = 0;
        std::uint32_t crc = 0;
        State state = State::reading;
        std::optional<ExtractError> failure;
    };

    // Entries read from one archive at most; parsing stops there quietly.
    static constexpr std::size_t maxEntries = 500'000;
    // The largest entry that is extracted (exactly this size is allowed).
    static constexpr std::uint64_t maxExtractedSize = 2'000'000'000;
    // The size of one round of decoding.
    static constexpr std::size_t inflateBufferSize = 262'144;

    // Parses the central directory of `data`, which must outlive the archive.
    explicit ZipArchive(std::string_view data);

    // The archive's bytes as given.
    std::string_view data() const { return bytes; }
    // The entries in directory order; empty for anything that isn't a plain zip.
    const std::vector<Entry>& entries() const { return entryList; }

    // The directory records of `data`: none for a file without an end record
    // in its last 65,557 bytes, for a ZIP64 marker or a directory that runs
    // past the end; the entries before a damaged record when the walk meets
    // one; at most `maxEntries`.
    static std::vector<Entry> parseCentralDirectory(std::string_view data);
    // The first entry whose path equals `path`, or null.
    const Entry* entry(std::string_view path) const;

    // The whole content of `entry`. Errors in this order: over
    // `maxExtractedSize` tooLarge; cancelled before starting; a local header
    // that is missing or a data range outside the file corrupt; a method other
    // than stored or deflate unsupportedMethod; then any decoding failure
    // (corrupt data, wrong size or CRC-32) or a cancel between rounds.
    Extracted decompress(const Entry& entry, const Progress& progress = {}) const;
    // Gives the content of `entry` to `sink` in rounds of at most
    // `inflateBufferSize` bytes and `maxBytes` in total, reporting after each
    // round; the checks before the first round are those of `decompress`.
    // None after a whole, checked entry; otherwise the error, with the rounds
    // before it already given. A sink answering false, or a cancel
    // between rounds, stops with cancelled. An entry larger than `maxBytes`
    // gives its first `maxBytes` bytes, then tooLarge.
    std::optional<ExtractError> stream(const Entry& entry, std::uint64_t maxBytes,
                                       const std::function<bool(std::string_view)>& sink,
                                       const Progress& progress = {}) const;
    // A reader of `entry` that gives at most `maxBytes` bytes; it has already
    // failed when the entry is over `maxExtractedSize`, its local header is
    // bad or its method unknown.
    EntryReader reader(const Entry& entry, std::uint64_t maxBytes) const;

    // A DOS date and time in the local time zone as seconds since 1970; 0 for
    // a zero date or one that names no real day and time.
    static std::int64_t dosDateToUnix(std::uint16_t date, std::uint16_t time);

private:
    std::string_view bytes;
    std::vector<Entry> entryList;
};

}  // namespace quester
