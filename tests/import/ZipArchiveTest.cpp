#include "import/ZipArchive.h"

#include <gtest/gtest.h>

#include <string>

#include "import/ZipWriter.h"
#include "testing/EnvironmentVariable.h"

namespace quester {
namespace {

using testing::ZipWriter;
using ExtractError = ZipArchive::ExtractError;

std::string withEntries(std::initializer_list<const char*> names) {
    ZipWriter writer;
    for (const char* name : names) writer.add(name, std::string("content of ") + name);
    return writer.finish();
}

std::vector<std::string> pathsOf(const ZipArchive& archive) {
    std::vector<std::string> paths;
    for (const auto& entry : archive.entries()) paths.push_back(entry.path);
    return paths;
}

void overwrite32(std::string& bytes, std::size_t offset, std::uint32_t value) {
    std::string field;
    ZipWriter::put32(field, value);
    bytes.replace(offset, 4, field);
}

TEST(ZipArchiveTest, EndRecordBehindLongestCommentIsFoundButNotOneByteFurther) {
    ZipWriter writer;
    writer.add("a.txt", "alpha");
    const std::string longest = writer.finish(std::string(65'535, 'c'));
    EXPECT_EQ(pathsOf(ZipArchive(longest)), std::vector<std::string>{"a.txt"});
    EXPECT_TRUE(ZipArchive(longest + "x").entries().empty());
}

TEST(ZipArchiveTest, DirectoryThatCantBeReadGivesNoEntries) {
    const std::string bytes = withEntries({"a", "b"});
    const std::size_t endRecord = bytes.size() - 22;
    std::string zip64Size = bytes;
    overwrite32(zip64Size, endRecord + 12, 0xFFFFFFFF);
    std::string zip64Offset = bytes;
    overwrite32(zip64Offset, endRecord + 16, 0xFFFFFFFF);
    std::string pastTheEnd = bytes;
    overwrite32(pastTheEnd, endRecord + 16, static_cast<std::uint32_t>(bytes.size()));

    EXPECT_TRUE(ZipArchive(zip64Size).entries().empty());
    EXPECT_TRUE(ZipArchive(zip64Offset).entries().empty());
    EXPECT_TRUE(ZipArchive(pastTheEnd).entries().empty());
    EXPECT_TRUE(ZipArchive(bytes.substr(bytes.size() - 21)).entries().empty());
}

TEST(ZipArchiveTest, DamagedDirectoryRecordKeepsTheEntriesBeforeIt) {
    ZipWriter writer;
    writer.add("first", "1").add("second", "2").add("third", "3");
    std::string bytes = writer.finish();
    const std::size_t secondRecord = writer.directoryOffset() + 46 + std::string("first").size();
    bytes[secondRecord] = 'X';
    EXPECT_EQ(pathsOf(ZipArchive(bytes)), std::vector<std::string>{"first"});
}

TEST(ZipArchiveTest, NameRunningPastTheDirectoryEndsTheWalk) {
    ZipWriter writer;
    writer.add("first", "1").add("second", "2");
    std::string bytes = writer.finish();
    const std::size_t secondRecord = writer.directoryOffset() + 46 + std::string("first").size();
    bytes[secondRecord + 28] = '\xFF';
    EXPECT_EQ(pathsOf(ZipArchive(bytes)), std::vector<std::string>{"first"});
}

TEST(ZipArchiveTest, EntryIsReadFromWhereItsLocalHeaderPlacesIt) {
    ZipWriter writer;
    writer.add(
        ZipWriter::Member{.path = "deflated", .content = "the deflated text", .localExtra = std::string(40, 'e')});
    writer.add(ZipWriter::Member{.path = "stored",
                                 .content = "the stored text",
                                 .deflate = false,
                                 .localExtra = std::string(9, 'e'),
                                 .directoryExtra = std::string(2, 'd')});
    const std::string bytes = writer.finish();
    ZipArchive archive(bytes);
    ASSERT_EQ(archive.entries().size(), 2u);
    EXPECT_EQ(archive.decompress(*archive.entry("deflated")).bytes, "the deflated text");
    const auto stored = archive.decompress(*archive.entry("stored"));
    EXPECT_EQ(stored.error, std::nullopt);
    EXPECT_EQ(stored.bytes, "the stored text");
}

TEST(ZipArchiveTest, WrongCrcOrSizeIsCorrupt) {
    ZipWriter writer;
    writer.add(ZipWriter::Member{.path = "stored crc", .content = "abc", .deflate = false, .crc = 1234});
    writer.add(ZipWriter::Member{.path = "deflated crc", .content = "abc", .crc = 1234});
    writer.add(ZipWriter::Member{.path = "too short", .content = "abcdef", .uncompressedSize = 7});
    writer.add(
        ZipWriter::Member{.path = "stored too long", .content = "abcdef", .deflate = false, .uncompressedSize = 5});
    const std::string bytes = writer.finish();
    ZipArchive archive(bytes);
    for (const auto& entry : archive.entries()) {
        const auto extracted = archive.decompress(entry);
        EXPECT_EQ(extracted.error, ExtractError::corrupt) << entry.path;
        EXPECT_TRUE(extracted.bytes.empty()) << entry.path;
    }
}

TEST(ZipArchiveTest, InflatingPastTheDeclaredSizeIsCorruptBeforeTheExcessIsGiven) {
    ZipWriter writer;
    writer.add(ZipWriter::Member{.path = "bomb", .content = std::string(4 << 20, 'a'), .uncompressedSize = 300'000});
    const std::string bytes = writer.finish();
    ZipArchive archive(bytes);
    std::size_t given = 0;
    const auto error =
        archive.stream(archive.entries().at(0), ZipArchive::maxExtractedSize, [&](std::string_view piece) {
            given += piece.size();
            return true;
        });
    EXPECT_EQ(error, ExtractError::corrupt);
    EXPECT_LE(given, 300'000u);
}

TEST(ZipArchiveTest, ProducedCountOmitsTheBytesOfAPieceThatRanPastTheSize) {
    ZipWriter writer;
    writer.add(ZipWriter::Member{.path = "long", .content = "twelve bytes", .deflate = false, .uncompressedSize = 7});
    const std::string bytes = writer.finish();
    ZipArchive archive(bytes);
    auto reader = archive.reader(archive.entries().at(0), 100);
    char piece[3];
    std::uint64_t given = 0;
    while (std::size_t got = reader.read(piece)) given += got;
    EXPECT_EQ(given, 6u);
    EXPECT_EQ(reader.produced(), given);
    EXPECT_EQ(reader.error(), ExtractError::corrupt);
}

TEST(ZipArchiveTest, SizeLimitAndBadHeadersComeInOrder) {
    ZipWriter writer;
    writer.add("a", "alpha");
    const std::string bytes = writer.finish();
    ZipArchive archive(bytes);
    auto entry = archive.entries().at(0);

    auto overLimit = entry;
    overLimit.uncompressedSize = 2'000'000'001;
    overLimit.localHeaderOffset = 1'000'000;
    EXPECT_EQ(archive.decompress(overLimit).error, ExtractError::tooLarge);
    auto atLimit = entry;
    atLimit.uncompressedSize = 2'000'000'000;
    EXPECT_EQ(archive.decompress(atLimit).error, ExtractError::corrupt);

    auto noLocalHeader = entry;
    noLocalHeader.localHeaderOffset = 1;
    noLocalHeader.method = 12;
    EXPECT_EQ(archive.decompress(noLocalHeader).error, ExtractError::corrupt);
    auto dataPastTheEnd = entry;
    dataPastTheEnd.compressedSize = static_cast<std::int64_t>(bytes.size());
    EXPECT_EQ(archive.decompress(dataPastTheEnd).error, ExtractError::corrupt);
    auto otherMethod = entry;
    otherMethod.method = 12;
    EXPECT_EQ(archive.decompress(otherMethod).error, ExtractError::unsupportedMethod);
    auto truncated = entry;
    truncated.compressedSize -= 2;
    EXPECT_EQ(archive.decompress(truncated).error, ExtractError::corrupt);

    ZipArchive::Progress cancelled{nullptr, [] { return true; }};
    EXPECT_EQ(archive.decompress(entry, cancelled).error, ExtractError::cancelled);
    EXPECT_EQ(archive.decompress(overLimit, cancelled).error, ExtractError::tooLarge);
}

TEST(ZipArchiveTest, EmptyEntriesNeedNoDataButMustHaveAZeroCrc) {
    ZipWriter writer;
    writer.add(ZipWriter::Member{.path = "empty", .content = "", .data = ""});
    writer.add(ZipWriter::Member{.path = "empty with crc", .content = "", .data = "", .crc = 7});
    writer.add(ZipWriter::Member{.path = "no data", .content = "", .data = "", .crc = 0, .uncompressedSize = 3});
    const std::string bytes = writer.finish();
    ZipArchive archive(bytes);
    EXPECT_EQ(archive.decompress(*archive.entry("empty")).error, std::nullopt);
    EXPECT_EQ(archive.decompress(*archive.entry("empty with crc")).error, ExtractError::corrupt);
    EXPECT_EQ(archive.decompress(*archive.entry("no data")).error, ExtractError::corrupt);
}

TEST(ZipArchiveTest, StreamStopsAtItsCapAfterGivingExactlyThatMuch) {
    const std::string content(1'000'000, 'z');
    ZipWriter writer;
    writer.add("big", content).add("stored", content, false);
    const std::string bytes = writer.finish();
    ZipArchive archive(bytes);
    for (const auto& entry : archive.entries()) {
        std::size_t given = 0;
        std::size_t largestPiece = 0;
        const auto error = archive.stream(entry, 300'001, [&](std::string_view piece) {
            given += piece.size();
            largestPiece = std::max(largestPiece, piece.size());
            return true;
        });
        EXPECT_EQ(error, ExtractError::tooLarge) << entry.path;
        EXPECT_EQ(given, 300'001u) << entry.path;
        EXPECT_LE(largestPiece, ZipArchive::inflateBufferSize) << entry.path;
        EXPECT_EQ(archive.stream(entry, content.size(), [](std::string_view) { return true; }), std::nullopt);
    }
}

TEST(ZipArchiveTest, StreamStopsWhenCancelledOrRefusedBetweenRounds) {
    ZipWriter writer;
    writer.add("big", std::string(1'000'000, 'z'));
    const std::string bytes = writer.finish();
    ZipArchive archive(bytes);
    const auto& entry = archive.entries().at(0);
    int rounds = 0;
    EXPECT_EQ(archive.stream(entry, 1 << 20, [&](std::string_view) { return ++rounds < 2; }), ExtractError::cancelled);
    EXPECT_EQ(rounds, 2);

    std::vector<float> reports;
    ZipArchive::Progress progress{[&](float percent) { reports.push_back(percent); },
                                  [&] { return reports.size() >= 3; }};
    EXPECT_EQ(archive.decompress(entry, progress).error, ExtractError::cancelled);
    EXPECT_EQ(reports.size(), 3u);
    EXPECT_NEAR(reports.back(), 52.4, 0.1);
}

TEST(ZipArchiveTest, CategoryComesFromTheUnixModeOrATrailingSlash) {
    ZipWriter writer;
    writer.add(ZipWriter::Member{.path = "link/", .externalAttributes = 0120777u << 16});
    writer.add(ZipWriter::Member{.path = "folder", .externalAttributes = 040755u << 16});
    writer.add(ZipWriter::Member{.path = "dos folder/"});
    writer.add(ZipWriter::Member{.path = "socket", .externalAttributes = 0140755u << 16});
    writer.add(ZipWriter::Member{.path = "bad \xC3\x28 name"});
    writer.add(ZipWriter::Member{.path = "folder", .content = "second of the name"});
    const std::string bytes = writer.finish();
    ZipArchive archive(bytes);
    using Category = ZipArchive::Category;
    EXPECT_EQ(archive.entry("link/")->category, Category::link);
    EXPECT_EQ(archive.entry("folder")->category, Category::directory);
    EXPECT_EQ(archive.entry("dos folder/")->category, Category::directory);
    EXPECT_EQ(archive.entry("socket")->category, Category::file);
    EXPECT_EQ(archive.entry("bad \xEF\xBF\xBD( name")->category, Category::file);
    EXPECT_EQ(archive.entry("nothing"), nullptr);
}

TEST(ZipArchiveTest, DosDatesResolveInTheLocalZoneAndImpossibleOnesGiveZero) {
    testing::EnvironmentVariable zone("TZ", "UTC");
    const std::uint16_t date = (44 << 9) | (3 << 5) | 1;
    const std::uint16_t time = (12 << 11) | (30 << 5) | 5;
    EXPECT_EQ(ZipArchive::dosDateToUnix(date, time), 1'709'296'210);
    EXPECT_EQ(ZipArchive::dosDateToUnix(0, time), 0);
    EXPECT_EQ(ZipArchive::dosDateToUnix((44 << 9) | (13 << 5) | 1, 0), 0);
    EXPECT_EQ(ZipArchive::dosDateToUnix((44 << 9) | (3 << 5), 0), 0);
    EXPECT_EQ(ZipArchive::dosDateToUnix(date, 25 << 11), 0);
    {
        testing::EnvironmentVariable berlin("TZ", "Europe/Berlin");
        EXPECT_EQ(ZipArchive::dosDateToUnix(date, time), 1'709'296'210 - 3600);
    }
}

}  // namespace
}  // namespace quester
