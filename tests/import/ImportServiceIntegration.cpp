#include "import/ImportTextXPC.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <fstream>
#include <thread>

#include "ZipWriter.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using namespace std::chrono_literals;
using testing::TempDir;
using testing::ZipWriter;

ImportServiceOptions helperOptions() {
    ImportServiceOptions options;
    options.helperPath = QUESTER_IMPORT_HELPER;
    return options;
}

std::optional<std::string> textOf(ImportTextXPC& service, const std::string& path,
                                  ImportTextXPC::ProgressHandler progress = {}) {
    std::optional<std::string> text;
    service.importText(path, false, INT64_MAX, false, std::move(progress), [&](auto error, auto result) {
        if (!error && result) text = result->allText(false);
    });
    return text;
}

std::uint64_t addressSpaceOf(int pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmSize:", 0) == 0) return std::stoull(line.substr(7)) * 1024;
    }
    return 0;
}

TEST(ImportServiceIntegration, KillingTheHelperMidFileCostsThatFileAndANewHelperServesTheRest) {
    TempDir dir;
    std::vector<std::string> paths;
    for (int i = 0; i < 30; ++i) {
        paths.push_back(dir.write("doc" + std::to_string(i) + ".txt", "words of file " + std::to_string(i)).string());
    }
    // Big enough that the helper is still reading it when the kill comes.
    paths[12] = dir.write("big.txt", std::string(80 << 20, 'y')).string();
    ImportTextXPC service(helperOptions());
    std::optional<int> killedHelper;
    int read = 0;
    for (int i = 0; i < 30; ++i) {
        auto killOnFirstProgress = [&, i](float) {
            if (i != 12 || killedHelper) return;
            killedHelper = service.helperProcessId();
            ::kill(*killedHelper, SIGKILL);
        };
        auto text = textOf(service, paths[i], killOnFirstProgress);
        if (text) {
            EXPECT_EQ(*text, "words of file " + std::to_string(i));
            ++read;
        } else {
            EXPECT_EQ(i, 12);
        }
    }
    EXPECT_EQ(read, 29);
    ASSERT_TRUE(killedHelper.has_value());
    EXPECT_NE(service.helperProcessId(), killedHelper);
}

TEST(ImportServiceIntegration, DocumentsPastTheTimeOrMemoryLimitAreSkippedAndTheNextIsRead) {
    TempDir dir;
    std::string big = dir.write("big.txt", std::string(96 << 20, 'x')).string();
    std::string small = dir.write("small.txt", "still read").string();

    auto hurried = helperOptions();
    hurried.timeLimit = 20ms;
    ImportTextXPC impatient(hurried);
    EXPECT_EQ(textOf(impatient, big), std::nullopt);
    hurried.timeLimit = 60s;
    ImportTextXPC patient(hurried);
    EXPECT_EQ(textOf(patient, small), "still read");

    if (!ImportServiceOptions::canLimitAddressSpace) GTEST_SKIP() << "a sanitized helper needs all address space";
    // Room to start and a little more, not for a 96 MiB document twice over.
    ASSERT_TRUE(patient.startup());
    auto tight = helperOptions();
    tight.memoryLimit = addressSpaceOf(*patient.helperProcessId()) + (64 << 20);
    ImportTextXPC frugal(tight);
    EXPECT_EQ(textOf(frugal, big), std::nullopt);
    EXPECT_EQ(textOf(frugal, small), "still read");
}

TEST(ImportServiceIntegration, HelperEndsAfterRestAndStartsAgainWhenNeeded) {
    TempDir dir;
    std::string path = dir.write("notes.txt", "alpha beta alpha").string();
    auto options = helperOptions();
    options.keepAlive = 200ms;
    ImportTextXPC service(options);
    auto [error, words] = service.wordsInFile(path, false);
    ASSERT_FALSE(error.has_value()) << error->description();
    ASSERT_TRUE(words.has_value());
    EXPECT_EQ((*words)["alpha"], 2u);
    for (int wait = 0; wait < 50 && service.helperProcessId(); ++wait) std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(service.helperProcessId().has_value());
    EXPECT_EQ(textOf(service, path), "alpha beta alpha");
    EXPECT_EQ(service.operationCount(), 0);
}

TEST(ImportServiceIntegration, ConfinedHelperReadsEveryKindItIsHanded) {
    TempDir dir;
    std::string docx = ZipWriter()
                           .add("word/document.xml",
                                "<w:document xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\">"
                                "<w:body><w:p><w:r><w:t>yearly total</w:t></w:r></w:p></w:body></w:document>")
                           .finish();
    ImportTextXPC service(helperOptions());
    EXPECT_EQ(textOf(service, dir.write("report.docx", docx).string()), "yearly total");
    EXPECT_EQ(textOf(service, dir.write("page.html", "<p>web <b>words</b></p><script>hidden</script>").string()),
              "web words");
    EXPECT_EQ(textOf(service, dir.write("letter.rtf", "{\\rtf1\\ansi Caf\\'e9\\par}").string()), "Caf\xC3\xA9\n");
}

TEST(ImportServiceIntegration, AFileTheProgramCannotOpenIsAnErrorNotAHelperFailure) {
    ImportTextXPC service(helperOptions());
    std::optional<Error> failure;
    service.importText("/no/such/file.txt", false, INT64_MAX, false, {}, [&](auto error, auto) { failure = error; });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->code, ErrorCode::notFound);
    EXPECT_FALSE(service.helperProcessId().has_value());
}

}  // namespace
}  // namespace quester
