#include "platform/controls.h"

#include "platform/application.h"
#include "platform/dialog.h"
#include "platform/dialog_fixture.h"
#include "platform/icons.h"
#include "platform/qt_window.h"

#include <QApplication>
#include <QDirIterator>
#include <QSlider>
#include <QToolButton>

namespace kelvo {

namespace {

using testing::ElementsAre;

int InkOf(const QImage& image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) count += qAlpha(image.pixel(x, y)) > 128 ? 1 : 0;
    }
    return count;
}

// Of the pixels of its middle column above and below the hand, how many are in the colour of the fill.
struct Fill {
    int above = 0;
    int below = 0;
};
Fill FillOf(int position)
{
    QSlider slider(Qt::Vertical);
    slider.setRange(0, 100);
    slider.setInvertedAppearance(true);
    slider.setValue(position);
    slider.resize(30, 300);
    const QImage image = slider.grab().toImage();
    const int hand = position * image.height() / 100;
    Fill fill;
    for (int y = 0; y < image.height(); ++y) {
        const QColor color = image.pixelColor(image.width() / 2, y);
        const bool isFilled = color.blue() > color.red() + 60;
        if (isFilled && y < hand - 20) ++fill.above;
        if (isFilled && y > hand + 20) ++fill.below;
    }
    return fill;
}

}  // namespace

TEST_F(DialogFixture, ASliderThatCountsFromTheTopIsFilledFromBelow)
{
    ChangeTheme(Theme::kLight);
    EXPECT_EQ(FillOf(20).above, 0);
    EXPECT_GT(FillOf(20).below, 150);
    EXPECT_EQ(FillOf(80).above, 0);
    EXPECT_LT(FillOf(80).below, 60);
    EXPECT_GT(FillOf(80).below, 10);
}

TEST_F(DialogFixture, FourWayButtonReportsEachDirection)
{
    FourWayButton button;
    std::vector<int> seen;
    button.onPressed = [&seen](int direction) { seen.push_back(direction); };
    for (const int direction : {100, 101, 102, 103}) EXPECT_TRUE(button.Click(direction));
    EXPECT_FALSE(button.Click(99));
    EXPECT_FALSE(button.Click(104));
    EXPECT_THAT(seen, ElementsAre(kDirectionUp, kDirectionRight, kDirectionDown, kDirectionLeft));
}

TEST_F(DialogFixture, FourWayButtonShowsLeftUpDownRight)
{
    FourWayButton button;
    button.resize(button.sizeHint());
    button.show();
    std::vector<std::pair<int, QString>> names;
    for (const QToolButton* arrow : button.findChildren<QToolButton*>()) {
        names.emplace_back(arrow->x(), arrow->accessibleName());
        EXPECT_TRUE(arrow->autoRepeat());
        EXPECT_EQ(arrow->focusPolicy(), Qt::TabFocus) << "a click leaves the focus with the picture";
    }
    std::sort(names.begin(), names.end());
    ASSERT_EQ(names.size(), 4U);
    EXPECT_EQ(names[0].second, "Left");
    EXPECT_EQ(names[1].second, "Up");
    EXPECT_EQ(names[2].second, "Down");
    EXPECT_EQ(names[3].second, "Right");
}

TEST_F(DialogFixture, ZoomStepperAsksAndDoesNotMoveItself)
{
    ZoomStepper stepper;
    stepper.SetRange(1, 16);
    stepper.SetPosition(5);
    std::vector<bool> asked;
    stepper.onStep = [&asked](bool plus) { asked.push_back(plus); };
    stepper.ClickPlus();
    stepper.ClickMinus();
    EXPECT_THAT(asked, ElementsAre(true, false));
    EXPECT_EQ(stepper.Position(), 5);
}

TEST_F(DialogFixture, ZoomStepperClampsItsPosition)
{
    ZoomStepper stepper;
    stepper.SetRange(1, 16);
    stepper.SetPosition(99);
    EXPECT_EQ(stepper.Position(), 16);
    stepper.SetPosition(-3);
    EXPECT_EQ(stepper.Position(), 1);
    stepper.SetPosition(10);
    stepper.SetRange(1, 4);
    EXPECT_EQ(stepper.Position(), 4);
}

TEST_F(DialogFixture, EveryIconDrawsSomething)
{
    int icons = 0;
    for (QDirIterator it(QStringLiteral(":/icons")); it.hasNext();) {
        const std::string name = QFileInfo(it.next()).completeBaseName().toStdString();
        const QIcon icon = IconNamed(name);
        ASSERT_FALSE(icon.isNull()) << name;
        EXPECT_GT(InkOf(icon.pixmap(QSize(24, 24), 1.0).toImage()), 8) << name;
        ++icons;
    }
    EXPECT_GE(icons, 26);
    EXPECT_TRUE(IconNamed("no such icon").isNull());
}

TEST_F(DialogFixture, IconsAreDrawnAtTheDeviceRatio)
{
    const QPixmap fine = IconNamed("load").pixmap(QSize(24, 24), 2.0);
    EXPECT_EQ(fine.size(), QSize(48, 48));
    EXPECT_EQ(fine.devicePixelRatio(), 2.0);
}

TEST_F(DialogFixture, IconsTakeThePalettesColour)
{
    QPalette palette;
    palette.setColor(QPalette::ButtonText, QColor(200, 10, 10));
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(10, 200, 10));
    QApplication::setPalette(palette);
    const QIcon icon = IconNamed("stop");
    const auto edgeOf = [&icon](QIcon::Mode mode) {
        // The square's left edge lies at 5.5 of 24.
        return icon.pixmap(QSize(240, 240), 1.0, mode).toImage().pixelColor(55, 120);
    };
    EXPECT_EQ(edgeOf(QIcon::Normal), QColor(200, 10, 10));
    EXPECT_EQ(edgeOf(QIcon::Disabled), QColor(10, 200, 10));
}

TEST_F(DialogFixture, CursorsPointWithTheirMiddle)
{
    for (const char* name : {"cross", "trackball"}) {
        const QCursor cursor = CursorNamed(name);
        EXPECT_EQ(cursor.hotSpot(), QPoint(16, 16)) << name;
        EXPECT_GT(InkOf(cursor.pixmap().toImage()), 20) << name;
    }
}

}  // namespace kelvo
