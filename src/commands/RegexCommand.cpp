#include "commands/RegexCommand.h"

#include <unicode/regex.h>

#include "language/UnicodeText.h"
#include "support/PathText.h"
#include "query/SearchResult.h"

namespace quester {

CommandPtr RegexCommand::create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags) {
    const auto* word = argumentAt<SentenceComponent>(args, 0);
    if (!word) return nullptr;
    auto notFlag = flags.find("not");
    bool isNot = commandName == "regexNot" || (notFlag != flags.end() && notFlag->second == "1");
    return std::make_shared<RegexCommand>(word->textOriginalCase, isNot);
}

RegexCommand::RegexCommand(std::string pattern, bool isNot) : regex(std::move(pattern)), isNot(isNot) { compile(); }

void RegexCommand::setPattern(std::string pattern) {
    regex = std::move(pattern);
    compile();
}

void RegexCommand::compile() {
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError;
    std::shared_ptr<const icu::RegexPattern> compiledPattern(
        icu::RegexPattern::compile(icu::UnicodeString::fromUTF8(regex), 0, parseError, status));
    matcher = U_SUCCESS(status) ? compiledPattern : nullptr;
}

std::string RegexCommand::commandToString() const { return "regex " + quotedIfNeeded(regex) + (isNot ? " not" : ""); }

std::string RegexCommand::commandExample() const { return "regex **" + regex + "**" + (isNot ? " not" : ""); }

CommandApplyResult RegexCommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate*, const QueryContainer&) {
    if (!matcher) return CommandApplyResult::skip;
    icu::UnicodeString name = icu::UnicodeString::fromUTF8(lowercased(lastPathComponent(to.url.path())));
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> search(matcher->matcher(name, status));
    if (U_FAILURE(status)) return CommandApplyResult::skip;
    bool found = search->find(status) && U_SUCCESS(status);
    return found != isNot ? CommandApplyResult::accept : CommandApplyResult::exclude;
}

}  // namespace quester
