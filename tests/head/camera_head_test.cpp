// Whole conversations with the head, against tables of bytes worked out by hand.

#include "head/camera_head_write.h"
#include "head/comm_link_write.h"
#include "head/identify_head.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/pointer.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/windows.h"
#include "support/head_fixture.h"
#include "ui/status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

namespace kelvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// What an InSb head is told when nothing is known of it: kInSbSection.
const Frames kInSbTiming = {
    {0x50, 0x00, 0x00, 0x05},  // clock index 3 + 2
    {0x50, 0x01, 0x40, 0x50},  // 256 / 4, 320 / 4
    {0x50, 0x03, 0x0E, 0x00},  // index 10 of a window of one pixel: 15 - 19 / 5 = 12 lines, + 2; no columns
    {0x50, 0x05, 0x00, 0xFF},  // 15 x 16 + 15
};
const Frames kInSbDacs = {
    {0x70, 0x01, 0xA0, 0x00},                            // 160
    {0x70, 0x02, 0x80, 0x00}, {0x70, 0x20, 0x07, 0x00},  // DAC 5
    {0x70, 0x40, 0x80, 0x00}, {0x70, 0x80, 0x80, 0x00}, {0x70, 0x08, 0x80, 0x00},
    {0x70, 0x10, 0x80, 0x00}, {0x70, 0x04, 0x80, 0x00},  // DAC 2 last, its reply compared
};
const CommFrame kBiasesOn = {0x80, 0x03, 0x00, 0x00};
const CommFrame kClocksOn = {0x90, 0x30, 0x00, 0x00};
const Frames kInSbSerialWord = {
    {0x60, 0x00, 0x7E, 0x42},  // 15 x 8 + 3 x 2; column gain 4 = 100 -> 001: x 64; fast frame x 2
    {0x60, 0x02, 0x01, 0xCA},  // 319 / 8 = 39 = 0100111 -> 1110010 = 114: 114 >> 6; 2 + 114 x 4 - 256
    {0x60, 0x04, 0x80, 0x3E},  // 255 / 8 = 31 = 011111 -> 111110 = 62
};
const CommFrame kGainFour = {0x60, 0x30, 0x00, 0x00};  // code 12 x 4

