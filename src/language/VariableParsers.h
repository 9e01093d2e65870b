#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "language/SentenceComponent.h"
#include "language/VariableParserResult.h"
#include "language/VariableSources.h"

namespace quester {

// The seventeen variable parsers and six completors of the template language.
// Each parser reads from the start of `words` and answers nothing when it doesn't
// match; VariableParserResult.h lists the value type of each. None throws.

// The table by variable name ("~string", "~file size", …). `sources` is copied
// into the parsers that need the user's own lists.
VariableParsers standardVariableParsers(const VariableSources& sources);
// "~utiCompletor", "~remembered", "~month", "~dateType", "~scriptName", "~tagCompletor".
VariableCompletors standardVariableCompletors(const VariableSources& sources);

// The first entry of `candidates` that differs from `target` and whose lower-case
// form begins with `target`; nothing for an empty `target`.
std::optional<std::string> possibleCompletion(const std::vector<std::string>& candidates, std::string_view target);

std::optional<VariableParserResult> stringVariable(std::span<const SentenceComponent> words);
std::optional<VariableParserResult> utiVariable(std::span<const SentenceComponent> words);
std::optional<VariableParserResult> rememberedVariable(std::span<const SentenceComponent> words,
                                                       const VariableSources& sources);
std::optional<VariableParserResult> monthVariable(std::span<const SentenceComponent> words);
std::optional<VariableParserResult> yearVariable(std::span<const SentenceComponent> words);
std::optional<VariableParserResult> dayVariable(std::span<const SentenceComponent> words);
std::optional<VariableParserResult> timeUnitVariable(std::span<const SentenceComponent> words);
std::optional<VariableParserResult> formattedDateVariable(std::span<const SentenceComponent> words);
std::optional<VariableParserResult> fixedNamedTimeRangeVariable(std::span<const SentenceComponent> words);
std::optional<VariableParserResult> fileSizeVariable(std::span<const SentenceComponent> words);
std::optional<VariableParserResult> extensionVariable(std::span<const SentenceComponent> words);
std::optional<VariableParserResult> dateTypeVariable(std::span<const SentenceComponent> words);
std::optional<VariableParserResult> integerVariable(std::span<const SentenceComponent> words);
std::optional<VariableParserResult> regexVariable(std::span<const SentenceComponent> words);
std::optional<VariableParserResult> scriptNameVariable(std::span<const SentenceComponent> words,
                                                       const VariableSources& sources);
std::optional<VariableParserResult> contentSearchVariable(std::span<const SentenceComponent> words);
std::optional<VariableParserResult> varArgVariable(std::span<const SentenceComponent> words);

std::optional<std::string> utiCompletor(std::span<const SentenceComponent> words);
std::optional<std::string> rememberedCompletor(std::span<const SentenceComponent> words,
                                               const VariableSources& sources);
std::optional<std::string> monthCompletor(std::span<const SentenceComponent> words);
std::optional<std::string> dateTypeCompletor(std::span<const SentenceComponent> words);
std::optional<std::string> scriptNameCompletor(std::span<const SentenceComponent> words,
                                               const VariableSources& sources);
std::optional<std::string> tagCompletor(std::span<const SentenceComponent> words, const VariableSources& sources);

}  // namespace quester
