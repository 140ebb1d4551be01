// The SAVE dialog, worked as an operator works it.
#include "config/settings_write.h"
#include "platform/dialog.h"
#include "platform/directory.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/front.h"
#include "platform/help.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "state/camera_config_write.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/temp_directory.h"
#include "ui/select_file_write.h"
#include "viewing/save_dialog_write.h"
#include "viewing/saving_write.h"

#include <QApplication>
#include <QKeyEvent>
#include <QListWidget>
#include <QMouseEvent>

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <memory>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kName = 1460;
constexpr int kPath = 1462;
constexpr int kFiles = 1464;
constexpr int kDirectories = 1466;
constexpr int kFrames = 1488;
constexpr int kBegin = 1486;
constexpr int kMulti = 1784;

// In work/: a.img, B.IMG, c.seq, d.buf, plain, sub/ with inner.seq.
class SaveDialogTest : public testing::Test {
  protected:
    SaveDialogTest()
    {
        SetDefaultDir(directory / "data");
        std::filesystem::create_directories(DefaultDir);
        std::filesystem::create_directories(Work("sub"));
        for (const char* name : {"a.img", "B.IMG", "c.seq", "d.buf", "plain", ".hidden.img", "sub/inner.seq"}) {
            PutFile(Work(name), "x");
        }
        EXPECT_TRUE(ChangeDirectory(Work("")));
        write::camera.ActiveConfig.Description = "Large one";
        write::settings.MultiFrame = 0;
        write::saving.SeqNumber = 17;
        write::saving.FramesToAverageImage = 3;
        write::saving.FramesToAverageSeq = 4;
    }
    ~SaveDialogTest() override { ChangeDirectory("/"); }

    std::string Work(std::string_view name) const
    {
        return directory / "work" + (name.empty() ? "" : "/" + std::string(name));
    }

    // Opens the dialog and works it, one step after the other; what the work leaves open is cancelled.
    int Run(int mode, std::function<void(HWND)> work)
    {
        write::saveDialog.SaveDialogMode = mode;
        const auto ended = std::make_shared<bool>(false);
        op.Do([work = std::move(work)] { work(DialogInFront()); });
        op.Do([ended] {  // comes in the next dialog where this one has ended
            if (!*ended && DialogInFront()) OperatePress(DialogInFront(), kIdCancel);
        });
        const int result = SaveDialog(nullptr);
        *ended = true;
        return result;
    }
    // Types a name and presses Ok.
    int Type(int mode, const std::string& name)
    {
        return Run(mode, [=](HWND dialog) {
            OperateText(dialog, kName, name);
            OperatePress(dialog, kIdOk);
        });
    }

    static std::vector<std::string> Items(HWND dialog, int id)
    {
        std::vector<std::string> items;
        for (int i = 0; i < ListCount(dialog, id); ++i) items.push_back(ListItemText(dialog, id, i));
        return items;
    }
    static std::vector<int> Enabled(HWND dialog)
    {
        std::vector<int> enabled;
        for (const int id : {kBegin, kFrames, kMulti, 1002, 1471}) {
            if (DlgItemEnabled(dialog, id)) enabled.push_back(id);
        }
        return enabled;
    }
    static int Radio(HWND dialog)
    {
        int checked = 0;
        for (const int id : {1468, 1470, 1484, 1480}) {
            if (IsDlgButtonChecked(dialog, id)) checked = checked == 0 ? id : -1;
        }
        return checked;
    }
    std::vector<TestOperator::Box> Boxes() const { return op.Boxes(); }

    TestOperator op;
    TempDirectory directory;
};

