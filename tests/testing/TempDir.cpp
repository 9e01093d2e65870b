#include "testing/TempDir.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace quester::testing {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quester-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    root = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
}

std::filesystem::path TempDir::write(std::string_view relative, std::string_view contents) const {
    auto full = root / relative;
    std::filesystem::create_directories(full.parent_path());
    std::ofstream out(full, std::ios::binary);
    out << contents;
    return full;
}

std::filesystem::path TempDir::mkdir(std::string_view relative) const {
    auto full = root / relative;
    std::filesystem::create_directories(full);
    return full;
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream contents;
    contents << in.rdbuf();
    return contents.str();
}

}  // namespace quester::testing
