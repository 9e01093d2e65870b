#include "import/RtfReader.h"

#include <gtest/gtest.h>

#include <string>

#include "ImportedText.h"

namespace quester {
namespace {

using testing::importedText;

std::optional<std::string> rtfText(std::string_view document, std::int64_t maxLength = INT64_MAX) {
    return importedText(RtfReader::importText, document, {.maxLength = maxLength});
}

TEST(RtfReaderTest, DecodesCodePageBytesThroughTheDocumentsAndTheFontsCodePage) {
    EXPECT_EQ(rtfText(R"({\rtf1\ansi caf\'e9 \'80 na\'EFve})"), "café € naïve");
    EXPECT_EQ(rtfText(R"({\rtf1\ansi\ansicpg1251 \'ef\'f0\'e8\'e2\'e5\'f2})"), "привет");
    EXPECT_EQ(rtfText(R"({\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0\fcharset0 Arial;}{\f1\fcharset238 Arial CE;}})"
                      R"({\f1 \'9c\'e8} {\'9c\'e8}})"),
              "śč œè");
    EXPECT_EQ(rtfText("{\\rtf1 raw caf\xE9}"), "raw café");
    EXPECT_EQ(rtfText(R"({\rtf1\ansi\ansicpg932 \'82\'a0\'82\'a2 kana})"), "あい kana");
}

TEST(RtfReaderTest, DecodesUnicodeAndSkipsItsFallbacks) {
    EXPECT_EQ(rtfText(R"({\rtf1 price \u8364? each})"), "price € each");
    EXPECT_EQ(rtfText(R"({\rtf1{\uc2 A\u8364xyB}\u8364?C})"), "A€B€C");
    EXPECT_EQ(rtfText(R"({\rtf1\uc0 \u8364 and \u-3913 \uc1\u8364\'80})"), "€and \uF0B7€");
    EXPECT_EQ(rtfText(R"({\rtf1 smile \u-10179?\u-8704?!})"), "smile \U0001F600!");
    EXPECT_EQ(rtfText(R"({\rtf1{\upr{ansi text}{\*\ud{unicode \u269?text}}}})"), "unicode čtext");
}

TEST(RtfReaderTest, LeavesOutTablesPicturesBinaryDataAndUnknownDestinations) {
    std::string binary = "}{ secretbinarywords \\par {{";
    std::string document = R"({\rtf1\ansi{\fonttbl{\f0\froman Times New Roman;}{\f1 Courier;}})"
                           R"({\colortbl;\red255\green0\blue0;}{\stylesheet{\s1 Heading Style;}})"
                           R"({\info{\title Secret Title}{\author Someone}}{\*\generator Writer 1.0;})"
                           R"({\*\unknowndest unknown words {\nested more}}visible )"
                           R"({\pict\pngblip\picw10 \bin)" +
                           std::to_string(binary.size()) + " " + binary + R"(}{\v hidden words}text)" + R"(\bin)" +
                           std::to_string(binary.size()) + " " + binary + R"( end})";
    EXPECT_EQ(rtfText(document), "visible text end");
    EXPECT_EQ(rtfText(R"({\rtf1{\header page head}{\field{\*\fldinst HYPERLINK "http://example.com"})"
                      R"({\fldrslt link text}} body{\footnote note}})"),
              "page headlink text bodynote");
}

TEST(RtfReaderTest, WritesParagraphsLinesTabsCellsAndEscapes) {
    EXPECT_EQ(rtfText(R"({\rtf1\pard one\par two\line three\tab four\par)"
                      R"(\trowd a\cell b\cell\row c\cell d\cell\row)"
                      R"( x\\y\{z\} non\~break opt\-ional\emdash end})"),
              "one\ntwo\nthree\tfour\na\tb\nc\td\nx\\y{z} non\u00A0break optional\u2014end");
}

TEST(RtfReaderTest, DeepNestingIsBoundedAndKeepsTheTextAroundIt) {
    constexpr int depth = 100000;
    std::string document =
        "{\\rtf1 before " + std::string(depth, '{') + "deep\\uc5 " + std::string(depth, '}') + " after\\u8364?}";
    EXPECT_EQ(rtfText(document), "before  after€");
}

TEST(RtfReaderTest, CutShortOrLongDocumentsGiveTheTextBeforeTheCut) {
    EXPECT_EQ(rtfText(R"({\rtf1 Hello {\b world)"), "Hello world");
    EXPECT_EQ(rtfText(R"({\rtf1 caf\'e9 \u8364)"), "café €");
    EXPECT_EQ(rtfText(R"({\rtf1 \'e9\'e9\'e9\'e9 end})", 3), "ééé");
    EXPECT_EQ(rtfText(R"({\rtf1 text} after the document)"), "text");
}

TEST(RtfReaderTest, NonRtfOrEmptyDocumentsGiveNothing) {
    EXPECT_EQ(rtfText("Hello, plain text"), std::nullopt);
    EXPECT_EQ(rtfText("{\\rt"), std::nullopt);
    EXPECT_EQ(rtfText(" {\\rtf1 leading blank}"), std::nullopt);
    EXPECT_EQ(rtfText(R"({\rtf1{\fonttbl{\f0 Arial;}}})"), std::nullopt);
    EXPECT_EQ(importedText(RtfReader::importText, "{\\rtf1 words}", {.cancel = true}), std::nullopt);
}

}  // namespace
}  // namespace quester
