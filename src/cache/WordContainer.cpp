#include "cache/WordContainer.h"

#include <algorithm>
#include <vector>

#include "cache/DataConvertible.h"
#include "cache/PackedNumbers.h"

namespace quester {

namespace {

std::uint16_t limitedCount(std::uint64_t count) {
    return static_cast<std::uint16_t>(std::min<std::uint64_t>(count, WordContainer::maxCount));
}

std::optional<std::uint32_t> readLength(std::string_view data, std::size_t offset) {
    if (data.size() < offset + 4) return std::nullopt;
    return DataConvertible<std::uint32_t>::fromData(data.substr(offset, 4));
}

}  // namespace

WordContainer::WordContainer(std::string word, std::uint32_t firstDocumentID, std::uint64_t ocurrences)
    : text(std::move(word)) {
    documents[firstDocumentID] = limitedCount(ocurrences);
}

WordContainer::WordContainer(std::string word, std::string loadedData)
    : text(std::move(word)), loadedData(std::move(loadedData)) {}

void WordContainer::load() {
    if (!loadedData) return;
    std::string data = std::move(*loadedData);
    loadedData.reset();
    documents.clear();
    std::optional<std::uint32_t> idsLength = readLength(data, 0);
    if (!idsLength || data.size() - 4 < *idsLength) return;
    std::vector<std::uint32_t> ids = unpackDeltaStored(std::string_view(data).substr(4, *idsLength));
    std::size_t countsOffset = 4 + std::size_t{*idsLength};
    std::optional<std::uint32_t> countsLength = readLength(data, countsOffset);
    if (!countsLength || data.size() - countsOffset - 4 < *countsLength) return;
    std::size_t counts = *countsLength / 2;
    if (*countsLength % 2 != 0 || counts != ids.size()) return;
    for (std::size_t i = 0; i < counts; ++i) {
        std::string_view count = std::string_view(data).substr(countsOffset + 4 + 2 * i, 2);
        documents[ids[i]] = *DataConvertible<std::uint16_t>::fromData(count);
    }
}

const std::map<std::uint32_t, std::uint16_t>& WordContainer::documentIDs() {
    load();
    return documents;
}

std::string WordContainer::packedDocumentIDs() {
    load();
    std::vector<std::uint32_t> ids;
    ids.reserve(documents.size());
    for (const auto& [id, count] : documents) ids.push_back(id);
    return storeDeltaPacked(ids);
}

std::string WordContainer::documentOccurenceCounts() {
    load();
    std::string counts;
    counts.reserve(documents.size() * 2);
    for (const auto& [id, count] : documents) counts += DataConvertible<std::uint16_t>::asData(count);
    return counts;
}

std::string WordContainer::dataToStore() {
    std::string ids = packedDocumentIDs();
    std::string counts = documentOccurenceCounts();
    return DataConvertible<std::uint32_t>::asData(static_cast<std::uint32_t>(ids.size())) + ids +
           DataConvertible<std::uint32_t>::asData(static_cast<std::uint32_t>(counts.size())) + counts;
}

void WordContainer::add(std::uint32_t fileID, std::uint64_t ocurrences) {
    load();
    std::uint64_t added = std::min<std::uint64_t>(ocurrences, maxCount);
    auto found = documents.find(fileID);
    if (found != documents.end())
        found->second = limitedCount(found->second + added);
    else
        documents[fileID] = limitedCount(added + 1);
}

void WordContainer::remove(const std::set<std::uint32_t>& deadIDs) {
    if (deadIDs.empty()) return;
    load();
    for (std::uint32_t id : deadIDs) documents.erase(id);
}

}  // namespace quester
