#include "import/OfficeReader.h"

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <unistd.h>

#include <string>

#include "import/ZipWriter.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::ZipWriter;

constexpr std::string_view xmlDeclaration = R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)";

struct Imported {
    int calls = 0;
    std::vector<std::string> pages;
    std::vector<float> progress;
};

struct ImportOptions {
    OfficeReader::Limits limits{};
    std::int64_t maxLength = INT64_MAX;
    std::function<bool(const Imported&)> cancelWhen{};
};

Imported importDocument(const std::string& bytes, const ImportOptions& options = {}) {
    testing::TempDir folder;
    auto file = ReadableFile::open(folder.write("document.bin", bytes).string());
    if (!file) throw std::runtime_error(file.error().description());
    Imported imported;
    ImportContext context{*file,
                          options.maxLength,
                          false,
                          [&](float percent) { imported.progress.push_back(percent); },
                          [&] { return options.cancelWhen && options.cancelWhen(imported); },
                          [&](std::optional<ImportTextPages> text, std::optional<ImportTextPages> ocr) {
                              ++imported.calls;
                              EXPECT_FALSE(ocr.has_value());
                              for (const auto& page : text.value_or(ImportTextPages{})) {
                                  imported.pages.push_back(page.text);
                              }
                              return true;
                          }};
    OfficeReader::importTextWithin(context, options.limits);
    return imported;
}

std::string wordDocument(std::string_view body) {
    return std::string(xmlDeclaration) +
           R"(<w:document xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main" )"
           R"(xmlns:mc="http://schemas.openxmlformats.org/markup-compatibility/2006"><w:body>)" +
           std::string(body) + "</w:body></w:document>";
}

std::string wordParagraph(std::string_view text) {
    return "<w:p><w:r><w:t>" + std::string(text) + "</w:t></w:r></w:p>";
}

std::string docx(const std::string& documentXml) {
    return ZipWriter().add("[Content_Types].xml", "<Types/>").add("word/document.xml", documentXml).finish();
}

std::string slide(std::string_view paragraphs) {
    return std::string(xmlDeclaration) +
           R"(<p:sld xmlns:a="http://schemas.openxmlformats.org/drawingml/2006/main" )"
           R"(xmlns:p="http://schemas.openxmlformats.org/presentationml/2006/main"><p:cSld><p:spTree><p:sp>)"
           R"(<p:txBody>)" +
           std::string(paragraphs) + "</p:txBody></p:sp></p:spTree></p:cSld></p:sld>";
}

std::string slideParagraph(std::string_view text) {
    return "<a:p><a:r><a:t>" + std::string(text) + "</a:t></a:r></a:p>";
}

// A slide show whose slides are added in the order given, named by number.
std::string pptx(const std::vector<std::pair<int, std::string>>& slides) {
    ZipWriter writer;
    writer.add("ppt/presentation.xml", "<p:presentation/>");
    for (const auto& [number, xml] : slides) writer.add("ppt/slides/slide" + std::to_string(number) + ".xml", xml);
    return writer.finish();
}

std::string openDocumentContent(std::string_view body) {
    return std::string(xmlDeclaration) +
           R"(<office:document-content xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0" )"
           R"(xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0" )"
           R"(xmlns:table="urn:oasis:names:tc:opendocument:xmlns:table:1.0" )"
           R"(xmlns:draw="urn:oasis:names:tc:opendocument:xmlns:drawing:1.0"><office:body>)" +
           std::string(body) + "</office:body></office:document-content>";
}

std::string openDocument(std::string_view type, std::string_view body) {
    return ZipWriter()
        .add("mimetype", "application/vnd.oasis.opendocument." + std::string(type), false)
        .add("content.xml", openDocumentContent(body))
        .finish();
}

