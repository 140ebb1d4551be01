// What frames set in the head, and the times that follow. The numbers are worked by hand.
#include "wirehead/head_registers.h"

#include "platform/faults.h"
#include "simcam/sim_settings.h"
#include "support/camera_fixture.h"

#include <gmock/gmock.h>

#include <cmath>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

HeadRegisters Head(HeadModel model, double clockHz, int columns, int rows)
{
    SimSettings settings;
    settings.model = model;
    settings.clockHz = clockHz;
    settings.columns = columns;
    settings.rows = rows;
    return PowerUpHead(settings);
}

TEST(SimHead, PowersUpWithoutClocksBiasesOrFrames)
{
    const HeadRegisters head = Head(HeadModel::kInSb, 48e6, 320, 256);
    EXPECT_FALSE(head.clocksOn);
    EXPECT_FALSE(head.biasesOn);
    EXPECT_EQ(FramePeriodSeconds(head), 0);
    EXPECT_EQ(head.window, (FocalPlaneWindow{0, 319, 0, 255}));
}

TEST(SimHead, PixelClockAndFramePeriodFollowTheRegisters)
{
    HeadRegisters head = Head(HeadModel::kInSb, 48e6, 320, 256);
    TakeHeadFrame(head, {0x50, 0, 0, 2});
    EXPECT_DOUBLE_EQ(PixelClockHz(head), 8e6);
    TakeHeadFrame(head, {0x50, 1, 64, 80});
    TakeHeadFrame(head, {0x90, 0x30, 0, 0});
    EXPECT_DOUBLE_EQ(FramePeriodSeconds(head), 0.01024);  // 16 x 64 x 80 / 8 MHz
    TakeHeadFrame(head, {0x50, 0, 0, 63});
    EXPECT_DOUBLE_EQ(PixelClockHz(head), 375000);
    TakeHeadFrame(head, {0x90, 0x10, 0, 0});
    EXPECT_EQ(FramePeriodSeconds(head), 0);  // no blank comes
}

TEST(SimHead, TheLargeArrayRunsAtAHundredFramesASecond)
{
    HeadRegisters head = Head(HeadModel::kInSb, 196608000, 640, 512);
    TakeHeadFrame(head, {0x50, 0, 0, 2});
    TakeHeadFrame(head, {0x50, 1, 128, 160});
    TakeHeadFrame(head, {0x90, 0x30, 0, 0});
    EXPECT_DOUBLE_EQ(FramePeriodSeconds(head), 0.01);
}

TEST(SimHead, TheHgCdTeHeadDividesItsClockAgainAndAlwaysRuns)
{
    HeadRegisters head = Head(HeadModel::kHgCdTe, 48e6, 64, 64);
    EXPECT_GT(FramePeriodSeconds(head), 0);
    TakeHeadFrame(head, {0x90, 5, 11, 0});
    EXPECT_DOUBLE_EQ(PixelClockHz(head), 1e6);
    EXPECT_DOUBLE_EQ(FramePeriodSeconds(head), 0.004096);
    EXPECT_DOUBLE_EQ(IntegrationSeconds(head), 0.000128);  // a 32nd
    TakeHeadFrame(head, {0x50, 0, 0, 1});                  // the other head's register
    EXPECT_DOUBLE_EQ(PixelClockHz(head), 1e6);
}

HeadRegisters TimedHead()
{
    HeadRegisters head = Head(HeadModel::kInSb, 48e6, 320, 256);
    TakeHeadFrame(head, {0x50, 0, 0, 5});  // 4 MHz
    TakeHeadFrame(head, {0x50, 1, 64, 80});
    TakeHeadFrame(head, {0x90, 0x30, 0, 0});
    return head;
}

TEST(SimHead, IntegrationCountsLinesAndColumns)
{
    HeadRegisters head = TimedHead();
    TakeHeadFrame(head, {0x50, 3, 244, 40});
    EXPECT_DOUBLE_EQ(IntegrationSeconds(head), (242 * 320 + 160) / 4e6);
    TakeHeadFrame(head, {0x50, 3, 2, 1});
    EXPECT_DOUBLE_EQ(IntegrationSeconds(head), 4 / 4e6);
    TakeHeadFrame(head, {0x50, 3, 1, 0});  // 255 lines: the byte wraps
    EXPECT_DOUBLE_EQ(IntegrationSeconds(head), 255 * 320 / 4e6);
    TakeHeadFrame(head, {0x50, 3, 1, 255});  // never more than the period
    EXPECT_DOUBLE_EQ(IntegrationSeconds(head), 0.02048);
}

