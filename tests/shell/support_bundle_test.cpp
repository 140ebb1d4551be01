#include "shell/support_bundle.h"

#include "platform/transcript.h"
#include "state/windows_write.h"
#include "support/environment_variable.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class SupportBundle : public testing::Test {
  protected:
    SupportBundle()
    {
        SetDefaultDir(directory_.Path());
        SetStateDir(directory_.Path());
    }
    void Put(const std::string& name, std::string_view contents) { PutFile(directory_ / name, contents); }
    std::string Path(const std::string& name) const { return directory_ / name; }

  private:
    TempDirectory directory_;
    EnvironmentVariable user_{"USER", "otto.lang"};
};

std::vector<std::string> Names(const std::vector<NamedText>& files)
{
    std::vector<std::string> names;
    names.reserve(files.size());
    for (const NamedText& file : files) names.push_back(file.name);
    return names;
}

std::string TextOf(const std::string& name)
{
    const std::vector<NamedText> files = GatherSupportFiles();
    const auto found = std::ranges::find(files, name, &NamedText::name);
    return found == files.end() ? "there is no " + name : found->text;
}

TEST_F(SupportBundle, HasSettingsAndLogsAndNoOtherFile)
{
    for (const char* const name : {"kelvo.ini", "CAMERA.INI", "a.cnf", "PreviousCommLog.txt", "run.seq", "still.img",
                                   "picture.png", "last.cal", "notes.txt", "kelvo.ini.bak"}) {
        Put(name, "some text\n");
    }
    std::filesystem::create_directory(Path("folder.ini"));
    EXPECT_THAT(Names(GatherSupportFiles()), ElementsAre("versions.txt", "transcript.jsonl", "CAMERA.INI", "a.cnf",
                                                         "kelvo.ini", "PreviousCommLog.txt"));
}

TEST_F(SupportBundle, HasTheNotesOfTheStateDirectoryToo)
{
    const TempDirectory state;
    SetStateDir(state.Path());
    Put("kelvo.ini", "settings\n");
    Put("recent.ini", "of an earlier version\n");
    PutFile(state / "recent.ini", "File1=a.img\n");
    PutFile(state / "CommLog.txt", "sent 20\n");
    const std::vector<NamedText> files = GatherSupportFiles();
    EXPECT_THAT(Names(files), ElementsAre("versions.txt", "transcript.jsonl", "kelvo.ini", "recent.ini", "2-recent.ini",
                                          "CommLog.txt"));
    EXPECT_EQ(TextOf("2-recent.ini"), "File1=a.img\n");
}

TEST_F(SupportBundle, TellsNoNameInTextsAndNamesOfFiles)
{
    Put("of otto.lang \xc3\xbc.ini", "Directory=" + Path("x") + "\nby OTTO.LANG\n");
    EXPECT_THAT(TextOf("of USER __.ini"), HasSubstr("by USER\n"));
}

TEST_F(SupportBundle, GivesEachFileANameOfItsOwn)
{
    for (const char* const name : {"\xc3\xa4.ini", "\xc3\xb6.ini", "\xc3\xbc.ini"}) Put(name, name);
    EXPECT_THAT(Names(GatherSupportFiles()),
                ElementsAre("versions.txt", "transcript.jsonl", "__.ini", "2-__.ini", "3-__.ini"));
    EXPECT_EQ(TextOf("2-__.ini"), "\xc3\xb6.ini");
}

TEST_F(SupportBundle, TakesTheEndOfALongFile)
{
    std::string text;
    while (text.size() < 3 * kSupportBytes) text += "line " + std::to_string(text.size()) + "\n";
    Put("kelvo.ini", text);
    const std::size_t left = text.size() - kSupportBytes;
    EXPECT_TRUE(TextOf("kelvo.ini") ==
                "(The first " + std::to_string(left) + " bytes are left out.)\n" + text.substr(left));
    Put("kelvo.ini", text.substr(left));
    EXPECT_TRUE(TextOf("kelvo.ini") == text.substr(left)) << "as long as is taken";
}

TEST_F(SupportBundle, HasTheLatestOfTheTranscript)
{
    for (std::size_t i = 0; i < kSupportLines + 10; ++i) {
        Transcribe("status", {{"text", "no. " + std::to_string(i) + " of otto.lang"}});
    }
    const std::string text = TextOf("transcript.jsonl");
    EXPECT_EQ(static_cast<std::size_t>(std::ranges::count(text, '\n')), kSupportLines);
    EXPECT_THAT(text.substr(0, text.find('\n')), HasSubstr("no. 10 of USER"));
    EXPECT_THAT(text, HasSubstr("no. " + std::to_string(kSupportLines + 9) + " of USER"));
}

TEST_F(SupportBundle, TellsTheVersions)
{
    const std::string text = TextOf("versions.txt");
    EXPECT_THAT(text, HasSubstr("Kelvo: " KELVO_VERSION "\n"));
    for (const char* const what : {"Toolkit: Qt 6", "Compiler: ", "System: ", "Kernel: Linux ",
                                   "Display: ", "Locale: ", "Data directory: ", "Time: 20"}) {
        EXPECT_THAT(text, HasSubstr(what));
    }
}

TEST_F(SupportBundle, WithoutADirectoryHasWhatIsLeft)
{
    SetDefaultDir(Path("none"));
    SetStateDir(Path("none"));
    EXPECT_THAT(Names(GatherSupportFiles()), ElementsAre("versions.txt", "transcript.jsonl"));
}

}  // namespace
}  // namespace kelvo
