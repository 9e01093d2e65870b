#include "query/SearchResult.h"

#include <nlohmann/json.hpp>

namespace quester {

namespace {

void readFileDates(const std::string& path, SearchResult& result, FileSystem& fileSystem) {
    const auto status = fileSystem.status(path);
    if (!status) return;
    result.size = status->size;
    result.modDate = status->modifyTime.seconds;
    result.creationDate = status->createTime.seconds;
}

// Reads required keys one after another and keeps the first failure.
class RequiredFields {
public:
    explicit RequiredFields(const nlohmann::ordered_json& object) : object(object) {}

    template <typename T>
    T read(const char* key) {
        auto found = object.find(key);
        if (found == object.end()) return fail<T>(std::string("missing key ") + key);
        if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>) {
            // Converting a number with a fraction or an exponent that the integer can't hold is undefined.
            if (!found->is_number_integer()) return fail<T>(std::string("wrong type for key ") + key);
        }
        try {
            return found->get<T>();
        } catch (const nlohmann::json::exception&) {
            return fail<T>(std::string("wrong type for key ") + key);
        }
    }

    const std::optional<Error>& error() const { return firstError; }

private:
    template <typename T>
    T fail(std::string message) {
        if (!firstError) firstError = makeError(ErrorCode::invalidArgument, std::move(message));
        return T{};
    }

    const nlohmann::ordered_json& object;
    std::optional<Error> firstError;
};

}  // namespace

SearchResult SearchResult::forFile(SearchResultSupplier supplier, const std::string& path, bool checkToSeeIfItExists,
                                   FileSystem& fileSystem) {
    SearchResult result;
    result.url = Url(path, false);
    result.checkToSeeIfItExists = checkToSeeIfItExists;
    result.strikeThroughDisplayNameIfMissing = true;
    result.searchResultSuppliedBy = supplier;
    readFileDates(path, result, fileSystem);
    return result;
}

nlohmann::ordered_json SearchResult::toJSONObject() const {
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    if (diskKey) object["diskKey"] = *diskKey;
    object["url"] = fileURLString(url);
    object["isDirectory"] = isDirectory;
    object["size"] = size;
    object["creationDate"] = creationDate;
    object["modDate"] = modDate;
    object["lastAccessDate"] = lastAccessDate;
    object["checkToSeeIfItExists"] = checkToSeeIfItExists;
    object["uuid"] = uuid.toString();
    object["searchResultSuppliedBy"] = static_cast<int>(searchResultSuppliedBy);
    object["ignoreSearchLocation"] = ignoreSearchLocation;
    object["contentSearchResultsRank"] = contentSearchResultsRank;
    object["strikeThroughDisplayNameIfMissing"] = strikeThroughDisplayNameIfMissing;
    return object;
}

std::string SearchResult::toJSON() const {
    return toJSONObject().dump();
}

Result<SearchResult> SearchResult::fromJSON(std::string_view text) {
    auto object = nlohmann::ordered_json::parse(text, nullptr, false);
    if (object.is_discarded()) return makeError(ErrorCode::invalidArgument, "search result is no JSON");
    return fromJSONObject(object);
}

Result<SearchResult> SearchResult::fromJSONObject(const nlohmann::ordered_json& object) {
    if (!object.is_object()) return makeError(ErrorCode::invalidArgument, "search result is no JSON object");
    RequiredFields fields(object);
    auto urlText = fields.read<std::string>("url");
    SearchResult result;
    result.isDirectory = fields.read<bool>("isDirectory");
    result.size = fields.read<std::uint64_t>("size");
    result.creationDate = fields.read<std::int64_t>("creationDate");
    result.modDate = fields.read<std::int64_t>("modDate");
    result.lastAccessDate = fields.read<std::int64_t>("lastAccessDate");
    result.checkToSeeIfItExists = fields.read<bool>("checkToSeeIfItExists");
    auto uuidText = fields.read<std::string>("uuid");
    auto supplierRaw = fields.read<long long>("searchResultSuppliedBy");
    result.ignoreSearchLocation = fields.read<bool>("ignoreSearchLocation");
    result.contentSearchResultsRank = fields.read<std::int64_t>("contentSearchResultsRank");
    result.strikeThroughDisplayNameIfMissing = fields.read<bool>("strikeThroughDisplayNameIfMissing");
    if (fields.error()) return *fields.error();

    auto url = urlFromFileURLString(urlText);
    if (!url) return makeError(ErrorCode::invalidArgument, "url is no file URL: " + urlText);
    auto uuid = Uuid::fromString(uuidText);
    if (!uuid) return makeError(ErrorCode::invalidArgument, "uuid is no UUID: " + uuidText);
    auto supplier = searchResultSupplierFromRaw(supplierRaw);
    if (!supplier) return makeError(ErrorCode::invalidArgument, "unknown supplier " + std::to_string(supplierRaw));
    if (auto key = object.find("diskKey"); key != object.end() && key->is_string())
        result.diskKey = key->get<std::string>();
    result.url = *url;
    result.uuid = *uuid;
    result.searchResultSuppliedBy = *supplier;
    return result;
}

}  // namespace quester
