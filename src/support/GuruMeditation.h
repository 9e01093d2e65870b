#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "support/GMTrace.h"
#include "support/Result.h"
#include "support/SourceLocation.h"

namespace quester {

// The common report of an unexpected internal failure.
class GuruMeditation {
public:
    // The report, lines joined by newlines:
    //   "<process> v<version> error details:"
    //   "File: <file stem>  Line: <line>"
    //   "Trace: <crumbs>"                    (empty after the colon without crumbs)
    //   the error's own description
    //   "OS: <system and release>"
    //   "Mac Cores: <processors>  Arch: <machine>"
    //   39 dashes
    static std::string errorToDetailedString(const Error& error, const GMTrace* crumbs, std::string_view file,
                                             unsigned line);

    // Where a desktop would show an alert with a copyable report: the report is
    // appended to "Error Reports.txt" in the caches folder, logged when logging
    // is on, and printed to standard error. Answers the report file's path;
    // none when it couldn't be written, in which case standard error also says
    // why. Any thread.
    static std::optional<std::string> showErrorAlert(const Error& error, const GMTrace* trace = &GMTrace::shared(),
                                                     SourceLocation where = SourceLocation::current());
};

}  // namespace quester
