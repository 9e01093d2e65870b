#include "platform/MountTable.h"
#include "query/SearchLocation.h"

int main() {
    return 0;
}
