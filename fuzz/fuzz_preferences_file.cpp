// Any bytes as the preferences file: every user store reads what it keeps
// there, dropping the entries that don't read. What reads is written again
// and must read back to the same stored form.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include <nlohmann/json.hpp>

#include "stores/FavoriteFolders.h"
#include "stores/GroupStore.h"
#include "stores/HistoryController.h"
#include "stores/IgnoreItems.h"
#include "stores/Preferences.h"
#include "stores/RecentLocations.h"
#include "stores/SavedSearches.h"

namespace {

template <typename Item>
void mustRoundTrip(const Item& item) {
    const auto again = Item::fromStored(item.toStored());
    if (!again || again->toStored() != item.toStored()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quester;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto values = nlohmann::json::parse(text, nullptr, false);
    if (values.is_discarded() || !values.is_object()) return 0;
    static MainLoop loop;
    static NotificationCenter center(loop);
    Preferences preferences("", center);
    preferences.registerDefaults(Preferences::registeredDefaultsTable());
    if (!preferences.setValues(values)) std::abort();

    for (const auto& item : HistoryController(preferences, center).items()) mustRoundTrip(item);
    for (const auto& [id, item] : SavedSearches(preferences, center).contents()) mustRoundTrip(item);
    for (const auto& group : GroupStore(preferences).content()) mustRoundTrip(group);
    const IgnoreItems ignored(preferences);
    (void)ignored.ignores("/home/user/a.b/c.d");
    (void)ignored.itemsForDisplay();
    (void)FavoriteFolders(preferences, center).downloadsName();
    (void)RecentLocations(preferences).contents();
    return 0;
}
