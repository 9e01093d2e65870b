// What scripts rely on in `quester search` and `quester explain`: exit
// statuses, the JSON record, CSV and tab-delimited rows, argument order and
// the order of the list.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "testing/FileFlags.h"
#include "testing/QuesterProcess.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using Lines = std::vector<std::string>;

Lines linesOf(const std::string& text, char separator = '\n') {
    Lines lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line, separator);) lines.push_back(line);
    return lines;
}

void setTimes(const std::string& path, std::int64_t accessed, std::int64_t modified) {
    const timespec times[2] = {{accessed, 0}, {modified, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0) << path;
}

class ScriptingTest : public ::testing::Test {
protected:
    testing::QuesterProcess quester(const std::vector<std::string>& arguments, const std::string& environment = "") {
        return testing::QuesterProcess::run(QUESTER_BINARY, arguments, scratch, environment);
    }
    // `quester search QUERY --in TREE ARGUMENTS...`.
    testing::QuesterProcess search(const std::string& query, std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(), {"search", query, "--in", tree.str()});
        return quester(arguments, "TZ=UTC ");
    }
    // The paths printed, relative to the tree, in their order.
    Lines relative(const testing::QuesterProcess& run) const {
        Lines paths;
        for (const auto& line : linesOf(run.out)) paths.push_back(line.substr(tree.str().size() + 1));
        return paths;
    }
    std::string at(const std::string& relative) const { return tree.str() + "/" + relative; }

    testing::TempDir tree;
    testing::TempDir scratch;
};

TEST_F(ScriptingTest, ExitStatusSaysFoundNothingFoundOrError) {
    tree.write("report.pdf");
    EXPECT_EQ(search("report").status, 0);

    auto nothing = search("nothing-like-it");
    EXPECT_EQ(nothing.status, 1);
    EXPECT_EQ(nothing.out, "");
    EXPECT_EQ(nothing.err, "") << "a message only on a terminal";

    // Usage errors exited 105 to 109 through CLI11.
    for (const std::vector<std::string>& wrong : {std::vector<std::string>{"search", "report", "--no-such-option"},
                                                  {"search"},
                                                  {"frobnicate"},
                                                  {"search", "report", "--sort", "colour"},
                                                  {"search", "report", "--limit", "x"}}) {
        auto run = quester(wrong);
        EXPECT_EQ(run.status, 2) << wrong.back() << ": " << run.err;
        EXPECT_NE(run.err, "") << wrong.back();
    }
    // "--limit 0" printed the range of a double: a number of 309 digits.
    auto zero = search("report", {"--limit", "0"});
    EXPECT_EQ(zero.status, 2);
    EXPECT_NE(zero.err.find("--limit: must be a positive whole number, not '0'"), std::string::npos) << zero.err;
    EXPECT_LT(zero.err.size(), 200u) << zero.err;
    auto help = quester({"search", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("Exit status: 0"), std::string::npos) << help.out;
}

// A plus in a quester: URL stayed a plus, and "100%" went through as it was;
// the query lost everything after a line break, so the criterion was ignored.
TEST_F(ScriptingTest, QuesterURLsAndLineBreaksDecodeToBlanksAndABadEscapeIsRefused) {
    tree.write("tax report.pdf");
    tree.write("tax report.txt");
    EXPECT_EQ(relative(search("quester:?q=tax+report+%3A+is+pdf")), (Lines{"tax report.pdf"}));
    EXPECT_EQ(relative(search("report\n: is pdf")), (Lines{"tax report.pdf"}));
    EXPECT_EQ(relative(search("quester:?q=report%0A%3A%20is%20pdf")), (Lines{"tax report.pdf"}));
    auto bad = search("quester:?q=100%");
    EXPECT_EQ(bad.status, 2);
    EXPECT_NE(bad.err.find("bad percent escape"), std::string::npos) << bad.err;
}

// The JSON dump threw on a byte that isn't UTF-8 and the process aborted.
TEST_F(ScriptingTest, TextThatIsNotUTF8NeverAborts) {
    auto explained = quester({"explain", "a\xff b", "--json"});
    ASSERT_EQ(explained.status, 0) << explained.err;
    EXPECT_EQ(nlohmann::json::parse(explained.out)["searchWords"][0], "a\uFFFD");

    tree.write("bad\xff name.txt");
    auto found = search("name", {"--format", "json"});
    ASSERT_EQ(found.status, 0) << found.err;
    const auto record = nlohmann::json::parse(found.out);
    EXPECT_EQ(record["name"], "bad\uFFFD name.txt");
    // The bytes themselves, for a script that must open the file.
    EXPECT_EQ(record["pathBase64"].get<std::string>().size() % 4, 0u);
    EXPECT_EQ(record["path"], at("bad\uFFFD name.txt"));
}

// JSON output was the internal encoding, with a random id in each record.
TEST_F(ScriptingTest, JsonRecordsHoldTheDocumentedKeysInTheirOrder) {
    const std::string file = tree.write("docs/budget-2024.xlsx", "12345").string();
    setTimes(file, 1700000000, 1688463000);
    const bool tagsWork = testing::setTags(file, "Work, Red");
    tree.mkdir("budget");
    auto run = search("budget", {"--format", "json", "--sort", "path"});
    ASSERT_EQ(run.status, 0) << run.err;
    const Lines lines = linesOf(run.out);
    ASSERT_EQ(lines.size(), 2u) << run.out;
    const auto folder = nlohmann::ordered_json::parse(lines[0]);
    const auto record = nlohmann::ordered_json::parse(lines[1]);
    std::vector<std::string> keys;
    for (const auto& item : record.items()) keys.push_back(item.key());
    EXPECT_EQ(keys, (std::vector<std::string>{"path", "name", "folder", "type", "kind", "size", "modified", "created",
                                              "accessed", "tags", "online"}));
    EXPECT_EQ(record["path"], file);
    EXPECT_EQ(record["name"], "budget-2024.xlsx");
    EXPECT_EQ(record["folder"], at("docs"));
    EXPECT_EQ(record["type"], "file");
    EXPECT_EQ(record["size"], 5);
    EXPECT_EQ(record["online"], true);
    EXPECT_EQ(record["modified"], "2023-07-04T09:30:00Z");
    EXPECT_EQ(record["accessed"], "2023-11-14T22:13:20Z");
    if (tagsWork) {
        EXPECT_EQ(record["tags"], (nlohmann::ordered_json{"Work", "Red"}));
    }
    EXPECT_EQ(folder["type"], "folder");
    EXPECT_TRUE(folder["size"].is_null());
}

// Splits CSV as written: ", " between fields, fields in double quotes may
// hold commas, quotes (doubled) and line breaks.
std::vector<Lines> csvRows(const std::string& text) {
    std::vector<Lines> rows(1, Lines(1));
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quoted && c == '"' && i + 1 < text.size() && text[i + 1] == '"') {
            rows.back().back() += '"';
            ++i;
        } else if (c == '"') {
            quoted = !quoted;
        } else if (!quoted && c == ',' && i + 1 < text.size() && text[i + 1] == ' ') {
            rows.back().emplace_back();
            ++i;
        } else if (!quoted && c == '\n') {
            rows.emplace_back(1);
        } else {
            rows.back().back() += c;
        }
    }
    rows.pop_back();
    return rows;
}

