#include <gtest/gtest.h>

#include <string>

#include "commands/UTIAssistant.h"
#include "commands/UTICommand.h"
#include "platform/UniformTypeTable.h"
#include "query/QueryContainer.h"
#include "query/SearchResult.h"
#include "stores/Preferences.h"
#include "support/PathText.h"

namespace quester {
namespace {

class UTIAssistantTest : public ::testing::Test {
protected:
    Preferences preferences{""};
    UTIAssistant assistant{preferences, UniformTypeTable::shared()};
};

struct WordCase {
    std::string path;
    std::string word;
    bool included;
    bool isDirectory = false;
};

TEST_F(UTIAssistantTest, WordsAreFoundInTheKindAndTheTypesDeclaration) {
    const std::vector<WordCase> cases = {
        {"/d/song.mp3", "music", true},
        {"/d/song.flac", "sound", true},
        {"/d/film.mkv", "video", true},
        {"/d/film.avi", "video", true},
        // Found in the MIME type "audio/mpeg", and in the extension alone.
        {"/d/song.mp3", "mpeg", true},
        {"/d/a.tgz", "tgz", true},
        // Any word of the kind text counts, so a disk image is an image too.
        {"/d/debian.iso", "image", true},
        // An unknown file's kind is "Document".
        {"/d/a.xyzzy", "document", true},
        {"/d/a.xyzzy", "image", false},
        {"/d/a.docx", "zip", false},
        {"/d/a.docx", "archive", false},
        {"/d/a.jpg", "movie", false},
        // "public." is cut from what is searched, so a full identifier isn't
        // found here; the command itself knows declared identifiers.
        {"/d/a.jpg", "public.image", false},
        // "app" asks only whether the extension is "app".
        {"/d/Tool.app", "app", true, true},
        {"/d/Tool.APP", "app", true, true},
        {"/d/editor.desktop", "app", false},
        {"/d/editor.desktop", "application", true},
    };
    for (const auto& wordCase : cases) {
        const Url item(wordCase.path, wordCase.isDirectory);
        EXPECT_EQ(assistant.utiInformationIncludesWord(pathExtension(wordCase.path), item, wordCase.word),
                  wordCase.included)
            << wordCase.word << " in " << wordCase.path;
    }
}

struct KindCase {
    std::string word;
    std::string path;
    bool isDirectory;
    bool accepted;
};

CommandApplyResult judgeKind(const KindCase& kindCase) {
    static const QueryContainer query;
    UTICommand command(kindCase.word);
    SearchResult result;
    result.url = Url(kindCase.path, kindCase.isDirectory);
    result.isDirectory = kindCase.isDirectory;
    return command.commandImpApply(result, nullptr, query);
}

TEST(UTICommandJudgement, KindWordsAcceptTheirItemsAndNothingElse) {
    const std::vector<KindCase> cases = {
        {"pdf", "/d/report.pdf", false, true},
        {"pdf", "/d/report.docx", false, false},
        {"image", "/d/photo.JPG", false, true},
        {"image", "/d/scan.heic", false, true},
        {"image", "/d/raw.nef", false, true},
        {"image", "/d/logo.svg", false, true},
        {"image", "/d/song.mp3", false, false},
        {"image", "/d/photos", true, false},
        {"video", "/d/film.mp4", false, true},
        {"video", "/d/song.mp3", false, false},
        {"movie", "/d/film.mov", false, true},
        {"audio", "/d/song.m4a", false, true},
        {"audio", "/d/film.mp4", false, false},
        {"archive", "/d/backup.tar.gz", false, true},
        {"archive", "/d/package.deb", false, true},
        {"archive", "/d/letter.docx", false, false},
        {"archive", "/d/sheet.xlsx", false, false},
        {"diskimage", "/d/debian.iso", false, true},
        {"font", "/d/Inter.woff2", false, true},
        {"source", "/d/main.cpp", false, true},
        {"source", "/d/notes.txt", false, false},
        {"text", "/d/notes.txt", false, true},
        {"text", "/d/page.html", false, true},
        {"text", "/d/photo.png", false, false},
        {"spreadsheet", "/d/budget.ods", false, true},
        {"presentation", "/d/talk.pptx", false, true},
        {"executable", "/d/tool.AppImage", false, true},
        {"executable", "/d/libz.so", false, false},
        {"app", "/d/Tool.app", true, true},
        {"app", "/d/tool.AppImage", false, true},
        {"app", "/d/editor.desktop", false, true},
        {"app", "/d/notes.txt", false, false},
        {"public.data", "/d/photos", true, false},
        {"file", "/d/photos", true, false},
        {"folder", "/d/notes.txt", false, false},
        {"public.data", "/d/anything.xyzzy", false, true},
        {"file", "/d/notes.txt", false, true},
        {"folder", "/d/photos", true, true},
        // A type identifier that the table declares stands for its type and
        // every type that conforms to it.
        {"public.image", "/d/photo.jpg", false, true},
        {"public.image", "/d/song.mp3", false, false},
        {"com.adobe.pdf", "/d/paper.PDF", false, true},
        {"com.apple.application", "/d/editor.desktop", false, true},
        {"com.pkware.zip-archive", "/d/a.zip", false, true},
        {"com.pkware.zip-archive", "/d/a.docx", false, false},
        {"public.folder", "/d/photos", true, true},
    };
    for (const auto& kindCase : cases) {
        const auto expected = kindCase.accepted ? CommandApplyResult::accept : CommandApplyResult::exclude;
        EXPECT_EQ(judgeKind(kindCase), expected) << "is " << kindCase.word << " for " << kindCase.path;
    }
}

}  // namespace
}  // namespace quester
