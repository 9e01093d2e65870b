#include "platform/MountTable.h"

#include "query/SearchLocation.h"
#include "support/Result.h"
