#include "cache/NameIndex.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "cache/DataConvertible.h"
#include "cache/FSItem.h"
#include "cache/PackedNumbers.h"
#include "language/BooleanExpr.h"
#include "language/UnicodeText.h"
#include "query/QueryContainer.h"
#include "support/Utf8Text.h"

namespace quester {

namespace {

using Ids = std::vector<std::uint32_t>;

bool startsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

// Calls `each` with every run of three characters, in order, repeats included.
template <typename Each>
void forEachTrigram(std::string_view text, Each&& each) {
    std::size_t starts[4] = {0, 0, 0, 0};
    std::size_t seen = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size() && !startsCharacter(text[i])) continue;
        starts[seen % 4] = i;
        if (++seen >= 4) {
            const std::size_t first = starts[(seen - 4) % 4];
            each(text.substr(first, i - first));
        }
    }
}

Ids merged(const Ids& a, const Ids& b) {
    Ids both;
    both.reserve(a.size() + b.size());
    std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(both));
    return both;
}

Ids common(const Ids& a, const Ids& b) {
    Ids both;
    std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(both));
    return both;
}

// Reads postings and narrows a query's name expression down to identifiers.
class CandidateSearch {
public:
    CandidateSearch(SimpleLMDB& store, bool caseSensitive) : store(store), caseSensitive(caseSensitive) {}

    // None for "any item may match".
    Result<std::optional<Ids>> of(const BooleanExpr& expression) {
        switch (expression.kind()) {
            case BooleanExpr::Kind::word:
                return ofWord(expression.wordValue());
            case BooleanExpr::Kind::andExpr:
                return ofBoth(expression, false);
            case BooleanExpr::Kind::orExpr:
                return ofBoth(expression, true);
            default:
                return std::optional<Ids>();
        }
    }

private:
    Result<std::optional<Ids>> ofBoth(const BooleanExpr& expression, bool either) {
        Result<std::optional<Ids>> left = of(expression.left());
        if (!left) return left;
        Result<std::optional<Ids>> right = of(expression.right());
        if (!right) return right;
        if (either) {
            if (!*left || !*right) return std::optional<Ids>();
            return std::optional<Ids>(merged(**left, **right));
        }
        if (!*left) return right;
        if (!*right) return left;
        return std::optional<Ids>(common(**left, **right));
    }

    // A name that holds the word holds its lowercase form. Lowercasing a word
    // that isn't ASCII may depend on what surrounds it (a final sigma), so
    // such a word, matched with case, narrows nothing.
    Result<std::optional<Ids>> ofWord(const BooleanWord& word) {
        if (caseSensitive && !isASCII(word.textOriginalCase)) return std::optional<Ids>();
        const std::vector<std::string> trigrams = NameIndex::trigramsOf(word.textLowered);
        if (trigrams.empty()) return std::optional<Ids>();
        std::optional<Ids> found;
        for (const std::string& trigram : trigrams) {
            Result<std::optional<std::string>> stored = store.get<std::string>(NameIndex::group, trigram);
            if (!stored) return stored.error();
            const Ids ids = *stored ? unpackDeltaStored(**stored) : Ids();
            // Bytes that are no packed list read as none: a damaged posting
            // must not hide the names it should hold.
            if (*stored && !(*stored)->empty() && ids.empty())
                return makeError(ErrorCode::corrupt, "the posting of \"" + trigram + "\" is damaged");
            found = found ? common(*found, ids) : ids;
            if (found->empty()) break;
        }
        return found;
    }

    SimpleLMDB& store;
    const bool caseSensitive;
};

}  // namespace

std::string NameIndex::comparedForm(std::string_view name) {
    return lowercased(name);
}

std::vector<std::string> NameIndex::trigramsOf(std::string_view text) {
    std::vector<std::string> trigrams;
    forEachTrigram(text, [&](std::string_view trigram) {
        if (std::find(trigrams.begin(), trigrams.end(), trigram) == trigrams.end()) trigrams.emplace_back(trigram);
    });
    return trigrams;
}

std::uint64_t NameIndex::packedKey(std::string_view trigram) {
    std::uint64_t key = 0;
    for (std::size_t i = 0; i < trigram.size(); ++i)
        key |= std::uint64_t{static_cast<unsigned char>(trigram[i])} << (56 - 8 * i);
    return key;
}

