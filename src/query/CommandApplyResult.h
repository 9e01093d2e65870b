#pragma once

namespace quester {

// The verdict of one criterion on one result. Only `exclude` drops a result;
// inside a boolean expression `accept` and `skip` both count as true.
enum class CommandApplyResult { exclude, accept, skip };

}  // namespace quester
