#include "regions/bad_detectors.h"

#include "imagefile/header_write.h"
#include "state/cal_settings_write.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(BadDetectorsIn, CountsTheMarks)
{
    EXPECT_EQ(BadDetectorsIn({1, 0, 0, 0, 1, 1}), 3U);
    EXPECT_EQ(BadDetectorsIn({}), 0U);
}

// Of frames of three columns and two rows, with a list alone.
TEST(BadDetectorSet, AnswersForAFileOnViewOnceItIsNamed)
{
    TempDirectory directory;
    const std::string cal = directory / "a.cal";
    PutFile(cal, "[Calibration]\nCalType=1\nDecomFile=a.dcm\nBadDetFile=a.bad\n");
    PutFile(directory / "a.dcm", std::string(6 * sizeof(std::uint32_t), '\0'));
    PutFile(directory / "a.bad", "   1,   2\n   0,   0\n");
    write::frames.ViewingFile = 1;
    write::file.ImageHeader.ImageWidth = 3;
    write::file.ImageHeader.ImageHeight = 2;
    EXPECT_THAT(BadDetectorsOnView(), IsEmpty());
    EXPECT_THAT(WhyNoneIsLeftOut(), IsEmpty());
    ChooseBadDetectors(true);
    EXPECT_THAT(BadDetectorsOnView(), IsEmpty());
    EXPECT_THAT(WhyNoneIsLeftOut(), HasSubstr("name the set"));
    std::string why;
    EXPECT_FALSE(NameBadDetectorSet(directory / "b.cal", why));
    EXPECT_EQ(why, "b.cal can't be opened.");
    EXPECT_EQ(BadDetectorSet, "");
    EXPECT_TRUE(NameBadDetectorSet(cal, why));
    EXPECT_THAT(BadDetectorsOnView(), ElementsAre(1, 0, 0, 0, 0, 1));
    EXPECT_THAT(WhyNoneIsLeftOut(), IsEmpty());
    write::file.ImageHeader.ImageWidth = 4;  // another file
    EXPECT_THAT(BadDetectorsOnView(), IsEmpty());
    EXPECT_THAT(WhyNoneIsLeftOut(), HasSubstr("another size"));
}

TEST(BadDetectorSet, IsReadAgainWhereItsListIsWrittenAnew)
{
    TempDirectory directory;
    const std::string cal = directory / "a.cal";
    PutFile(cal, "[Calibration]\nCalType=1\nDecomFile=a.dcm\nBadDetFile=a.bad\n");
    PutFile(directory / "a.dcm", std::string(6 * sizeof(std::uint32_t), '\0'));
    PutFile(directory / "a.bad", "   1,   2\n");
    write::frames.ViewingFile = 1;
    write::file.ImageHeader.ImageWidth = 3;
    write::file.ImageHeader.ImageHeight = 2;
    ChooseBadDetectors(true);
    std::string why;
    ASSERT_TRUE(NameBadDetectorSet(cal, why)) << why;
    EXPECT_THAT(BadDetectorsOnView(), ElementsAre(0, 0, 0, 0, 0, 1));
    PutFile(directory / "a.bad", "   0,   1\n");
    EXPECT_THAT(BadDetectorsOnView(), ElementsAre(0, 1, 0, 0, 0, 0));
}

TEST(BadDetectorSet, IsTheListInForceForTheCamerasPicture)
{
    TempDirectory directory;
    write::frames.CameraOn = 1;
    write::camera.ActiveConfig.Hroi = 3;
    write::camera.ActiveConfig.Vroi = 2;
    write::calSet.CalSettings.BadDetFile = directory / "run.bad";
    ChooseBadDetectors(true);
    EXPECT_EQ(WhyNoneIsLeftOut(), "The list of bad detectors isn't there.");
    EXPECT_THAT(BadDetectorsOnView(), Each(0));
    PutFile(CalSettings.BadDetFile, "0,1\n");
    EXPECT_THAT(WhyNoneIsLeftOut(), IsEmpty());
    EXPECT_THAT(BadDetectorsOnView(), ElementsAre(0, 1, 0, 0, 0, 0));
}

}  // namespace
}  // namespace kelvo