// A name holds no zero byte, so the first one ends the trigram.
std::string NameIndex::unpackedKey(std::uint64_t key) {
    std::string trigram;
    for (int shift = 56; shift >= 0 && ((key >> shift) & 0xFF) != 0; shift -= 8)
        trigram += static_cast<char>((key >> shift) & 0xFF);
    return trigram;
}

std::vector<std::uint32_t>& NameIndex::postingsOf(std::string_view trigram) {
    if (trigram.size() <= sizeof(std::uint64_t)) return shortPostings[packedKey(trigram)];
    return longPostings[std::string(trigram)];
}

// Each trigram once per name: a repeated one finds the name already last in
// its list.
void NameIndex::add(std::uint32_t id, std::string_view name) {
    thread_local std::string compared;
    lowercaseInto(name, compared);
    forEachTrigram(compared, [&](std::string_view trigram) {
        std::vector<std::uint32_t>& ids = postingsOf(trigram);
        if (!ids.empty() && ids.back() == id) return;
        ids.push_back(id);
        ++pending;
    });
}

Status NameIndex::addEveryRecord(SimpleLMDB& store) {
    constexpr std::size_t walkBatch = 2500;
    std::string lastKey;
    while (store.isOpen()) {
        store.lock().wait();
        auto batch = store.db()->nextKeyValueBatch(lastKey, "F", walkBatch);
        store.lock().signal();
        if (!batch) return batch.error();
        if (!*batch) break;
        for (const auto& [key, value] : **batch) {
            std::uint32_t id = 0;
            const auto digits = std::string_view(key).substr(1);
            // The counter "private.lastAutoID" shares the group and reads as no number.
            const auto [end, failed] = std::from_chars(digits.data(), digits.data() + digits.size(), id);
            const std::optional<std::string_view> name = FSItem::nameInData(value);
            if (failed == std::errc() && end == digits.data() + digits.size() && name) add(id, *name);
        }
    }
    return Status::success();
}

Status NameIndex::flush(SimpleLMDB& store) {
    std::vector<ValueGroupKey> items;
    items.reserve(shortPostings.size() + longPostings.size());
    const auto write = [&](const std::string& trigram, Ids& ids) -> Status {
        std::sort(ids.begin(), ids.end());
        Ids all = std::move(ids);
        if (!replacesStored || written.contains(trigram)) {
            Result<std::optional<std::string>> stored = store.get<std::string>(group, trigram);
            if (!stored) return stored.error();
            if (*stored) all = merged(unpackDeltaStored(**stored), all);
        }
        if (replacesStored) written.insert(trigram);
        items.push_back({storeDeltaPacked(all), group, trigram});
        return Status::success();
    };
    for (auto& [key, ids] : shortPostings)
        if (Status added = write(unpackedKey(key), ids); !added) return added;
    for (auto& [trigram, ids] : longPostings)
        if (Status added = write(trigram, ids); !added) return added;
    if (Status put = store.put(items); !put) return put;
    shortPostings.clear();
    longPostings.clear();
    pending = 0;
    return Status::success();
}

Result<bool> NameIndex::isComplete(SimpleLMDB& store, std::uint32_t lastID) {
    Result<std::optional<std::uint32_t>> through = store.get<std::uint32_t>(group, indexedThroughKey);
    if (!through) return through.error();
    return through->value_or(0) == lastID;
}

Status NameIndex::markIndexedThrough(SimpleLMDB& store, std::uint32_t lastID) {
    return store.put(lastID, group, indexedThroughKey);
}

Result<std::optional<std::vector<std::uint32_t>>> NameIndex::candidates(SimpleLMDB& store,
                                                                        const QueryContainer& query) {
    const bool commandsJoinByOr =
        !query.commandsFoundInQuery().empty() && (query.isORCommandSearch() || query.booleanExpr().hasCommandUnderOr());
    if (query.soundex() || query.wantsDiacriticInsensitiveSearch() || commandsJoinByOr || query.searchWords().empty())
        return std::optional<Ids>();
    return CandidateSearch(store, query.matchIsCaseSensitive()).of(query.matchExpr());
}

}  // namespace quester
