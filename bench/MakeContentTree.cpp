// Makes the synthetic source tree that the content benchmark searches: 6,400
// C, header, Python and Markdown files of 2 to 38 KB (about 125 MB) in 64
// folders, the same tree on every run. Their words come from a fixed
// vocabulary; the common word sits in about three files in ten and the rare
// phrase in a handful, each only whole and on one line, so every tool counts
// the same files. A marker file at the top names the layout, so a finished tree
// is reused and a half-made one (no marker) is made again.
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace {

constexpr const char* kMarker = ".content-tree-v1";
constexpr const char* kRarePhrase = "quarterly reconciliation ledger";
constexpr const char* kCommonWord = "checksum";
constexpr int kFolders = 64;
constexpr int kFilesPerFolder = 100;
constexpr std::uint32_t kMinBytes = 2048;
constexpr std::uint32_t kSpreadBytes = 36864;
constexpr std::uint32_t kRareOneIn = 500;
constexpr std::uint32_t kCommonTenths = 3;

constexpr std::array<const char*, 48> kWords = {
    "buffer", "count",  "index",  "value",  "result", "node",   "list",   "table",  "entry",  "offset",
    "length", "state",  "config", "handle", "stream", "parser", "token",  "record", "window", "cursor",
    "frame",  "signal", "queue",  "event",  "reader", "writer", "format", "source", "target", "option",
    "status", "error",  "limit",  "block",  "chunk",  "field",  "header", "layout", "module", "object",
    "string", "number", "matrix", "vector", "sample", "filter", "render", "thread"};
constexpr std::array<const char*, 4> kExtensions = {"c", "h", "py", "md"};

// A small fixed generator: the tree must be the same on every machine.
struct Random {
    std::uint64_t state = 0x9E3779B97F4A7C15ULL;
    std::uint32_t next(std::uint32_t bound) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<std::uint32_t>((state >> 33) % bound);
    }
    const char* word() { return kWords[next(kWords.size())]; }
};

std::string cLine(Random& random) {
    switch (random.next(4)) {
        case 0:
            return std::string("static int ") + random.word() + "_" + random.word() + "(struct " + random.word() +
                   " *" + random.word() + ") {";
        case 1:
            return std::string("    ") + random.word() + " = " + random.word() + "_" + random.word() + "(" +
                   random.word() + ", " + std::to_string(random.next(4096)) + ");";
        case 2:
            return std::string("/* ") + random.word() + " the " + random.word() + " before the " + random.word() +
                   " */";
        default:
            return "}";
    }
}

std::string pythonLine(Random& random) {
    switch (random.next(3)) {
        case 0:
            return std::string("def ") + random.word() + "_" + random.word() + "(" + random.word() + ", " +
                   random.word() + "):";
        case 1:
            return std::string("    return ") + random.word() + "." + random.word() + "(" + random.word() + ", " +
                   std::to_string(random.next(1000)) + ")";
        default:
            return std::string("# ") + random.word() + " every " + random.word() + " of the " + random.word();
    }
}

std::string markdownLine(Random& random) {
    if (random.next(8) == 0) return std::string("## The ") + random.word() + " " + random.word();
    std::string sentence = "The";
    for (std::uint32_t i = 0, words = 6 + random.next(10); i < words; ++i) sentence += std::string(" ") + random.word();
    return sentence + ".";
}

std::string line(std::string_view extension, Random& random) {
    if (extension == "py") return pythonLine(random);
    if (extension == "md") return markdownLine(random);
    return cLine(random);
}

std::string fileText(std::string_view extension, Random& random) {
    const std::uint32_t size = kMinBytes + random.next(kSpreadBytes);
    const bool common = random.next(10) < kCommonTenths;
    bool rare = random.next(kRareOneIn) == 0;
    const std::uint32_t rareAt = random.next(size);
    std::string text;
    text.reserve(size + 128);
    while (text.size() < size) {
        if (common && random.next(40) == 0) text += std::string("# the ") + kCommonWord + " of the block\n";
        if (rare && text.size() >= rareAt) {
            text += std::string("# closes the ") + kRarePhrase + " for the year\n";
            rare = false;
        }
        text += line(extension, random) + "\n";
    }
    if (rare) text += std::string("# closes the ") + kRarePhrase + " for the year\n";
    return text;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make-content-tree FOLDER\n");
        return 2;
    }
    const std::filesystem::path root = argv[1];
    if (std::filesystem::exists(root / kMarker)) {
        std::printf("make-content-tree: reusing %s\n", root.c_str());
        return 0;
    }
    std::error_code error;
    std::filesystem::remove_all(root, error);
    Random random;
    std::uintmax_t bytes = 0;
    for (int folder = 0; folder < kFolders; ++folder) {
        const std::filesystem::path dir = root / (std::string(random.word()) + "-" + std::to_string(folder));
        std::filesystem::create_directories(dir, error);
        if (error) {
            std::fprintf(stderr, "make-content-tree: %s: %s\n", dir.c_str(), error.message().c_str());
            return 1;
        }
        for (int file = 0; file < kFilesPerFolder; ++file) {
            const char* extension = kExtensions[random.next(kExtensions.size())];
            const std::string name = std::string(random.word()) + "_" + std::to_string(file) + "." + extension;
            const std::string text = fileText(extension, random);
            std::ofstream out(dir / name, std::ios::binary);
            if (!out.write(text.data(), static_cast<std::streamsize>(text.size()))) {
                std::fprintf(stderr, "make-content-tree: cannot write %s\n", (dir / name).c_str());
                return 1;
            }
            bytes += text.size();
        }
    }
    std::ofstream(root / kMarker).flush();
    std::printf("make-content-tree: made %d files (%ju MB) in %s\n", kFolders * kFilesPerFolder, bytes >> 20,
                root.c_str());
    return 0;
}
