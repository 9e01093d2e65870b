#include "language/UTIWords.h"

namespace quester {

const std::vector<std::pair<std::string, std::string>>& specialCaseToUTI() {
    static const std::vector<std::pair<std::string, std::string>> table = {
        {"alias", "com.apple.resolvable"},
        {"app", "com.apple.application"},
        {"archive", "public.archive"},
        {"audio", "public.audio"},
        {"diskimage", "public.disk-image"},
        {"executable", "public.executable"},
        {"font", "public.font"},
        {"image", "public.image"},
        {"movie", "public.movie"},
        {"pdf", "com.adobe.pdf"},
        {"presentation", "public.presentation"},
        {"source", "public.source-code"},
        {"spreadsheet", "public.spreadsheet"},
        {"text", "public.text"},
        {"video", "public.video"},
        {"public.data", "public.data"},
    };
    return table;
}

}  // namespace quester
