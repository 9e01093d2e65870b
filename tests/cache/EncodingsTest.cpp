#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cache/DataConvertible.h"
#include "cache/FSItem.h"
#include "cache/PackedNumbers.h"
#include "cache/WordContainer.h"
#include "support/Crc64.h"

namespace quester {
namespace {

std::string bytes(std::initializer_list<int> values) {
    std::string data;
    for (int value : values) data.push_back(static_cast<char>(value));
    return data;
}

TEST(PackedNumbers, GoldenBytesOfTheDocumentedExamples) {
    struct Example {
        std::vector<std::uint32_t> numbers;
        std::string packed;
    };
    std::vector<Example> examples = {
        {{}, ""},
        {{5}, bytes({0x05})},
        {{300}, bytes({0x01, 0x2C})},
        {{70000}, bytes({0x03, 0x01, 0x01, 0x11, 0x70})},
        {{65536}, bytes({0x03, 0x01, 0x01, 0x00, 0x00})},
        {{1, 2, 3}, bytes({0x01, 0x03, 0x01, 0x02, 0x03})},
        {{1, 300, 2}, bytes({0x01, 0x01, 0x01, 0x02, 0x02, 0x01, 0x2C, 0x00, 0x02})},
        {{16777216, 1}, bytes({0x04, 0x02, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01})},
    };
    for (const Example& example : examples) {
        EXPECT_EQ(storePacked(example.numbers), example.packed);
        EXPECT_EQ(unpackStored(example.packed), example.numbers);
    }
}

TEST(PackedNumbers, LongListsSplitIntoGroupsOf255) {
    std::vector<std::uint32_t> numbers(256, 7);
    std::string packed = storePacked(numbers);
    ASSERT_EQ(packed.size(), 2u + 255u + 2u + 1u);
    EXPECT_EQ(static_cast<unsigned char>(packed[1]), 255);
    EXPECT_EQ(static_cast<unsigned char>(packed[257]), 1);
    EXPECT_EQ(unpackStored(packed), numbers);
}

TEST(PackedNumbers, BadGroupsReadAsEmpty) {
    EXPECT_TRUE(unpackStored(bytes({0x01, 0x02, 0x05, 0x00, 0x03})).empty());              // width 0 after a good group
    EXPECT_TRUE(unpackStored(bytes({0x05, 0x01, 0x01, 0x02, 0x03, 0x04, 0x05})).empty());  // width 5
    EXPECT_TRUE(unpackStored(bytes({0x02, 0x03, 0x00, 0x01})).empty());                    // runs past the end
}

TEST(PackedNumbers, DeltasRoundTripSortedLists) {
    EXPECT_EQ(differential({5, 7, 12}), (std::vector<std::int64_t>{5, 2, 5}));
    EXPECT_EQ(differential({9}), (std::vector<std::int64_t>{9}));
    EXPECT_EQ(inverseDifferential({5, 2, 5}), (std::vector<std::int64_t>{5, 7, 12}));
    std::vector<std::uint32_t> ids = {3, 4, 1000, 70000, 4000000000u};
    EXPECT_EQ(unpackDeltaStored(storeDeltaPacked(ids)), ids);
}

TEST(WordContainer, StoredFormMixesBigEndianNumbersWithLittleEndianLengths) {
    WordContainer word("invoice", 3, 2);
    word.add(5, 1);
    // ids [3, 5] -> deltas [3, 2] -> packed 01 02 03 02; counts 2 and 1+1.
    EXPECT_EQ(word.dataToStore(), bytes({0x04, 0, 0, 0, 0x01, 0x02, 0x03, 0x02, 0x04, 0, 0, 0, 0x02, 0, 0x02, 0}));
    WordContainer read("invoice", word.dataToStore());
    EXPECT_EQ(read.documentIDs(), word.documentIDs());
}

TEST(WordContainer, CountsStopAt65535) {
    WordContainer word("a", 1, 70000);
    EXPECT_EQ(word.documentIDs().at(1), 65535);
    word.add(1, 10);
    EXPECT_EQ(word.documentIDs().at(1), 65535);
    word.add(2, 65535);
    word.add(3, 65534);
    EXPECT_EQ(word.documentIDs().at(2), 65535);
    EXPECT_EQ(word.documentIDs().at(3), 65535);
}

TEST(WordContainer, DamagedFormsReadAsNoDocuments) {
    WordContainer good("w", 3, 2);
    std::string stored = good.dataToStore();
    std::string shortCounts = stored.substr(0, stored.size() - 2);
    shortCounts[stored.size() - 6] = 0;  // counts length 0: fewer counts than identifiers
    EXPECT_TRUE(WordContainer("w", shortCounts).documentIDs().empty());
    EXPECT_TRUE(WordContainer("w", stored.substr(0, 3)).documentIDs().empty());
    EXPECT_TRUE(WordContainer("w", bytes({0xFF, 0xFF, 0xFF, 0x7F})).documentIDs().empty());
}

TEST(WordContainer, RemovingTheLastDocumentStoresEightZeroBytes) {
    WordContainer word("w", 9, 1);
    word.remove({9});
    EXPECT_EQ(word.dataToStore(), std::string(8, '\0'));
    WordContainer undecoded("w", std::string("junk"));
    undecoded.remove({});
    EXPECT_EQ(undecoded.dataToStore().size(), 8u);  // decoding comes only now, and the junk reads as empty
}

TEST(Crc64, MatchesThePublishedCheckValue) {
    EXPECT_EQ(static_cast<std::uint64_t>(crc64("123456789")), 0x6C40DF5F0B497347ull);
    EXPECT_EQ(crc64(""), 0);
}

TEST(DataConvertible, FixedWidthLittleEndianAndStrictLengths) {
    EXPECT_EQ(DataConvertible<std::uint32_t>::asData(0x01020304), bytes({4, 3, 2, 1}));
    EXPECT_EQ(DataConvertible<std::int16_t>::asData(-2), bytes({0xFE, 0xFF}));
    EXPECT_FALSE(DataConvertible<std::uint32_t>::fromData(bytes({1, 2, 3})).has_value());
    EXPECT_FALSE(DataConvertible<std::uint64_t>::fromData(bytes({1, 2, 3, 4})).has_value());
    EXPECT_EQ(DataConvertible<double>::asData(1.0), bytes({0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
    EXPECT_EQ(DataConvertible<bool>::asData(true), bytes({1}));
    EXPECT_FALSE(DataConvertible<bool>::fromData(bytes({2})).has_value());
    EXPECT_FALSE(DataConvertible<Utf8String>::fromData("\xC3\x28").has_value());
    EXPECT_EQ(DataConvertible<ReferenceDate>::fromData(DataConvertible<double>::asData(12.5))->secondsSince2001, 12.5);
    EXPECT_FALSE(DataConvertible<ReferenceDate>::fromData(bytes({1, 2, 3, 4})).has_value());
}

TEST(FSItem, RecordGoldenBytes) {
    FSItem item{0x01020304, 7, FSItem::types::file, "ab", 10, -1, 1, 300};
    std::string expected = bytes(
        {4, 3, 2, 1, 7, 0, 0, 0, 1, 10, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 2, 0, 'a', 'b', 1, 0x2C, 1, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(*item.asData(), expected);
    EXPECT_EQ(FSItem::fromData(expected), item);
}

TEST(FSItem, OlderAndDamagedRecords) {
    FSItem item{5, 0, FSItem::types::directory, "dir", 1, 2, 1, 0};
    std::string full = *item.asData();
    std::optional<FSItem> older = FSItem::fromData(full.substr(0, 19 + 3));
    ASSERT_TRUE(older);
    EXPECT_EQ(older->version, 0);
    EXPECT_EQ(older->size, -1);
    EXPECT_EQ(FSItem::fromData(full.substr(0, 19 + 3 + 1))->size, -1);
    std::string typeTwo = full;
    typeTwo[8] = 2;
    EXPECT_FALSE(FSItem::fromData(typeTwo));
    EXPECT_FALSE(FSItem::fromData(full.substr(0, 20)));
    for (std::size_t cut = 0; cut < 22; ++cut) EXPECT_FALSE(FSItem::fromData(full.substr(0, cut))) << cut;
    EXPECT_FALSE(FSItem::fromData(DataConvertible<std::uint32_t>::asData(12)));  // the identifier counter
}

TEST(FSItem, DatesAreWholeSecondsSince2001) {
    EXPECT_EQ(FSItem::storedDate(FileTime{978307200 + 61, 999999999}), 61);
    EXPECT_EQ(FSItem::storedDate(FileTime{978307200 - 1, 5}), -1);
    EXPECT_EQ(FSItem::storedDate(FileTime{978307200ll + (1ll << 32), 0}), 0);
}

}  // namespace
}  // namespace quester
