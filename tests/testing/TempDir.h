#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace quester::testing {

// A fresh folder under the system temp directory, removed with everything in it
// when the object goes away.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return root; }
    std::string str() const { return root.string(); }

    // Writes a file (making its folders) and returns its full path.
    std::filesystem::path write(std::string_view relative, std::string_view contents = "") const;
    // Makes a folder (and its parents) and returns its full path.
    std::filesystem::path mkdir(std::string_view relative) const;

private:
    std::filesystem::path root;
};

// The whole contents of a file; empty when it can't be read.
std::string readFile(const std::filesystem::path& path);

}  // namespace quester::testing
