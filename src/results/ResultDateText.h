#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "support/Clock.h"

namespace quester {

// A result's date in the short date and short time style of a locale:
// "Today at 14:05", "Yesterday at …", "Tomorrow at …" near now, else the
// full short date and time, with the year and its surrounding blanks
// reduced to one blank when it is this year's and stands between blanks.
// Not thread-safe: one per thread or per export.
class ResultDateText {
public:
    // `locale` as ICU names it ("en_GB"; empty for the default locale), `timeZone`
    // as an Olson id ("Europe/Berlin"; empty for the system's). `clock` must outlive this.
    explicit ResultDateText(const std::string& locale = "", const std::string& timeZone = "",
                            const Clock& clock = SystemClock::shared());
    ~ResultDateText();
    ResultDateText(const ResultDateText&) = delete;
    ResultDateText& operator=(const ResultDateText&) = delete;

    // Whole seconds since 1970.
    std::string dateToString(std::int64_t seconds) const;

private:
    struct Formatters;

    const Clock& clock;
    std::unique_ptr<Formatters> formatters;
};

}  // namespace quester