// The list of a 640 x 512 window: lines are 2 + 508 - 4 (index / 3) in its first region, columns (2 - index mod 3) x
// 319. The byte sent is lines + 2 in 8 bits. From 195 on nothing wraps; at 192 to 194 the byte wraps to 0, which the
// head still counts as 254 lines; below 192 it counts 256 lines less than the list says.
TEST(SimHead, TheLinesByteWrapsBelowIndex195OfTheLargeArray)
{
    HeadRegisters head = Head(HeadModel::kInSb, 196608000, 640, 512);
    TakeHeadFrame(head, {0x50, 0, 0, 2});
    TakeHeadFrame(head, {0x50, 1, 128, 160});
    TakeHeadFrame(head, {0x90, 0x30, 0, 0});
    for (int index = 0; index < 372; ++index) {
        const int lines = 510 - index / 3 * 4;
        const int columns = (2 - index % 3) * 319;
        const int sentColumns = (columns + 3) / 4;
        EXPECT_EQ(lines + 2 > 255, index < 195) << index;
        TakeHeadFrame(head, {0x50, 3, static_cast<std::uint8_t>(lines + 2), static_cast<std::uint8_t>(sentColumns)});
        const double asListed = (lines * 640 + sentColumns * 4) / 32768000.0;
        const double difference = asListed - IntegrationSeconds(head);
        EXPECT_NEAR(difference, index < 192 ? 256 * 640 / 32768000.0 : 0.0, 1e-12) << index;
    }
}

TEST(SimHead, WindowComesOutOfTheSerialWordMirrored)
{
    HeadRegisters head = Head(HeadModel::kInSb, 48e6, 640, 512);
    // Columns 64 to 191: unit 8 = 0001000 mirrors to itself, 8; unit 23 = 0010111 mirrors to 1110100 = 116.
    TakeHeadFrame(head, {0x60, 2, 116 / 64 + 8 * 2, static_cast<std::uint8_t>(2 + 116 * 4)});
    // Rows 16 to 111: unit 2 = 000010 mirrors to 010000 = 16; unit 13 = 001101 mirrors to 101100 = 44.
    TakeHeadFrame(head, {0x60, 4, 128 + 16 / 4, static_cast<std::uint8_t>(16 * 64 + 44)});
    EXPECT_EQ(head.window, (FocalPlaneWindow{64, 191, 16, 111}));
    EXPECT_EQ(head.window.Columns(), 128);
    EXPECT_EQ(head.window.Rows(), 96);
}

TEST(SimHead, BiasWordHoldsBiasesGainFlipsAndTest)
{
    HeadRegisters head = Head(HeadModel::kInSb, 48e6, 320, 256);
    // Detector bias 11 mirrors to 13, pedestal 2, column gain 6 = 110 mirrors to 011 = 3; test, both flips.
    TakeHeadFrame(head, {0x60, 0, 13 * 8 + 2 * 2 + 0, 3 * 64 + 16 + 8 + 4 + 2});
    EXPECT_EQ(head.detBias, 11);
    EXPECT_EQ(head.pedBias, 2);
    EXPECT_EQ(head.colGain, 6);
    EXPECT_TRUE(head.testMode);
    EXPECT_TRUE(head.flipCols);
    EXPECT_TRUE(head.flipRows);
    TakeHeadFrame(head, {0x60, 0, 0x7E, 0x42});
    EXPECT_EQ(head.detBias, 15);
    EXPECT_EQ(head.pedBias, 3);
    EXPECT_EQ(head.colGain, 4);
    EXPECT_FALSE(head.testMode || head.flipCols || head.flipRows);
}

TEST(SimHead, GainSharesItsRegisterWithTheSerialWord)
{
    HeadRegisters head = Head(HeadModel::kInSb, 48e6, 320, 256);
    TakeHeadFrame(head, {0x60, 60, 0, 0});
    EXPECT_EQ(head.gainCode, 15);
    TakeHeadFrame(head, {0x60, 4, 0, 0});
    EXPECT_EQ(head.gainCode, 1);
    TakeHeadFrame(head, {0x60, 0, 0x7E, 0x42});
    TakeHeadFrame(head, {0x60, 2, 0, 0});
    TakeHeadFrame(head, {0x60, 4, 0x80, 62});
    EXPECT_EQ(head.gainCode, 1);
    TakeHeadFrame(head, {0x60, 0, 0, 0});
    EXPECT_EQ(head.gainCode, 0);
    EXPECT_EQ(head.detBias, 15);
}

// Index 1 to 14 reach the head as these codes; 0 and 15 as themselves.
TEST(SimHead, GainCodesNameTheRowOfTheVoltageTable)
{
    constexpr std::uint8_t kCodes[] = {0, 8, 4, 2, 12, 10, 6, 1, 14, 9, 5, 3, 13, 11, 7, 15};
    for (int index = 0; index < 16; ++index) EXPECT_EQ(GainIndexOfCode(kCodes[index]), index);
}

