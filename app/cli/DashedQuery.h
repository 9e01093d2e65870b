#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace quester::cli {

// The command line with a query that begins with a minus word made explicit:
// after a subcommand, an argument of one "-" and text that names none of the
// subcommand's options ("-annual report"), or the argument after "--", is
// passed as "--query=<text>". So such a query works in any place among the
// options, which are otherwise left as they are. `app` holds the subcommands,
// each with a "--query" option.
std::vector<std::string> withDashedQueryExplicit(const CLI::App& app, const std::vector<std::string>& arguments);

}  // namespace quester::cli
