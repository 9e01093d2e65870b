#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "import/PdfWriter.h"
#include "import/ZipWriter.h"
#include "testing/QuesterProcess.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

std::string wordDocument(const std::string& text) {
    return testing::ZipWriter()
        .add("[Content_Types].xml", "<Types/>")
        .add("word/document.xml",
             "<w:document xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\"><w:body>"
             "<w:p><w:r><w:t>" +
                 text + "</w:t></w:r></w:p></w:body></w:document>")
        .finish();
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> split;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) split.push_back(line);
    return split;
}

constexpr std::string_view kXmlDeclaration = R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)";
constexpr std::string_view kSpreadsheetNamespace =
    R"(xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main")";

// The phrase split over two runs, as a word processor saves a word typed in two goes.
std::string wordDocumentInTwoRuns() {
    return testing::ZipWriter()
        .add("[Content_Types].xml", "<Types/>")
        .add("word/document.xml",
             std::string(kXmlDeclaration) +
                 R"(<w:document xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main"><w:body>)"
                 R"(<w:p><w:r><w:t>Our year</w:t></w:r><w:r><w:rPr><w:b/></w:rPr>)"
                 R"(<w:t xml:space="preserve">ly total grew</w:t></w:r></w:p></w:body></w:document>)")
        .finish();
}

std::string openDocumentText() {
    return testing::ZipWriter()
        .add("mimetype", "application/vnd.oasis.opendocument.text", false)
        .add(
            "content.xml",
            std::string(kXmlDeclaration) +
                R"(<office:document-content xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0" )"
                R"(xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0"><office:body><office:text>)"
                R"(<text:p>The yearly total of the club</text:p></office:text></office:body></office:document-content>)")
        .finish();
}

std::string workbookWithSharedString() {
    return testing::ZipWriter()
        .add("xl/workbook.xml",
             std::string(kXmlDeclaration) + "<workbook " + std::string(kSpreadsheetNamespace) +
                 R"( xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships"><sheets>)"
                 R"(<sheet name="Sums" sheetId="1" r:id="rId1"/></sheets></workbook>)")
        .add("xl/_rels/workbook.xml.rels",
             R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
             R"(<Relationship Id="rId1" Target="worksheets/sheet1.xml"/></Relationships>)")
        .add("xl/worksheets/sheet1.xml", "<worksheet " + std::string(kSpreadsheetNamespace) +
                                             R"(><sheetData><row r="1"><c r="A1" t="s"><v>0</v></c>)"
                                             R"(<c r="B1"><v>42</v></c></row></sheetData></worksheet>)")
        .add("xl/sharedStrings.xml",
             "<sst " + std::string(kSpreadsheetNamespace) + "><si><t>Yearly total</t></si></sst>")
        .finish();
}

std::string slideShow() {
    return testing::ZipWriter()
        .add("ppt/presentation.xml", "<p:presentation/>")
        .add("ppt/slides/slide1.xml",
             std::string(kXmlDeclaration) +
                 R"(<p:sld xmlns:a="http://schemas.openxmlformats.org/drawingml/2006/main" )"
                 R"(xmlns:p="http://schemas.openxmlformats.org/presentationml/2006/main"><p:cSld><p:spTree><p:sp>)"
                 R"(<p:txBody><a:p><a:r><a:t>The yearly total, charted</a:t></a:r></a:p></p:txBody>)"
                 R"(</p:sp></p:spTree></p:cSld></p:sld>)")
        .finish();
}

class ContentSearchTest : public ::testing::Test {
protected:
    ContentSearchTest() {
        tree.write("report.txt", "Quarterly figures\nIn 2024 the yearly total was 12 euros, a record.\n");
        tree.write("web/report.html",
                   "<html><body><h1>Report</h1><p>The Yearly  Total: 40</p><script>yearly total</script></body>"
                   "</html>");
        tree.write("word/report.docx", wordDocument("Our yearly total grew, and the yearly total is final."));
        tree.write("notes.txt", "the yearly total, noted\n");
        tree.write("pdf/report.pdf",
                   testing::PdfWriter().page({"Cover"}).page({"In 2024 the yearly total was 12", "euros"}).bytes());
        tree.write("report-draft.txt", "a yearly figure and a total\n");
        tree.write("report.png", "\x89PNG yearly total");
    }

