#include "platform/file_dialog.h"

#include "platform/dialog_fixture.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/qt_window.h"
#include "support/temp_directory.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QLineEdit>

#include <algorithm>
#include <chrono>

namespace kelvo {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class FileSelection : public DialogFixture {
  protected:
    std::string Path(const std::string& name) const { return directory / name; }

    FileDialogRequest Request(FileDialogMode mode) const
    {
        FileDialogRequest request;
        request.owner = mainWindow;
        request.mode = mode;
        request.title = mode == FileDialogMode::kSave ? "Save File" : "Open File";
        request.filters = {{"Image Files (*.img)", "*.img"}, {"All Files (*.*)", "*.*"}};
        request.directory = directory.Path();
        request.name = "*.img";
        request.defaultExtension = "img";
        return request;
    }

    static void MakeFile(const std::string& path) { ASSERT_TRUE(ReplaceFile(path, "contents")); }

    static QFileDialog* Widget() { return qobject_cast<QFileDialog*>(FrontModal()->widget.data()); }

    // What a person sees of the directory with the filter that stands.
    static std::vector<std::string> NamesShown()
    {
        const auto* view = Widget()->findChild<QAbstractItemView*>(QStringLiteral("listView"));
        std::vector<std::string> names;
        for (int row = 0; row < view->model()->rowCount(view->rootIndex()); ++row) {
            names.push_back(view->model()->index(row, 0, view->rootIndex()).data().toString().toStdString());
        }
        return names;
    }

    // The directory is listed beside the program's own work: what the person sees once it has been.
    static std::vector<std::string> NamesShownAtLast(std::size_t count)
    {
        const QDeadlineTimer deadline(std::chrono::seconds(20));
        while (NamesShown().size() != count && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents, 10);
        }
        return NamesShown();
    }

    TempDirectory directory;
};

}  // namespace

