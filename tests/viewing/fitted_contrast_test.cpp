// Which pixels of the frame on view don't count when contrast is fitted.
#include "viewing/fitted_contrast.h"

#include "imagefile/header_write.h"
#include "pixel/bad_pixels_write.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "support/operator.h"
#include "support/stored_files.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BadOnView : public testing::Test {
  protected:
    BadOnView()
    {
        write::camera.ActiveConfig.Hroi = 4;
        write::camera.ActiveConfig.Vroi = 1;
        write::cal.DecomList = {3, 2, 1, 0};
        write::cal.GainList = {1.0F, 0.0005F, 1.1F, 0.9F};
        PutFile(list, "   0,   0\n");
        write::calSet.CalSettings.BadDetFile = list;
    }
    TestOperator op;
    TempDirectory directory;
    std::string list = directory / "a.bad";
};

TEST_F(BadOnView, ThoseOfTheListAndThoseWithoutGain)
{
    write::cal.CalType = 2;
    EXPECT_THAT(BadPixelsOnView(), ElementsAre(1, 0, 1, 0)) << "the second detector is the third pixel";
    write::cal.CalType = 1;
    EXPECT_THAT(BadPixelsOnView(), ElementsAre(1, 0, 0, 0)) << "gains that aren't in force say nothing";
    write::calSet.CalSettings.BadDetFile.clear();
    EXPECT_THAT(BadPixelsOnView(), ElementsAre(0, 0, 0, 0));
}

TEST_F(BadOnView, TheMapOfAnEarlierRunSaysNothing)
{
    write::badPixels.BadDetList = {0, 0, 0, 1};  // another set has been loaded since
    EXPECT_THAT(BadPixelsOnView(), ElementsAre(1, 0, 0, 0));
}

TEST_F(BadOnView, AFileOfAnotherSizeHasNone)
{
    write::cal.CalType = 2;
    write::frames.ViewingFile = 1;
    write::file.ImageHeader = PlainHeader(4, 1);
    EXPECT_THAT(BadPixelsOnView(), ElementsAre(1, 0, 0, 0)) << "its counts are as they were stored";
    write::file.ImageHeader = PlainHeader(2, 2);
    EXPECT_THAT(BadPixelsOnView(), IsEmpty());
}

}  // namespace
}  // namespace kelvo
