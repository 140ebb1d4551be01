// Putting coefficient lists in their place.
#include "pixel/coefficient_lists.h"
#include "platform/memory.h"
#include "state/cal_state.h"
#include "state/camera_config_write.h"
#include "support/operator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <span>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ActiveLists : public testing::Test {
  protected:
    ActiveLists()
    {
        write::camera.ActiveConfig.Vroi = 2;
        write::camera.ActiveConfig.Hroi = 3;
    }
    template <typename Entry>
    static std::span<const std::uint8_t> Bytes(const std::vector<Entry>& list)
    {
        const auto bytes = std::as_bytes(std::span(list));
        return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
    }

    TestOperator op;
};

TEST_F(ActiveLists, AreMadeWhenTheyAreFirstFilled)
{
    EXPECT_EQ(FillActiveList(1, 1, 4, -7), 1);
    EXPECT_THAT(OffsetList, ElementsAre(0, -7, -7, -7, 0, 0));
    EXPECT_EQ(FillActiveList(2, 0, 6, 1.0), 1);
    EXPECT_THAT(GainList, Each(1.0F));
    EXPECT_EQ(FillActiveList(8, 4, 6, 5), 1);
    EXPECT_THAT(DecomList, ElementsAre(0U, 0U, 0U, 0U, 5U, 5U));
}

TEST_F(ActiveLists, KeepWhatIsFilledInsideThem)
{
    EXPECT_EQ(FillActiveList(1, -5, 2, 1), 1);
    EXPECT_EQ(FillActiveList(1, 4, 999, 2), 1);
    EXPECT_EQ(FillActiveList(1, 3, -1, 9), 1);
    EXPECT_THAT(OffsetList, ElementsAre(1, 1, 0, 0, 2, 2));
}

TEST_F(ActiveLists, FillsKeepTheLowBits)
{
    FillActiveList(1, 0, 1, 65537);
    FillActiveList(1, 1, 2, std::numeric_limits<double>::quiet_NaN());
    FillActiveList(1, 2, 3, 1e300);
    EXPECT_THAT(OffsetList, ElementsAre(1, 0, 0, 0, 0, 0));
    FillActiveList(8, 0, 6, 4294967295.0);
    EXPECT_THAT(DecomList, Each(4294967295U));
}

TEST_F(ActiveLists, AreLoadedWhole)
{
    EXPECT_EQ(LoadActiveList(1, Bytes<std::int16_t>({1, -2, 3, -4, 5, -6})), 1);
    EXPECT_THAT(OffsetList, ElementsAre(1, -2, 3, -4, 5, -6));
    EXPECT_EQ(LoadActiveList(2, Bytes<float>({1, 0, 2, -0.0F, 0.5F, 3})), 1);
    EXPECT_THAT(GainList, ElementsAre(1.0F, 0.1F, 2.0F, 0.1F, 0.5F, 3.0F));
    EXPECT_EQ(LoadActiveList(8, Bytes<std::uint32_t>({5, 4, 3, 2, 1, 0})), 1);
    EXPECT_THAT(DecomList, ElementsAre(5U, 4U, 3U, 2U, 1U, 0U));
}

TEST_F(ActiveLists, OnlyTheDecommutationGrowsWithTheFrame)
{
    LoadActiveList(1, Bytes<std::int16_t>({1, 1, 1, 1, 1, 1}));
    LoadActiveList(8, Bytes<std::uint32_t>({1, 1, 1, 1, 1, 1}));
    write::camera.ActiveConfig.Vroi = 3;
    EXPECT_EQ(LoadActiveList(1, Bytes(std::vector<std::int16_t>(9, 2))), 1);
    EXPECT_THAT(OffsetList, ElementsAre(2, 2, 2, 2, 2, 2));
    EXPECT_EQ(LoadActiveList(8, Bytes(std::vector<std::uint32_t>(9, 2))), 1);
    EXPECT_THAT(DecomList, SizeIs(9));
    EXPECT_THAT(DecomList, Each(2U));
}

TEST_F(ActiveLists, ASourceThatIsTooShortIsTold)
{
    EXPECT_EQ(LoadActiveList(1, Bytes<std::int16_t>({1, 2, 3, 4, 5})), 0);
    EXPECT_EQ(LoadActiveList(2, {}), 0);
    EXPECT_EQ(LoadActiveList(8, {}), 0);
    ASSERT_THAT(op.Boxes(), SizeIs(3));
    EXPECT_EQ(op.Boxes()[0].text, "Global Memory would not lock");
    EXPECT_EQ(op.Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(OffsetList, IsEmpty());
}

TEST_F(ActiveLists, ASourceThatIsTooShortKeepsTheListThatStands)
{
    LoadActiveList(8, Bytes<std::uint32_t>({5, 4, 3, 2, 1, 0}));
    write::camera.ActiveConfig.Vroi = 3;
    EXPECT_EQ(LoadActiveList(8, Bytes(std::vector<std::uint32_t>(8, 2))), 0);
    EXPECT_THAT(DecomList, ElementsAre(5U, 4U, 3U, 2U, 1U, 0U));
}

TEST_F(ActiveLists, OtherTypesAreRefused)
{
    for (const std::int32_t type : {0, 3, 4, -1}) {
        EXPECT_EQ(FillActiveList(type, 0, 6, 1), 0);
        EXPECT_EQ(LoadActiveList(type, Bytes<std::int16_t>({1, 2, 3, 4, 5, 6})), 0);
    }
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(ActiveLists, MemoryThatIsRefusedLeavesNoList)
{
    FailAllocation(1);
    EXPECT_EQ(FillActiveList(1, 0, 6, 1), 0);
    EXPECT_THAT(OffsetList, IsEmpty());
    FailAllocation(1);
    EXPECT_EQ(LoadActiveList(8, Bytes<std::uint32_t>({5, 4, 3, 2, 1, 0})), 0);
    EXPECT_THAT(DecomList, IsEmpty());
}

}  // namespace
}  // namespace kelvo
