#include "platform/faults.h"

#include "platform/memory.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(Faults, StayUntilTheyAreTakenOff)
{
    SetFault("lens", true);
    EXPECT_TRUE(FaultIsSet("lens"));
    EXPECT_TRUE(FaultIsSet("lens"));
    EXPECT_FALSE(FaultIsSet("shutter"));
    SetFault("lens", false);
    EXPECT_FALSE(FaultIsSet("lens"));
}

TEST(Faults, ComeOnceAtTheirQuestion)
{
    SetFaultOnce("lens", 3);
    EXPECT_EQ(QuestionsUntilFault("lens"), 3);
    EXPECT_FALSE(FaultIsSet("lens"));
    EXPECT_FALSE(FaultIsSet("shutter")) << "each has a count of its own";
    EXPECT_FALSE(FaultIsSet("lens"));
    EXPECT_EQ(QuestionsUntilFault("lens"), 1);
    EXPECT_TRUE(FaultIsSet("lens"));
    EXPECT_EQ(QuestionsUntilFault("lens"), 0);
    EXPECT_FALSE(FaultIsSet("lens"));
}

TEST(Faults, OrderedAgainTheyCountAnew)
{
    SetFaultOnce("lens", 1);
    SetFaultOnce("lens", 2);
    EXPECT_FALSE(FaultIsSet("lens"));
    SetFaultOnce("lens", 0);
    EXPECT_FALSE(FaultIsSet("lens"));
    SetFaultOnce("lens", 0);
    EXPECT_EQ(QuestionsUntilFault("lens"), 0);
}

TEST(Faults, DontTouchWhatWatches)
{
    SetFault("lens", true);
    SetFaultOnce("shutter", 1);
    {
        const NoFaults watching;
        EXPECT_FALSE(FaultIsSet("lens"));
        EXPECT_FALSE(FaultIsSet("shutter"));
    }
    EXPECT_TRUE(FaultIsSet("lens"));
    EXPECT_TRUE(FaultIsSet("shutter"));
}

TEST(Faults, LackOfMemoryIsOne)
{
    SetFaultOnce("memory", 2);
    EXPECT_TRUE(MemoryAvailable(1));
    EXPECT_FALSE(MemoryAvailable(1));
    EXPECT_TRUE(MemoryAvailable(1));
}

}  // namespace
}  // namespace kelvo
