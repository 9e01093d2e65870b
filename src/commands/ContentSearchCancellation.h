#pragma once

#include <functional>
#include <optional>
#include <string>

#include "support/Locked.h"

namespace quester {

// Lets a person skip the one file that content search is reading now, without
// stopping the search. Shared by every search queue and the thread that asks
// for the skip; with several queues reading at once, the file that started
// last is the one that can be skipped.
class ContentSearchCancellation {
public:
    // Told the path of a file to skip, outside the lock: stops its import.
    using CancelImport = std::function<void(const std::string& path)>;

    explicit ContentSearchCancellation(CancelImport cancelImport);
    // The program's one instance, which cancels through the import helper.
    static ContentSearchCancellation& shared();

    // The file that is being read from now on.
    void startFile(const std::string& path);
    // Asks to skip the file being read, if there is one.
    void skipCurrentFile();
    // Whether a skip was asked for `path`.
    bool isSkipRequested(const std::string& path) const;
    // `path` is no longer being read; a skip asked for it is forgotten.
    void endFile(const std::string& path);

private:
    struct Files {
        std::optional<std::string> currentFile;
        std::optional<std::string> skipFile;
    };

    CancelImport cancelImport;
    Locked<Files> files;
};

}  // namespace quester
