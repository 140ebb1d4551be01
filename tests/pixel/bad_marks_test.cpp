#include "pixel/bad_marks.h"

#include "pixel/unsaved_set.h"
#include "platform/faults.h"
#include "platform/memory.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <string>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::Optional;

TEST(HasNoGain, WithinAThousandthOfZero)
{
    EXPECT_TRUE(HasNoGain(0.001F));
    EXPECT_TRUE(HasNoGain(-0.001F));
    EXPECT_TRUE(HasNoGain(std::numeric_limits<float>::quiet_NaN()));
    EXPECT_FALSE(HasNoGain(0.00101F));
    EXPECT_FALSE(HasNoGain(-1.0F));
}

TEST(MarkWithoutGain, LeavesPixelsAloneWhoseDetectorIsNotKnown)
{
    BadDetMap map = {0, 0, 1, 0, 0};
    MarkWithoutGain(map, std::vector<float>{1.0F, 0.0F}, std::vector<std::uint32_t>{1, 0, 0, 7});
    EXPECT_THAT(map, ElementsAre(1, 0, 1, 0, 0));
}

// A picture of three columns and two rows.
class Listed : public testing::Test {
  protected:
    Listed()
    {
        write::camera.ActiveConfig.Hroi = 3;
        write::camera.ActiveConfig.Vroi = 2;
        write::calSet.CalSettings.BadDetFile = list;
    }
    TempDirectory directory;
    std::string list = directory / "a.bad";
    std::string why;
};

TEST_F(Listed, MarksWhatItCanAndTellsTheFirstThingAmiss)
{
    BadDetMap map(6);
    PutFile(list, "   0,   2\nrow,col\n\n   1,   0\n9,9\n");
    EXPECT_EQ(MarkListed(map, 3, list).amiss, "a.bad isn't a list of bad detectors: \"row,col\".");
    EXPECT_THAT(map, ElementsAre(0, 0, 1, 1, 0, 0));
    PutFile(list, "0,-1\n1,1");
    EXPECT_EQ(MarkListed(map, 3, list).amiss, "a.bad lists row 0, column -1, which lies outside of a frame of 3 x 2.");
    EXPECT_THAT(map, ElementsAre(0, 0, 1, 1, 1, 0));
    const ListMarks none = MarkListed(map, 3, directory / "b.bad");
    EXPECT_FALSE(none.isRead);
    EXPECT_EQ(none.amiss, "b.bad can't be read.");
}

TEST_F(Listed, InForceIsTheFileThatTheSettingsName)
{
    PutFile(list, "   1,   2\nwords\n");
    EXPECT_THAT(ListedInForce(why), Optional(ElementsAre(0, 0, 0, 0, 0, 1)));
    SetFault("disk read", true);
    EXPECT_EQ(ListedInForce(why), std::nullopt);
    EXPECT_EQ(why, "a.bad can't be read.");
    ClearFaults();
    FailAllocation(1);
    EXPECT_EQ(ListedInForce(why), std::nullopt);
    EXPECT_EQ(why, "There is no memory for the list of bad detectors.");
    FailAllocation(0);
    std::filesystem::remove(list);
    EXPECT_EQ(ListedInForce(why), std::nullopt);  // nobody knows
    EXPECT_EQ(why, "");
    write::calSet.CalSettings.BadDetFile.clear();
    EXPECT_THAT(ListedInForce(why), Optional(ElementsAre(0, 0, 0, 0, 0, 0)));
    write::camera.ActiveConfig.Hroi = 0;
    EXPECT_EQ(ListedInForce(why), std::nullopt);
}

TEST_F(Listed, InForceIsTheMapOfASetWithoutFiles)
{
    PutFile(list, "   1,   2\n");  // of the former calibration
    KeepUnsavedSet({.gains = {}, .offsets = {}, .noise = {}, .badDetectors = {0, 1, 0, 0, 0, 0}});
    EXPECT_THAT(ListedInForce(why), Optional(ElementsAre(0, 1, 0, 0, 0, 0)));
    KeepUnsavedSet({});  // it replaces none
    EXPECT_THAT(ListedInForce(why), Optional(ElementsAre(0, 0, 0, 0, 0, 0)));
}

TEST_F(Listed, BadAreThoseWithoutAGainTooWhereGainsAreInForce)
{
    PutFile(list, "   1,   2\n");
    write::cal.DecomList = {5, 4, 3, 2, 1, 0};
    write::cal.GainList = {1, 1, 1, 1, 1, 0};
    EXPECT_THAT(BadDetectorsInForce(why), Optional(ElementsAre(0, 0, 0, 0, 0, 1)));
    write::cal.CalType = 2;
    EXPECT_THAT(BadDetectorsInForce(why), Optional(ElementsAre(1, 0, 0, 0, 0, 1)));
}

}  // namespace
}  // namespace kelvo
