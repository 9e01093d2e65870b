// Makes the PDFs the text benchmark reads: DOCUMENTS files of PAGES pages,
// each page 40 lines of 11-point prose, the same files on every run.
//
//   make-text-pdfs FOLDER [DOCUMENTS] [PAGES]      (defaults 20 and 20)
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "import/PdfWriter.h"

namespace {

constexpr int kLinesPerPage = 40;
constexpr std::size_t kLineLength = 80;
constexpr int kFontSize = 11;
constexpr const char* kWords[] = {"the",     "quarterly", "budget",  "review", "shows",    "that",    "invoice",
                                  "totals",  "rose",      "while",   "travel", "costs",    "fell",    "across",
                                  "every",   "region",    "meeting", "notes",  "contract", "renewal", "draft",
                                  "summary", "of",        "archive", "policy", "and",      "a",       "plan"};

// A small fixed generator: the files must be the same on every machine.
struct Random {
    std::uint64_t state = 0x9E3779B97F4A7C15ULL;
    std::size_t next(std::size_t bound) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<std::size_t>((state >> 33) % bound);
    }
};

std::string proseLine(Random& random) {
    std::string line;
    while (line.size() < kLineLength) {
        if (!line.empty()) line += ' ';
        line += kWords[random.next(std::size(kWords))];
    }
    return line;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: make-text-pdfs FOLDER [DOCUMENTS] [PAGES]\n");
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    const int documents = argc > 2 ? std::atoi(argv[2]) : 20;
    const int pages = argc > 3 ? std::atoi(argv[3]) : 20;
    std::filesystem::create_directories(folder);
    Random random;
    for (int document = 1; document <= documents; ++document) {
        quester::testing::PdfWriter writer;
        for (int page = 0; page < pages; ++page) {
            std::vector<std::string> lines;
            for (int line = 0; line < kLinesPerPage; ++line) lines.push_back(proseLine(random));
            writer.page(std::move(lines), kFontSize);
        }
        char name[32];
        std::snprintf(name, sizeof name, "document-%02d.pdf", document);
        std::ofstream(folder / name, std::ios::binary) << writer.bytes();
    }
    return 0;
}
