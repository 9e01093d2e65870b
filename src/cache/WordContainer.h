#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace quester {

// One word and the documents that hold it, each with how often (at most
// 65535, which then means that many or more). Read from the store it stays
// undecoded until something needs its documents. One thread at a time.
class WordContainer {
public:
    static constexpr std::uint32_t maxCount = 65535;

    // A container with one document.
    WordContainer(std::string word, std::uint32_t firstDocumentID, std::uint64_t ocurrences);
    // A container over its stored form, decoded on first use.
    WordContainer(std::string word, std::string loadedData);

    const std::string& word() const { return text; }
    // Decodes the stored form if there is one. A form whose parts don't agree
    // (or that is cut short) reads as a word without documents.
    void load();
    const std::map<std::uint32_t, std::uint16_t>& documentIDs();

    // The stored form: {ids length LE32, delta-packed ids, counts length LE32, LE16 counts}.
    std::string dataToStore();
    std::string packedDocumentIDs();
    std::string documentOccurenceCounts();

    // A document already present adds to its count; a new one counts one more
    // than `ocurrences`. Both stop at 65535.
    void add(std::uint32_t fileID, std::uint64_t ocurrences);
    // Drops the given documents; an empty set leaves the container undecoded.
    void remove(const std::set<std::uint32_t>& deadIDs);

    bool operator==(const WordContainer& other) const { return text == other.text; }
    bool operator<(const WordContainer& other) const { return text < other.text; }

private:
    std::string text;
    std::optional<std::string> loadedData;
    std::map<std::uint32_t, std::uint16_t> documents;
};

}  // namespace quester
