#include "cache/FSItem.h"

#include <limits>

#include "support/Utf8Text.h"

namespace quester {

namespace {

constexpr std::size_t maxNameBytes = 65535;

// Reads fixed-width little-endian fields one after the other. A read that
// would pass the end fails, and so does every read after it.
class RecordReader {
public:
    explicit RecordReader(std::string_view data) : data(data) {}

    template <typename T>
    std::optional<T> next() {
        std::optional<std::string_view> bytes = take(sizeof(T));
        if (!bytes) return std::nullopt;
        return DataConvertible<T>::fromData(*bytes);
    }
    std::optional<std::string_view> take(std::size_t count) {
        if (failed || data.size() - offset < count) {
            failed = true;
            return std::nullopt;
        }
        std::string_view bytes = data.substr(offset, count);
        offset += count;
        return bytes;
    }

private:
    std::string_view data;
    std::size_t offset = 0;
    bool failed = false;
};

}  // namespace

FSItem FSItem::root() {
    return FSItem{0, 0, types::directory, "", 0, 0, 1, 0};
}

std::int32_t FSItem::storedDate(FileTime time) {
    std::int64_t seconds = time.seconds - ReferenceDate::unixOffset;
    if (seconds < std::numeric_limits<std::int32_t>::min() || seconds > std::numeric_limits<std::int32_t>::max())
        return 0;
    return static_cast<std::int32_t>(seconds);
}

std::optional<std::string> FSItem::asData() const {
    if (name.size() > maxNameBytes) return std::nullopt;
    std::string data;
    data.reserve(28 + name.size());
    data += DataConvertible<std::uint32_t>::asData(fsid);
    data += DataConvertible<std::uint32_t>::asData(parentID);
    data += static_cast<char>(type);
    data += DataConvertible<std::int32_t>::asData(creationDate);
    data += DataConvertible<std::int32_t>::asData(modificationDate);
    data += DataConvertible<std::uint16_t>::asData(static_cast<std::uint16_t>(name.size()));
    data += name;
    data += static_cast<char>(version);
    data += DataConvertible<std::int64_t>::asData(size);
    return data;
}

std::optional<std::string_view> FSItem::nameInData(std::string_view data) {
    RecordReader reader(data);
    (void)reader.take(nameLengthOffset);
    auto nameLength = reader.next<std::uint16_t>();
    if (!nameLength || static_cast<std::uint8_t>(data[typeOffset]) > 1) return std::nullopt;
    return reader.take(*nameLength);
}

std::optional<FSItem> FSItem::fromData(std::string_view data) {
    RecordReader reader(data);
    FSItem item;
    auto fsid = reader.next<std::uint32_t>();
    auto parentID = reader.next<std::uint32_t>();
    auto type = reader.next<std::uint8_t>();
    auto creation = reader.next<std::int32_t>();
    auto modification = reader.next<std::int32_t>();
    auto nameLength = reader.next<std::uint16_t>();
    if (!nameLength || *type > 1) return std::nullopt;
    std::optional<std::string_view> name = reader.take(*nameLength);
    if (!name || name->empty() || !isValidUTF8(*name)) return std::nullopt;
    std::optional<std::uint8_t> version = reader.next<std::uint8_t>();
    std::optional<std::int64_t> size = version ? reader.next<std::int64_t>() : std::nullopt;
    return FSItem{*fsid,     *parentID,     static_cast<types>(*type), std::string(*name),
                  *creation, *modification, version.value_or(0),       size.value_or(-1)};
}

std::string DataConvertible<FSItem>::asData(const FSItem& item) {
    if (std::optional<std::string> data = item.asData()) return *data;
    FSItem renamed = item;
    renamed.name = "Unknown";
    return *renamed.asData();
}

}  // namespace quester
