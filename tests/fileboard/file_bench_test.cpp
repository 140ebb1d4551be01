#include "fileboard/file_bench.h"

#include "fileboard/file_camera.h"
#include "fileboard/recorded_files.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/dialog_fixture.h"
#include "resources/dialog_ids.h"
#include "state/windows_write.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace kelvo {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kLow = kFileBenchSource;
constexpr int kHigh = kFileBenchSource + 1;
constexpr int kScene = kFileBenchSource + 2;

class FileBench : public DialogFixture {
  protected:
    void SetUp() override
    {
        DialogFixture::SetUp();
        write::windows.hWndMain = mainWindow;
        SetDefaultDir(directory.Path());
        PutRecording(directory / "low.seq", {100, 101});
        PutRecording(directory / "scene.seq", {1, 2, 3});
    }
    void TearDown() override
    {
        CloseFileBench();
        DialogFixture::TearDown();
    }
    void Open()
    {
        PutFile(directory / "camera.cnf", "[Frames]\nLow=low.seq\nScene=scene.seq\nRate=100\n");
        std::string error;
        camera = OpenFileCamera("camera.cnf", error);
        ASSERT_TRUE(camera) << error;
        OpenFileBench(mainWindow);
        ASSERT_NE(FileBenchWindow(), nullptr);
    }
    static std::string Text(int id) { return GetDlgItemText(FileBenchWindow(), id); }

    TempDirectory directory;
    std::shared_ptr<FileCamera> camera;
};

TEST_F(FileBench, ShowsTheSourcesAndWhatIsPlayed)
{
    EXPECT_FALSE(FileBenchIsThere());
    Open();
    EXPECT_TRUE(FileBenchIsThere());
    EXPECT_TRUE(IsDlgButtonChecked(FileBenchWindow(), kScene));
    EXPECT_TRUE(DlgItemEnabled(FileBenchWindow(), kLow));
    EXPECT_FALSE(DlgItemEnabled(FileBenchWindow(), kHigh)) << "it has no file";
    EXPECT_EQ(Text(kFileBenchFile), "low.seq");
    EXPECT_EQ(Text(kFileBenchFile + 1), "no file");
    EXPECT_EQ(Text(kFileBenchFile + 2), "scene.seq");
    EXPECT_EQ(Text(kFileBenchSize), "4 x 2 at 100.00 Hz");
    BeginRecording(*camera);
    SendMessage(FileBenchWindow(), WM_TIMER, 1, 0);
    EXPECT_EQ(Text(kFileBenchFrame), "0 of 3");
    EXPECT_EQ(Text(kFileBenchLost), "0");
    DelayMs(20);
    SendMessage(FileBenchWindow(), WM_TIMER, 1, 0);
    EXPECT_EQ(Text(kFileBenchFrame), "2 of 3");
    ASSERT_TRUE(OperatePress(FileBenchWindow(), kFileBenchAgain));
    EXPECT_EQ(Text(kFileBenchFrame), "0 of 3");
}

TEST_F(FileBench, ALongNameLosesItsMiddle)
{
    Open();
    std::filesystem::copy_file(directory / "low.seq", directory / "exactly 26 characters .seq");
    EXPECT_EQ(SetFileOfSource(*camera, FileSource::kHigh, directory / "exactly 26 characters .seq"), "");
    std::filesystem::copy_file(directory / "low.seq", directory / "one that is longer than it by 2026-11-23.seq");
    EXPECT_EQ(SetFileOfSource(*camera, FileSource::kLow, directory / "one that is longer than it by 2026-11-23.seq"),
              "");
    SendMessage(FileBenchWindow(), WM_TIMER, 1, 0);
    EXPECT_EQ(Text(kFileBenchFile), "one that is ...6-11-23.seq");
    EXPECT_EQ(Text(kFileBenchFile + 1), "exactly 26 characters .seq");
}

TEST_F(FileBench, PutsASourceInFront)
{
    Open();
    ASSERT_TRUE(OperateCheck(FileBenchWindow(), kLow, true));
    EXPECT_EQ(FileSourceInFront(*camera), FileSource::kLow);
    EXPECT_EQ(Text(kFileBenchFrame), "0 of 2");
    EXPECT_EQ(PutFileBenchSource("scene", std::nullopt), "");
    EXPECT_TRUE(IsDlgButtonChecked(FileBenchWindow(), kScene));
    EXPECT_EQ(PutFileBenchSource("high", std::nullopt), "no file for the source \"high\"");
    EXPECT_EQ(PutFileBenchSource("raw", std::nullopt), "no source \"raw\": low, high or scene");
    EXPECT_EQ(PutFileBenchSource("low", 20), "a recording has the temperature that it was made at");
    EXPECT_EQ(FileSourceInFront(*camera), FileSource::kScene);
}

TEST_F(FileBench, AnotherFileComesInFrontOrIsRefused)
{
    Open();
    op->Do([this] { EXPECT_TRUE(ChooseFiles({directory / "low.seq"})); });
    ASSERT_TRUE(OperatePress(FileBenchWindow(), kFileBenchLoad + 1));
    EXPECT_EQ(FileSourceInFront(*camera), FileSource::kHigh);
    EXPECT_EQ(Text(kFileBenchFile + 1), "low.seq");
    EXPECT_TRUE(IsDlgButtonChecked(FileBenchWindow(), kHigh));
    EXPECT_THAT(op->Boxes(), IsEmpty());

    PutFile(directory / "text.seq", "no frames");
    op->Do([this] { EXPECT_TRUE(ChooseFiles({directory / "text.seq"})); });
    ASSERT_TRUE(OperatePress(FileBenchWindow(), kFileBenchLoad + 2));
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_THAT(op->Boxes().front().text, HasSubstr("These frames can't be played.\n" + directory.Path()));
    EXPECT_EQ(Text(kFileBenchFile + 2), "scene.seq");
    EXPECT_EQ(FileSourceInFront(*camera), FileSource::kHigh);
}

TEST_F(FileBench, ACancelledChoiceChangesNothing)
{
    Open();
    op->Do([] { EXPECT_TRUE(CancelFileDialog()); });
    ASSERT_TRUE(OperatePress(FileBenchWindow(), kFileBenchLoad));
    EXPECT_EQ(Text(kFileBenchFile), "low.seq");
    EXPECT_EQ(FileSourceInFront(*camera), FileSource::kScene);
}

TEST_F(FileBench, OpensOnceClosesAndOutlivesItsCamera)
{
    Open();
    const HWND first = FileBenchWindow();
    OpenFileBench(mainWindow);
    EXPECT_EQ(FileBenchWindow(), first);
    ForgetFileCameras();
    SendMessage(FileBenchWindow(), WM_TIMER, 1, 0);
    EXPECT_EQ(Text(kFileBenchSize), "-");
    EXPECT_FALSE(DlgItemEnabled(FileBenchWindow(), kFileBenchLoad));
    EXPECT_EQ(PutFileBenchSource("low", std::nullopt), "no recorded camera");
    ASSERT_TRUE(OperatePress(FileBenchWindow(), kIdCancel));
    EXPECT_EQ(FileBenchWindow(), nullptr);
}

}  // namespace
}  // namespace kelvo
