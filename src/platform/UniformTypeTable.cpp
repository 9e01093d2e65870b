#include "platform/UniformTypeTable.h"

#include <algorithm>
#include <array>

#include "support/PathText.h"

namespace quester {

namespace {

// One row of the table. Lists are blank-separated; extensions are lowercase.
struct TypeRow {
    std::string_view identifier;
    std::string_view parents;
    std::string_view description;
    std::string_view extensions;
    std::string_view mimeTypes;
};

// When two rows name one extension, the earlier row is the preferred type.
constexpr std::array kTypeRows = std::to_array<TypeRow>({
    // The roots and the abstract types the others hang from.
    {"public.item", "", "Item", "", ""},
    {"public.content", "", "Content", "", ""},
    {"public.data", "public.item", "Data", "", "application/octet-stream"},
    {"public.directory", "public.item", "Directory", "", ""},
    {"public.folder", "public.directory", "Folder", "", "inode/directory"},
    {"com.apple.package", "public.directory", "Package", "", ""},
    {"com.apple.bundle", "public.directory", "Bundle", "", ""},
    {"com.apple.resolvable", "", "Alias or link", "", ""},
    {"public.symlink", "public.item com.apple.resolvable", "Symbolic link", "", "inode/symlink"},
    {"com.apple.alias-file", "public.data com.apple.resolvable", "Alias", "", ""},
    {"public.composite-content", "public.content", "Composite content", "", ""},
    {"public.text", "public.data public.content", "Text", "", ""},
    {"public.image", "public.data public.content", "Image", "", ""},
    {"public.audiovisual-content", "public.data public.content", "Audiovisual content", "", ""},
    {"public.audio", "public.audiovisual-content", "Audio", "", ""},
    {"public.movie", "public.audiovisual-content", "Movie", "", ""},
    {"public.video", "public.movie", "Video", "", ""},
    {"public.archive", "public.data", "Archive", "", ""},
    {"public.disk-image", "public.data public.archive", "Disk image", "", ""},
    {"public.font", "public.data public.content", "Font", "", ""},
    {"public.spreadsheet", "public.content", "Spreadsheet", "", ""},
    {"public.presentation", "public.composite-content", "Presentation", "", ""},
    {"public.database", "public.data", "Database", "", ""},

    // Applications and executables. On Linux a desktop entry or an AppImage is
    // what a person starts as an application.
    {"public.executable", "public.item", "Executable", "", ""},
    {"com.apple.application", "public.executable", "Application", "", ""},
    {"com.apple.application-bundle", "com.apple.application com.apple.bundle com.apple.package", "Application", "app",
     ""},
    {"org.freedesktop.desktop-entry", "com.apple.application public.data", "Desktop application", "desktop",
     "application/x-desktop"},
    {"public.unix-executable", "public.data public.executable", "Unix executable", "run bin",
     "application/x-executable"},
    {"org.appimage.appimage", "public.unix-executable com.apple.application", "AppImage application", "appimage",
     "application/vnd.appimage application/x-appimage"},
    {"com.microsoft.windows-executable", "public.data public.executable", "Windows executable", "exe",
     "application/vnd.microsoft.portable-executable application/x-msdownload"},
    {"org.freedesktop.shared-library", "public.data", "Shared library", "so", "application/x-sharedlib"},

    // Text.
    {"public.plain-text", "public.text", "Plain text document", "txt text", "text/plain"},
    {"public.log", "public.plain-text", "Log file", "log", "text/x-log"},
    {"net.daringfireball.markdown", "public.plain-text", "Markdown document", "md markdown mdown",
     "text/markdown text/x-markdown"},
    {"public.patch-file", "public.plain-text", "Patch file", "patch diff", "text/x-patch text/x-diff"},
    {"public.rtf", "public.text", "Rich text document", "rtf", "text/rtf application/rtf"},
    {"public.html", "public.text", "HTML document", "html htm shtml xhtml", "text/html application/xhtml+xml"},
    {"public.xml", "public.text", "XML document", "xml", "application/xml text/xml"},
    {"public.json", "public.text", "JSON document", "json", "application/json"},
    {"public.yaml", "public.text", "YAML document", "yaml yml", "application/yaml"},
    {"public.delimited-values-text", "public.text", "Delimited text", "", ""},
    {"public.comma-separated-values-text", "public.delimited-values-text", "Comma-separated values", "csv", "text/csv"},
    {"public.tab-separated-values-text", "public.delimited-values-text", "Tab-separated values", "tsv tab",
     "text/tab-separated-values"},
    {"public.vcard", "public.text", "vCard", "vcf vcard", "text/vcard"},
    {"public.calendar-event", "public.text", "Calendar", "ics", "text/calendar"},

    // Source code and scripts.
    {"public.source-code", "public.plain-text", "Source code", "", ""},
    {"public.script", "public.source-code", "Script", "", ""},
    {"public.c-source", "public.source-code", "C source", "c", "text/x-csrc"},
    {"public.c-header", "public.source-code", "C header", "h", "text/x-chdr"},
    {"public.c-plus-plus-source", "public.source-code", "C++ source", "cpp cc cxx c++", "text/x-c++src"},
    {"public.c-plus-plus-header", "public.source-code", "C++ header", "hpp hh hxx h++", "text/x-c++hdr"},
    {"public.objective-c-source", "public.source-code", "Objective-C source", "m mm", "text/x-objcsrc"},
    {"public.assembly-source", "public.source-code", "Assembly source", "s asm", "text/x-asm"},
    {"com.sun.java-source", "public.source-code", "Java source", "java", "text/x-java"},
    {"org.rust-lang.rust-source", "public.source-code", "Rust source", "rs", "text/rust text/x-rust"},
    {"org.golang.go-source", "public.source-code", "Go source", "go", "text/x-go"},
    {"public.swift-source", "public.source-code", "Swift source", "swift", "text/x-swift"},
    {"org.kotlinlang.kotlin-source", "public.source-code", "Kotlin source", "kt kts", "text/x-kotlin"},
    {"com.microsoft.c-sharp-source", "public.source-code", "C# source", "cs", "text/x-csharp"},
    {"com.microsoft.typescript", "public.source-code", "TypeScript source", "ts tsx", "application/x-typescript"},
    {"public.css", "public.source-code", "CSS style sheet", "css", "text/css"},
    {"org.iso.sql", "public.source-code", "SQL script", "sql", "application/sql"},
    {"public.shell-script", "public.script", "Shell script", "sh bash zsh ksh csh fish",
     "application/x-shellscript text/x-shellscript"},
    {"public.python-script", "public.script", "Python script", "py pyw", "text/x-python"},
    {"public.ruby-script", "public.script", "Ruby script", "rb", "application/x-ruby"},
    {"public.perl-script", "public.script", "Perl script", "pl pm", "application/x-perl text/x-perl"},
    {"public.php-script", "public.script", "PHP script", "php", "application/x-php"},
    {"org.lua.lua-script", "public.script", "Lua script", "lua", "text/x-lua"},
    {"com.netscape.javascript-source", "public.script", "JavaScript script", "js mjs cjs",
     "text/javascript application/javascript"},

    // Documents. Office files are zip containers inside, but a person means a
    // document by them, never an archive.
    {"com.adobe.pdf", "public.data public.composite-content", "PDF document", "pdf", "application/pdf"},
    {"com.adobe.postscript", "public.data public.composite-content", "PostScript document", "ps eps",
     "application/postscript"},
    {"com.microsoft.word.doc", "public.data public.composite-content", "Microsoft Word 97 document", "doc",
     "application/msword"},
    {"org.openxmlformats.wordprocessingml.document", "public.data public.composite-content", "Microsoft Word document",
     "docx", "application/vnd.openxmlformats-officedocument.wordprocessingml.document"},
    {"org.oasis-open.opendocument.text", "public.data public.composite-content", "OpenDocument text", "odt",
     "application/vnd.oasis.opendocument.text"},
    {"com.apple.iwork.pages.sffpages", "public.data public.composite-content", "Pages document", "pages",
     "application/vnd.apple.pages"},
    {"org.idpf.epub-container", "public.data public.composite-content", "EPUB book", "epub", "application/epub+zip"},
    {"com.microsoft.excel.xls", "public.data public.spreadsheet", "Microsoft Excel 97 workbook", "xls",
     "application/vnd.ms-excel"},
    {"org.openxmlformats.spreadsheetml.sheet", "public.data public.spreadsheet", "Microsoft Excel workbook", "xlsx",
     "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"},
    {"org.oasis-open.opendocument.spreadsheet", "public.data public.spreadsheet", "OpenDocument spreadsheet", "ods",
     "application/vnd.oasis.opendocument.spreadsheet"},
    {"com.apple.iwork.numbers.sffnumbers", "public.data public.spreadsheet", "Numbers spreadsheet", "numbers",
     "application/vnd.apple.numbers"},
    {"com.microsoft.powerpoint.ppt", "public.data public.presentation", "Microsoft PowerPoint 97 presentation", "ppt",
     "application/vnd.ms-powerpoint"},
    {"org.openxmlformats.presentationml.presentation", "public.data public.presentation",
     "Microsoft PowerPoint presentation", "pptx",
     "application/vnd.openxmlformats-officedocument.presentationml.presentation"},
    {"org.oasis-open.opendocument.presentation", "public.data public.presentation", "OpenDocument presentation", "odp",
     "application/vnd.oasis.opendocument.presentation"},
    {"com.apple.iwork.keynote.sffkey", "public.data public.presentation", "Keynote presentation", "key",
     "application/vnd.apple.keynote"},

    // Images.
    {"public.jpeg", "public.image", "JPEG image", "jpg jpeg jpe jfif", "image/jpeg"},
    {"public.png", "public.image", "PNG image", "png", "image/png"},
    {"com.compuserve.gif", "public.image", "GIF image", "gif", "image/gif"},
    {"com.microsoft.bmp", "public.image", "Windows bitmap image", "bmp dib", "image/bmp"},
    {"public.tiff", "public.image", "TIFF image", "tif tiff", "image/tiff"},
    {"org.webmproject.webp", "public.image", "WebP image", "webp", "image/webp"},
    {"public.heif-standard", "public.image", "HEIF image", "heif hif", "image/heif"},
    {"public.heic", "public.heif-standard", "HEIC image", "heic", "image/heic"},
    {"public.avif", "public.image", "AVIF image", "avif", "image/avif"},
    {"public.svg-image", "public.image", "SVG image", "svg svgz", "image/svg+xml"},
    {"com.microsoft.ico", "public.image", "Windows icon image", "ico", "image/vnd.microsoft.icon image/x-icon"},
    {"com.adobe.photoshop-image", "public.image", "Adobe Photoshop image", "psd", "image/vnd.adobe.photoshop"},
    {"com.adobe.illustrator.ai-image", "public.image", "Adobe Illustrator document", "ai", "application/illustrator"},
    {"org.gimp.xcf", "public.image", "GIMP image", "xcf", "image/x-xcf"},
    {"public.camera-raw-image", "public.image", "Camera raw image", "", ""},
    {"com.canon.raw-image", "public.camera-raw-image", "Canon raw image", "cr2 cr3 crw", "image/x-canon-cr2"},
    {"com.nikon.raw-image", "public.camera-raw-image", "Nikon raw image", "nef nrw", "image/x-nikon-nef"},
    {"com.sony.raw-image", "public.camera-raw-image", "Sony raw image", "arw srf sr2", "image/x-sony-arw"},
    {"com.adobe.raw-image", "public.camera-raw-image", "Digital negative image", "dng", "image/x-adobe-dng"},
    {"com.fuji.raw-image", "public.camera-raw-image", "Fujifilm raw image", "raf", "image/x-fuji-raf"},
    {"com.olympus.raw-image", "public.camera-raw-image", "Olympus raw image", "orf", "image/x-olympus-orf"},
    {"com.panasonic.raw-image", "public.camera-raw-image", "Panasonic raw image", "rw2", "image/x-panasonic-rw2"},

    // Audio.
    {"public.mp3", "public.audio", "MP3 audio", "mp3", "audio/mpeg"},
    {"public.mpeg-4-audio", "public.audio", "MPEG-4 audio", "m4a m4b", "audio/mp4 audio/x-m4a"},
    {"public.aac-audio", "public.audio", "AAC audio", "aac adts", "audio/aac"},
    {"org.xiph.flac", "public.audio", "FLAC audio", "flac", "audio/flac"},
    {"com.microsoft.waveform-audio", "public.audio", "Waveform audio", "wav wave", "audio/wav audio/x-wav"},
    {"org.xiph.ogg-audio", "public.audio", "Ogg Vorbis audio", "ogg oga", "audio/ogg"},
    {"org.xiph.opus", "public.audio", "Opus audio", "opus", "audio/opus"},
    {"public.aiff-audio", "public.audio", "AIFF audio", "aiff aif aifc", "audio/aiff audio/x-aiff"},
    {"com.microsoft.windows-media-wma", "public.audio", "Windows Media audio", "wma", "audio/x-ms-wma"},
    {"public.midi-audio", "public.audio", "MIDI audio", "mid midi", "audio/midi"},

    // Movies.
    {"public.mpeg-4", "public.movie", "MPEG-4 movie", "mp4 mpeg4", "video/mp4"},
    {"com.apple.m4v-video", "public.mpeg-4", "MPEG-4 video", "m4v", "video/x-m4v"},
    {"com.apple.quicktime-movie", "public.movie", "QuickTime movie", "mov qt", "video/quicktime"},
    {"org.matroska.mkv", "public.movie", "Matroska video", "mkv", "video/x-matroska"},
    {"org.webmproject.webm", "public.movie", "WebM video", "webm", "video/webm"},
    {"public.avi", "public.movie", "AVI movie", "avi", "video/x-msvideo video/avi"},
    {"public.mpeg", "public.movie", "MPEG movie", "mpeg mpg mpe m2v", "video/mpeg"},
    {"public.mpeg-2-transport-stream", "public.movie", "MPEG-2 transport stream", "mts m2ts", "video/mp2t"},
    {"com.microsoft.windows-media-wmv", "public.movie", "Windows Media video", "wmv", "video/x-ms-wmv"},
    {"public.3gpp", "public.movie", "3GPP movie", "3gp 3gpp", "video/3gpp"},
    {"org.xiph.ogg-video", "public.movie", "Ogg video", "ogv", "video/ogg"},
    {"com.adobe.flash.video", "public.movie", "Flash video", "flv", "video/x-flv"},

    // Archives and packages.
    {"com.pkware.zip-archive", "public.data public.archive", "ZIP archive", "", ""},
    {"public.zip-archive", "com.pkware.zip-archive", "ZIP archive", "zip", "application/zip"},
    {"com.sun.java-archive", "public.zip-archive", "Java archive", "jar", "application/java-archive"},
    {"public.tar-archive", "public.data public.archive", "Tar archive", "tar", "application/x-tar"},
    {"org.gnu.gnu-zip-archive", "public.data public.archive", "Gzip archive", "gz gzip", "application/gzip"},
    {"org.gnu.gnu-zip-tar-archive", "org.gnu.gnu-zip-archive", "Gzip tar archive", "tgz",
     "application/x-compressed-tar"},
    {"public.bzip2-archive", "public.data public.archive", "Bzip2 archive", "bz2 bzip2", "application/x-bzip2"},
    {"public.tar-bzip2-archive", "public.bzip2-archive", "Bzip2 tar archive", "tbz2 tbz",
     "application/x-bzip-compressed-tar"},
    {"org.tukaani.xz-archive", "public.data public.archive", "XZ archive", "xz", "application/x-xz"},
    {"org.tukaani.tar-xz-archive", "org.tukaani.xz-archive", "XZ tar archive", "txz",
     "application/x-xz-compressed-tar"},
    {"org.7-zip.7-zip-archive", "public.data public.archive", "7-Zip archive", "7z", "application/x-7z-compressed"},
    {"com.rarlab.rar-archive", "public.data public.archive", "RAR archive", "rar", "application/vnd.rar"},
    {"com.facebook.zstandard-archive", "public.data public.archive", "Zstandard archive", "zst zstd",
     "application/zstd"},
    {"org.debian.deb-archive", "public.data public.archive", "Debian package", "deb",
     "application/vnd.debian.binary-package"},
    {"com.redhat.rpm-archive", "public.data public.archive", "RPM package", "rpm", "application/x-rpm"},

    // Disk images.
    {"public.iso-image", "public.disk-image", "ISO disk image", "iso", "application/x-iso9660-image"},
    {"com.apple.disk-image-udif", "public.disk-image", "Apple disk image", "dmg", "application/x-apple-diskimage"},
    {"public.raw-disk-image", "public.disk-image", "Raw disk image", "img", "application/x-raw-disk-image"},
    {"org.qemu.qcow2-disk-image", "public.disk-image", "QCOW2 disk image", "qcow2 qcow", "application/x-qemu-disk"},
    {"com.microsoft.virtual-hard-disk", "public.disk-image", "Virtual hard disk image", "vhd vhdx",
     "application/x-vhd"},
    {"org.virtualbox.vdi-disk-image", "public.disk-image", "VirtualBox disk image", "vdi",
     "application/x-virtualbox-vdi"},
    {"com.vmware.vmdk-disk-image", "public.disk-image", "VMware disk image", "vmdk", "application/x-vmdk"},

    // Fonts.
    {"public.truetype-font", "public.font", "TrueType font", "", ""},
    {"public.truetype-ttf-font", "public.truetype-font", "TrueType font", "ttf", "font/ttf"},
    {"public.truetype-collection-font", "public.truetype-font", "TrueType font collection", "ttc", "font/collection"},
    {"public.opentype-font", "public.font", "OpenType font", "otf", "font/otf"},
    {"org.w3.woff", "public.font", "WOFF web font", "woff", "font/woff"},
    {"org.w3.woff2", "public.font", "WOFF2 web font", "woff2", "font/woff2"},

    // Mail, data stores and the rest a home folder holds.
    {"public.email-message", "public.data public.content", "Email message", "eml", "message/rfc822"},
    {"com.apple.mail.emlx", "public.email-message", "Mail message", "emlx", ""},
    {"org.freedesktop.mbox", "public.data", "Mailbox", "mbox", "application/mbox"},
    {"org.sqlite.sqlite3", "public.database", "SQLite database", "sqlite sqlite3 db", "application/vnd.sqlite3"},
    {"org.bittorrent.torrent", "public.data", "BitTorrent file", "torrent", "application/x-bittorrent"},
    {"com.lanternworks.quester.cache", "public.data", "Quester cache", "qscache", ""},
});

std::string asciiLowercased(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

bool hasCapitals(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

// `text` itself when it is lowercase already, else its lowercase copy in `copy`.
std::string_view lowercaseView(std::string_view text, std::string& copy) {
    if (!hasCapitals(text)) return text;
    copy = asciiLowercased(text);
    return copy;
}

std::vector<std::string> blankSeparated(std::string_view list) {
    return splitNonEmpty(list, ' ');
}

UniformTypeDeclaration declarationOf(const TypeRow& row) {
    return {std::string(row.identifier), blankSeparated(row.parents), std::string(row.description),
            blankSeparated(row.extensions), blankSeparated(row.mimeTypes)};
}

}  // namespace

UniformTypeTable::UniformTypeTable() {
    declarations.reserve(kTypeRows.size());
    for (const auto& row : kTypeRows) declarations.push_back(declarationOf(row));
    // The vector is complete, so the pointers below stay valid.
    for (const auto& declaration : declarations) {
        byIdentifier.emplace(asciiLowercased(declaration.identifier), &declaration);
        for (const auto& extension : declaration.filenameExtensions) byExtension.emplace(extension, &declaration);
    }
    for (const auto& declaration : declarations) {
        auto& ancestors = ancestorsOf[asciiLowercased(declaration.identifier)];
        addParentsOf(declaration.identifier, ancestors);
    }
}

const UniformTypeTable& UniformTypeTable::shared() {
    static const UniformTypeTable table;
    return table;
}

// Adds `identifier` and everything above it; a type already present isn't
// walked again, so a cycle in the data would end too.
void UniformTypeTable::addParentsOf(const std::string& identifier, TextSet& ancestors) const {
    auto lower = asciiLowercased(identifier);
    if (!ancestors.insert(lower).second) return;
    const auto* found = declaration(lower);
    if (!found) return;
    for (const auto& parent : found->conformsTo) addParentsOf(parent, ancestors);
}

std::optional<std::string> UniformTypeTable::typeForExtension(std::string_view extension) const {
    std::string copy;
    const auto found = byExtension.find(lowercaseView(extension, copy));
    if (found == byExtension.end()) return std::nullopt;
    return found->second->identifier;
}

bool UniformTypeTable::conformsTo(std::string_view type, std::string_view parent) const {
    std::string typeCopy;
    std::string parentCopy;
    const std::string_view lowerType = lowercaseView(type, typeCopy);
    const std::string_view lowerParent = lowercaseView(parent, parentCopy);
    if (lowerType == lowerParent) return true;
    const auto found = ancestorsOf.find(lowerType);
    return found != ancestorsOf.end() && found->second.contains(lowerParent);
}

const UniformTypeDeclaration* UniformTypeTable::declaration(std::string_view type) const {
    std::string copy;
    const auto found = byIdentifier.find(lowercaseView(type, copy));
    return found == byIdentifier.end() ? nullptr : found->second;
}

std::optional<std::string> UniformTypeTable::description(std::string_view type) const {
    const auto* found = declaration(type);
    if (!found || found->description.empty()) return std::nullopt;
    return found->description;
}

std::string UniformTypeTable::typeOfItem(std::string_view path, bool isDirectory) const {
    const auto extension = pathExtension(path);
    if (isDirectory) return asciiLowercased(extension) == "app" ? "com.apple.application-bundle" : "public.folder";
    return typeForExtension(extension).value_or("public.data");
}

}  // namespace quester
