#include <gtest/gtest.h>

#include <cstdlib>

#include "testing/TempDir.h"

// Every test executable keeps its preferences, caches and data in a folder of its own.
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    quester::testing::TempDir home;
    setenv("QUESTER_HOME", home.str().c_str(), 1);
    return RUN_ALL_TESTS();
}