TEST_F(SaveDialogTest, OpensByItsMode)
{
    struct Row {
        int mode;
        std::vector<std::string> files;
        std::vector<int> enabled;
        const char* frames;
        const char* name;
    };
    const Row rows[] = {
        {1468, {"a.img", "B.IMG"}, {kFrames}, "3", "*.img"},
        {1470, {"c.seq"}, {kBegin, kFrames, kMulti}, "4", "*.seq"},
        {1480, {"d.buf"}, {1002, 1471}, "3", "*.buf"},
        {1484, {"a.img", "B.IMG", "c.seq", "d.buf", "plain"}, {kBegin, kFrames, kMulti}, "3", "*.*"},
    };
    for (const Row& row : rows) {
        write::saveDialog.SaveAverage = write::saveDialog.SaveStdDev = 1;
        EXPECT_EQ(Run(row.mode,
                      [&](HWND dialog) {
                          EXPECT_EQ(DialogName(dialog), "SAVE");
                          EXPECT_EQ(Items(dialog, kFiles), row.files);
                          EXPECT_THAT(Items(dialog, kDirectories), ElementsAre("[..]", "[sub]"));
                          EXPECT_EQ(Enabled(dialog), row.enabled) << row.mode;
                          EXPECT_EQ(Radio(dialog), row.mode);
                          EXPECT_EQ(GetDlgItemText(dialog, kFrames), row.frames);
                          EXPECT_EQ(GetDlgItemText(dialog, kBegin), "17");
                          EXPECT_EQ(GetDlgItemText(dialog, kName), row.name);
                          EXPECT_EQ(GetDlgItemText(dialog, kPath), Work(""));
                          EXPECT_EQ(GetDlgItemText(dialog, 1608), "Large one");
                          EXPECT_TRUE(IsDlgButtonChecked(dialog, 1600));
                          EXPECT_FALSE(DlgItemEnabled(dialog, 1602));
                      }),
                  0);
        EXPECT_EQ(SaveAverage, 0);
        EXPECT_EQ(SaveStdDev, 0);
    }
    EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(SaveDialogTest, OpensBesideTheSettingsWhereTheDirectoryHasGone)
{
    std::filesystem::create_directory(Work("gone"));
    ASSERT_TRUE(ChangeDirectory(Work("gone")));
    std::filesystem::remove(Work("gone"));
    Run(1468, [&](HWND dialog) { EXPECT_EQ(GetDlgItemText(dialog, kPath), DefaultDir); });
    EXPECT_EQ(CurrentDirectory(), DefaultDir);
}

TEST_F(SaveDialogTest, BeginsInTheFolderForWhatIsSavedAndGoesOnWhereItWas)
{
    const std::string folder = Work("Documents/Kelvo");
    write::fileChoice.FirstFileDirectory = folder;
    EXPECT_EQ(Run(1468, [&](HWND dialog) { EXPECT_EQ(GetDlgItemText(dialog, kPath), folder); }), 0);
    EXPECT_FALSE(DirectoryExists(folder)) << "nothing came of it";
    EXPECT_EQ(CurrentDirectory(), Work(""));
    EXPECT_EQ(Type(1468, "new.img"), 1);
    EXPECT_EQ(FilePathBuf, folder + "/new.img");
    EXPECT_TRUE(DirectoryExists(folder));
    ASSERT_TRUE(ChangeDirectory(Work("sub")));
    EXPECT_EQ(Type(1468, "new.img"), 1);
    EXPECT_EQ(FilePathBuf, Work("sub/new.img")) << "then the last used";
}

TEST_F(SaveDialogTest, ANameWithoutADirectoryIsSavedInTheCurrentOne)
{
    EXPECT_EQ(Type(1468, "new.img"), 1);
    EXPECT_EQ(FilePathBuf, Work("new.img"));
    EXPECT_EQ(FramesToAverageImage, 3);
    EXPECT_EQ(SeqNumber, 17);
}

TEST_F(SaveDialogTest, ANameWithoutAnExtensionGetsThatOfThePattern)
{
    const std::pair<int, const char*> rows[] = {{1468, "n.img"}, {1470, "n.seq"}, {1480, "n.buf"}, {1484, "n"}};
    for (const auto& [radio, name] : rows) {
        EXPECT_EQ(Run(1468,
                      [radio = radio](HWND dialog) {
                          EXPECT_TRUE(OperatePress(dialog, radio));
                          OperateText(dialog, kName, "n");
                          OperatePress(dialog, kIdOk);
                      }),
                  1);
        EXPECT_EQ(FilePathBuf, Work(name));
    }
    EXPECT_EQ(Type(1468, "n.x1"), 1);
    EXPECT_EQ(FilePathBuf, Work("n.x1"));
}

TEST_F(SaveDialogTest, ARadioFillsTheListOfFiles)
{
    Run(1468, [&](HWND dialog) {
        OperatePress(dialog, 1470);
        EXPECT_THAT(Items(dialog, kFiles), ElementsAre("c.seq"));
        OperatePress(dialog, 1480);
        EXPECT_THAT(Items(dialog, kFiles), ElementsAre("d.buf"));
        OperatePress(dialog, 1484);
        EXPECT_THAT(Items(dialog, kFiles), SizeIs(5));
        EXPECT_EQ(Radio(dialog), 1484);
    });
}

TEST_F(SaveDialogTest, APatternFillsTheListAndStays)
{
    Run(1468, [&](HWND dialog) {
        OperateText(dialog, kName, "?.S*");
        OperatePress(dialog, kIdOk);
        EXPECT_THAT(Items(dialog, kFiles), ElementsAre("c.seq"));
        OperateText(dialog, kName, "sub/*.seq");
        OperatePress(dialog, kIdOk);
        EXPECT_THAT(Items(dialog, kFiles), ElementsAre("inner.seq"));
        EXPECT_EQ(GetDlgItemText(dialog, kPath), Work("sub"));
        EXPECT_EQ(GetDlgItemText(dialog, kName), "*.seq");
        OperateText(dialog, kName, "inner?");
        OperatePress(dialog, kIdOk);
        EXPECT_EQ(DialogInFront(), dialog) << "a question mark does nothing";
        EXPECT_THAT(Items(dialog, kFiles), ElementsAre("inner.seq"));
    });
    EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(SaveDialogTest, ASelectedDirectoryIsEnteredBeforeAnyNameCounts)
{
    Run(1470, [&](HWND dialog) {
        OperateText(dialog, kName, "new.seq");
        OperatePick(dialog, kDirectories, 1);
        OperatePress(dialog, kIdOk);
        EXPECT_EQ(GetDlgItemText(dialog, kPath), Work("sub"));
        EXPECT_THAT(Items(dialog, kFiles), ElementsAre("inner.seq"));
        EXPECT_THAT(Items(dialog, kDirectories), ElementsAre("[..]"));
        SendMessage(dialog, WM_COMMAND, MakeLong(kDirectories, kDoubleClicked), 0);
        EXPECT_EQ(GetDlgItemText(dialog, kPath), Work("sub")) << "nothing is selected";
        OperatePick(dialog, kDirectories, 0);
        SendMessage(dialog, WM_COMMAND, MakeLong(kDirectories, kDoubleClicked), 0);
        EXPECT_EQ(GetDlgItemText(dialog, kPath), Work(""));
        OperatePress(dialog, kIdOk);
    });
    EXPECT_EQ(FilePathBuf, Work("new.seq"));
}

TEST_F(SaveDialogTest, ADoubleClickOnAFileIsItsNameAndOk)
{
    EXPECT_EQ(Run(1468,
                  [&](HWND dialog) {
                      OperatePick(dialog, kFiles, 1);
                      EXPECT_EQ(GetDlgItemText(dialog, kName), "B.IMG");
                      SendMessage(dialog, WM_COMMAND, MakeLong(kFiles, kDoubleClicked), 0);
                  }),
              1);
    EXPECT_EQ(FilePathBuf, Work("B.IMG"));
    EXPECT_THAT(Boxes(), IsEmpty()) << "an image is asked for when it is saved";
}

// What the keyboard and the mouse give, as the window system hands it over.
void TypeKeys(const QString& text)
{
    for (const QChar character : text) {
        QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(character));
        QApplication::sendEvent(QApplication::focusWidget(), &press);
    }
}

void DoubleClickItem(const QString& list, int index)
{
    const auto* widget = QApplication::activeModalWidget()->findChild<QListWidget*>(list);
    ASSERT_NE(widget, nullptr);
    const QPointF place = widget->visualItemRect(widget->item(index)).center();
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease, QEvent::MouseButtonDblClick,
                                    QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, place, widget->viewport()->mapToGlobal(place), Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(widget->viewport(), &event);
        if (!DialogInFront()) return;  // the second press has ended it
    }
}

