#include "usermodule/user_calls.h"

#include "config/settings_write.h"
#include "imagefile/header.h"
#include "platform/dialog.h"
#include "platform/directory.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "state/frame_state.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/stored_files.h"
#include "ui/status.h"
#include "viewing/saving_write.h"
#include "viewing/viewing.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class UserResponse : public testing::Test {
  protected:
    TestOperator op;
    std::string answer = "proposal";
};

TEST_F(UserResponse, IsWhatWasTyped)
{
    op.Do([] {
        HWND dialog = DialogInFront();
        EXPECT_EQ(DialogName(dialog), "USERRESP");
        EXPECT_EQ(GetDlgItemText(dialog, 1790), "First line");
        EXPECT_EQ(GetDlgItemText(dialog, 1792), "Second line");
        EXPECT_EQ(GetDlgItemText(dialog, 1798), "proposal");
        EXPECT_EQ(FocusedDlgItem(dialog), 1798);
        OperateText(dialog, 1798, "typed");
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(GetUserResponse("First line", "Second line", answer), 1);
    EXPECT_EQ(answer, "typed");
}

TEST_F(UserResponse, LeavesTheTextAloneWhenCancelled)
{
    op.Do([] {
        OperateText(DialogInFront(), 1798, "typed");
        OperatePress(DialogInFront(), kIdCancel);
    });
    EXPECT_EQ(GetUserResponse("a", "b", answer), 0);
    EXPECT_EQ(answer, "proposal");
}

TEST_F(UserResponse, TakesEightyCharacters)
{
    op.Do([] {
        OperateText(DialogInFront(), 1798, std::string(81, 'x'));
        OperatePress(DialogInFront(), kIdOk);
    });
    EXPECT_EQ(GetUserResponse("a", "b", answer), 1);
    EXPECT_EQ(answer, std::string(80, 'x'));
}

TEST_F(UserResponse, ThatCannotBeAskedForIsTold)
{
    SetFault("load dialog USERRESP", true);
    EXPECT_EQ(GetUserResponse("a", "b", answer), 0);
    SetFault("load dialog USERRESP", false);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes().at(0).text, "Unable to display dialog");
    EXPECT_EQ(op.Boxes().at(0).caption, "System Error");
    EXPECT_EQ(answer, "proposal");
}

TEST(UserBoxes, ShowTwoLines)
{
    TestOperator op;
    UserErrorBox("No source", "in front of the camera");
    EXPECT_EQ(UserMessage("Mean", "3000 counts"), 1);
    ASSERT_EQ(op.Boxes().size(), 2U);
    EXPECT_EQ(op.Boxes()[0].text, "No source\nin front of the camera");
    EXPECT_EQ(op.Boxes()[0].caption, "User Error Message Box");
    EXPECT_EQ(op.Boxes()[0].icon, "stop");
    EXPECT_EQ(op.Texts("beep", "sound").at(0), "exclamation");
    EXPECT_EQ(op.Boxes()[1].text, "Mean\n3000 counts");
    EXPECT_EQ(op.Boxes()[1].caption, "Kelvo user message");
    EXPECT_EQ(op.Boxes()[1].icon, "none");
    EXPECT_THAT(op.Boxes()[1].buttons, ElementsAre("ok"));
}

TEST(UserBoxes, AQuestionIsTrueUnlessCancelled)
{
    TestOperator op;
    op.Answer({Button::kOk, Button::kCancel});
    EXPECT_TRUE(UserQuestion("Go on", "with the next sample?"));
    EXPECT_FALSE(UserQuestion("Go on", "with the next sample?"));
    EXPECT_EQ(op.Boxes().at(0).text, "Go on\nwith the next sample?");
    EXPECT_EQ(op.Boxes().at(0).caption, "User Message Box");
    EXPECT_THAT(op.Boxes().at(0).buttons, ElementsAre("ok", "cancel"));
}

// A stored frame of 2 x 2 on view; the SAVE dialog works in out/.
class UserSaves : public testing::Test {
  protected:
    UserSaves()
    {
        SetDefaultDir(directory.Path());
        std::filesystem::create_directory(directory / "out");
        EXPECT_TRUE(ChangeDirectory(directory / "out"));
        write::settings.MultiFrame = 0;
        WriteImageFile(directory / "a.img", PlainHeader(2, 2), {{1, 2, 3, 4}});
        EXPECT_NE(ViewImage(directory / "a.img", 0), 0);
    }
    // Types the name and presses the button.
    void Answer(const std::string& name, int button)
    {
        op.Do([name, button] {
            EXPECT_EQ(DialogName(DialogInFront()), "SAVE");
            OperateText(DialogInFront(), 1460, name);
            OperatePress(DialogInFront(), button);
        });
    }
    bool Stands(const std::string& name) const { return std::filesystem::exists(directory / "out" + "/" + name); }

    TempDirectory directory;
    TestOperator op;
};

TEST_F(UserSaves, TheImageOnView)
{
    Answer("mine", kIdOk);
    EXPECT_EQ(UserImageSave(), 1);
    const std::string file = FileContents(directory / "out/mine.img");
    ASSERT_EQ(file.size(), 512U + 8);
    EXPECT_EQ(file.substr(512), SampleBytes({1, 2, 3, 4}));
    EXPECT_EQ(StatusText.rfind(" Saved mine.img: 1 frame, ", 0), 0U) << StatusText;
}

TEST_F(UserSaves, NoImageWhereTheOperatorCancels)
{
    Answer("mine", kIdCancel);
    EXPECT_EQ(UserImageSave(), 1);
    EXPECT_FALSE(Stands("mine.img"));
}

TEST_F(UserSaves, AnImageThatCannotBeWrittenGivesZero)
{
    Answer("mine", kIdOk);
    SetFault("disk", true);
    EXPECT_EQ(UserImageSave(), 0);
    SetFault("disk", false);
    EXPECT_FALSE(op.Boxes().empty());
    EXPECT_FALSE(Stands("mine.img"));
}

TEST_F(UserSaves, TheNextImageOfTheSequence)
{
    write::windows.SeqFilePath = directory / "out/run.seq";
    write::saving.SeqNumber = 7;
    op.Answer({Button::kYes});  // a file is on view
    EXPECT_EQ(UserSequenceSave(), 1);
    EXPECT_TRUE(Stands("run7.seq"));
    EXPECT_EQ(SeqNumber, 8);
}

TEST_F(UserSaves, ASequenceThatIsDeclinedGivesOneToo)
{
    write::windows.SeqFilePath = directory / "out/run.seq";
    op.Answer({Button::kNo});
    EXPECT_EQ(UserSequenceSave(), 1) << "SaveSequence gives -1";
    EXPECT_FALSE(Stands("run0.seq"));
}

TEST_F(UserSaves, TheNameOfASequenceIsItsLetters)
{
    Answer("abc123", kIdOk);
    EXPECT_EQ(UserSequenceName(), 1);
    EXPECT_EQ(SeqFilePath, directory / "out/abc.seq");
    Answer("abcdefg1", kIdOk);
    EXPECT_EQ(UserSequenceName(), 1);
    EXPECT_EQ(SeqFilePath, directory / "out/abcdefg.seq");
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(UserSaves, ANameOfDigitsOrOfEightLettersIsRefused)
{
    write::windows.SeqFilePath = "/before.seq";
    Answer("123", kIdOk);
    EXPECT_EQ(UserSequenceName(), 0);
    Answer("abcdefgh1", kIdOk);
    EXPECT_EQ(UserSequenceName(), 0);
    ASSERT_EQ(op.Boxes().size(), 2U);
    EXPECT_EQ(op.Boxes()[0].text, "A sequence name must contain at least\none none numeric letter");
    EXPECT_EQ(op.Boxes()[1].text, "A sequence name must be 7 or less\ncharacters long");
    EXPECT_EQ(op.Boxes()[0].caption, "Kelvo message");
    EXPECT_EQ(SeqFilePath, "/before.seq");
}

TEST_F(UserSaves, ACancelledNameGivesOneAndKeepsTheFormer)
{
    write::windows.SeqFilePath = "/before.seq";
    Answer("abc", kIdCancel);
    EXPECT_EQ(UserSequenceName(), 1);
    EXPECT_EQ(SeqFilePath, "/before.seq");
}

}  // namespace
}  // namespace kelvo
