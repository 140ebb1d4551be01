// Pulses at the trigger input, counted by hand.
#include "simcam/trigger_input.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(TriggerInput, TakesPulsesWhileItIsOn)
{
    TriggerInput input;
    TakePulse(input, 10);
    input.on = true;
    TakePulse(input, 20);
    TakePulse(input, 30);
    input.on = false;
    TakePulse(input, 40);
    EXPECT_EQ(input.taken, 2);
    EXPECT_EQ(PulsesBy(input, 19), 0);
    EXPECT_EQ(PulsesBy(input, 20), 1);
    EXPECT_EQ(PulsesBy(input, 99), 2);
    EXPECT_EQ(PulseUs(input, 2), 30);
    EXPECT_EQ(PulseUs(input, 3), std::nullopt);
    EXPECT_EQ(PulseUs(input, 0), std::nullopt);
}

TEST(TriggerInput, PulsesByItselfOnceAPeriod)
{
    TriggerInput input;
    input.on = true;
    SetPulsePeriod(input, 1000, 300);
    EXPECT_EQ(NextPulseUs(input), 1300);
    HearPulses(input, 1299);
    EXPECT_EQ(input.taken, 0);
    HearPulses(input, 1950);  // 1300, 1600, 1900
    EXPECT_EQ(input.taken, 3);
    EXPECT_EQ(PulseUs(input, 3), 1900);
    EXPECT_EQ(NextPulseUs(input), 2200);
    SetPulsePeriod(input, 1950, 0);
    HearPulses(input, 1'000'000);
    EXPECT_EQ(input.taken, 3);
    EXPECT_EQ(NextPulseUs(input), std::nullopt);
}

TEST(TriggerInput, PulsesOfAnInputThatIsOffPassAndKeepTheirBeat)
{
    TriggerInput input;
    SetPulsePeriod(input, 0, 100);
    EXPECT_EQ(NextPulseUs(input), std::nullopt);
    HearPulses(input, 250);
    input.on = true;
    EXPECT_EQ(NextPulseUs(input), 300);
    HearPulses(input, 300);
    EXPECT_EQ(input.taken, 1);
}

TEST(TriggerInput, CountsAllAndKeepsTheNewest256Times)
{
    TriggerInput input;
    input.on = true;
    SetPulsePeriod(input, 0, 1);
    HearPulses(input, 1000);
    HearPulses(input, 1010);
    EXPECT_EQ(input.taken, 1010);
    EXPECT_EQ(PulseUs(input, 755), 755);
    EXPECT_EQ(PulseUs(input, 754), std::nullopt);
    EXPECT_EQ(PulsesBy(input, 900), 900);
}

}  // namespace
}  // namespace kelvo