TEST_F(SaveDialogTest, ANameThatIsTypedTakesThePlaceOfThePattern)
{
    EXPECT_EQ(Run(1468,
                  [&](HWND dialog) {
                      TypeKeys("new");
                      EXPECT_EQ(GetDlgItemText(dialog, kName), "new");
                      OperatePress(dialog, kIdOk);
                  }),
              1);
    EXPECT_EQ(FilePathBuf, Work("new.img"));
}

TEST_F(SaveDialogTest, TheMouseTakesAFileAndEntersADirectoryByItsDoubleClick)
{
    EXPECT_EQ(Run(1470,
                  [&](HWND dialog) {
                      DoubleClickItem("directories", 1);
                      EXPECT_EQ(GetDlgItemText(dialog, kPath), Work("sub"));
                      EXPECT_THAT(Items(dialog, kFiles), ElementsAre("inner.seq"));
                      op.Answer({Button::kOk});
                      DoubleClickItem("files", 0);
                  }),
              1);
    EXPECT_EQ(FilePathBuf, Work("sub/inner.seq"));
    ASSERT_THAT(Boxes(), SizeIs(1));
    EXPECT_EQ(Boxes()[0].text, "File already exists, replace it?");
}

TEST_F(SaveDialogTest, CancelGoesBackToTheDirectoryOfTheOpening)
{
    EXPECT_EQ(Run(1468,
                  [&](HWND dialog) {
                      OperatePick(dialog, kDirectories, 1);
                      OperatePress(dialog, kIdOk);
                      EXPECT_EQ(CurrentDirectory(), Work("sub"));
                      SendMessage(dialog, WM_CLOSE, 0, 0);
                  }),
              0);
    EXPECT_EQ(CurrentDirectory(), Work(""));
}