    testing::QuesterProcess search(const std::string& query, std::vector<std::string> options = {}) const {
        std::vector<std::string> arguments{"search", query, "--in", tree.str()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return testing::QuesterProcess::run(QUESTER_BINARY, arguments, scratch);
    }

    std::set<std::string> paths(const std::string& query) const {
        const auto run = search(query, {"--format", "paths"});
        EXPECT_EQ(run.status, 0) << run.err;
        const auto found = lines(run.out);
        return {found.begin(), found.end()};
    }

    std::string at(const std::string& relative) const { return tree.str() + "/" + relative; }

    testing::TempDir tree;
    testing::TempDir scratch;
};

// Alone the criterion reads every file that has a reader; after a word only
// the files named after it, whatever their kind.
TEST_F(ContentSearchTest, FindsTextWebWordAndPdfDocumentsByTheirWords) {
    const std::set<std::string> documents{at("report.txt"), at("web/report.html"), at("word/report.docx"),
                                          at("pdf/report.pdf")};
    auto withNotes = documents;
    withNotes.insert(at("notes.txt"));
    EXPECT_EQ(paths(": content \"yearly total\""), withNotes);
    auto withPicture = documents;
    withPicture.insert(at("report.png"));
    EXPECT_EQ(paths("report : content \"yearly total\""), withPicture);
    EXPECT_EQ(paths("report : content \"yearly, record\" all words"), (std::set<std::string>{at("report.txt")}));
    EXPECT_EQ(paths("report : content \"total\" without \"record\" case sensitive"),
              (std::set<std::string>{at("report-draft.txt"), at("word/report.docx"), at("pdf/report.pdf"),
                                     at("report.png")}));
}

TEST_F(ContentSearchTest, JsonRecordsCarryTheFoundLinesWithTheirLocation) {
    const auto run = search(": content \"yearly total\"", {"--format", "json"});
    ASSERT_EQ(run.status, 0) << run.err;
    std::map<std::string, nlohmann::json> found;
    for (const auto& line : lines(run.out)) {
        const auto record = nlohmann::json::parse(line);
        found[record["name"]] = record.value("found", nlohmann::json::array());
    }
    ASSERT_EQ(found.count("report.txt"), 1u) << run.out;
    EXPECT_EQ(found["report.txt"],
              nlohmann::json::parse(R"([{"location":"Line 2","snippet":)"
                                    R"("\u2026figures In 2024 the yearly total was 12 euros, a record.\u2026"}])"));
    EXPECT_EQ(found["report.docx"].size(), 2u) << found["report.docx"];
    EXPECT_EQ(found["report.html"].size(), 1u) << "the script's words are no text: " << found["report.html"];
    EXPECT_EQ(found["report.html"][0]["location"], "Line 2");
    ASSERT_EQ(found["report.pdf"].size(), 1u) << found["report.pdf"];
    EXPECT_EQ(found["report.pdf"][0]["location"], "Page 2, line 1");
}

TEST_F(ContentSearchTest, TheTableShowsEachFoundLineUnderItsFile) {
    const auto run = search("report : content \"yearly total\"", {"--format", "table"});
    ASSERT_EQ(run.status, 0) << run.err;
    const auto shown = lines(run.out);
    const auto row = std::find_if(shown.begin(), shown.end(),
                                  [](const std::string& line) { return line.starts_with("report.txt"); });
    ASSERT_NE(row, shown.end()) << run.out;
    ASSERT_NE(row + 1, shown.end());
    EXPECT_TRUE((row + 1)->starts_with("    Line 2:  \u2026figures In 2024 the yearly total")) << run.out;
}

TEST_F(ContentSearchTest, RankSortOrdersByTheNumberOfHits) {
    EXPECT_EQ(
        lines(search(": content \"yearly total\"", {"--sort", "rank", "--reverse", "--format", "paths"}).out).front(),
        at("word/report.docx"));
}

TEST_F(ContentSearchTest, NothingMatchingExitsOneWithNothingPrinted) {
    const auto run = search(": content \"monthly average\"");
    EXPECT_EQ(run.status, 1) << run.err;
    EXPECT_EQ(run.out, "");
}

TEST_F(ContentSearchTest, ArchiveMembersAreReadOnlyWhenTheirContentsTypeIsOn) {
    tree.write("bundle.zip", testing::ZipWriter().add("inside/letter.txt", "the yearly total inside\nmore\n").finish());
    const auto runWith = [&](const std::string& preferences) {
        const std::string home = scratch.str() + "/home";
        std::filesystem::create_directories(home + "/config");
        std::ofstream(home + "/config/preferences.json") << preferences;
        return testing::QuesterProcess::run(
            QUESTER_BINARY, {"search", "bundle : content \"yearly total\"", "--in", tree.str(), "--format", "json"},
            scratch, "QUESTER_HOME='" + home + "' ");
    };
    EXPECT_EQ(runWith("{}").status, 1);
    const auto run = runWith(R"({"contentSearchEnabledTypes": {"zipContents": true}})");
    ASSERT_EQ(run.status, 0) << run.err;
    const auto record = nlohmann::json::parse(lines(run.out).at(0));
    EXPECT_EQ(record["name"], "bundle.zip");
    EXPECT_EQ(record["found"], nlohmann::json::parse(R"([{"location":"inside/letter.txt","snippet":"letter.txt"}])"));
}

// Each kind of document that has a reader is searched by its text, wherever its
// markup splits the phrase, and never by the names of the parts it is packed in.
TEST(ContentSearchKindsTest, EachKindOfDocumentIsFoundByItsTextNotByItsPackaging) {
    const testing::TempDir tree;
    const testing::TempDir scratch;
    const std::map<std::string, std::string> documents{
        {"notes.md", "# Notes\n\nThe yearly total rose.\n"},
        {"sum.c", "/* keeps the yearly total */\nint total;\n"},
        {"page.html", "<html><body><p>The year<b>ly</b> total was 40</p></body></html>"},
        {"letter.docx", wordDocumentInTwoRuns()},
        {"minutes.odt", openDocumentText()},
        {"sums.xlsx", workbookWithSharedString()},
        {"talk.pptx", slideShow()},
        {"memo.rtf", R"({\rtf1\ansi{\fonttbl{\f0 Arial;}}{\b yearly} total\par})"},
        {"report.pdf", testing::PdfWriter().page({"Cover"}).page({"the yearly total was 12", "euros"}).bytes()},
    };
    for (const auto& [name, bytes] : documents) tree.write(name, bytes);

    const auto run = testing::QuesterProcess::run(
        QUESTER_BINARY, {"search", ": content \"yearly total\"", "--in", tree.str(), "--format", "json"}, scratch);
    EXPECT_EQ(run.status, 0) << run.err;
    std::map<std::string, nlohmann::json> found;
    for (const auto& line : lines(run.out)) {
        const auto record = nlohmann::json::parse(line);
        found[record["name"]] = record.value("found", nlohmann::json::array());
    }
    for (const auto& [name, bytes] : documents) EXPECT_EQ(found.count(name), 1u) << name << " was not found";
    ASSERT_EQ(found["report.pdf"].size(), 1u) << found["report.pdf"];
    EXPECT_EQ(found["report.pdf"][0]["location"], "Page 2, line 1");

    const auto packaging = testing::QuesterProcess::run(
        QUESTER_BINARY, {"search", ": content \"document.xml\"", "--in", tree.str(), "--format", "paths"}, scratch);
    EXPECT_EQ(packaging.status, 1) << "a part's name is no text: " << packaging.out;
    EXPECT_EQ(packaging.out, "");
}

}  // namespace
}  // namespace quester