TEST(OfficeReaderTest, WordDocumentGivesRunsTabsBreaksAndParagraphsThenHeadersAsOnePage) {
    const std::string body =
        R"(<w:p><w:pPr><w:tabs><w:tab w:val="left" w:pos="720"/></w:tabs></w:pPr>)"
        R"(<w:r><w:t>Hello</w:t></w:r><w:r><w:t xml:space="preserve"> world</w:t></w:r>)"
        R"(<w:r><w:tab/><w:t>col</w:t><w:br/><w:t>next line</w:t></w:r></w:p>)"
        R"(<w:p><w:r><w:t>Second &amp; last</w:t></w:r><w:r><w:delText>deleted</w:delText></w:r></w:p>)"
        R"(<w:p><w:r><mc:AlternateContent><mc:Choice><w:txbxContent>)" +
        wordParagraph("Boxed") + R"(</w:txbxContent></mc:Choice><mc:Fallback><w:txbxContent>)" +
        wordParagraph("Boxed") + R"(</w:txbxContent></mc:Fallback></mc:AlternateContent></w:r></w:p>)";
    const std::string header = R"(<w:hdr xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main">)" +
                               wordParagraph("Header text") + "</w:hdr>";
    const std::string bytes = ZipWriter()
                                  .add("word/footnotes.xml", wordDocument(wordParagraph("A footnote")))
                                  .add("word/document.xml", wordDocument(body))
                                  .add("word/header1.xml", header)
                                  .finish();
    const auto imported = importDocument(bytes);
    EXPECT_EQ(imported.calls, 1);
    EXPECT_EQ(imported.pages,
              std::vector<std::string>{"Hello world\tcol\nnext line\nSecond & last\nBoxed\n\nHeader text\nA footnote"});
    EXPECT_EQ(imported.progress.back(), 100);
}

TEST(OfficeReaderTest, WorkbookGivesSheetsInWorkbookOrderWithSharedInlineAndPlainValues) {
    const std::string main = R"(xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main")";
    const std::string workbook =
        std::string(xmlDeclaration) + "<workbook " + main +
        R"( xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships"><sheets>)"
        R"(<sheet name="Scores" sheetId="1" r:id="rId2"/><sheet name="Notes" sheetId="2" r:id="rId1"/>)"
        R"(</sheets></workbook>)";
    const std::string relationships =
        R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
        R"(<Relationship Id="rId1" Target="worksheets/sheet1.xml"/>)"
        R"(<Relationship Id="rId2" Target="/xl/worksheets/sheet2.xml"/></Relationships>)";
    const std::string sharedStrings = "<sst " + main +
                                      R"(><si><t>Name</t></si><si><t>Score</t></si>)"
                                      R"(<si><r><t>Ad</t></r><r><t>a</t></r><rPh><t>reading</t></rPh></si></sst>)";
    const std::string scores =
        "<worksheet " + main +
        R"(><sheetData><row r="1"><c r="A1" t="s"><v>0</v></c><c r="B1" t="s"><v>1</v></c></row>)"
        R"(<row r="2"><c r="A2" t="s"><v>2</v></c><c r="B2"><v>42.5</v></c>)"
        R"(<c r="C2" t="b"><v>1</v></c><c r="D2" t="s"><v>99</v></c></row><row r="3"><c r="A3"/></row>)"
        R"(<row r="4"><c r="A4" t="inlineStr"><is><t>inline</t></is></c>)"
        R"(<c r="B4"><f>SUM(B1:B2)</f><v>7</v></c></row></sheetData></worksheet>)";
    const std::string notes = "<worksheet " + main +
                              R"(><sheetData><row r="1"><c r="A1" t="inlineStr"><is><t>A note</t></is></c></row>)"
                              "</sheetData></worksheet>";
    const std::string bytes = ZipWriter()
                                  .add("xl/workbook.xml", workbook)
                                  .add("xl/_rels/workbook.xml.rels", relationships)
                                  .add("xl/worksheets/sheet1.xml", notes)
                                  .add("xl/worksheets/sheet2.xml", scores)
                                  .add("xl/sharedStrings.xml", sharedStrings)
                                  .finish();
    const auto imported = importDocument(bytes);
    ASSERT_EQ(imported.pages, (std::vector<std::string>{"Name\tScore\nAda\t42.5\tTRUE\ninline\t7", "A note"}));
    ImportTextResult result{ImportTextPages{{imported.pages[0]}, {imported.pages[1]}}, std::nullopt};
    EXPECT_EQ(result.locator(imported.pages[0].size() + 1, false), "Page 2, line 1");
}

TEST(OfficeReaderTest, SlidesComeInNumericOrderOnePageEachEvenWhenEmpty) {
    const std::string first = slide(
        "<a:p><a:r><a:t>Slide one</a:t></a:r><a:br/><a:r><a:t>second line</a:t></a:r></a:p>" + slideParagraph("para"));
    const auto imported = importDocument(pptx({{10, slide(slideParagraph("ten"))}, {1, first}, {2, slide("")}}));
    EXPECT_EQ(imported.pages, (std::vector<std::string>{"Slide one\nsecond line\npara", "", "ten"}));
}

