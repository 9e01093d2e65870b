#include "commands/LengthLimit.h"

#include "language/UnicodeText.h"

namespace quester {

CommandApplyResult judgeLength(std::string_view text, LengthChoice choice, int count) {
    int length = graphemeCount(text);
    bool accepted = choice == LengthChoice::max ? length < count : length > count;
    return accepted ? CommandApplyResult::accept : CommandApplyResult::exclude;
}

std::string lengthCommandText(std::string_view what, LengthChoice choice, int count, bool example) {
    std::string text = choice == LengthChoice::max ? "max " : "min ";
    text += std::string(what) + " length ";
    std::string number = std::to_string(count);
    return text + (example ? "**" + number + "**" : number);
}

}  // namespace quester
