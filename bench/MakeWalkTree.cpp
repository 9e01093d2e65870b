// Makes the synthetic tree that the walk benchmark searches: about a million
// files in about 140,000 folders, the same tree on every run. A marker file
// at the top names the layout, so a finished tree is reused and a half-made
// one (no marker) is made again.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace {

constexpr const char* kMarker = ".walk-tree-v1";
constexpr std::array<int, 5> kBranching = {10, 14, 10, 10, 9};  // 141,550 folders
constexpr int kMaxFilesPerFolder = 14;                          // 7 a folder on average

constexpr std::array<const char*, 24> kWords = {"budget",  "report",  "photo",    "invoice", "notes",  "draft",
                                                "summary", "meeting", "backup",   "travel",  "recipe", "letter",
                                                "scan",    "slides",  "contract", "archive", "music",  "video",
                                                "resume",  "plan",    "Budget",   "Report",  "Photo",  "todo"};
constexpr std::array<const char*, 10> kExtensions = {"txt", "pdf", "jpg", "xlsx", "docx",
                                                     "md",  "png", "csv", "mp3",  "log"};

// A small fixed generator: the tree must be the same on every machine.
struct Random {
    std::uint64_t state = 0x9E3779B97F4A7C15ULL;
    std::uint32_t next(std::uint32_t bound) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<std::uint32_t>((state >> 33) % bound);
    }
};

struct Counts {
    long folders = 0;
    long files = 0;
};

void fail(const std::string& what) {
    std::fprintf(stderr, "make-walk-tree: %s: %s\n", what.c_str(), std::strerror(errno));
    std::exit(1);
}

void makeFiles(const std::string& folder, Random& random, Counts& counts) {
    int files = static_cast<int>(random.next(kMaxFilesPerFolder + 1));
    for (int i = 0; i < files; ++i) {
        std::string name = std::string(kWords[random.next(kWords.size())]) + "_" + std::to_string(random.next(100000)) +
                           "." + kExtensions[random.next(kExtensions.size())];
        std::string path = folder + "/" + name;
        int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        if (fd < 0) fail(path);
        ::close(fd);
        ++counts.files;
    }
}

std::string folderName(std::size_t level, int index, Random& random) {
    // One folder in 40 is hidden, so that walks with and without hidden items differ.
    std::string prefix = random.next(40) == 0 ? "." : "";
    return prefix + kWords[random.next(kWords.size())] + "-" + std::to_string(level) + "-" + std::to_string(index);
}

void makeLevel(const std::string& folder, std::size_t level, Random& random, Counts& counts) {
    makeFiles(folder, random, counts);
    if (level == kBranching.size()) return;
    for (int i = 0; i < kBranching[level]; ++i) {
        std::string child = folder + "/" + folderName(level, i, random);
        if (::mkdir(child.c_str(), 0755) != 0 && errno != EEXIST) fail(child);
        ++counts.folders;
        makeLevel(child, level + 1, random, counts);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make-walk-tree FOLDER\n");
        return 2;
    }
    std::filesystem::path root = argv[1];
    if (std::filesystem::exists(root / kMarker)) {
        std::printf("make-walk-tree: reusing %s\n", root.c_str());
        return 0;
    }
    std::error_code error;
    std::filesystem::remove_all(root, error);
    std::filesystem::create_directories(root, error);
    if (error) {
        std::fprintf(stderr, "make-walk-tree: %s: %s\n", root.c_str(), error.message().c_str());
        return 1;
    }
    Random random;
    Counts counts;
    makeLevel(root.string(), 0, random, counts);
    int marker = ::open((root / kMarker).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    if (marker < 0) fail(kMarker);
    ::close(marker);
    std::printf("make-walk-tree: made %ld folders and %ld files in %s\n", counts.folders, counts.files, root.c_str());
    return 0;
}
