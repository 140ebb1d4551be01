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
    // As those who restart it do, with so many frames since the last read.
    static void RestartGrabAfter(int frames)
    {
        Pass(frames);
        AccountCycleStops();
        recordingBoard.frameCount = 0;
        AccountGrabStarted();
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

TEST_F(Account, WhatTheTransportLostIsLostAtAnyTime)
{
    Read();
    recordingBoard.lostByTransport += 2;
    Read(4);  // two of them never came, one was passed by
    EXPECT_EQ(CurrentFrameAccount().lost, 3);
    EXPECT_EQ(CurrentFrameAccount().lostByTransport, 2);
    AccountHeldUp();
    recordingBoard.lostByTransport += 5;
    Read(21);
    EXPECT_EQ(CurrentFrameAccount().lost, 8);
    EXPECT_EQ(CurrentFrameAccount().lostByTransport, 7);
    EXPECT_EQ(CurrentFrameAccount().missed, 15);
    EXPECT_EQ(CurrentFrameAccount().delivered, 26);
}

TEST_F(Account, ANewGrabsTransportCountsFromNothing)
{
    recordingBoard.lostByTransport = 3;
    Read(4);
    AccountCycleStops();
    recordingBoard.frameCount = recordingBoard.lostByTransport = 0;
    AccountGrabStarted();
    recordingBoard.lostByTransport = 1;
    Read(2);
    EXPECT_EQ(CurrentFrameAccount().lostByTransport, 4);
    EXPECT_EQ(CurrentFrameAccount().delivered, 6);
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
    RestartGrabAfter(0);
    Read();
    EXPECT_EQ(CurrentFrameAccount().delivered, 3);
    EXPECT_EQ(CurrentFrameAccount().shown, 3);
    EXPECT_EQ(CurrentFrameAccount().lost, 0);
    EXPECT_EQ(CurrentFrameAccount().missed, 0);
}

TEST_F(Account, WhatPassedBeforeANewGrabIsLost)
{
    Read();
    RestartGrabAfter(24);
    Read(3);
    EXPECT_EQ(CurrentFrameAccount().delivered, 28);
    EXPECT_EQ(CurrentFrameAccount().shown, 2);
    EXPECT_EQ(CurrentFrameAccount().lost, 24);
    EXPECT_EQ(CurrentFrameAccount().missed, 2) << "until its first read the cycle doesn't run";
}

TEST_F(Account, WhatPassedInADialogBeforeANewGrabIsMissed)
{
    Read();
    AccountHeldUp();
    RestartGrabAfter(24);
    Read();
    EXPECT_EQ(CurrentFrameAccount().lost, 0);
    EXPECT_EQ(CurrentFrameAccount().missed, 24);
}

TEST_F(Account, WhatPassesBetweenTheStopAndTheStandstillOfTheGrabIsMissed)
{
    Read();
    AccountCycleStops();
    Pass(1);
    RestartGrabAfter(0);
    Read();
    EXPECT_EQ(CurrentFrameAccount().delivered, 3);
    EXPECT_EQ(CurrentFrameAccount().lost, 0);
    EXPECT_EQ(CurrentFrameAccount().missed, 1);
}

// A board that began anew on its own, without a word to the account.
TEST_F(Account, ACountThatFellBackIsOfANewGrab)
{
    Read();
    Read(9);
    recordingBoard.frameCount = 0;
    Read(2);
    EXPECT_EQ(CurrentFrameAccount().delivered, 12);
    EXPECT_EQ(CurrentFrameAccount().lost, 9);
}

TEST_F(Account, WhatACommandHeldUpIsMissedWhateverItReads)
{
    Read();
    Pass(2);  // the command comes late
    {
        const CycleHoldUp holdUp;
        Read(5);
        Read(3);
        RestartGrabAfter(7);
    }
    Read(2);
    Read(2);
    EXPECT_EQ(CurrentFrameAccount().lost, 2 + 1) << "before the command, and after the first read that follows it";
    EXPECT_EQ(CurrentFrameAccount().missed, 4 + 2 + 7 + 1);
    EXPECT_EQ(CurrentFrameAccount().delivered, 1 + 2 + 5 + 3 + 7 + 2 + 2);
}

TEST_F(Account, FramesOfABurstAreUsedAndWhatItsReadsLeaveOutIsLost)
{
    Read();
    AccountCycleStops();
    for (const int frames : {4, 1, 3}) {
        Pass(frames);
        AccountFrameUsed();
    }
    EXPECT_EQ(CurrentFrameAccount().used, 3);
    EXPECT_EQ(CurrentFrameAccount().missed, 3) << "until the burst began";
    EXPECT_EQ(CurrentFrameAccount().lost, 2);
    AccountFrameUsed();
    EXPECT_EQ(CurrentFrameAccount().used, 3) << "the same frame again";
}

TEST_F(Account, AFrameThatCouldNotBeReadIsLost)
{
    Read();
    AccountHeldUp();
    Pass(4);
    AccountReadFailed();
    EXPECT_EQ(CurrentFrameAccount().lost, 1);
    EXPECT_EQ(CurrentFrameAccount().missed, 3);
    Read(6);
    EXPECT_EQ(CurrentFrameAccount().lost, 1);
    EXPECT_EQ(CurrentFrameAccount().missed, 8) << "behind its box";
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
        if (i % 20 == 0) RestartGrabAfter(0);
        Read();
    }
    EXPECT_NEAR(CurrentFrameAccount().deliveredHz, 100, 0.01);
    EXPECT_NEAR(CurrentFrameAccount().shownHz, 100, 0.01);
}

TEST_F(Account, ClearingBeginsAnew)
{
    Read();
    Read(5);
    Pass(2);
    ClearFrameAccount();
    EXPECT_EQ(CurrentFrameAccount().delivered, 0);
    EXPECT_EQ(CurrentFrameAccount().lost, 0);
    Read();
    EXPECT_EQ(CurrentFrameAccount().delivered, 1) << "what was told before stays told";
    EXPECT_EQ(CurrentFrameAccount().lost, 0);
}

}  // namespace
}  // namespace kelvo
