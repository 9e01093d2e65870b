#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "BuildFixture.h"

namespace quester {
namespace {

using testing::BuildTest;
using testing::Census;
using testing::namesOnly;

// A build killed at any moment leaves a file that opens, and the next update
// completes it without recording any name twice.
TEST_F(BuildTest, AnUpdateAfterKillNineCompletesTheCacheWithoutDuplicates) {
    makeTree(200, 500, "");
    for (int delayMs : {150, 500, 1200}) {
        pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ContentIndexBuild::Options slow = namesOnly();
            slow.pauseReason = [] {
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
                return std::optional<std::string>();
            };
            auto index = makeIndex();
            (void)ContentIndexBuild::build(*index, slow);
            _exit(0);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        Census partial = census();
        EXPECT_FALSE(partial.duplicateNames);
        tree.write("d" + std::to_string(delayMs % 200) + "/late.txt", "added between the kills");
    }
    ASSERT_TRUE(build());
    Census counted = census();
    EXPECT_FALSE(counted.duplicateNames);
    EXPECT_EQ(counted.files, 200u * 500u + 3u);
    EXPECT_EQ(counted.folders, 400u);
    EXPECT_EQ(counted.records, counted.files + counted.folders + 1u);
    EXPECT_EQ(counted.paths.size(), counted.files + counted.folders);
}

}  // namespace
}  // namespace quester