TEST_F(SaveDialogTest, ANameWithADirectoryTakesTheProgramThere)
{
    EXPECT_EQ(Type(1468, "sub/new"), 1);
    EXPECT_EQ(FilePathBuf, Work("sub/new.img"));
    EXPECT_EQ(CurrentDirectory(), Work("sub"));
    EXPECT_EQ(Type(1468, Work("two.img")), 1);
    EXPECT_EQ(FilePathBuf, Work("two.img"));
    EXPECT_EQ(Type(1468, "../up"), 1);
    EXPECT_EQ(FilePathBuf, directory / "up.img");
    EXPECT_EQ(Type(1468, "c:\\KELVO\\old.img"), 1);
    EXPECT_EQ(FilePathBuf, DefaultDir + "/old.img");
    EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(SaveDialogTest, AParentPrefixWithABackslashIsDropped)
{
    ASSERT_TRUE(ChangeDirectory(Work("sub")));
    EXPECT_EQ(Type(1468, "..\\new.img"), 1);
    EXPECT_EQ(FilePathBuf, Work("sub/new.img"));
}

TEST_F(SaveDialogTest, AnInvalidDriveLetterStays)
{
    EXPECT_EQ(Type(1468, "q:\\new.img"), 0);
    ASSERT_THAT(Boxes(), SizeIs(1));
    EXPECT_EQ(Boxes()[0].text, "Invalid drive letter in name.");
    EXPECT_EQ(Boxes()[0].caption, "File Error");
    EXPECT_THAT(op.Texts("beep", "sound"), SizeIs(1));
    EXPECT_EQ(CurrentDirectory(), Work(""));
}

TEST_F(SaveDialogTest, ANewDirectoryIsMadeOnConsent)
{
    op.Answer({Button::kNo});
    EXPECT_EQ(Type(1468, "fresh/new.img"), 0);
    EXPECT_EQ(Boxes().at(0).text, "fresh/");
    EXPECT_EQ(Boxes()[0].caption, "Create new directory?");
    EXPECT_THAT(Boxes()[0].buttons, ElementsAre("yes", "no"));
    EXPECT_FALSE(DirectoryExists(Work("fresh")));
    EXPECT_EQ(CurrentDirectory(), Work(""));

    op.Answer({Button::kYes});
    EXPECT_EQ(Type(1468, "fresh/new.img"), 1);
    EXPECT_EQ(FilePathBuf, Work("fresh/new.img"));
    EXPECT_TRUE(DirectoryExists(Work("fresh")));
}

TEST_F(SaveDialogTest, ADirectoryThatCannotBeMadeIsTold)
{
    op.Answer({Button::kYes});
    EXPECT_EQ(Type(1468, "plain/new.img"), 0);
    ASSERT_THAT(Boxes(), SizeIs(2));
    EXPECT_EQ(Boxes()[1].text, "plain/");
    EXPECT_EQ(Boxes()[1].caption, "Unable to make new directory!");
    EXPECT_THAT(op.Texts("beep", "sound"), SizeIs(1));
    EXPECT_EQ(CurrentDirectory(), Work(""));
}

TEST_F(SaveDialogTest, AnExistingSequenceIsTakenOnlyWithConsent)
{
    EXPECT_EQ(Type(1470, "c"), 0);
    ASSERT_THAT(Boxes(), SizeIs(1));
    EXPECT_EQ(Boxes()[0].text, "File already exists, replace it?");
    EXPECT_EQ(Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(Boxes()[0].buttons, ElementsAre("ok", "cancel"));
    EXPECT_EQ(Boxes()[0].defaultButton, "cancel");
    op.Answer({Button::kOk});
    EXPECT_EQ(Type(1470, "c"), 1);
    EXPECT_EQ(FilePathBuf, Work("c.seq"));
}

TEST_F(SaveDialogTest, NumbersOutsideTheirRangesStay)
{
    struct Row {
        int mode;
        int id;
        const char* value;
        const char* text;
    };
    const Row rows[] = {
        {1470, kFrames, "", "0 <= Number of frames to average <= 9999"},
        {1470, kFrames, "many", "0 <= Number of frames to average <= 9999"},
        {1470, kFrames, "5x", "0 <= Number of frames to average <= 9999"},
        {1470, kFrames, "0", "1 <= Number of frames to average <= 1000"},
        {1470, kFrames, "1001", "1 <= Number of frames to average <= 1000"},
        {1470, kFrames, "4294967297", "1 <= Number of frames to average <= 1000"},
        {1470, kBegin, "x", "0 <= Beginning sequence number <= 9999"},
        {1470, kBegin, "-1", "0 <= Beginning sequence number <= 9999"},
        {1470, kBegin, "10000", "0 <= Beginning sequence number <= 9999"},
        {1468, kFrames, "x", "0 <= Number of frames to average <= 9999"},
        {1468, kFrames, "0", "1 <= Number of frames to average <= 1000"},
    };
    std::size_t count = 0;
    for (const Row& row : rows) {
        EXPECT_EQ(Run(row.mode,
                      [&](HWND dialog) {
                          OperateText(dialog, kName, "sub/new");
                          OperateText(dialog, row.id, row.value);
                          OperatePress(dialog, kIdOk);
                          EXPECT_EQ(CurrentDirectory(), Work("")) << "the name is still meant from here";
                      }),
                  0);
        ASSERT_THAT(Boxes(), SizeIs(++count)) << row.value;
        EXPECT_EQ(Boxes().back().text, row.text) << row.value;
        EXPECT_EQ(Boxes().back().caption, "Kelvo message");
    }
    EXPECT_THAT(op.Texts("beep", "sound"), SizeIs(count));
    EXPECT_EQ(SeqNumber, 17);
    EXPECT_EQ(FramesToAverageImage, 3);
}

TEST_F(SaveDialogTest, TheEndsOfTheRangesAreTaken)
{
    const std::pair<const char*, const char*> rows[] = {{"1", "0"}, {"1000", "9999"}};
    for (const auto& [frames, begin] : rows) {
        EXPECT_EQ(Run(1470,
                      [frames = frames, begin = begin](HWND dialog) {
                          OperateText(dialog, kName, "new");
                          OperateText(dialog, kFrames, frames);
                          OperateText(dialog, kBegin, begin);
                          OperatePress(dialog, kIdOk);
                      }),
                  1);
        EXPECT_EQ(std::to_string(FramesToAverageSeq), frames);
        EXPECT_EQ(std::to_string(SeqNumber), begin);
        EXPECT_EQ(SeqNumberStart, SeqNumber);
    }
    EXPECT_EQ(FramesToAverageImage, 3) << "images have their own";
}

TEST_F(SaveDialogTest, MultiFrameIsStoredTheMomentItChanges)
{
    const auto stored = [] { return GetPrivateProfileString("Save", "MultiFrame", "missing", IniFilePath); };
    Run(1470, [&](HWND dialog) {
        EXPECT_FALSE(IsDlgButtonChecked(dialog, kMulti));
        OperateCheck(dialog, kMulti, true);
        EXPECT_EQ(stored(), "1");
        EXPECT_EQ(MultiFrame, 1);
    });
    EXPECT_EQ(MultiFrame, 1) << "cancelling doesn't take it back";
    Run(1470, [&](HWND dialog) {
        EXPECT_TRUE(IsDlgButtonChecked(dialog, kMulti));
        OperateCheck(dialog, kMulti, false);
        EXPECT_EQ(stored(), "0");
    });
}

TEST_F(SaveDialogTest, AverageAndDeviationExcludeEachOther)
{
    Run(1480, [&](HWND dialog) {
        OperateCheck(dialog, 1002, true);
        EXPECT_EQ(std::pair(SaveAverage, SaveStdDev), std::pair(1, 0));
        OperateCheck(dialog, 1471, true);
        EXPECT_EQ(std::pair(SaveAverage, SaveStdDev), std::pair(0, 1));
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 1002));
        OperateCheck(dialog, 1471, false);
        EXPECT_EQ(std::pair(SaveAverage, SaveStdDev), std::pair(0, 0));
    });
}

