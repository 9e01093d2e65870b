#include "commands/NameLengthCommand.h"

#include "query/SearchResult.h"
#include "support/PathText.h"

namespace quester {

std::string NameLengthCommand::measuredText(const SearchResult& result) {
    return lastPathComponent(result.url.path());
}

}  // namespace quester
