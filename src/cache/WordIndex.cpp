#include "cache/WordIndex.h"

#include <algorithm>

#include "cache/PackedNumbers.h"

namespace quester {

namespace {

constexpr const char* wordGroup = "W";
constexpr const char* deadGroup = "K";
constexpr const char* deadKey = "dead";

}  // namespace

std::optional<WordContainer> WordIndex::findExact(const std::string& word) {
    Result<std::optional<std::string>> data = store.get<std::string>(wordGroup, word);
    if (!data || !*data) return std::nullopt;
    WordContainer container(word, std::move(**data));
    container.load();
    return container;
}

Status WordIndex::write(std::vector<WordContainer*> containers, bool purgeDeadIds) {
    if (purgeDeadIds) {
        Result<std::vector<std::uint32_t>> dead = loadDeadIds();
        if (!dead) return dead.error();
        std::set<std::uint32_t> deadSet(dead->begin(), dead->end());
        for (WordContainer* container : containers) container->remove(deadSet);
    }
    std::vector<ValueGroupKey> items;
    items.reserve(containers.size());
    for (WordContainer* container : containers)
        if (container->word().size() <= longestWord)
            items.push_back({container->dataToStore(), wordGroup, container->word()});
    return store.put(items);
}

Result<std::vector<std::uint32_t>> WordIndex::loadDeadIds() {
    Result<std::optional<std::string>> data = store.get<std::string>(deadGroup, deadKey);
    if (!data) return data.error();
    if (!*data) return std::vector<std::uint32_t>();
    return unpackStored(**data);
}

Status WordIndex::saveDeadIds(const std::vector<std::uint32_t>& ids) {
    std::vector<std::uint32_t> unique = ids;
    std::sort(unique.begin(), unique.end());
    unique.erase(std::unique(unique.begin(), unique.end()), unique.end());
    return store.put(storePacked(unique), deadGroup, deadKey);
}

Status WordIndex::appendDeadIds(const std::vector<std::uint32_t>& ids) {
    if (ids.empty()) return Status::success();
    Result<std::vector<std::uint32_t>> dead = loadDeadIds();
    if (!dead) return dead.error();
    dead->insert(dead->end(), ids.begin(), ids.end());
    return saveDeadIds(*dead);
}

Status WordIndex::purgeWordContainers() {
    Result<std::vector<std::uint32_t>> dead = loadDeadIds();
    if (!dead) return dead.error();
    if (dead->size() <= purgeThreshold) return Status::success();
    std::set<std::uint32_t> deadSet(dead->begin(), dead->end());
    std::vector<WordContainer> collected;
    auto flush = [&]() {
        std::vector<WordContainer*> pointers;
        for (WordContainer& container : collected) pointers.push_back(&container);
        Status written = write(pointers, false);
        collected.clear();
        return written;
    };
    std::string lastKey;
    while (true) {
        store.lock().wait();
        auto batch = store.db()->nextKeyValueBatch(lastKey, wordGroup, walkBatch);
        store.lock().signal();
        if (!batch) return batch.error();
        if (!*batch) break;
        for (auto& [key, value] : **batch) {
            collected.emplace_back(key.substr(1), std::move(value));
            collected.back().remove(deadSet);
            if (collected.size() >= purgeWriteBatch)
                if (Status written = flush(); !written) return written;
        }
    }
    return flush();
}

Result<std::vector<std::string>> WordIndex::allWords() {
    std::vector<std::string> words;
    std::string lastKey;
    while (store.db()) {
        store.lock().wait();
        auto batch = store.db()->nextKeyValueBatch(lastKey, wordGroup, walkBatch);
        store.lock().signal();
        if (!batch) return batch.error();
        if (!*batch) break;
        for (const auto& [key, value] : **batch) words.push_back(key.substr(1));
    }
    return words;
}

}  // namespace quester
