#include "results/QuesterURL.h"

#include <cctype>

#include "support/PathText.h"

namespace quester {

namespace {

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const char lower = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (lower >= 'a' && lower <= 'f') return lower - 'a' + 10;
    return -1;
}

Result<std::string> formDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '+') {
            decoded += ' ';
        } else if (text[i] != '%') {
            decoded += text[i];
        } else if (i + 2 < text.size() && hexValue(text[i + 1]) >= 0 && hexValue(text[i + 2]) >= 0) {
            decoded += static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
            i += 2;
        } else {
            return makeError(ErrorCode::invalidArgument, "bad percent escape '" + std::string(text.substr(i, 3)) +
                                                             "' in the quester: URL (write a % sign as %25)");
        }
    }
    return decoded;
}

bool hasQuesterScheme(std::string_view text) {
    constexpr std::string_view scheme = "quester:";
    if (text.size() < scheme.size()) return false;
    for (std::size_t i = 0; i < scheme.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(text[i])) != scheme[i]) return false;
    }
    return true;
}

}  // namespace

Result<QuesterURL> QuesterURL::parse(std::string_view text) {
    if (!hasQuesterScheme(text)) return makeError(ErrorCode::notFound, "not a quester: URL");
    QuesterURL url;
    const auto question = text.find('?');
    if (question == std::string_view::npos) return url;
    std::string_view items = text.substr(question + 1);
    if (const auto fragment = items.find('#'); fragment != std::string_view::npos) items = items.substr(0, fragment);
    for (const std::string& item : splitNonEmpty(items, '&')) {
        const auto equals = item.find('=');
        auto name = formDecoded(item.substr(0, equals));
        if (!name) return name.error();
        auto value = formDecoded(equals == std::string::npos ? "" : item.substr(equals + 1));
        if (!value) return value.error();
        if (*name == "q") url.q = std::move(value).value();
        if (*name == "location") url.location = std::move(value).value();
    }
    return url;
}

}  // namespace quester
