#include "commands/PathLengthCommand.h"

#include "query/SearchResult.h"

namespace quester {

std::string PathLengthCommand::measuredText(const SearchResult& result) {
    return result.url.path();
}

}  // namespace quester
