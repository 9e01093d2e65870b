#pragma once

#include <string>
#include <utility>
#include <vector>

namespace quester {

// The kind words that stand for a uniform type identifier ("image" →
// "public.image"), in a fixed order. "~uti" holds back a word that is still only
// the start of one of these, and "~utiCompletor" offers them.
const std::vector<std::pair<std::string, std::string>>& specialCaseToUTI();

}  // namespace quester
