#include "content/ArchiveFile.h"

#include <algorithm>

#include "platform/ReadableFile.h"
#include "platform/UniformTypeTable.h"
#include "support/PathText.h"

namespace quester {

Result<std::string> ArchiveFile::read(const std::string& path) {
    auto file = ReadableFile::open(path);
    if (!file) return file.error();
    return file->readAll(maxBytes);
}

Result<std::string> ArchiveFile::readPrefix(const std::string& path, std::size_t count) {
    auto file = ReadableFile::open(path);
    if (!file) return file.error();
    std::string bytes(count, '\0');
    auto got = file->readAt(0, bytes);
    if (!got) return got.error();
    bytes.resize(*got);
    return bytes;
}

bool ArchiveFile::conformsTo(const std::string& path, std::string_view type, std::string_view extension) {
    const UniformTypeTable& types = UniformTypeTable::shared();
    if (types.declaration(type) == nullptr) return lowercasedExtension(path) == extension;
    return types.conformsTo(types.typeOfItem(path, false), type);
}

std::string ArchiveFile::lowercasedExtension(std::string_view path) {
    std::string extension = pathExtension(path);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c); });
    return extension;
}

}  // namespace quester
