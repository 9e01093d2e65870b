#include "query/Soundex.h"

#include "language/UnicodeText.h"

namespace quester {

namespace {

char digitOf(char letter) {
    switch (letter) {
        case 'B':
        case 'F':
        case 'P':
        case 'V':
            return '1';
        case 'C':
        case 'G':
        case 'J':
        case 'K':
        case 'Q':
        case 'S':
        case 'X':
        case 'Z':
            return '2';
        case 'D':
        case 'T':
            return '3';
        case 'L':
            return '4';
        case 'M':
        case 'N':
            return '5';
        case 'R':
            return '6';
        default:
            return 0;
    }
}

bool isVowel(char letter) {
    return letter == 'A' || letter == 'E' || letter == 'I' || letter == 'O' || letter == 'U';
}

std::string trimmedUppercase(std::string_view text) {
    size_t start = text.find_first_not_of(" \t\r\n");
    size_t end = text.find_last_not_of(" \t\r\n");
    if (start == std::string_view::npos) return {};
    std::string upper;
    for (char c : text.substr(start, end - start + 1)) upper += (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c;
    return upper;
}

}  // namespace

std::string Soundex::value(std::string_view text) {
    std::string word = trimmedUppercase(text);
    auto characters = graphemes(word);
    if (characters.size() < 2) return {};
    std::string result(characters.front());
    char previous = '-';
    for (size_t i = 0; i < characters.size() && graphemeCount(result) < 4; ++i) {
        char letter = characters[i].size() == 1 ? characters[i][0] : 0;
        char digit = digitOf(letter);
        if (i == 0) {
            previous = digit ? digit : '0';
        } else if (digit) {
            if (digit != previous) result += digit;
            previous = digit;
        } else if (isVowel(letter)) {
            previous = '-';
        }
    }
    while (graphemeCount(result) < 4) result += '0';
    return result;
}

}  // namespace quester
