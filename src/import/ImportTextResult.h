#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace quester {

// One page of a document's text: a PDF page, a raw file's piece, or the whole
// of a document that has no pages. Encoded as {"text": ...}.
struct ImportTextPage {
    std::string text;

    bool operator==(const ImportTextPage&) const = default;
};

using ImportTextPages = std::vector<ImportTextPage>;

// One page holding `text`, moved in: a list made from braces would copy it.
ImportTextPages onePage(std::string text);

// What a document gave: `text` from the document itself, `ocrText` from
// recognition on its images; each absent when there is none. Passed by value
// and sent between the import helper and the program as JSON, keys "text" and
// "ocrText", each left out when absent.
struct ImportTextResult {
    std::optional<ImportTextPages> text;
    std::optional<ImportTextPages> ocrText;

    // The pages joined by one newline: the text pages, then with `useOCR` the
    // OCR pages. None when there are no pages at all.
    std::optional<std::string> allText(bool useOCR) const;
    // `allText` without the copy when there is one page: a view of that page,
    // else of the pages joined in `scratch`; empty when there is no text.
    std::string_view allTextView(bool useOCR, std::string& scratch) const;
    // Where a character offset of `allText` lies: "Line 3" in a one-page
    // document, "Page 2, line 1" in a longer one; empty with no pages.
    // Offsets count Unicode code points.
    std::string locator(std::size_t atCharacterOffset, bool useOCR) const;

    bool operator==(const ImportTextResult&) const = default;
};

void to_json(nlohmann::json& json, const ImportTextPage& page);
void from_json(const nlohmann::json& json, ImportTextPage& page);
void to_json(nlohmann::json& json, const ImportTextResult& result);
void from_json(const nlohmann::json& json, ImportTextResult& result);

}  // namespace quester