TEST_F(SaveDialogTest, PassingThroughTheDirectoriesSelectsNone)
{
    EXPECT_EQ(Run(1468,
                  [&](HWND dialog) {
                      OperateText(dialog, kName, "new");
                      FocusDlgItem(dialog, kDirectories);
                      EXPECT_EQ(ListSelection(dialog, kDirectories), -1);
                      OperatePress(dialog, kIdOk);
                  }),
              1);
    EXPECT_EQ(FilePathBuf, Work("new.img"));
}

TEST_F(SaveDialogTest, HelpOpensItsPage)
{
    Run(1468, [&](HWND dialog) { OperatePress(dialog, kIdHelp); });
    EXPECT_EQ(CurrentHelpContext(), 257);
}

TEST_F(SaveDialogTest, AnEmptyNameDoesNothing)
{
    EXPECT_EQ(Type(1468, ""), 0);
    EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(SaveDialogTest, ADialogThatCannotBeShownIsTold)
{
    SetFault("load dialog SAVE", true);
    EXPECT_EQ(SaveDialog(nullptr), 0);
    EXPECT_EQ(Boxes().at(0).text, "Unable to display dialog");
    EXPECT_EQ(Boxes()[0].caption, "System Error");
}

}  // namespace
}  // namespace kelvo
