#include "import/ImportTextResult.h"

#include <nlohmann/json.hpp>

#include "import/ImportTextLocator.h"

namespace quester {

ImportTextPages onePage(std::string text) {
    ImportTextPages pages(1);
    pages.front().text = std::move(text);
    return pages;
}

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

std::string_view ImportTextResult::allTextView(bool useOCR, std::string& scratch) const {
    auto pages = pagesFor(*this, useOCR);
    if (pages.size() == 1) return pages.front()->text;
    scratch = allText(useOCR).value_or("");
    return scratch;
}

std::string ImportTextResult::locator(std::size_t atCharacterOffset, bool useOCR) const {
    return ImportTextLocator(*this, useOCR).at(atCharacterOffset);
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