// The first fields of rows under a header, each row of seven fields.
std::set<std::string> namesOfSevenFieldRows(const std::vector<Lines>& rows) {
    std::set<std::string> names;
    for (const auto& row : rows) {
        EXPECT_EQ(row.size(), 7u) << row[0];
        if (&row != &rows.front()) names.insert(row[0]);
    }
    EXPECT_EQ(rows.size(), names.size() + 1) << "rows of the same name";
    return names;
}

// A name that wasn't UTF-8 lost its row; a tab or line break in a name
// shifted the columns or split the row.
TEST_F(ScriptingTest, CsvAndTsvKeepOneRowOfSevenFieldsForEveryItem) {
    tree.write("note bad\xff.txt");
    tree.write("note\ttab.txt");
    tree.write("note\nbreak.txt");
    tree.write("note, \"quoted\".txt");
    auto tsv = search("note", {"--format", "tsv"});
    ASSERT_EQ(tsv.status, 0) << tsv.err;
    std::vector<Lines> tsvRows;
    for (const auto& line : linesOf(tsv.out)) tsvRows.push_back(linesOf(line, '\t'));
    EXPECT_EQ(namesOfSevenFieldRows(tsvRows), (std::set<std::string>{"note\\ttab.txt", "note\\nbreak.txt",
                                                                     "note bad\uFFFD.txt", "note, \"quoted\".txt"}));

    auto csv = search("note", {"--format", "csv"});
    ASSERT_EQ(csv.status, 0) << csv.err;
    const auto rows = csvRows(csv.out);
    EXPECT_EQ(namesOfSevenFieldRows(rows), (std::set<std::string>{"note\ttab.txt", "note\nbreak.txt",
                                                                  "note bad\uFFFD.txt", "note, \"quoted\".txt"}));
    for (std::size_t i = 1; i < rows.size(); ++i) EXPECT_EQ(rows[i][1], at(rows[i][0]));
}