TEST_F(FileSelection, GivesTheChosenPath)
{
    MakeFile(Path("run7.img"));
    Then([] {
        ASSERT_TRUE(FileDialogInFront());
        EXPECT_TRUE(ChooseFiles({"run7.img"}));
    });
    const FileDialogResult result = RunFileDialog(Request(FileDialogMode::kOpen));
    EXPECT_THAT(result.paths, ElementsAre(Path("run7.img")));
    EXPECT_EQ(result.error, 0);
    EXPECT_FALSE(FileDialogInFront());
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(FileSelection, TellsWhatItShows)
{
    MakeFile(Path("run7.img"));
    FileDialogRequest request = Request(FileDialogMode::kOpen);
    request.name = "run7.img";
    Then([this] {
        const auto front = FileDialogInFront();
        EXPECT_EQ(front->title, "Open File");
        EXPECT_THAT(front->filters, ElementsAre("Image Files (*.img)", "All Files (*.*)"));
        EXPECT_EQ(front->directory, directory.Path());
        EXPECT_EQ(front->name, "run7.img");
        const auto* list = Widget()->findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
        EXPECT_EQ(list->itemText(0), "Image Files (*.img)");
        EXPECT_EQ(list->itemText(1), "All Files (*.*)");
        CancelFileDialog();
    });
    RunFileDialog(request);
    ASSERT_EQ(TranscriptOf("file").size(), 1U);
    EXPECT_THAT(TranscriptOf("file")[0], HasSubstr(R"("title":"Open File")"));
    EXPECT_THAT(TranscriptOf("file")[0], HasSubstr(R"j("filters":["Image Files (*.img)","All Files (*.*)"])j"));
    EXPECT_THAT(TranscriptOf("chosen")[0], HasSubstr(R"("paths":[])"));
}

TEST_F(FileSelection, CancelGivesNoPathAndNoError)
{
    Then([] { EXPECT_TRUE(CancelFileDialog()); });
    const FileDialogResult result = RunFileDialog(Request(FileDialogMode::kOpen));
    EXPECT_THAT(result.paths, IsEmpty());
    EXPECT_EQ(result.error, 0);
}

TEST_F(FileSelection, ItsOwnFailureIsAnError)
{
    SetFault("file dialog", true);
    const FileDialogResult result = RunFileDialog(Request(FileDialogMode::kOpen));
    EXPECT_THAT(result.paths, IsEmpty());
    EXPECT_EQ(result.error, 0xFFFF);
    EXPECT_THAT(TranscriptOf("file"), IsEmpty());
}

TEST_F(FileSelection, APatternIsNoName)
{
    Then([] {
        EXPECT_EQ(FileDialogInFront()->name, "");
        CancelFileDialog();
    });
    RunFileDialog(Request(FileDialogMode::kSave));
}

TEST_F(FileSelection, FiltersIgnoreCaseAndStarPointStarIsEveryName)
{
    for (const char* name : {"a.img", "B.IMG", "c.seq", "noextension"}) MakeFile(Path(name));
    Then([] {
        EXPECT_THAT(NamesShownAtLast(2), testing::UnorderedElementsAre("a.img", "B.IMG"));
        auto* list = Widget()->findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
        list->setCurrentIndex(1);
        Q_EMIT list->activated(1);
    });
    Then([] {
        EXPECT_THAT(NamesShownAtLast(4), testing::UnorderedElementsAre("a.img", "B.IMG", "c.seq", "noextension"));
        CancelFileDialog();
    });
    RunFileDialog(Request(FileDialogMode::kOpen));
}

TEST_F(FileSelection, AddsTheExtensionToANameWithoutOne)
{
    Then([] { ChooseFiles({"new"}); });
    EXPECT_THAT(RunFileDialog(Request(FileDialogMode::kSave)).paths, ElementsAre(Path("new.img")));
    Then([] { ChooseFiles({"new.dat"}); });
    EXPECT_THAT(RunFileDialog(Request(FileDialogMode::kSave)).paths, ElementsAre(Path("new.dat")));
    FileDialogRequest none = Request(FileDialogMode::kSave);
    none.defaultExtension = {};
    Then([] { ChooseFiles({"new"}); });
    EXPECT_THAT(RunFileDialog(none).paths, ElementsAre(Path("new")));
}

TEST_F(FileSelection, AMissingFileIsToldAndTheDialogStays)
{
    MakeFile(Path("there.img"));
    Then([] { EXPECT_TRUE(ChooseFiles({"nothere.img"})); });
    Then([] {
        ASSERT_TRUE(FileDialogInFront());
        ChooseFiles({"there.img"});
    });
    op->Answer({Button::kOk});
    EXPECT_THAT(RunFileDialog(Request(FileDialogMode::kOpen)).paths, ElementsAre(Path("there.img")));
    ASSERT_EQ(op->Boxes().size(), 1U);
    EXPECT_EQ(op->Boxes()[0].text,
              Path("nothere.img") + "\nFile not found.\nPlease verify the correct file name was given.");
    EXPECT_EQ(op->Boxes()[0].caption, "Open File");
}

TEST_F(FileSelection, AMissingDirectoryIsToldAndTheDialogStays)
{
    Then([this] { ChooseFiles({Path("nowhere/new.img")}); });
    Then([] {
        ASSERT_TRUE(FileDialogInFront());
        CancelFileDialog();
    });
    op->Answer({Button::kOk});
    EXPECT_THAT(RunFileDialog(Request(FileDialogMode::kSave)).paths, IsEmpty());
    EXPECT_THAT(op->Boxes().at(0).text, HasSubstr("Path does not exist."));
}

TEST_F(FileSelection, AsksBeforeItReplaces)
{
    MakeFile(Path("old.img"));
    op->Answer({Button::kNo, Button::kYes});
    Then([] { ChooseFiles({"old"}); });
    Then([] {
        ASSERT_TRUE(FileDialogInFront());
        ChooseFiles({"OLD.img"});  // the same file, in other letters
    });
    EXPECT_THAT(RunFileDialog(Request(FileDialogMode::kSave)).paths, ElementsAre(Path("old.img")));
    ASSERT_EQ(op->Boxes().size(), 2U);
    EXPECT_EQ(op->Boxes()[0].text, Path("old.img") + " already exists.\nDo you want to replace it?");
    EXPECT_THAT(op->Boxes()[0].buttons, ElementsAre("yes", "no"));
    EXPECT_EQ(op->Boxes()[0].defaultButton, "no");
    EXPECT_EQ(FileContents(Path("old.img")), "contents");
}

TEST_F(FileSelection, TakesSeveralNamesWhereManyAreWanted)
{
    MakeFile(Path("a.img"));
    MakeFile(Path("b c.img"));
    Then([] { EXPECT_TRUE(ChooseFiles({"a.img", "b c.img"})); });
    EXPECT_THAT(RunFileDialog(Request(FileDialogMode::kOpenMany)).paths, ElementsAre(Path("a.img"), Path("b c.img")));
    Then([] {
        EXPECT_FALSE(ChooseFiles({"a.img", "b c.img"}));
        CancelFileDialog();
    });
    EXPECT_THAT(RunFileDialog(Request(FileDialogMode::kOpen)).paths, IsEmpty());
}

TEST_F(FileSelection, TypedNamesEndWithTheOpenButton)
{
    MakeFile(Path("a.img"));
    MakeFile(Path("b.img"));
    Then([] {
        Widget()->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(R"("a.img" "b.img")");
        StrikeKey(Widget()->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")), *ParseKey("Return"));
    });
    EXPECT_THAT(RunFileDialog(Request(FileDialogMode::kOpenMany)).paths, ElementsAre(Path("a.img"), Path("b.img")));
}

TEST_F(FileSelection, ATypedDirectoryIsEntered)
{
    ASSERT_TRUE(MakeDirectories(Path("sub")));
    MakeFile(Path("sub/a.img"));
    Then([] {
        Widget()->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText("sub");
        StrikeKey(Widget()->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")), *ParseKey("Return"));
    });
    Then([this] {
        ASSERT_TRUE(FileDialogInFront());
        EXPECT_EQ(FileDialogInFront()->directory, Path("sub"));
        ChooseFiles({"a.img"});
    });
    EXPECT_THAT(RunFileDialog(Request(FileDialogMode::kOpen)).paths, ElementsAre(Path("sub/a.img")));
}

TEST_F(FileSelection, ATypedPatternIsListedAndNamesNoFile)
{
    for (const char* name : {"a.img", "b.img", "b.cal"}) MakeFile(Path(name));
    Then([] {
        EXPECT_THAT(NamesShownAtLast(2), UnorderedElementsAre("a.img", "b.img"));
        Widget()->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText("b.*");
        StrikeKey(Widget()->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")), *ParseKey("Return"));
    });
    Then([] {
        ASSERT_TRUE(FileDialogInFront());
        EXPECT_THAT(NamesShownAtLast(2), UnorderedElementsAre("b.cal", "b.img"));
        EXPECT_TRUE(ChooseFiles({"*.cal"}));
    });
    Then([] {
        ASSERT_TRUE(FileDialogInFront());
        EXPECT_THAT(NamesShownAtLast(1), ElementsAre("b.cal"));
        CancelFileDialog();
    });
    EXPECT_THAT(RunFileDialog(Request(FileDialogMode::kSave)).paths, IsEmpty());
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(FileSelection, APatternInAnotherDirectoryGoesThere)
{
    ASSERT_TRUE(MakeDirectories(Path("sub")));
    for (const char* name : {"sub/a.img", "sub/a.cal"}) MakeFile(Path(name));
    Then([] { EXPECT_TRUE(ChooseFiles({"sub\\*.cal"})); });
    Then([this] {
        EXPECT_EQ(FileDialogInFront()->directory, Path("sub"));
        EXPECT_THAT(NamesShownAtLast(1), ElementsAre("a.cal"));
        CancelFileDialog();
    });
    RunFileDialog(Request(FileDialogMode::kOpen));
}

TEST_F(FileSelection, OldPathsFindTheirFiles)
{
    ASSERT_TRUE(MakeDirectories(Path("Sub")));
    MakeFile(Path("Sub/Run.IMG"));
    Then([] { ChooseFiles({"sub\\run.img"}); });
    EXPECT_THAT(RunFileDialog(Request(FileDialogMode::kOpen)).paths, ElementsAre(Path("Sub/Run.IMG")));
}

TEST_F(FileSelection, QuitEndsIt)
{
    Then([] { PostQuitMessage(0); });
    EXPECT_THAT(RunFileDialog(Request(FileDialogMode::kOpen)).paths, IsEmpty());
}

}  // namespace kelvo