TEST(OfficeReaderTest, OpenDocumentTextMarksBecomeBlanksTabsAndLineBreaks) {
    const auto imported = importDocument(openDocument(
        "text",
        "<office:text><text:h>Title</text:h>"
        R"(<text:p>a<text:s text:c="3"/>b<text:s/>c<text:tab/>d<text:line-break/>e <text:span>span</text:span></text:p>)"
        "<table:table><table:table-row><table:table-cell><text:p>cell</text:p></table:table-cell>"
        "</table:table-row></table:table></office:text>"));
    EXPECT_EQ(imported.pages, std::vector<std::string>{"Title\na   b c\td\ne span\ncell"});
}

TEST(OfficeReaderTest, SpaceRunsCannotMakeMoreTextThanTheLimit) {
    std::string spaces;
    for (int run = 0; run < 20'000; ++run) spaces += R"(<text:s text:c="4000000000"/>)";
    const auto imported =
        importDocument(openDocument("text", "<office:text><text:p>start" + spaces + "</text:p></office:text>"),
                       {.limits = {.totalBytes = 1 << 20}});
    ASSERT_EQ(imported.pages.size(), 1u);
    EXPECT_TRUE(imported.pages[0].starts_with("start    "));
    EXPECT_LE(imported.pages[0].size(), (1u << 20) + 1024);
}

TEST(OfficeReaderTest, OpenDocumentSheetsAndSlidesArePagesOfTheirOwn) {
    const std::string sheets =
        "<office:spreadsheet><table:table><table:table-row><table:table-cell><text:p>one</text:p></table:table-cell>"
        "<table:table-cell><text:p>two</text:p></table:table-cell></table:table-row></table:table>"
        "<table:table><table:table-row><table:table-cell><text:p>second sheet</text:p></table:table-cell>"
        "</table:table-row></table:table></office:spreadsheet>";
    EXPECT_EQ(importDocument(openDocument("spreadsheet", sheets)).pages,
              (std::vector<std::string>{"one\ntwo", "second sheet"}));
    const std::string slides =
        "<office:presentation><draw:page><draw:frame><draw:text-box><text:p>first slide</text:p></draw:text-box>"
        "</draw:frame></draw:page><draw:page/><draw:page><text:p>third</text:p></draw:page></office:presentation>";
    EXPECT_EQ(importDocument(openDocument("presentation", slides)).pages,
              (std::vector<std::string>{"first slide", "", "third"}));
}

TEST(OfficeReaderTest, KindIsToldByTheMembersNotTheName) {
    EXPECT_EQ(importDocument(ZipWriter().add("notes.txt", "plain").finish()).calls, 0);
    EXPECT_EQ(importDocument("<w:document>not a zip</w:document>").calls, 0);
    const std::string content = openDocumentContent("<office:text><text:p>inside</text:p></office:text>");
    const std::string book =
        ZipWriter().add("mimetype", "application/epub+zip", false).add("content.xml", content).finish();
    EXPECT_EQ(importDocument(book).calls, 0);
    const std::string unlabelled = ZipWriter().add("content.xml", content).finish();
    EXPECT_EQ(importDocument(unlabelled).pages, std::vector<std::string>{"inside"});
    EXPECT_EQ(importDocument(docx(wordDocument("<w:p/>"))).calls, 0);
}

TEST(OfficeReaderTest, TruncatedFileGivesNothingAndNeverCrashes) {
    const std::string bytes = docx(wordDocument(wordParagraph("one") + wordParagraph("two")));
    for (std::size_t length = 0; length < bytes.size(); length += 3) {
        EXPECT_EQ(importDocument(bytes.substr(0, length)).calls, 0) << length;
    }
}

TEST(OfficeReaderTest, MemberCutShortGivesTheTextBeforeTheCut) {
    std::string body;
    for (int paragraph = 0; paragraph < 400; ++paragraph)
        body += wordParagraph("paragraph " + std::to_string(paragraph));
    const std::string xml = wordDocument(body);
    const std::string deflated = ZipWriter::rawDeflate(xml);
    const std::string bytes =
        ZipWriter()
            .add(ZipWriter::Member{
                .path = "word/document.xml", .content = xml, .data = deflated.substr(0, deflated.size() / 2)})
            .finish();
    const auto imported = importDocument(bytes);
    ASSERT_EQ(imported.pages.size(), 1u);
    EXPECT_TRUE(imported.pages[0].starts_with("paragraph 0\nparagraph 1\n"));
    EXPECT_EQ(imported.pages[0].find("paragraph 399"), std::string::npos);
}

long peakResidentKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(OfficeReaderTest, ZipBombMemberIsCutAtTheMemberCapAndKeepsTheTextBeforeIt) {
    const std::string start = wordDocument(wordParagraph("before the bomb"));
    const std::string prefix = start.substr(0, start.find("</w:body>"));
    const auto bomb = ZipWriter::rawDeflateRepeated(prefix, std::string(1024, ' ') + "<w:p/>", 64 << 10,
                                                    wordParagraph("after") + "</w:body></w:document>");
    ASSERT_GT(bomb.size, 64u << 20);
    const std::string bytes =
        ZipWriter()
            .add(ZipWriter::Member{
                .path = "word/document.xml", .data = bomb.data, .crc = bomb.crc, .uncompressedSize = bomb.size})
            .finish();
    const long peakBefore = peakResidentKilobytes();
    const auto imported = importDocument(bytes, {.limits = {.memberBytes = 4 << 20}});
    EXPECT_LT(peakResidentKilobytes() - peakBefore, 32 << 10);
    ASSERT_EQ(imported.pages.size(), 1u);
    EXPECT_EQ(imported.pages[0], "before the bomb");
}

// A document whose DTD names `entityFile` as an external entity "secret" and
// `definitionsFile` as an external parameter entity that it refers to.
std::string docxWithExternalEntities(std::string_view text, const std::filesystem::path& entityFile,
                                     const std::filesystem::path& definitionsFile) {
    const std::string body = wordDocument(wordParagraph(text));
    const std::string doctype = "<!DOCTYPE w:document [<!ENTITY secret SYSTEM \"file://" + entityFile.string() +
                                "\"><!ENTITY % definitions SYSTEM \"file://" + definitionsFile.string() +
                                "\">%definitions;]>";
    return docx(std::string(xmlDeclaration) + doctype + body.substr(xmlDeclaration.size()));
}

TEST(OfficeReaderTest, ExternalEntitiesAreNeverLoaded) {
    testing::TempDir folder;
    const auto secret = folder.write("secret.txt", "SECRET");
    const auto definitions = folder.write("definitions.dtd", R"(<!ENTITY leaked "LEAKED">)");
    const int watcher = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(watcher, 0);
    ASSERT_GE(inotify_add_watch(watcher, secret.c_str(), IN_OPEN | IN_ACCESS), 0);
    ASSERT_GE(inotify_add_watch(watcher, definitions.c_str(), IN_OPEN | IN_ACCESS), 0);

    const auto imported = importDocument(docxWithExternalEntities("visible &secret; text", secret, definitions));
    const auto usingDefinitions =
        importDocument(docxWithExternalEntities("visible &leaked; text", secret, definitions));
    char events[4096];
    EXPECT_LT(read(watcher, events, sizeof events), 0) << "an entity's file was opened";
    close(watcher);
    EXPECT_EQ(imported.pages, std::vector<std::string>{"visible  text"});
    for (const auto& page : usingDefinitions.pages) EXPECT_EQ(page.find("LEAKED"), std::string::npos);
}

TEST(OfficeReaderTest, StopsAddingPagesOnceTheTextPassesMaxLength) {
    const auto slides = pptx({{1, slide(slideParagraph("0123456789"))},
                              {2, slide(slideParagraph("abcdefghij"))},
                              {3, slide(slideParagraph("not read"))}});
    EXPECT_EQ(importDocument(slides, {.maxLength = 15}).pages, (std::vector<std::string>{"0123456789", "abcdefghij"}));
}

TEST(OfficeReaderTest, CancelStopsBetweenSlidesAndKeepsThoseRead) {
    const auto slides = pptx({{1, slide(slideParagraph("first"))},
                              {2, slide(slideParagraph("second"))},
                              {3, slide(slideParagraph("third"))}});
    auto afterFirstSlide = [](const Imported& imported) { return imported.progress.back() > 0; };
    EXPECT_EQ(importDocument(slides, {.cancelWhen = afterFirstSlide}).pages, std::vector<std::string>{"first"});
}

TEST(OfficeReaderTest, TotalBudgetStopsLaterMembers) {
    const std::string paragraph = slideParagraph(std::string(2000, 'x'));
    const auto slides = pptx({{1, slide(paragraph)}, {2, slide(paragraph)}, {3, slide(paragraph)}});
    const auto imported = importDocument(slides, {.limits = {.totalBytes = 3000}});
    std::string text;
    for (const auto& page : imported.pages) text += page;
    EXPECT_TRUE(text.starts_with(std::string(2000, 'x')));
    EXPECT_LT(text.size(), 4000u);
}

}  // namespace
}  // namespace quester
