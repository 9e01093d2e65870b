#include "query/CommandBase.h"

namespace quester {

std::string quotedIfNeeded(const std::string& word) {
    bool needsQuotes = word.empty() || word.find_first_of(" \t\n\"():*") != std::string::npos || word.starts_with('-');
    return needsQuotes ? quotedText(word, false) : word;
}

std::string quotedText(const std::string& word, bool example) {
    std::string escaped;
    for (char c : word) {
        if (c == '"') escaped += '\\';
        escaped += c;
    }
    return example ? "\"**" + escaped + "**\"" : "\"" + escaped + "\"";
}

}  // namespace quester
