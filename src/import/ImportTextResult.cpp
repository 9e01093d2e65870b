#include "import/ImportTextResult.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace quester {

namespace {

std::vector<const ImportTextPage*> pagesFor(const ImportTextResult& result, bool useOCR) {
    std::vector<const ImportTextPage*> pages;
    if (result.text) {
        for (const auto& page : *result.text) pages.push_back(&page);
    }
    if (useOCR && result.ocrText) {
        for (const auto& page : *result.ocrText) pages.push_back(&page);
    }
    return pages;
}

bool isContinuationByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

std::size_t codePointCount(const std::string& text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return !isContinuationByte(c); }));
}

// The newlines among the first `codePoints` code points of `text`.
std::size_t newlinesWithin(const std::string& text, std::size_t codePoints) {
    std::size_t newlines = 0;
    std::size_t seen = 0;
    for (char c : text) {
        if (isContinuationByte(c)) continue;
        if (seen++ == codePoints) break;
        if (c == '\n') ++newlines;
    }
    return newlines;
}

}  // namespace

std::optional<std::string> ImportTextResult::allText(bool useOCR) const {
    auto pages = pagesFor(*this, useOCR);
    if (pages.empty()) return std::nullopt;
    std::string joined;
    for (std::size_t i = 0; i < pages.size(); ++i) {
        if (i > 0) joined += '\n';
        joined += pages[i]->text;
    }
    return joined;
}

std::string ImportTextResult::locator(std::size_t atCharacterOffset, bool useOCR) const {
    auto pages = pagesFor(*this, useOCR);
    if (pages.empty()) return {};
    std::size_t pageStart = 0;
    std::size_t index = 0;
    for (; index + 1 < pages.size(); ++index) {
        std::size_t pageEnd = pageStart + codePointCount(pages[index]->text) + 1;
        if (pageEnd > atCharacterOffset) break;
        pageStart = pageEnd;
    }
    std::size_t into = atCharacterOffset > pageStart ? atCharacterOffset - pageStart : 0;
    std::size_t line = newlinesWithin(pages[index]->text, into) + 1;
    if (pages.size() == 1) return "Line " + std::to_string(line);
    return "Page " + std::to_string(index + 1) + ", line " + std::to_string(line);
}

void to_json(nlohmann::json& json, const ImportTextPage& page) {
    json = nlohmann::json{{"text", page.text}};
}

void from_json(const nlohmann::json& json, ImportTextPage& page) {
    page.text = json.at("text").get<std::string>();
}

void to_json(nlohmann::json& json, const ImportTextResult& result) {
    json = nlohmann::json::object();
    if (result.text) json["text"] = *result.text;
    if (result.ocrText) json["ocrText"] = *result.ocrText;
}

void from_json(const nlohmann::json& json, ImportTextResult& result) {
    result = {};
    if (json.contains("text")) result.text = json.at("text").get<ImportTextPages>();
    if (json.contains("ocrText")) result.ocrText = json.at("ocrText").get<ImportTextPages>();
}

}  // namespace quester