// "quester search '-annual report' --in D" said the query was missing, and
// "--" didn't help.
TEST_F(ScriptingTest, AQueryBeginningWithAMinusWordWorksInAnyPlace) {
    tree.write("annual report.pdf");
    tree.write("report.pdf");
    const Lines expected{"report.pdf"};
    EXPECT_EQ(relative(quester({"search", "-annual report", "--in", tree.str()})), expected);
    EXPECT_EQ(relative(quester({"search", "--in", tree.str(), "-annual report"})), expected);
    EXPECT_EQ(relative(quester({"search", "--in", tree.str(), "--", "-annual report"})), expected);
    EXPECT_EQ(relative(quester({"search", "--query=-annual report", "--in", tree.str()})), expected);
    auto nul = quester({"search", "--in", tree.str(), "-0", "-annual report"});
    EXPECT_EQ(nul.out, at("report.pdf") + '\0');
    // Options keep their values, a folder after --in included.
    EXPECT_EQ(relative(quester({"search", "--in", tree.str(), "report", "--sort", "name"})),
              (Lines{"annual report.pdf", "report.pdf"}));
}

// "--sort tags" left the list in name order: rows had no tags until shown.
TEST_F(ScriptingTest, EverySortableColumnOrdersTheList) {
    // Named so that no column's order is the name order.
    const std::string b = tree.write("x/item-b.txt", "12").string();
    const std::string c = tree.write("w/item-c.pdf", "1").string();
    const std::string a = tree.write("y/item-a", "123").string();
    setTimes(a, 300, 200);
    setTimes(b, 100, 100);
    setTimes(c, 200, 300);
    const Lines byName{"y/item-a", "x/item-b.txt", "w/item-c.pdf"};
    const std::vector<std::pair<std::string, Lines>> expectations{
        {"size", {"w/item-c.pdf", "x/item-b.txt", "y/item-a"}},
        {"modDate", {"x/item-b.txt", "y/item-a", "w/item-c.pdf"}},
        {"lastAccessDate", {"x/item-b.txt", "w/item-c.pdf", "y/item-a"}},
        // "Document" < "PDF document" < "Plain text document".
        {"kind", {"y/item-a", "w/item-c.pdf", "x/item-b.txt"}},
        {"inside", {"w/item-c.pdf", "x/item-b.txt", "y/item-a"}},
        {"path", {"w/item-c.pdf", "x/item-b.txt", "y/item-a"}},
        {"SIZE", {"w/item-c.pdf", "x/item-b.txt", "y/item-a"}},
    };
    for (const auto& [column, forward] : expectations) {
        EXPECT_EQ(relative(search("item", {"--sort", column})), forward) << column;
        const Lines reversed(forward.rbegin(), forward.rend());
        EXPECT_EQ(relative(search("item", {"--sort", column, "--reverse"})), reversed) << column;
    }
    EXPECT_EQ(relative(search("item")), byName);
    if (!testing::setTags(a, "zebra") || !testing::setTags(b, "apple") || !testing::setTags(c, "mango")) {
        GTEST_SKIP() << "no user attributes on this file system";
    }
    EXPECT_EQ(relative(search("item", {"--sort", "tags"})), (Lines{"x/item-b.txt", "w/item-c.pdf", "y/item-a"}));
    EXPECT_EQ(relative(search("item", {"--sort", "tags", "--reverse"})),
              (Lines{"y/item-a", "w/item-c.pdf", "x/item-b.txt"}));
}

// Rows equal in the column and the name came in the order the walk's threads
// found them, which changes from run to run.
TEST_F(ScriptingTest, TiesAreBrokenByPath) {
    // Found level by level, the deeper paths come last; by path they come first.
    for (const char* folder : {"m", "b/deep/er", "k", "a/deep", "z"}) tree.write(std::string(folder) + "/same.txt");
    const Lines byPath{"a/deep/same.txt", "b/deep/er/same.txt", "k/same.txt", "m/same.txt", "z/same.txt"};
    for (const char* column : {"name", "size", "kind"}) {
        EXPECT_EQ(relative(search("same", {"--sort", column})), byPath) << column;
        EXPECT_EQ(relative(search("same", {"--sort", column, "--reverse"})), byPath) << column;
    }
}

TEST_F(ScriptingTest, APipedTableIsNeverCutAndExportNamesTakeAnyCase) {
    const std::string longName = std::string(150, 'n') + "-report.txt";
    tree.write(longName);
    auto table = search("report", {"--format", "table"});
    EXPECT_NE(table.out.find(longName), std::string::npos) << table.out;

    auto exported = search("report", {"--export", scratch.str() + "/results.CSV"});
    EXPECT_EQ(exported.status, 0) << exported.err;
    EXPECT_NE(testing::readFile(scratch.str() + "/results.CSV").find(longName), std::string::npos);
}

}  // namespace
}  // namespace quester