Frames Joined(std::initializer_list<Frames> parts)
{
    Frames all;
    for (const Frames& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

const Frames kInSbTurnOn =
    Joined({kInSbTiming, kInSbDacs, {kBiasesOn, kClocksOn}, kInSbSerialWord, {kGainFour, kInSbDacs[0]}});

const Frames kMidScaleDacs = {
    {0x70, 0x01, 0x80, 0x00}, {0x70, 0x02, 0x80, 0x00}, {0x70, 0x04, 0x80, 0x00}, {0x70, 0x10, 0x80, 0x00},
    {0x70, 0x08, 0x80, 0x00}, {0x70, 0x20, 0x80, 0x00}, {0x70, 0x40, 0x80, 0x00}, {0x70, 0x80, 0x80, 0x00},
};

class Identification : public HeadTest {};
class ProgrammingAHead : public HeadTest {};
class HeadOperations : public HeadTest {};

// --- Identification -------------------------------------------------------------------------------------------------

TEST_F(Identification, AnInSbHeadIsGreetedAndTheLinkClosed)
{
    head->BeInSb();
    EXPECT_EQ(IdentifyCameraHead(), 1);
    EXPECT_THAT(head->Taken(), ElementsAre(CommFrame{0x20, 0x00, 0x00, 0x00}, CommFrame{0x90, 0x10, 0x00, 0x00},
                                           CommFrame{0x70, 0x00, 0x00, 0x00}, CommFrame{0x40, 0x00, 0xBF, 0x00}));
    EXPECT_EQ(HeadTiming.HeadModel, 0x50);
    EXPECT_EQ(CommEchoMode, 0);
    EXPECT_EQ(CommPortOpen, 0);
    EXPECT_EQ(StatusText, "1 Ch. 14-bit QVF119/125 InSb Camera Head found");
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(Identification, AnHgCdTeHeadIsGreetedInATransaction)
{
    head->BeHgCdTe();
    EXPECT_EQ(IdentifyCameraHead(), 1);
    EXPECT_THAT(head->Taken(), ElementsAre(CommFrame{0x20, 0x00, 0x00, 0x00}, CommFrame{0x80, 0x00, 0x00, 0x00}));
    EXPECT_EQ(HeadTiming.HeadModel, 0x90);
    EXPECT_EQ(CommEchoMode, 1);
    EXPECT_EQ(CommPortOpen, 0);
    EXPECT_EQ(StatusText, "1 Ch. 14-bit 64x64 HgCdTe Camera Head found");
}

TEST_F(Identification, TheLinkStaysWhereItIsAlwaysOpen)
{
    PutSetup("CommPortAlwaysOpen=1\n");
    head->BeInSb();
    EXPECT_EQ(IdentifyCameraHead(), 1);
    EXPECT_EQ(CommPortOpen, 1);
    head->BeHgCdTe();
    EXPECT_EQ(IdentifyCameraHead(), 1);
    EXPECT_EQ(CommPortOpen, 1);
    head->AnswerTo({0x20, 0, 0, 0}, {0x10, 0x64, 0, 0});
    EXPECT_EQ(IdentifyCameraHead(), 0);
    EXPECT_EQ(CommPortOpen, 1);
}

TEST_F(Identification, ASilentOrShortHeadIsTold)
{
    for (const Answer& answer : {kSilence, kShort}) {
        head->AnswerAll(answer);
        EXPECT_EQ(IdentifyCameraHead(), 0);
        EXPECT_THAT(head->Taken(), SizeIs(1));
        EXPECT_EQ(CommPortOpen, 0);
    }
    const auto boxes = op->Boxes();
    ASSERT_THAT(boxes, SizeIs(2));
    EXPECT_EQ(boxes[1].text, "Unable to communicate with digital camera head! Check power & cable connections.");
    EXPECT_EQ(boxes[1].caption, "Camera Head Error!");
    EXPECT_EQ(boxes[1].icon, "exclamation");
}

TEST_F(Identification, HeadsOfOtherKindsAreNamed)
{
    const struct {
        Answer answer;
        const char* text;
        const char* caption;
        const char* icon;
    } cases[] = {
        {{0x10, 0x64, 0, 0},
         "2 channel camera head doesn't match 1 channel software.",
         "Camera Head Error!",
         "information"},
        {{0x10, 0x61, 0, 0},
         "4 channel camera head doesn't match 1 channel software!",
         "Camera Head Error",
         "information"},
        {{0x10, 0x00, 0, 0},
         "Camera head is present, but software is unable to identify it.",
         "Warning!",
         "exclamation"},
        {{0x20, 0x01, 0, 0},
         "Camera head is present, but software is unable to identify it.",
         "Warning!",
         "exclamation"},
        {{0x69, 0x00, 0, 0},
         "Camera head is present, but software is unable to identify it.",
         "Warning!",
         "exclamation"},
    };
    write::registers.HeadTiming.HeadModel = 0;
    for (const auto& each : cases) {
        head->AnswerTo({0x20, 0, 0, 0}, each.answer);
        EXPECT_EQ(IdentifyCameraHead(), 0);
        EXPECT_EQ(op->Boxes().back().text, each.text);
        EXPECT_EQ(op->Boxes().back().caption, each.caption);
        EXPECT_EQ(op->Boxes().back().icon, each.icon);
        EXPECT_EQ(CommPortOpen, 0);
    }
    EXPECT_EQ(HeadTiming.HeadModel, 0);
    EXPECT_THAT(op->Boxes(), SizeIs(5));
}

TEST_F(Identification, AGreetingThatFailsIsSilent)
{
    head->BeInSb();
    const std::pair<CommFrame, Answer> cases[] = {{{0x90, 0x10, 0, 0}, kSilence},
                                                  {{0x90, 0x10, 0, 0}, {0x91, 0x10, 0, 0}},  // not what was sent
                                                  {{0x70, 0, 0, 0}, kShort},
                                                  {{0x40, 0, 0xBF, 0}, kSilence}};
    std::size_t frames = 2;
    for (const auto& [frame, answer] : cases) {
        head->AnswerTo(frame, answer);
        EXPECT_EQ(IdentifyCameraHead(), 0);
        EXPECT_THAT(head->Taken(), SizeIs(frames));
        EXPECT_EQ(CommPortOpen, 0);
        head->AnswerTo(frame, Answer(frame.begin(), frame.end()));
        if (answer != kSilence) ++frames;
    }
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(Identification, OnlyTheClocksReplyIsCompared)
{
    head->BeInSb();
    head->AnswerTo({0x70, 0, 0, 0}, {0, 0, 0, 0});
    head->AnswerTo({0x40, 0, 0xBF, 0}, kRefusal);
    EXPECT_EQ(IdentifyCameraHead(), 1);
}

TEST_F(Identification, AnHgCdTeGreetingThatFailsIsSilent)
{
    head->BeHgCdTe();
    for (const Answer& answer : {kRefusal, kSilence}) {
        head->AnswerTo({0x80, 0, 0, 0}, answer);
        PutSetup("CommPortAlwaysOpen=1\n");
        EXPECT_EQ(IdentifyCameraHead(), 0);
        EXPECT_EQ(CommPortOpen, 0) << "closed even where it is always open";
    }
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(Identification, APortWithoutAHeadIsNoFailureToTell)
{
    Wire("none");
    EXPECT_EQ(IdentifyCameraHead(), 0);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    write::camera.nCommPort = 0;  // stands for port 2
    EXPECT_EQ(IdentifyCameraHead(), 0);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(Identification, APortThatTheMachineDoesntHaveIsTold)
{
    write::camera.nCommPort = 77;
    EXPECT_EQ(IdentifyCameraHead(), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    EXPECT_EQ(op->Boxes()[0].text, "OpenXComm, Error number " + std::to_string(ENODEV));
    EXPECT_EQ(op->Boxes()[1].text, "Error opening rs232 communications!  Check port, baud rate, etc.");
}

TEST_F(Identification, APortThatDoesntOpenGivesTheLinksBoxesOnly)
{
    SetFault("serial open", true);
    EXPECT_EQ(IdentifyCameraHead(), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    EXPECT_EQ(op->Boxes()[1].text, "Error opening rs232 communications!  Check port, baud rate, etc.");
}

// --- Programming ----------------------------------------------------------------------------------------------------

TEST_F(ProgrammingAHead, AnInSbHeadGetsAllAtTheFirstTurnOn)
{
    IdentifyAsInSb();
    std::int32_t result = 0;
    EXPECT_EQ(Programming(result), kInSbTurnOn);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(CommEchoMode, 1);
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
    EXPECT_THAT(op->Texts("status", "text"),
                ElementsAre("1 Ch. 14-bit QVF119/125 InSb Camera Head found", "  Setting Camera Head timing",
                            "  Initializing Camera Head DACs", "  Enabling Camera Head biases and DACs",
                            "  Turning on Camera Head clocks", "  Setting Camera Head FPA serial command word"));
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_EQ(ActiveConfig.NumOutputs, 1);
    EXPECT_EQ(ActiveConfig.NumChannels, 1);
    EXPECT_EQ(FrameRate, 48.828125F);  // 48000000 / 12 / (320 x 256)
    EXPECT_EQ(CameraKey("fFrameRate"), "48.828125");
    EXPECT_EQ(CameraKey("IndexFrameRate"), "3");
    EXPECT_EQ(CameraKey("QVF1058_Gain0"), "4");
    EXPECT_EQ(CameraKey("QVF1058_DAC0"), "160");
}

// 320 x 256 now is the window: 254 - 3 x 4 = 242 lines, + 2 = 0xF4; (159 + 3) / 4 = 40 = 0x28. Clock, size and delays
// are as they were sent; the serial word isn't, since its column gain and limits were kept encoded.
TEST_F(ProgrammingAHead, WithTheCameraOnOnlyChangesAreSent)
{
    IdentifyAsInSb();
    std::int32_t result = 0;
    Programming(result);
    write::frames.CameraOn = 1;
    const Frames expected = Joined(
        {{{0x50, 0x03, 0xF4, 0x28}}, kInSbDacs, {kBiasesOn, kClocksOn}, kInSbSerialWord, {kGainFour, kInSbDacs[0]}});
    EXPECT_EQ(Programming(result), expected);
    EXPECT_EQ(result, 1);
}

TEST_F(ProgrammingAHead, WithTheCameraOffAllIsSentAgain)
{
    IdentifyAsInSb();
    std::int32_t result = 0;
    Programming(result);
    Frames expected = kInSbTurnOn;
    expected[2] = {0x50, 0x03, 0xF4, 0x28};  // the window is known from the first time
    EXPECT_EQ(Programming(result), expected);
}

// 64 x 64: 48000000 / 12 / 4 / 4096 = 244.140625 Hz. No size, integration, clocks or serial word.
TEST_F(ProgrammingAHead, AnHgCdTeHeadGetsClockDacsAndBiases)
{
    PutSection(kHgCdTeSection);
    IdentifyAsHgCdTe();
    std::int32_t result = 0;
    EXPECT_EQ(Programming(result), Frames({{0x90, 0x05, 0x0B, 0xF2},  // 2 x 5 + 1; 3 x 64 + 3 x 16 + 2
                                           {0x70, 0x01, 0x80, 0x00},
                                           {0x70, 0x02, 0x80, 0x00},
                                           {0x70, 0x20, 0x80, 0x00},
                                           {0x70, 0x40, 0x80, 0x00},
                                           {0x70, 0x80, 0x80, 0x00},
                                           {0x70, 0x08, 0x80, 0x00},
                                           {0x70, 0x10, 0x80, 0x00},
                                           {0x70, 0x04, 0x80, 0x00},
                                           {0x80, 0x03, 0x00, 0x00},
                                           {0x60, 0x00, 0x00, 0x00},
                                           {0x70, 0x01, 0x80, 0x00}}));
    EXPECT_EQ(result, 1);
    EXPECT_EQ(FrameRate, 244.140625F);
    EXPECT_EQ(IndexIntegrationTime[0], 0) << "its table has one entry";
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(ProgrammingAHead, ASectionOfTheOtherKindIsAskedAbout)
{
    IdentifyAsHgCdTe();
    op->Answer({Button::kYes});
    std::int32_t result = 1;
    EXPECT_THAT(Programming(result), IsEmpty());
    EXPECT_EQ(result, 0);
    EXPECT_EQ(op->Boxes()[0].text,
              "Your camera head has a 64x64 HgCdTe focalplane.  Your software configuration may be incorrect!");
    EXPECT_EQ(op->Boxes()[0].caption, "Stop startup procedure?");
    EXPECT_THAT(op->Boxes()[0].buttons, ElementsAre("yes", "no"));

    PutSection(kHgCdTeSection);
    IdentifyAsInSb();
    op->Answer({Button::kNo});
    EXPECT_THAT(Programming(result), SizeIs(19));
    EXPECT_EQ(result, 1);
    EXPECT_EQ(op->Boxes()[1].text,
              "Your camera head has an InSb focalplane.  Your software configuration may be incorrect!");
}

TEST_F(ProgrammingAHead, ATimingFrameThatFailsIsTold)
{
    IdentifyAsInSb();
    std::size_t frames = 2;  // the clock's failure counts for nothing
    head->AnswerTo(kInSbTiming[0], kRefusal);
    for (const CommFrame& frame : {kInSbTiming[1], kInSbTiming[2], kInSbTiming[3]}) {
        head->AnswerTo(frame, kRefusal);
        std::int32_t result = 1;
        EXPECT_THAT(Programming(result), SizeIs(frames++));
        EXPECT_EQ(result, 0);
        EXPECT_EQ(op->Boxes().back().text, "Unable to communicate with camera head!");
        EXPECT_EQ(op->Boxes().back().caption, "Load timing error!");
        EXPECT_EQ(op->Boxes().back().icon, "exclamation");
        EXPECT_EQ(CurrentPointer(), Pointer::kHourglass);
        head->AnswerTo(frame, Answer(frame.begin(), frame.end()));
    }
    EXPECT_THAT(op->Boxes(), SizeIs(3));
}

TEST_F(ProgrammingAHead, OnlyTheFirstAndTheLastDacCount)
{
    IdentifyAsInSb();
    for (std::size_t dac = 1; dac <= 6; ++dac) head->AnswerTo(kInSbDacs[dac], kSilence);
    std::int32_t result = 0;
    EXPECT_EQ(Programming(result), kInSbTurnOn);
    EXPECT_EQ(result, 1);

    head->AnswerTo(kInSbDacs[0], kRefusal);
    EXPECT_THAT(Programming(result), SizeIs(5)) << "four timing frames and DAC 0";
    EXPECT_EQ(result, 0);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(ProgrammingAHead, TheLastDacHasToComeBackAsItWasSent)
{
    IdentifyAsInSb();
    for (const Answer& answer : {kSilence, Answer{0x70, 0x04}, Answer{0x71, 0x04, 0x80, 0x00}}) {
        head->AnswerTo(kInSbDacs[7], answer);
        std::int32_t result = 1;
        EXPECT_THAT(Programming(result), SizeIs(12));
        EXPECT_EQ(result, 0);
        EXPECT_EQ(CommEchoMode, 0);
        EXPECT_EQ(CurrentPointer(), Pointer::kHourglass);
    }
    EXPECT_THAT(op->Boxes(), IsEmpty());
    head->AnswerTo(kInSbDacs[7], {0x70, 0xFF, 0xFF, 0xFF});  // the first byte alone is looked at
    std::int32_t result = 0;
    Programming(result);
    EXPECT_EQ(result, 1);
}

TEST_F(ProgrammingAHead, BiasesAndClocksThatFailEndIt)
{
    IdentifyAsInSb();
    head->AnswerTo(kBiasesOn, kRefusal);
    std::int32_t result = 1;
    EXPECT_EQ(Programming(result).back(), kBiasesOn);
    EXPECT_EQ(result, 0);
    head->AnswerTo(kBiasesOn, {0x80, 0x03, 0, 0});
    head->AnswerTo(kClocksOn, kRefusal);
    EXPECT_EQ(Programming(result).back(), kClocksOn);
    EXPECT_EQ(result, 0);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(ProgrammingAHead, SerialWordGainAndOffsetMayFail)
{
    IdentifyAsInSb();
    head->AnswerTo(kInSbSerialWord[0], kRefusal);
    head->AnswerTo(kGainFour, kRefusal);
    std::int32_t result = 0;
    const Frames frames = Programming(result);
    EXPECT_EQ(result, 1);
    EXPECT_THAT(frames, SizeIs(17)) << "the word ends with its first frame";
    EXPECT_THAT(frames, Contains(kGainFour));
}

TEST_F(ProgrammingAHead, TheSectionsRegistersAreUsed)
{
    PutSection(std::string(kInSbSection) +
               "QVF1058_DACReg=0x71\nQVF1058_GainReg=0x62\nQVF1058_BiasEnableReg=0x81\nQVF1058_SerialReg=0x63\n"
               "QVF1058_ExtraTimingRows=8\nQVF1058_ExtraTimingCols=16\nQVF1058_LineStartDelay=2\n"
               "QVF1058_FrameStartDelay=1\nColStart=8\nRowStart=16\n");
    IdentifyAsInSb();
    std::int32_t result = 0;
    const Frames frames = Programming(result);
    ASSERT_THAT(frames, SizeIs(19));
    EXPECT_THAT(frames[1], ElementsAre(0x50, 0x01, 0x42, 0x54));  // 264 / 4, 336 / 4
    EXPECT_THAT(frames[3], ElementsAre(0x50, 0x05, 0x00, 0x12));  // 1 x 16 + 2
    EXPECT_THAT(frames[4], ElementsAre(0x71, 0x01, 0xA0, 0x00));
    EXPECT_THAT(frames[12], ElementsAre(0x81, 0x03, 0x00, 0x00));
    // Columns 8 to 327: 1 = 0000001 -> 64; 327 / 8 = 40 = 0101000 -> 0001010 = 10: 64 x 2 + 0; 2 + 40
    EXPECT_THAT(frames[15], ElementsAre(0x63, 0x02, 0x80, 0x2A));
    // Rows 16 to 271: 2 = 000010 -> 010000 = 16; 271 / 8 = 33 = 100001 -> 33: 128 + 4; 16 x 64 -> 0, + 33
    EXPECT_THAT(frames[16], ElementsAre(0x63, 0x04, 0x84, 0x21));
    EXPECT_THAT(frames[17], ElementsAre(0x62, 0x30, 0x00, 0x00));
    EXPECT_THAT(frames[18], ElementsAre(0x71, 0x01, 0xA0, 0x00));
}

TEST_F(ProgrammingAHead, ASilentHeadEndsItAtTheFrameSize)
{
    IdentifyAsInSb();
    head->AnswerAll(kSilence);
    std::int32_t result = 1;
    EXPECT_THAT(Programming(result), ElementsAre(kInSbTiming[0], kInSbTiming[1]));
    EXPECT_EQ(result, 0);
    EXPECT_EQ(CameraOn, 0);
}

// --- Timing and serial word, record by record -----------------------------------------------------------------------

TEST_F(HeadOperations, EachTimingFieldSendsItsFrame)
{
    IdentifyAsInSb();
    std::int32_t result = 0;
    Programming(result);
    write::frames.CameraOn = 1;
    const auto sent = [&](auto change) {
        change();
        EXPECT_EQ(LoadHeadTiming(write::registers.HeadTiming), 1);
        return head->Taken();
    };
    EXPECT_THAT(sent([] {}), IsEmpty());
    EXPECT_THAT(sent([] { write::registers.HeadTiming.TimingRows = 264; }),
                ElementsAre(CommFrame{0x50, 0x01, 0x42, 0x50}));
    EXPECT_THAT(sent([] { write::registers.HeadTiming.TimingCols = 336; }),
                ElementsAre(CommFrame{0x50, 0x01, 0x42, 0x54}));
    EXPECT_THAT(sent([] { write::registers.HeadTiming.IntegrationCols[0] = 5; }),
                ElementsAre(CommFrame{0x50, 0x03, 0x0E, 0x02}));
    EXPECT_THAT(sent([] { write::registers.HeadTiming.IntegrationLines[0] = 1; }),
                ElementsAre(CommFrame{0x50, 0x03, 0x03, 0x02}));
    EXPECT_THAT(sent([] { write::registers.HeadTiming.IntegrationLines[1] = 99; }), IsEmpty())
        << "slot 0 alone is compared";
    EXPECT_THAT(sent([] { write::registers.HeadTiming.FrameStartDelay = 1; }),
                ElementsAre(CommFrame{0x50, 0x05, 0x00, 0x1F}));
    EXPECT_THAT(sent([] { write::registers.HeadTiming.LineStartDelay = 2; }),
                ElementsAre(CommFrame{0x50, 0x05, 0x00, 0x12}));
    EXPECT_THAT(sent([] { write::registers.HeadTiming.AdDelay = 9; }), ElementsAre(CommFrame{0x50, 0x05, 0x00, 0x12}))
        << "sent, though the frame doesn't carry it";
    EXPECT_THAT(sent([] { write::registers.HeadTiming.MasterClockIndex = 7; }),
                ElementsAre(CommFrame{0x50, 0x00, 0x00, 0x07}));
    EXPECT_EQ(IndexFrameRate, 5);
    EXPECT_THAT(sent([] {}), IsEmpty());
}

// Nothing is kept of it: the clock differs from what was kept (nothing, 0) each time.
TEST_F(HeadOperations, TheHgCdTeTimingIsSentEachTime)
{
    PutSection(kHgCdTeSection);
    IdentifyAsHgCdTe();
    std::int32_t result = 0;
    Programming(result);
    write::frames.CameraOn = 1;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(LoadHeadTiming(write::registers.HeadTiming), 1);
        EXPECT_THAT(head->Taken(), ElementsAre(CommFrame{0x90, 0x05, 0x0B, 0xF2}));
    }
}

TEST_F(HeadOperations, AnUnchangedWordIsUsuallySentAgain)
{
    IdentifyAsInSb();
    std::int32_t result = 0;
    Programming(result);
    write::frames.CameraOn = 1;
    EXPECT_EQ(LoadFpaSerialWord(FpaSerialWord), 1);
    EXPECT_EQ(head->Taken(), kInSbSerialWord);
}

// Column gain 2 = 010 and detector bias 15 read the same both ways, and so does column 0: such a word is its own code.
TEST_F(HeadOperations, AWordThatIsItsOwnCodeIsntSentAgain)
{
    IdentifyAsInSb();
    write::link.CommPortOpen = OpenCommLink();
    write::link.CommEchoMode = 1;
    write::frames.CameraOn = 1;
    FpaSerialWordRecord word;
    word.ColGain = 2;
    word.RowEnd = 255;
    LoadFpaSerialWord(word);
    head->Taken();
    EXPECT_EQ(LoadFpaSerialWord(word), 1);
    const CommFrame rows = {0x60, 0x04, 0x80, 0x3E};
    EXPECT_THAT(head->Taken(), ElementsAre(rows)) << "rows are always sent";

    word.PedBias = 1;  // 15 x 8 + 1 x 2 + (2 >> 2) = 122; 2 x 64 + 2
    EXPECT_EQ(LoadFpaSerialWord(word), 1);
    EXPECT_THAT(head->Taken(), ElementsAre(CommFrame{0x60, 0x00, 0x7A, 0x82}, CommFrame{0x60, 0x02, 0x00, 0x02}, rows))
        << "the columns go with the pedestal";

    write::frames.CameraOn = 0;
    EXPECT_EQ(LoadFpaSerialWord(word), 1);
    EXPECT_THAT(head->Taken(), SizeIs(3));
}

TEST_F(HeadOperations, ARefusedWordKeepsWhatWasSent)
{
    IdentifyAsInSb();
    write::link.CommPortOpen = OpenCommLink();
    write::link.CommEchoMode = 1;
    write::frames.CameraOn = 1;
    FpaSerialWordRecord word;
    word.ColGain = 2;
    LoadFpaSerialWord(word);
    head->Taken();
    word.FlipRows = 1;  // 15 x 8 + 6 = 126; 128 + 4 + 2
    head->AnswerTo({0x60, 0x00, 0x7E, 0x86}, kRefusal);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(LoadFpaSerialWord(word), 0);
        EXPECT_THAT(head->Taken(), ElementsAre(CommFrame{0x60, 0x00, 0x7E, 0x86}));
    }
}

TEST_F(HeadOperations, AWindowChangesFrameAndSerialWord)
{
    PutSection(std::string(kInSbSection) + "Htotal=340\nVtotal=260\n");
    IdentifyAsInSb();
    std::int32_t result = 0;
    Programming(result);
    write::frames.CameraOn = 1;
    EXPECT_EQ(SetHeadWindow(64, 32, 191, 95), 1);
    EXPECT_EQ(HeadTiming.TimingCols, 148);  // 191 + 1 + 20 - 64
    EXPECT_EQ(HeadTiming.TimingRows, 68);   // 95 + 1 + 4 - 32
    const Frames frames = head->Taken();
    ASSERT_THAT(frames, SizeIs(4));
    EXPECT_THAT(frames[0], ElementsAre(0x50, 0x01, 0x11, 0x25));  // 17, 37
    // 8 = 0001000 -> 8; 191 / 8 = 23 = 0010111 -> 1110100 = 116: 8 x 2 + 1; 2 + 116 x 4 - 256
    EXPECT_THAT(frames[2], ElementsAre(0x60, 0x02, 0x11, 0xD2));
    // 4 = 000100 -> 001000 = 8; 95 / 8 = 11 = 001011 -> 110100 = 52: 128 + 2; (8 x 64 -> 0) + 52
    EXPECT_THAT(frames[3], ElementsAre(0x60, 0x04, 0x82, 0x34));
    EXPECT_EQ(FpaSerialWord.ColEnd, 191);
    EXPECT_EQ(FpaSerialWord.RowStart, 32);
}

// --- Frame rate, gain, offset, integration --------------------------------------------------------------------------

TEST_F(HeadOperations, AFrameRateBeyondTheMaximumKeepsItsIndexInTheFile)
{
    IdentifyAsInSb();
    std::int32_t result = 0;
    Programming(result);
    SetFrameRateIndex(70);
    EXPECT_THAT(head->Taken(), ElementsAre(CommFrame{0x50, 0x00, 0x00, 0x3F}));
    EXPECT_EQ(HeadTiming.MasterClockIndex, 63);
    EXPECT_EQ(IndexFrameRate, 70);
    EXPECT_EQ(CameraKey("IndexFrameRate"), "70");
    EXPECT_EQ(CameraKey("fFrameRate"), "4.577637");  // 48000000 / 128 = 375000; / 81920 = 4.57763671875

    SetFrameRateIndex(0);
    EXPECT_THAT(head->Taken(), ElementsAre(CommFrame{0x50, 0x00, 0x00, 0x02}));
    EXPECT_EQ(FrameRate, 97.65625F);  // 8000000 / 81920
    SetFrameRateIndex(61);            // 63 isn't below the maximum, and is it
    EXPECT_THAT(head->Taken(), ElementsAre(CommFrame{0x50, 0x00, 0x00, 0x3F}));
}

TEST_F(HeadOperations, TheFrameRateIsKeptThoughTheLinkFails)
{
    IdentifyAsInSb();
    std::int32_t result = 0;
    Programming(result);
    CloseCommLink();
    SetFault("serial open", true);
    SetFrameRateIndex(0);
    EXPECT_THAT(head->Taken(), IsEmpty());
    EXPECT_EQ(CameraKey("fFrameRate"), "97.656250");
    EXPECT_EQ(CameraKey("IndexFrameRate"), "0");
    EXPECT_EQ(op->Boxes().back().text, "Comm2 didnt initialize!");
    EXPECT_EQ(op->Boxes().back().caption, "Comm Error");
    EXPECT_THAT(op->Boxes(), SizeIs(3)) << "the link's two before it";
}

TEST_F(HeadOperations, AnUnknownHeadGetsNoClock)
{
    write::registers.HeadTiming = {};
    write::link.CommPortOpen = OpenCommLink();
    SetFrameRateIndex(3);
    EXPECT_THAT(head->Taken(), IsEmpty());
    EXPECT_EQ(FrameRate, 0.0F) << "no frame size is known";
    EXPECT_EQ(CameraKey("IndexFrameRate"), "3");
}

TEST_F(HeadOperations, GainsPassThroughOrGoByTheTable)
{
    const std::pair<int, CommFrame> cases[] = {
        {0, {0x60, 0x00, 0, 0}},  {1, {0x60, 0x20, 0, 0}},  {14, {0x60, 0x1C, 0, 0}},
        {15, {0x60, 0x3C, 0, 0}}, {99, {0x60, 0x3C, 0, 0}}, {-3, {0x60, 0x00, 0, 0}},
    };
    for (const auto& [index, frame] : cases) {
        SetVideoGain(index);
        EXPECT_THAT(head->Taken(), ElementsAre(frame)) << index;
        EXPECT_EQ(CameraKey("QVF1058_Gain0"), std::to_string(index)) << "the key has what was asked for";
    }
    EXPECT_EQ(CommPortOpen, 1) << "opened when it was needed";
}

TEST_F(HeadOperations, OffsetsAreLimitedToAByte)
{
    const std::tuple<int, CommFrame, const char*> cases[] = {
        {300, {0x70, 0x01, 0xFF, 0}, "255"}, {-5, {0x70, 0x01, 0x00, 0}, "0"}, {160, {0x70, 0x01, 0xA0, 0}, "160"}};
    for (const auto& [value, frame, key] : cases) {
        SetVideoOffset(value);
        EXPECT_THAT(head->Taken(), ElementsAre(frame)) << value;
        EXPECT_EQ(CameraKey("QVF1058_DAC0"), key);
    }
}

TEST_F(HeadOperations, GainAndOffsetNeedTheLink)
{
    SetFault("serial open", true);
    SetVideoGain(9);
    EXPECT_EQ(op->Boxes().back().text, "Comm2 didnt initialize!");
    EXPECT_EQ(CameraKey("QVF1058_Gain0"), "4");
    SetVideoOffset(9);
    EXPECT_EQ(CameraKey("QVF1058_DAC0"), "160");
    EXPECT_THAT(head->Taken(), IsEmpty());
}

TEST_F(HeadOperations, AnIntegrationIndexIsLookedUpAndSent)
{
    IdentifyAsInSb();
    std::int32_t result = 0;
    Programming(result);
    EXPECT_EQ(SetIntegrationIndex(10, 0), 1);
    EXPECT_THAT(head->Taken(), ElementsAre(CommFrame{0x50, 0x03, 0xF4, 0x28}));
    EXPECT_EQ(IntegrationSetting, 10);
    EXPECT_EQ(SetIntegrationIndex(333, 2), 1);  // no lines, 4 columns
    EXPECT_THAT(head->Taken(), ElementsAre(CommFrame{0x50, 0x03, 0x02, 0x01}));
    EXPECT_EQ(HeadTiming.IntegrationCols[2], 4);
    EXPECT_EQ(IntegrationSetting, 10) << "another slot is not the one in use";
    EXPECT_EQ(SetIntegrationIndex(5000, 0), 1) << "beyond the table the shortest is sent";
    EXPECT_THAT(head->Taken(), ElementsAre(CommFrame{0x50, 0x03, 0x02, 0x00}));
    head->AnswerAll(kRefusal);
    EXPECT_EQ(SetIntegrationIndex(10, 0), 0);
    EXPECT_EQ(SetIntegrationIndex(10, 4), 0) << "no such slot";
    EXPECT_EQ(SetIntegrationIndex(10, -1), 0);
}

TEST_F(HeadOperations, AnHgCdTeHeadHasOneIntegrationTime)
{
    PutSection(kHgCdTeSection);
    IdentifyAsHgCdTe();
    write::head.IndexIntegrationTime = {5, 6, 7, 8};
    EXPECT_EQ(SetIntegrationIndex(3, 2), 2);
    EXPECT_THAT(head->Taken(), IsEmpty());
    EXPECT_THAT(IndexIntegrationTime, ElementsAre(5, 6, 0, 8));
    std::int16_t lines = 11;
    std::int16_t cols = 12;
    EXPECT_EQ(IntegrationFromIndex(7, lines, cols), 1);
    EXPECT_EQ(lines, 11);
    EXPECT_EQ(cols, 12);
    EXPECT_THAT(IndexIntegrationTime, ElementsAre(0, 6, 0, 8));
    EXPECT_EQ(IntegrationTimeMsec(100.0F, 0), 0.3125);  // 1000 / 3200
    EXPECT_EQ(IntegrationTimeMsec(100.0F, 1), -1.0);
}

TEST_F(HeadOperations, TheIntegrationTimeFollowsFromTheRegisters)
{
    write::registers.HeadTiming = {};
    EXPECT_EQ(IntegrationTimeMsec(50.0F, 10), 0.0) << "no head is known";
    IdentifyAsInSb();
    std::int32_t result = 0;
    Programming(result);
    EXPECT_DOUBLE_EQ(IntegrationTimeMsec(FrameRate, 10), 19.39975);  // (242 x 320 + 159) x 1000 / 4000000
    EXPECT_EQ(IntegrationTimeMsec(FrameRate, 334), 0.0);
    EXPECT_EQ(IntegrationTimeMsec(FrameRate, 335), -1.0);
}

LRESULT IgnoreMessages(HWND, std::uint32_t, WPARAM, LPARAM)
{
    return 0;
}

class IntegrationList : public HeadTest {
  protected:
    // Opens a dialog with the list, fills it and looks at it.
    void Fill(std::int32_t frameRateIndex, std::int32_t integrationIndex, std::function<void(HWND)> look)
    {
        op->Do([this, frameRateIndex, integrationIndex, look] {
            const HWND dialog = DialogInFront();
            head->Taken();
            FillIntegrationCombo(dialog, frameRateIndex, integrationIndex);
            look(dialog);
            EndDialog(dialog, 1);
        });
        EXPECT_EQ(DialogBox("INTEGRATION", hWndMain, IgnoreMessages), 1);
    }
};

TEST_F(IntegrationList, EndsBeforeTheTimeThatIsNone)
{
    IdentifyAsInSb();
    std::int32_t result = 0;
    Programming(result);
    Fill(3, 10, [&](HWND dialog) {
        EXPECT_EQ(ListCount(dialog, 626), 334);
        EXPECT_EQ(ListItemText(dialog, 626, 0), "20.40");      // (254 x 320 + 318) / 4000 = 20.3995
        EXPECT_EQ(ListItemText(dialog, 626, 10), "19.40");     // 19.39975
        EXPECT_EQ(ListItemText(dialog, 626, 180), "1.279");    // (15 x 320 + 316) / 4000
        EXPECT_EQ(ListItemText(dialog, 626, 254), "0.08000");  // 320 / 4000
        EXPECT_EQ(ListItemText(dialog, 626, 249), "0.1600");   // 2 x 320 / 4000: 15 - 69 / 5 = 2, (4 - 4) x 79
        EXPECT_EQ(ListItemText(dialog, 626, 333), "0.00100");
        EXPECT_EQ(ListSelection(dialog, 626), 10);
        EXPECT_TRUE(DlgItemEnabled(dialog, 626));
        EXPECT_THAT(head->Taken(), ElementsAre(CommFrame{0x50, 0x03, 0xF4, 0x28}));
    });
    EXPECT_EQ(FrameRate, 48.828125F) << "listing sets no rate";
}

// Index 200 + 2 is beyond the maximum of 63, and is taken as it is: 48000000 / 406 = 118226 Hz.
TEST_F(IntegrationList, KnowsNoHighestClock)
{
    IdentifyAsInSb();
    std::int32_t result = 0;
    Programming(result);
    Fill(200, 9999, [&](HWND dialog) {
        EXPECT_EQ(ListItemText(dialog, 626, 0), "690.2");  // 81598 x 1000 / 118226 = 690.186
        EXPECT_EQ(ListSelection(dialog, 626), 333) << "the last entry";
    });
    write::registers.HeadTiming.MasterClockFrequency = 1000000;  // 1000000 / 406 = 2463 Hz: 81598000 / 2463 = 33129.5
    Fill(200, 0, [&](HWND dialog) { EXPECT_EQ(ListItemText(dialog, 626, 0), "33129"); });
}

TEST_F(IntegrationList, HoldsOneEntryForAnHgCdTeHead)
{
    PutSection(kHgCdTeSection);
    IdentifyAsHgCdTe();
    std::int32_t result = 0;
    Programming(result);
    Fill(3, 10, [&](HWND dialog) {
        EXPECT_EQ(ListCount(dialog, 626), 1);
        EXPECT_EQ(ListItemText(dialog, 626, 0), "0.1280");  // 1000 / (244.140625 x 32)
        EXPECT_EQ(ListSelection(dialog, 626), 0);
        EXPECT_FALSE(DlgItemEnabled(dialog, 626));
        EXPECT_THAT(head->Taken(), IsEmpty());
    });
}

// --- Turning off ----------------------------------------------------------------------------------------------------

TEST_F(HeadOperations, TurningAnInSbHeadOffTakesClocksBiasesAndDacs)
{
    IdentifyAsInSb();
    write::frames.CameraOn = 1;
    TurnCameraHeadOff();
    EXPECT_EQ(head->Taken(), Joined({{{0x90, 0x10, 0x00, 0x00}, {0x80, 0x00, 0x00, 0x00}}, kMidScaleDacs}));
    EXPECT_EQ(CameraOn, 0);
    EXPECT_EQ(CommPortOpen, 1) << "the link was closed, was opened and stays open";
}

TEST_F(HeadOperations, TurningAnHgCdTeHeadOffLeavesItsClocks)
{
    IdentifyAsHgCdTe();
    write::frames.CameraOn = 1;
    TurnCameraHeadOff();
    EXPECT_EQ(head->Taken(), Joined({{{0x80, 0x00, 0x00, 0x00}}, kMidScaleDacs}));
    EXPECT_EQ(CameraOn, 0);
}

TEST_F(HeadOperations, TurningOffGoesThroughWhateverTheHeadSays)
{
    IdentifyAsInSb();
    write::link.CommEchoMode = 1;
    write::frames.CameraOn = 1;
    head->AnswerAll(kRefusal);
    TurnCameraHeadOff();
    EXPECT_THAT(head->Taken(), SizeIs(10));
    EXPECT_EQ(CameraOn, 0);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(HeadOperations, TurningOffWithoutALinkSendsNothing)
{
    IdentifyAsInSb();
    write::frames.CameraOn = 1;
    SetFault("serial open", true);
    TurnCameraHeadOff();
    EXPECT_THAT(head->Taken(), IsEmpty());
    EXPECT_EQ(CameraOn, 1);
}

// --- Video settings -------------------------------------------------------------------------------------------------

TEST_F(HeadOperations, VideoSettingsComeFromTheSection)
{
    write::display.DisplayLow = 0;
    write::display.DisplayHigh = 16383;
    write::head.FrameRate = 50.0F;
    PutSection(
        "IndexFrameRate=7\nIndexIntegrationTime=1,2,3,4\nQVF1058_Gain0=2\nQVF1058_DAC0=138\n"
        "VoltsPerCountVsGain=0.5,0.25,0.125\nA/Doffset=1000\nVolts/Offset=0.5\n");
    EXPECT_EQ(IndexFrameRate, 7);
    EXPECT_THAT(IndexIntegrationTime, ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(IntegrationSetting, 1);
    EXPECT_EQ(VideoGain[0], 2);
    EXPECT_EQ(VideoOffset[0], 138);
    EXPECT_EQ(FrameRate, 0.0F);
    EXPECT_EQ(VoltsLow, -130.0F);     // (0 - 1000) x 0.125 - 10 x 0.5
    EXPECT_EQ(VoltsHigh, 1917.875F);  // (16383 - 1000) x 0.125 - 5
}

TEST_F(HeadOperations, VideoSettingsHaveDefaults)
{
    PutSection("");
    EXPECT_EQ(IndexFrameRate, 10);
    EXPECT_THAT(IndexIntegrationTime, ElementsAre(10, 10, 10, 10));
    EXPECT_EQ(VideoGain[0], 0);
    EXPECT_EQ(VideoOffset[0], 128);
}

TEST_F(HeadOperations, FewerThanFourIntegrationTimesAreTheFirst)
{
    for (const char* text : {"8", "8,9", "8,9,10,x", "8;9;10;11"}) {
        PutSection(std::string("IndexIntegrationTime=") + text + "\n");
        EXPECT_THAT(IndexIntegrationTime, ElementsAre(8, 8, 8, 8)) << text;
    }
}

}  // namespace
}  // namespace kelvo