TEST(SimHead, DacsAreSelectedOneByOne)
{
    HeadRegisters head = Head(HeadModel::kInSb, 48e6, 320, 256);
    TakeHeadFrame(head, {0x70, 0x01, 200, 0});
    TakeHeadFrame(head, {0x70, 0x80, 7, 0});
    TakeHeadFrame(head, {0x70, 0x03, 99, 0});
    TakeHeadFrame(head, {0x70, 0x00, 99, 0});
    EXPECT_THAT(head.dac, ElementsAre(200, 128, 128, 128, 128, 128, 128, 7));
}

TEST(SimHead, BiasesSwitchOnAndOff)
{
    HeadRegisters head = Head(HeadModel::kInSb, 48e6, 320, 256);
    TakeHeadFrame(head, {0x80, 3, 0, 0});
    EXPECT_TRUE(head.biasesOn);
    TakeHeadFrame(head, {0x80, 0, 0, 0});
    EXPECT_FALSE(head.biasesOn);
}

class SimHeadAnswers : public SimCameraTest {
  protected:
    std::vector<std::uint8_t> Answer(const WireFrame& frame) { return AnswerSimFrame(*camera, frame); }
};

TEST_F(SimHeadAnswers, EachModelTellsWhoItIs)
{
    Open("insb320.cnf");
    EXPECT_THAT(Answer({0x20, 0, 0, 0}), ElementsAre(0x10, 0x66, 0, 0));
    Open("hgcdte64.cnf");
    EXPECT_THAT(Answer({0x20, 0, 0, 0}), ElementsAre(0x20, 0, 0, 0));
}

TEST_F(SimHeadAnswers, EveryOtherFrameIsEchoedAndKept)
{
    Open("insb320.cnf");
    EXPECT_THAT(Answer({0x40, 0, 0xBF, 0}), ElementsAre(0x40, 0, 0xBF, 0));
    EXPECT_THAT(Answer({0xEE, 1, 2, 3}), ElementsAre(0xEE, 1, 2, 3));
    HeadRegisters head = Head(HeadModel::kInSb, 48e6, 320, 256);
    TakeHeadFrame(head, {0xEE, 1, 2, 3});
    EXPECT_THAT(head.kept.at(0xEE01), ElementsAre(2, 3));
}

TEST_F(SimHeadAnswers, ARefusingHeadKeepsItsRegisters)
{
    Open("insb320.cnf");
    Program320x256();
    const double period = SimFramePeriodUs(*camera);
    SetFault("head refuses", true);
    EXPECT_THAT(Answer({0x50, 0, 0, 20}), ElementsAre(0x69, 0, 0, 20));
    EXPECT_EQ(SimFramePeriodUs(*camera), period);
    SetFault("head refuses", false);
    EXPECT_THAT(Answer({0x50, 0, 0, 20}), ElementsAre(0x50, 0, 0, 20));
    EXPECT_GT(SimFramePeriodUs(*camera), period);
}

TEST_F(SimHeadAnswers, SilentShortAndNoisyHeads)
{
    Open("insb320.cnf");
    SetFault("head silent", true);
    EXPECT_THAT(Answer({0x20, 0, 0, 0}), IsEmpty());
    SetFault("head silent", false);
    SetFault("head short", true);
    EXPECT_THAT(Answer({0x20, 0, 0, 0}), ElementsAre(0x10, 0x66, 0));
    SetFault("head short", false);
    SetFault("head noise", true);
    const WireFrame sent{0x70, 1, 128, 0};
    for (int i = 0; i < 1000; ++i) {
        const std::vector<std::uint8_t> heard = Answer(sent);
        ASSERT_EQ(heard.size(), 4U);
        for (std::size_t k = 0; k < 4; ++k) EXPECT_NE(heard[k], sent[k]);
        EXPECT_NE(heard[0], 0x69);
    }
}

TEST_F(SimHeadAnswers, TheFileCanMakeAHeadThatDoesNotAnswer)
{
    struct Row {
        const char* answer;
        std::size_t bytes;
    };
    for (const Row& row : {Row{"silent", 0}, {"refuses", 4}, {"short", 3}, {"noise", 4}, {"normal", 4}}) {
        const std::string name = std::string(row.answer) + ".cnf";
        PutCopyWith("insb320.cnf", name, std::string("Answer=") + row.answer);
        Open(name);
        const auto heard = Answer({0x20, 0, 0, 0});
        EXPECT_EQ(heard.size(), row.bytes) << row.answer;
        const bool identified = heard.size() == 4 && heard[0] == 0x10 && heard[1] == 0x66;
        EXPECT_EQ(identified, std::string(row.answer) == "normal") << row.answer;
    }
}

}  // namespace
}  // namespace kelvo
