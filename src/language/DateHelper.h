#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quester {

// Month names for reading dates. Built once (thread safe), then read-only.
class DateHelper {
public:
    static const DateHelper& shared();

    // Lower case, January first: the locale's names, and the English ones, which
    // the template language is written in, when the locale's differ.
    const std::vector<std::string>& monthSymbols() const { return fullNames; }
    const std::vector<std::string>& shortMonthSymbols() const { return shortNames; }

    // 1 for January … 12 for December, from a full or short name in lower case.
    std::optional<int> monthIndexFromWord(std::string_view word) const;

private:
    DateHelper();

    std::vector<std::string> fullNames;
    std::vector<std::string> shortNames;
    std::vector<std::pair<std::string, int>> lookup;
};

}  // namespace quester
