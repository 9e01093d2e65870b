#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/Locked.h"
#include "support/SourceLocation.h"

namespace quester {

// Breadcrumbs for error reports: short notes of what the program did last,
// printed in a report's "Trace:" line. Thread-safe.
class GMTrace {
public:
    GMTrace() = default;
    virtual ~GMTrace() = default;
    GMTrace(const GMTrace&) = delete;
    GMTrace& operator=(const GMTrace&) = delete;

    static GMTrace& shared();

    // Adds "<file stem>:<line> <message>".
    virtual void add(std::string_view message, SourceLocation where = SourceLocation::current());
    // Clears, then adds: the first crumb of a new piece of work.
    virtual void start(std::string_view message, SourceLocation where = SourceLocation::current());
    virtual void clear();
    // The crumbs joined with ",".
    virtual std::string description() const;

private:
    Locked<std::vector<std::string>> lines;
};

}  // namespace quester
