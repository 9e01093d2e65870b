// quester-import: reads documents for the quester program, which starts it
// with one end of a socket pair as descriptor 3 (doc/import-helper.md). It
// runs apart so that a document that crashes a reader costs that document,
// not the program, and it can read only what the program hands it.

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

#include "import/ImportTextProcess.h"
#include "platform/ProcessSandbox.h"

namespace {

// What the readers' libraries load after start: OCR language data, fonts
// for drawing PDF pages, and their configuration.
std::vector<std::string> systemDataFolders() {
    std::vector<std::string> folders{"/usr/share", "/usr/lib", "/etc/fonts", "/var/cache/fontconfig", "/dev/urandom"};
    if (const char* tessdata = std::getenv("TESSDATA_PREFIX"); tessdata && *tessdata) folders.emplace_back(tessdata);
    return folders;
}

}  // namespace

int main() {
    std::signal(SIGPIPE, SIG_IGN);
    quester::ImportTextProcess process(quester::MessageSocket::adopt(3));
    if (auto sandboxed = quester::ProcessSandbox::restrictToReading(systemDataFolders()); !sandboxed) {
        process.log("import helper runs without a sandbox: " + sandboxed.error().description());
    }
    // A reader thread may still be inside a document; nothing of it is kept.
    ::_exit(process.serve());
}
