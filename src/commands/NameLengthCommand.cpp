#include "commands/NameLengthCommand.h"

#include "support/PathText.h"
#include "query/SearchResult.h"

namespace quester {

std::string NameLengthCommand::measuredText(const SearchResult& result) { return lastPathComponent(result.url.path()); }

}  // namespace quester
