#pragma once

#include <any>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "language/SentenceComponent.h"

namespace quester {

// What a template variable read from the start of the words it was given.
//
// `value` is a std::any; a factory takes it back with std::any_cast to the type
// that its variable produces. The variables and their value types:
//
//   "~string"              SentenceComponent              the first word
//   "~regexVariable"       SentenceComponent              a word that compiles as a regex
//   "~uti"                 std::string                    a kind word ("pdf", "image", "public.data")
//   "~remembered"          std::string                    the remembered folder's path
//   "~extension"           std::string                    without its leading "."
//   "~month"               int                            1 (January) to 12
//   "~year"                int                            1970 to 2999
//   "~day"                 int                            1 to 31
//   "~integer"             int                            digits with a sign, or spelled out
//   "~timeUnit"            TimeUnit                       language/TimeUnit.h
//   "~formattedDate"       DateCommandWhen                language/DateCommandWhen.h (specificDay)
//   "~fixedNamedTimeRange" DateCommandWhen                recent, today, yesterday, tomorrow
//   "~dateType"            DateCommandWhat                language/DateCommandWhat.h
//   "~file size"           FileSizeArgs                   language/FileSizeArgs.h
//   "~scriptName"          ScriptTarget                   language/ScriptTarget.h
//   "~contentSearchFlags"  std::vector<ContentSearchFlag> language/ContentSearchFlag.h
//   "~varArg"              std::vector<SentenceComponent> all remaining words
//
// A factory's `args` (CommandFactory::create) is a `VariableArguments`: the values
// of the matched template's variables in template order, leaving out variables
// that produced no value. A variable that reads nothing but still answers (an
// empty "~contentSearchFlags") has a value and so takes its place in `args`.
struct VariableParserResult {
    std::any value;  // empty when the variable matched without a value
    int numberOfConsumedWords = 0;
};

using VariableArguments = std::vector<std::any>;
using TemplateFlags = std::map<std::string, std::string>;

// A variable parser reads from the start of `words`; nothing means no match.
using VariableParser = std::function<std::optional<VariableParserResult>(std::span<const SentenceComponent> words)>;
// A completor proposes the text a partly typed variable would complete to.
using VariableCompletor = std::function<std::optional<std::string>(std::span<const SentenceComponent> words)>;

using VariableParsers = std::map<std::string, VariableParser, std::less<>>;
using VariableCompletors = std::map<std::string, VariableCompletor, std::less<>>;

}  // namespace quester
