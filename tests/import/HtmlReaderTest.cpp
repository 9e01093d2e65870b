#include "import/HtmlReader.h"

#include <gtest/gtest.h>
#include <libxml/xmlerror.h>

#include <string>

#include "ImportedText.h"
#include "testing/TempDir.h"

namespace quester {
namespace {

using testing::importedText;

std::optional<std::string> htmlText(std::string_view page) {
    return importedText(HtmlReader::importHTML, page);
}
std::optional<std::string> xmlText(std::string_view document) {
    return importedText(HtmlReader::importXML, document);
}

TEST(HtmlReaderTest, TakesTitleThenBodyLeavingOutScriptsStylesAndHead) {
    auto text = htmlText(R"(<!DOCTYPE html><html><head><title>The  Page</title>
        <style>.stylewords { color: red }</style><script>var scriptwords = "<p>x</p>";</script>
        <meta name="description" content="metawords"><link rel="x" href="linkwords"></head>
        <body><script type="module">moduleScriptWords()</script><noscript>noscriptwords</noscript>
        <template><p>templatewords</p></template><p>Visible <b>words</b></p>
        <iframe>framewords</iframe></body></html>)");
    EXPECT_EQ(text, "The Page\nVisible words");
}

TEST(HtmlReaderTest, BlockElementsEndLinesAndBlanksCollapse) {
    auto text = htmlText(
        "<body><h1> Heading </h1><div>one \t two\n\n   three&nbsp;&nbsp;four</div>"
        "<ul><li>first</li><li>second</ul>before<br>after<br><br>"
        "<table><tr><td>cell1</td><td>cell2</td></tr><tr><th>cell3</th></tr></table>"
        "<span>in</span><i>line</i> <a href=x>link</a><pre>pre one\n  pre two</pre>tail</body>");
    EXPECT_EQ(text,
              "Heading\none two three four\nfirst\nsecond\nbefore\nafter\ncell1 cell2\ncell3\ninline link\n"
              "pre one\npre two\ntail");
}

TEST(HtmlReaderTest, DecodesEntitiesAndTheDeclaredCharset) {
    EXPECT_EQ(htmlText("<p>Fish &amp; chips at the caf&eacute; cost &#8364;5 &lt;each&gt;</p>"),
              "Fish & chips at the café cost €5 <each>");
    EXPECT_EQ(htmlText("<html><head><meta charset=\"ISO-8859-1\"></head><body>caf\xE9 \x80 na\xEFve</body></html>"),
              "café € naïve");
    EXPECT_EQ(htmlText("<head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=windows-1251\">"
                       "</head><p>\xEF\xF0\xE8\xE2\xE5\xF2</p>"),
              "привет");
    EXPECT_EQ(htmlText("\xEF\xBB\xBF<p>caf\xC3\xA9 without a declaration</p>"), "café without a declaration");
    EXPECT_EQ(htmlText(std::string("\xFF\xFE<\0p\0>\0\xE9\0t\0\xE9\0", 14)), "été");
}

TEST(HtmlReaderTest, BrokenMarkupStillGivesText) {
    EXPECT_EQ(htmlText("<p>unclosed <b>bold <div>inside</i></p> tail &bogus; <td>stray cell<"),
              "unclosed bold\ninside tail &bogus; stray cell<");
    EXPECT_EQ(htmlText("just text, no markup"), "just text, no markup");
    EXPECT_EQ(htmlText("<html><body><script>only script</script></body></html>"), std::nullopt);
    EXPECT_EQ(htmlText(""), std::nullopt);
}

TEST(HtmlReaderTest, XmlGivesElementTextWithoutExpandingExternalEntities) {
    testing::TempDir folder;
    auto secret = folder.write("secret.txt", "TOPSECRET");
    auto text = xmlText(
        "<?xml version=\"1.0\"?>\n<!DOCTYPE doc [\n"
        "  <!ENTITY external SYSTEM \"file://" +
        secret.string() +
        "\">\n"
        "  <!ENTITY % parameter SYSTEM \"file://" +
        secret.string() +
        "\">\n  %parameter;\n]>\n"
        "<doc><a>before &external; after</a><b>x &amp; y &#233;</b></doc>");
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(text->find("TOPSECRET"), std::string::npos);
    EXPECT_EQ(text, "before after\nx & y é");
}

TEST(HtmlReaderTest, XmlPutsElementsOnLinesAndKeepsRunningTextTogether) {
    auto text = xmlText(R"(<book lang="attributewords"><title>Guide</title><!-- commentwords -->
        <chapter><para>Hello <emph>big <b>bold</b></emph> world</para><?pi piwords?>
        <code><![CDATA[raw <data> & more]]></code></chapter><row><name>a</name><value>1</value></row></book>)");
    EXPECT_EQ(text, "Guide\nHello big bold world\nraw <data> & more\na\n1");
    EXPECT_EQ(xmlText("<unclosed><a>text that is cut"), "text that is cut");
    EXPECT_EQ(xmlText("<doc>undeclared caf\xE9</doc>"), "undeclared café");
    EXPECT_EQ(xmlText("<?xml version=\"1.0\" encoding=\"windows-1251\"?><doc>\xEF\xF0\xE8\xE2\xE5\xF2</doc>"),
              "привет");
}

int callerMessages = 0;
void countMessage(void*, const char*, ...) {
    ++callerMessages;
}
void countError(void*, xmlErrorPtr) {
    ++callerMessages;
}

TEST(HtmlReaderTest, ParserErrorsNeverReachTheCallersHandlersWhichStayInPlace) {
    xmlSetGenericErrorFunc(nullptr, countMessage);
    xmlSetStructuredErrorFunc(nullptr, countError);
    EXPECT_TRUE(htmlText("<p>broken <b>markup</i> &bogus; <").has_value());
    EXPECT_TRUE(xmlText("<a>broken &undeclared; <b></a>").has_value());
    EXPECT_EQ(xmlText("<?xml version=\"1.0\" encoding=\"no-such-encoding\"?><a>text</a>"), std::nullopt);
    EXPECT_EQ(callerMessages, 0);
    EXPECT_EQ(xmlGenericError, countMessage);
    EXPECT_EQ(xmlStructuredError, countError);
    xmlSetGenericErrorFunc(nullptr, nullptr);
    xmlSetStructuredErrorFunc(nullptr, nullptr);
}

TEST(HtmlReaderTest, CancelledImportGivesNothing) {
    std::string page = "<p>" + std::string(100000, 'x') + "</p>";
    EXPECT_EQ(importedText(HtmlReader::importHTML, page, {.cancel = true}), std::nullopt);
    EXPECT_EQ(importedText(HtmlReader::importXML, page, {.cancel = true}), std::nullopt);
}

}  // namespace
}  // namespace quester
