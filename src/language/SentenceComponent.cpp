#include "language/SentenceComponent.h"

#include <functional>
#include <limits>

#include "language/UnicodeText.h"

namespace quester {

namespace {

// The walk of parseWords: the state of the word under way and the words emitted.
class Tokeniser {
public:
    Tokeniser(const SentenceComponent* parent, bool splitParens) : parent(parent), splitParens(splitParens) {}

    std::vector<SentenceComponent> run(std::string_view text) {
        const std::vector<std::string_view> characters = graphemes(text);
        int i = 0;
        const int count = static_cast<int>(characters.size());
        for (; i < count; ++i) {
            const std::string_view c = characters[static_cast<size_t>(i)];
            const bool escapedQuote = c == "\\" && i + 1 < count && characters[static_cast<size_t>(i) + 1] == "\"";
            if (escapedQuote) {
                place(i, "\"");
                ++i;
            } else {
                step(c, i);
            }
        }
        flush(count);
        return std::move(words);
    }

private:
    void step(std::string_view c, int i) {
        if (beginsWithWhiteSpace(c)) {
            if (inQuotes) {
                current += c;
            } else {
                flush(i);
                reset();
            }
        } else if (c == "\"") {
            quote(i);
        } else if (c == "*" && !inQuotes) {
            star(i);
        } else if ((c == "(" || c == ")") && splitParens && !inQuotes) {
            paren(c, i);
        } else if (c == ":") {
            afterColon = true;
            if (inQuotes) place(i, c);
        } else {
            place(i, c);
        }
    }

    void quote(int i) {
        if (inQuotes) {
            flush(i);
            reset();
        } else {
            inQuotes = true;
            wasQuoted = true;
        }
    }

    void star(int i) {
        if (current.empty()) {
            wildcard = SentenceComponent::Wildcard::suffix;
            return;
        }
        wildcard = SentenceComponent::Wildcard::prefix;
        flush(i);
        reset();
    }

    void paren(std::string_view c, int i) {
        flush(i);
        current.clear();
        SentenceComponent word;
        word.textLowered = std::string(c);
        word.textOriginalCase = std::string(c);
        word.position = {i, i + 1};
        word.isAfterAColon = afterColon;
        if (parent != nullptr) word.parent.push_back(*parent);
        words.push_back(std::move(word));
        reset();
    }

    void place(int i, std::string_view c) {
        if (empty) {
            start = i;
            empty = false;
        }
        current += c;
    }

    void flush(int i) {
        if (empty || current.empty()) return;
        SentenceComponent word;
        word.textLowered = lowercased(current);
        word.textOriginalCase = current;
        word.position = {start, i};
        word.isAfterAColon = afterColon;
        word.wasInQuotes = wasQuoted;
        if (parent != nullptr) word.parent.push_back(*parent);
        word.wildcard = wildcard;
        words.push_back(std::move(word));
    }

    void reset() {
        current.clear();
        start = 0;
        wildcard = SentenceComponent::Wildcard::none;
        inQuotes = false;
        wasQuoted = false;
        empty = true;
    }

    const SentenceComponent* parent;
    const bool splitParens;
    std::vector<SentenceComponent> words;
    std::string current;
    int start = 0;
    bool empty = true;
    bool inQuotes = false;
    bool wasQuoted = false;
    bool afterColon = false;
    SentenceComponent::Wildcard wildcard = SentenceComponent::Wildcard::none;
};

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"') out += '\\';
        out += c;
    }
    return out + "\"";
}

void hashCombine(std::size_t& seed, std::size_t value) {
    seed ^= value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2);
}

}  // namespace

bool SentenceComponent::operator==(const SentenceComponent& other) const {
    return textLowered == other.textLowered && textOriginalCase == other.textOriginalCase &&
           position == other.position && isAfterAColon == other.isAfterAColon && wasInQuotes == other.wasInQuotes &&
           wildcard == other.wildcard && parent == other.parent;
}

std::vector<SentenceComponent> SentenceComponent::parseWords(std::string_view text, const SentenceComponent* parent,
                                                             bool splitParens) {
    return Tokeniser(parent, splitParens).run(text);
}

bool SentenceComponent::isBooleanOperator() const {
    if (wasInQuotes) return false;
    return textLowered == "and" || textLowered == "or" || textOriginalCase == "NOT";
}

std::string toString(const std::vector<SentenceComponent>& words) {
    std::string out;
    bool colonWritten = false;
    for (const SentenceComponent& word : words) {
        if (!out.empty()) out += ' ';
        if (word.isAfterAColon && !colonWritten) {
            out += ": ";
            colonWritten = true;
        }
        out += word.wasInQuotes ? quoted(word.textOriginalCase) : word.textOriginalCase;
    }
    return out;
}

namespace {

// Expands words from the front until `enough` single words are there, or the
// list is done.
std::vector<SentenceComponent> expandedFront(std::span<const SentenceComponent> words, size_t enough) {
    std::vector<SentenceComponent> expanded;
    for (size_t i = 0; i < words.size() && expanded.size() < enough; ++i) {
        std::vector<SentenceComponent> pieces =
            SentenceComponent::parseWords(words[i].textOriginalCase, &words[i], false);
        expanded.insert(expanded.end(), std::make_move_iterator(pieces.begin()), std::make_move_iterator(pieces.end()));
    }
    return expanded;
}

}  // namespace

std::vector<SentenceComponent> expandedQuotedItems(const std::vector<SentenceComponent>& words) {
    return expandedFront(words, std::numeric_limits<size_t>::max());
}

SentenceCompareResult compare(std::span<const SentenceComponent> words, const std::vector<SentenceComponent>& other) {
    const std::vector<SentenceComponent> theirs = expandedQuotedItems(other);
    // Only the front of `words` that `other` can cover is expanded: the list is
    // often the whole rest of a long sentence.
    const std::vector<SentenceComponent> mine = expandedFront(words, theirs.size());
    if (theirs.empty() || theirs.size() > mine.size()) return {};
    std::vector<const SentenceComponent*> parents;
    for (size_t i = 0; i < theirs.size(); ++i) {
        if (mine[i].textLowered != theirs[i].textLowered) return {};
        const SentenceComponent* parent = &mine[i].parent.front();
        if (parents.empty() || !(*parents.back() == *parent)) parents.push_back(parent);
    }
    return {true, static_cast<int>(parents.size())};
}

std::vector<std::pair<int, int>> partLocationsToRanges(const std::vector<SentenceComponent>& words) {
    std::vector<std::pair<int, int>> ranges;
    ranges.reserve(words.size());
    for (const SentenceComponent& word : words) ranges.emplace_back(word.position.lowerBound, word.position.length());
    return ranges;
}

}  // namespace quester

std::size_t std::hash<quester::SentenceComponent>::operator()(
    const quester::SentenceComponent& component) const noexcept {
    std::size_t seed = std::hash<std::string>()(component.textOriginalCase);
    quester::hashCombine(seed, std::hash<std::string>()(component.textLowered));
    quester::hashCombine(seed, static_cast<std::size_t>(component.position.lowerBound));
    quester::hashCombine(seed, static_cast<std::size_t>(component.position.upperBound));
    quester::hashCombine(seed, (component.isAfterAColon ? 1U : 0U) | (component.wasInQuotes ? 2U : 0U));
    quester::hashCombine(seed, static_cast<std::size_t>(component.wildcard));
    for (const auto& parent : component.parent) quester::hashCombine(seed, operator()(parent));
    return seed;
}
