#pragma once

#include <optional>
#include <string>

namespace quester {

// A fresh folder for the members of an archive that content search reads:
// "quester-archive-<UUID>" under the system's temporary folder ($TMPDIR, else
// /tmp). It goes, with all it holds, when this is destroyed. Movable only;
// one thread at a time.
class ArchiveTempDirectory {
public:
    // A new folder; none when it can't be made.
    static std::optional<ArchiveTempDirectory> create();

    ArchiveTempDirectory(ArchiveTempDirectory&& other) noexcept;
    ArchiveTempDirectory& operator=(ArchiveTempDirectory&&) = delete;
    ArchiveTempDirectory(const ArchiveTempDirectory&) = delete;
    ~ArchiveTempDirectory();

    const std::string& path() const { return folder; }

private:
    explicit ArchiveTempDirectory(std::string folder) : folder(std::move(folder)) {}

    std::string folder;
};

}  // namespace quester
