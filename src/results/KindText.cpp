#include "results/KindText.h"

#include <algorithm>
#include <cctype>
#include <unordered_map>

#include "platform/PathText.h"

namespace quester {

namespace {

const std::unordered_map<std::string, std::string>& kindTable() {
    static const std::unordered_map<std::string, std::string> table{
        {"txt", "Plain Text Document"}, {"text", "Plain Text Document"}, {"md", "Markdown Document"},
        {"rtf", "Rich Text Document"}, {"pdf", "PDF Document"}, {"doc", "Microsoft Word Document"},
        {"docx", "Microsoft Word Document"}, {"xls", "Microsoft Excel Workbook"},
        {"xlsx", "Microsoft Excel Workbook"}, {"ppt", "Microsoft PowerPoint Presentation"},
        {"pptx", "Microsoft PowerPoint Presentation"}, {"odt", "OpenDocument Text"},
        {"ods", "OpenDocument Spreadsheet"}, {"odp", "OpenDocument Presentation"}, {"pages", "Pages Document"},
        {"numbers", "Numbers Spreadsheet"}, {"key", "Keynote Presentation"}, {"epub", "EPUB Publication"},
        {"html", "HTML Text"}, {"htm", "HTML Text"}, {"xml", "XML Document"}, {"json", "JSON Document"},
        {"csv", "Comma-Separated Values"}, {"tsv", "Tab-Separated Values"}, {"log", "Log File"},
        {"jpg", "JPEG Image"}, {"jpeg", "JPEG Image"}, {"png", "PNG Image"}, {"gif", "GIF Image"},
        {"tif", "TIFF Image"}, {"tiff", "TIFF Image"}, {"heic", "HEIF Image"}, {"webp", "WebP Image"},
        {"bmp", "Windows Bitmap Image"}, {"svg", "SVG Image"}, {"mp3", "MP3 Audio"}, {"m4a", "MPEG-4 Audio"},
        {"wav", "Waveform Audio"}, {"flac", "FLAC Audio"}, {"ogg", "Ogg Audio"}, {"opus", "Opus Audio"},
        {"mp4", "MPEG-4 Movie"}, {"m4v", "MPEG-4 Movie"}, {"mov", "QuickTime Movie"}, {"mkv", "Matroska Video"},
        {"avi", "AVI Movie"}, {"webm", "WebM Video"}, {"zip", "ZIP Archive"}, {"tar", "Tar Archive"},
        {"gz", "Gzip Archive"}, {"tgz", "Gzip Tar Archive"}, {"bz2", "Bzip2 Archive"}, {"xz", "XZ Archive"},
        {"7z", "7-Zip Archive"}, {"rar", "RAR Archive"}, {"iso", "Disk Image"}, {"dmg", "Disk Image"},
        {"deb", "Debian Package"}, {"c", "C Source"}, {"h", "C Header Source"}, {"cpp", "C++ Source"},
        {"cc", "C++ Source"}, {"cxx", "C++ Source"}, {"hpp", "C++ Header Source"}, {"py", "Python Script"},
        {"sh", "Shell Script"}, {"js", "JavaScript Script"}, {"ts", "TypeScript Source"}, {"java", "Java Source"},
        {"go", "Go Source"}, {"rs", "Rust Source"}, {"rb", "Ruby Script"}, {"pl", "Perl Script"},
        {"swift", "Swift Source"}, {"sql", "SQL Script"}, {"sqlite", "SQLite Database"}, {"db", "Database"},
        {"eml", "Email Message"}, {"emlx", "Mail Message"}, {"mbox", "Mailbox"}, {"ttf", "TrueType Font"},
        {"otf", "OpenType Font"}, {"app", "Application"}, {"qscache", "Quester Cache"},
    };
    return table;
}

std::string lowercased(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

}  // namespace

std::optional<std::string> KindText::kindStringForExtension(std::string_view extension) {
    if (extension.empty()) return std::nullopt;
    const auto found = kindTable().find(lowercased(extension));
    if (found == kindTable().end()) return std::nullopt;
    return found->second;
}

std::string KindText::kindStringForFile(std::string_view path) {
    return kindStringForExtension(pathExtension(path)).value_or("Document");
}

std::string KindText::kindStringForFolder(std::string_view path) {
    return kindStringForExtension(pathExtension(path)).value_or("Folder");
}

}  // namespace quester
