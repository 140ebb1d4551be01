#include "platform/box.h"

#include "platform/front.h"
#include "platform/qt_window.h"
#include "platform/transcript.h"
#include "support/operator.h"

#include <QLabel>
#include <QMessageBox>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using ::testing::ElementsAre;

// The box as the toolkit has it.
QMessageBox* BoxWidget()
{
    return FrontModal() ? qobject_cast<QMessageBox*>(FrontModal()->widget.data()) : nullptr;
}

TEST(MessageBox, WorksBeforeAnyWindowExists)
{
    TestOperator op;
    EXPECT_EQ(MessageBox(nullptr, "Initialize Variables Failure", kMessageCaption), Button::kOk);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "Initialize Variables Failure");
    EXPECT_EQ(op.Boxes()[0].caption, "Kelvo message");
    EXPECT_EQ(op.Boxes()[0].icon, "exclamation");
    EXPECT_THAT(op.Boxes()[0].buttons, ElementsAre("ok"));
    EXPECT_EQ(op.Boxes()[0].answer, "ok");
    EXPECT_FALSE(BoxInFront());
}

TEST(MessageBox, ReturnsTheButtonPressed)
{
    TestOperator op;
    op.Answer({Button::kCancel, Button::kYes, Button::kNo, Button::kCancel});
    EXPECT_EQ(MessageBox(nullptr, "a", "c", BoxIcon::kStop, BoxButtons::kOkCancel), Button::kCancel);
    EXPECT_EQ(MessageBox(nullptr, "b", "c", BoxIcon::kQuestion, BoxButtons::kYesNo), Button::kYes);
    EXPECT_EQ(MessageBox(nullptr, "c", "c", BoxIcon::kQuestion, BoxButtons::kYesNoCancel), Button::kNo);
    EXPECT_EQ(MessageBox(nullptr, "d", "c", BoxIcon::kQuestion, BoxButtons::kYesNoCancel), Button::kCancel);
    EXPECT_THAT(op.Texts("answer", "button"), ElementsAre("cancel", "yes", "no", "cancel"));
}

TEST(MessageBox, FirstButtonIsTheDefaultUnlessAnotherIsNamed)
{
    TestOperator op;
    EXPECT_EQ(MessageBox(nullptr, "a", "c", BoxIcon::kQuestion, BoxButtons::kYesNo), Button::kYes);
    EXPECT_EQ(MessageBox(nullptr, "a", "c", BoxIcon::kQuestion, BoxButtons::kYesNo, Button::kNo), Button::kNo);
    EXPECT_THAT(op.Texts("box", "default"), ElementsAre("yes", "no"));
}

Button EscapeFrom(BoxButtons buttons)
{
    TestOperator op;
    op.AtNextBox([](const FrontBox&) { OperateKey("Esc"); });
    return MessageBox(nullptr, "text", "caption", BoxIcon::kNone, buttons);
}

TEST(MessageBox, EscapeIsCancelElseNoElseOk)
{
    EXPECT_EQ(EscapeFrom(BoxButtons::kOk), Button::kOk);
    EXPECT_EQ(EscapeFrom(BoxButtons::kOkCancel), Button::kCancel);
    EXPECT_EQ(EscapeFrom(BoxButtons::kYesNo), Button::kNo);
    EXPECT_EQ(EscapeFrom(BoxButtons::kYesNoCancel), Button::kCancel);
}

TEST(MessageBox, ClosingItsWindowIsEscape)
{
    TestOperator op;
    op.AtNextBox([](const FrontBox&) { BoxWidget()->close(); });
    EXPECT_EQ(MessageBox(nullptr, "text", "caption", BoxIcon::kNone, BoxButtons::kYesNo), Button::kNo);
}

TEST(MessageBox, ShowsPlainTextWithLatin1AndUtf8)
{
    TestOperator op;
    QString shown;
    Qt::TextFormat format = Qt::AutoText;
    op.AtNextBox([&](const FrontBox&) {
        shown = BoxWidget()->text();
        format = BoxWidget()->textFormat();
    });
    MessageBox(nullptr, "<b>20\xB0</b> /tmp/\xC3\xA4.img", "caption");
    EXPECT_EQ(format, Qt::PlainText);
    EXPECT_EQ(shown, QString::fromUtf8("<b>20\xC2\xB0</b> /tmp/\xC3\xA4.img"));
    EXPECT_EQ(op.Boxes().at(0).text, "<b>20\xC2\xB0</b> /tmp/\xC3\xA4.img");
}

TEST(MessageBox, IsInFrontWithAllThatAnOperatorReads)
{
    TestOperator op;
    std::optional<FrontBox> seen;
    op.AtNextBox([&](const FrontBox& box) { seen = box; });
    MessageBox(nullptr, "What?", "Kelvo File Error!", BoxIcon::kStop, BoxButtons::kYesNoCancel, Button::kNo);
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->text, "What?");
    EXPECT_EQ(seen->caption, "Kelvo File Error!");
    EXPECT_EQ(seen->icon, BoxIcon::kStop);
    EXPECT_THAT(seen->buttons, ElementsAre(Button::kYes, Button::kNo, Button::kCancel));
    EXPECT_EQ(seen->defaultButton, Button::kNo);
    EXPECT_FALSE(DialogInFront());
    EXPECT_FALSE(FileDialogInFront());
}

TEST(MessageBox, RefusesAButtonThatItHasNot)
{
    TestOperator op;
    bool pressed = true;
    op.AtNextBox([&](const FrontBox&) { pressed = PressBoxButton(Button::kYes); });
    MessageBox(nullptr, "text", "caption");
    EXPECT_FALSE(pressed);
    EXPECT_FALSE(PressBoxButton(Button::kOk));  // nothing is in front any more
}

TEST(MessageBox, OfABoxIsInFrontOfIt)
{
    TestOperator op;
    op.AtNextBox([](const FrontBox&) { MessageBox(nullptr, "inner", "caption"); });
    MessageBox(nullptr, "outer", "caption");
    ASSERT_EQ(op.Boxes().size(), 2U);
    EXPECT_EQ(op.Boxes()[0].text, "outer");
    EXPECT_EQ(op.Boxes()[1].text, "inner");
    EXPECT_THAT(op.Texts("answer", "button"), ElementsAre("ok", "ok"));
}

TEST(MessageBox, WithoutAnApplicationGivesTheEscapeButton)
{
    EXPECT_EQ(MessageBox(nullptr, "no window", "caption", BoxIcon::kNone, BoxButtons::kOkCancel), Button::kCancel);
}

// The desktop's sound tells of a box that wants to be read; one that merely informs comes in silence.
TEST(MessageBox, SoundsAsItsIconDoes)
{
    TestOperator op;
    for (const BoxIcon icon :
         {BoxIcon::kExclamation, BoxIcon::kQuestion, BoxIcon::kStop, BoxIcon::kInformation, BoxIcon::kNone}) {
        MessageBox(nullptr, "text", "caption", icon);
    }
    EXPECT_THAT(op.Texts("box", "sound"), ElementsAre("exclamation", "question", "stop", "none", "none"));
    EXPECT_TRUE(op.Texts("beep", "sound").empty()) << "none of the logic's own";
}

TEST(MessageBeep, IsWrittenDown)
{
    TestOperator op;
    MessageBeep(Sound::kExclamation);
    MessageBeep(Sound::kDefault);
    EXPECT_THAT(op.Texts("beep", "sound"), ElementsAre("exclamation", "default"));
}

}  // namespace
}  // namespace kelvo
