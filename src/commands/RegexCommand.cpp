#include "commands/RegexCommand.h"

#include <unicode/regex.h>
#include <unicode/uregex.h>

#include "language/UnicodeText.h"
#include "query/SearchDataSourceDelegate.h"
#include "query/SearchResult.h"
#include "support/LogFunc.h"
#include "support/PathText.h"

namespace quester {

CommandPtr RegexCommand::create(std::string_view commandName, const VariableArguments& args,
                                const TemplateFlags& flags) {
    const auto* word = argumentAt<SentenceComponent>(args, 0);
    if (!word) return nullptr;
    auto notFlag = flags.find("not");
    bool isNot = commandName == "regexNot" || (notFlag != flags.end() && notFlag->second == "1");
    return std::make_shared<RegexCommand>(word->textOriginalCase, isNot);
}

RegexCommand::RegexCommand(std::string pattern, bool isNot) : regex(std::move(pattern)), isNot(isNot) {
    compile();
}

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

std::string RegexCommand::commandToString() const {
    return "regex " + quotedIfNeeded(regex) + (isNot ? " not" : "");
}

std::string RegexCommand::commandExample() const {
    return "regex **" + regex + "**" + (isNot ? " not" : "");
}

namespace {

// The most work one name may cost, in the engine's steps of about ten thousand
// backtracking moves each: a few milliseconds. A pattern such as "(a*)*b"
// takes exponential time on a long run of "a"s; past the limit the name is
// taken as not matching.
constexpr int32_t kMatchStepLimit = 8;

// Called by the engine once a step, so that a stopped search ends a match
// under way. Answers whether to go on.
UBool U_CALLCONV goesOn(const void* context, int32_t) {
    const auto* feedback = static_cast<const SearchDataSourceDelegate*>(context);
    return !feedback->shouldStop();
}

}  // namespace

CommandApplyResult RegexCommand::commandImpApply(SearchResult& to, SearchDataSourceDelegate* feedback,
                                                 const QueryContainer&) {
    if (!matcher) return CommandApplyResult::skip;
    const std::string name = lowercased(lastPathComponent(to.url.path()));
    // The matcher reads this text in place: it must outlive the search.
    const icu::UnicodeString text = icu::UnicodeString::fromUTF8(name);
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> search(matcher->matcher(text, status));
    if (U_FAILURE(status)) return CommandApplyResult::skip;
    search->setTimeLimit(kMatchStepLimit, status);
    if (feedback != nullptr) search->setMatchCallback(goesOn, feedback, status);
    const bool found = search->find(status) && U_SUCCESS(status);
    if (status == U_REGEX_STOPPED_BY_CALLER) return CommandApplyResult::exclude;
    if (status == U_REGEX_TIME_OUT)
        LogFunc("regex " + regex + " gave up on the name " + name + ": too much backtracking");
    return found != isNot ? CommandApplyResult::accept : CommandApplyResult::exclude;
}

}  // namespace quester
