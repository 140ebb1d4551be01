// A long gather: what is painted and what is dropped meanwhile, and Escape.
#include "ui/gather.h"

#include "platform/dialog_fixture.h"
#include "platform/front.h"
#include "platform/qt_window.h"
#include "ui/status.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPushButton>
#include <QWindow>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace kelvo {
namespace {

void PostKey(QWidget* widget, int key)
{
    QApplication::postEvent(widget, std::make_unique<QKeyEvent>(QEvent::KeyPress, key, Qt::NoModifier).release());
    QApplication::postEvent(widget, std::make_unique<QKeyEvent>(QEvent::KeyRelease, key, Qt::NoModifier).release());
}

void PostClick(QWidget* widget)
{
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QApplication::postEvent(widget,
                                std::make_unique<QMouseEvent>(type, QPointF(5, 5), widget->mapToGlobal(QPointF(5, 5)),
                                                              Qt::LeftButton, Qt::LeftButton, Qt::NoModifier)
                                    .release());
    }
}

class LongGather : public DialogFixture {};

TEST_F(LongGather, GoesOnUntilEscape)
{
    const Gather gather(true);
    EXPECT_TRUE(GatherGoesOn());
    PostKey(mainWindow->widget, Qt::Key_A);
    EXPECT_TRUE(GatherGoesOn());
    EXPECT_FALSE(GatherWasStopped());
    PostKey(mainWindow->widget, Qt::Key_Escape);
    EXPECT_FALSE(GatherGoesOn());
    EXPECT_FALSE(GatherGoesOn()) << "it stays stopped";
    EXPECT_TRUE(GatherWasStopped());
}

TEST_F(LongGather, TellsWhyNothingCameUntilTheNextOneBegins)
{
    {
        const Gather gather(true);
        PostKey(mainWindow->widget, Qt::Key_Escape);
        EXPECT_FALSE(GatherGoesOn());
    }
    EXPECT_EQ(WhyNothingWasGathered("Hardware error"), "Stopped by Esc. What was there before is as it was.");
    const Gather next(false);
    EXPECT_EQ(WhyNothingWasGathered("Hardware error"), "Hardware error");
}

TEST_F(LongGather, AShortOneAndNoneAtAllAskNobody)
{
    PostKey(mainWindow->widget, Qt::Key_Escape);
    EXPECT_TRUE(GatherGoesOn());
    const Gather gather(false);
    EXPECT_TRUE(GatherGoesOn());
    EXPECT_EQ(StatusField, "");
}

TEST_F(LongGather, SaysHowItEndsAtTheRightOfTheLine)
{
    {
        const Gather gather(true);
        EXPECT_EQ(StatusField, "Esc stops");
        StatusMessage(" Captured 1 of 30 frames", kLeftAligned);
        EXPECT_EQ(StatusText, " Captured 1 of 30 frames");
        EXPECT_EQ(StatusField, "Esc stops");
    }
    EXPECT_EQ(StatusField, "");
}

// A click or a key of the meantime must not act when the gather is over.
TEST_F(LongGather, DropsKeysAndClicksOfTheMeantime)
{
    QPushButton button("press");
    int pressed = 0;
    QObject::connect(&button, &QPushButton::clicked, [&] { ++pressed; });
    button.resize(80, 30);
    button.show();
    {
        const Gather gather(true);
        PostClick(&button);
        PostKey(&button, Qt::Key_Space);
        EXPECT_TRUE(GatherGoesOn());
        PostClick(&button);  // after the last frame
    }
    QApplication::processEvents();
    EXPECT_EQ(pressed, 0);
    PostClick(&button);
    QApplication::processEvents();
    EXPECT_EQ(pressed, 1) << "from then on it works again";
}

TEST_F(LongGather, RunsNoTimerAndNoPostedActionMeanwhile)
{
    int ran = 0;
    {
        const Gather gather(true);
        PostAction([&] { ++ran; });
        EXPECT_TRUE(GatherGoesOn());
        EXPECT_TRUE(GatherGoesOn());
        EXPECT_EQ(ran, 0);
    }
    QApplication::processEvents();
    EXPECT_EQ(ran, 1) << "it waited";
}

TEST_F(LongGather, AWindowIsNotClosedMeanwhile)
{
    const Gather gather(true);
    QApplication::postEvent(mainWindow->frame->windowHandle(), std::make_unique<QCloseEvent>().release());
    EXPECT_TRUE(GatherGoesOn());
    EXPECT_TRUE(mainWindow->frame->isVisible());
}

}  // namespace
}  // namespace kelvo
