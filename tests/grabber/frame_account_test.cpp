#include "grabber/frame_account.h"

#include "platform/clock.h"
#include "support/recording_board.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

// The board's count is moved by hand, with the clock: 100 Hz.
class Account : public BoardTest {
  protected:
    Account()
    {
        ClearFrameAccount();
        AccountGrabStarted();
    }
    static void Pass(int frames)
    {
        recordingBoard.frameCount += frames;
        AdvanceVirtualClock(frames * 10'000);
    }
    static void Read(int frames = 1)
    {
        Pass(frames);
        AccountFrameRead(true);
    }
};

TEST_F(Account, ASteadyCycleLosesNothing)
{
    for (int i = 0; i < 50; ++i) Read();
    EXPECT_EQ(CurrentFrameAccount().delivered, 50);
    EXPECT_EQ(CurrentFrameAccount().shown, 50);
    EXPECT_EQ(CurrentFrameAccount().lost, 0);
    EXPECT_EQ(CurrentFrameAccount().missed, 0);
}

TEST_F(Account, FramesBetweenTwoReadsAreLost)
{
    Read();
    Read(3);
    Read();
    EXPECT_EQ(CurrentFrameAccount().delivered, 5);
    EXPECT_EQ(CurrentFrameAccount().shown, 3);
    EXPECT_EQ(CurrentFrameAccount().lost, 2);
}

TEST_F(Account, WhatADialogHeldUpIsMissedOnce)
{
    Read();
    AccountHeldUp();
    Read(21);
    Read(2);
    EXPECT_EQ(CurrentFrameAccount().missed, 20);
    EXPECT_EQ(CurrentFrameAccount().lost, 1);
    EXPECT_EQ(CurrentFrameAccount().delivered, 24);
}

TEST_F(Account, WhatPassesBeforeTheFirstReadOfAGrabIsMissed)
{
    Read(4);
    EXPECT_EQ(CurrentFrameAccount().missed, 3);
    EXPECT_EQ(CurrentFrameAccount().lost, 0);
}

TEST_F(Account, ANewGrabGoesOnWithTheAccount)
{
    Read();
    Read();
    recordingBoard.frameCount = 0;
    AccountGrabStarted();
    Read();
    EXPECT_EQ(CurrentFrameAccount().delivered, 3);
    EXPECT_EQ(CurrentFrameAccount().lost, 0);
}

TEST_F(Account, AReadFrameNeedNotBeShown)
{
    Pass(1);
    AccountFrameRead(false);
    EXPECT_EQ(CurrentFrameAccount().delivered, 1);
    EXPECT_EQ(CurrentFrameAccount().shown, 0);
    EXPECT_EQ(CurrentFrameAccount().lost, 0);
}

TEST_F(Account, DeliveredIsReadAndLostAndMissed)
{
    for (int i = 0; i < 30; ++i) {
        if (i % 7 == 0) AccountHeldUp();
        Read(1 + i % 3);
    }
    const FrameAccount& account = CurrentFrameAccount();
    EXPECT_EQ(account.delivered, account.shown + account.lost + account.missed);
    EXPECT_GT(account.lost, 0);
    EXPECT_GT(account.missed, 0);
}

TEST_F(Account, RatesAreOfAboutTheLastSecond)
{
    for (int i = 0; i < 101; ++i) Read();
    EXPECT_NEAR(CurrentFrameAccount().deliveredHz, 100, 0.01);
    EXPECT_NEAR(CurrentFrameAccount().shownHz, 100, 0.01);
    for (int i = 0; i < 60; ++i) Read(2);
    EXPECT_NEAR(CurrentFrameAccount().deliveredHz, 100, 0.01);
    EXPECT_NEAR(CurrentFrameAccount().shownHz, 50, 0.01);
}

TEST_F(Account, RatesEndWithLiveVideo)
{
    for (int i = 0; i < 101; ++i) Read();
    AdvanceVirtualClock(1'900'000);
    EXPECT_NEAR(CurrentFrameAccount().deliveredHz, 100, 0.01);
    AdvanceVirtualClock(200'000);
    EXPECT_EQ(CurrentFrameAccount().deliveredHz, 0);
    EXPECT_EQ(CurrentFrameAccount().shownHz, 0);
    // The pause is no part of the rate afterwards.
    for (int i = 0; i < 103; ++i) Read();
    EXPECT_NEAR(CurrentFrameAccount().deliveredHz, 100, 0.01);
}

// Each step of zoom or pan starts the grab again.
TEST_F(Account, RatesGoOnWhileTheGrabStartsAgain)
{
    for (int i = 0; i < 300; ++i) {
        if (i % 20 == 0) {
            recordingBoard.frameCount = 0;
            AccountGrabStarted();
        }
        Read();
    }
    EXPECT_NEAR(CurrentFrameAccount().deliveredHz, 100, 0.01);
    EXPECT_NEAR(CurrentFrameAccount().shownHz, 100, 0.01);
}

TEST_F(Account, ClearingBeginsAnew)
{
    Read();
    Read(5);
    ClearFrameAccount();
    EXPECT_EQ(CurrentFrameAccount().delivered, 0);
    EXPECT_EQ(CurrentFrameAccount().lost, 0);
    Read();
    EXPECT_EQ(CurrentFrameAccount().delivered, 1) << "what was told before stays told";
}

}  // namespace
}  // namespace kelvo
