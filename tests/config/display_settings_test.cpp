#include "config/display_settings.h"

#include "config/settings.h"
#include "config/settings_fixture.h"
#include "platform/text.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"

namespace kelvo {
namespace {

class DisplaySettings : public SettingsTest {
  protected:
    void Read(const std::string& lines)
    {
        PutKelvoIni("[Display]\n" + lines);
        ReadDisplaySettings();
    }
};

TEST_F(DisplaySettings, MissingKeysGiveTheDefaults)
{
    Read("");
    EXPECT_EQ(ImageColor, 1230);
    EXPECT_EQ(GrayScale, 1238);
    EXPECT_EQ(GrayColorBar, 1);
    EXPECT_EQ(TempScale, 0);
    EXPECT_EQ(TempHisto, 0);
    EXPECT_EQ(Contrast, 16);
    EXPECT_EQ(Brightness, 580);
    EXPECT_EQ(MirrorHoriz, 0);
    EXPECT_EQ(MirrorVert, 0);
    EXPECT_EQ(RotateCCW, 0);
    EXPECT_EQ(OpticsFile, "");
    EXPECT_EQ(Xpan, 0);
    EXPECT_EQ(Ypan, 0);
}

TEST_F(DisplaySettings, KeysAreRead)
{
    PutCameraIni("[Camera.2]\nXpan=-12\nYpan=34\n");
    Read(
        "ImageColor=1231\nGrayScale=1239\nGrayColorBar=0\nTempHisto=1\nContrast=76\nBrightness=837\n"
        "MirrorHoriz=1\nMirrorVert=2\nRotateCCW=3\nOpticsFile=c:\\KELVO\\lens.opt\n");
    EXPECT_EQ(ImageColor, 1231);
    EXPECT_EQ(GrayScale, 1239);
    EXPECT_EQ(GrayColorBar, 0);
    EXPECT_EQ(TempHisto, 1);
    EXPECT_EQ(Contrast, 76);
    EXPECT_EQ(Brightness, 837);
    EXPECT_EQ(MirrorHoriz, 1);
    EXPECT_EQ(MirrorVert, 2);
    EXPECT_EQ(RotateCCW, 3);
    EXPECT_EQ(OpticsFile, "c:\\KELVO\\lens.opt");
    EXPECT_EQ(Xpan, -12);
    EXPECT_EQ(Ypan, 34);
}

TEST_F(DisplaySettings, ColourAndScaleAreLimitedToTheirIds)
{
    struct Case {
        int stored, color, scale;
    };
    for (const Case& each :
         {Case{5, 1230, 1238}, Case{2000, 1232, 1239}, Case{1232, 1232, 1238}, Case{1230, 1230, 1238},
          Case{-1, 1230, 1238}, Case{66766, 1232, 1239}, Case{1240, 1232, 1239}}) {
        Read(Format("ImageColor=%d\nGrayScale=%d\n", each.stored, each.stored));
        EXPECT_EQ(ImageColor, each.color) << each.stored;
        EXPECT_EQ(GrayScale, each.scale) << each.stored;
    }
}

TEST_F(DisplaySettings, ATemperatureScaleTurnsTheBarOn)
{
    Read("TempScale=1\nGrayColorBar=0\n");
    EXPECT_EQ(TempScale, 1);
    EXPECT_EQ(GrayColorBar, 1);
    Read("TempScale=0\nGrayColorBar=0\n");
    EXPECT_EQ(GrayColorBar, 0);
}

TEST_F(DisplaySettings, ResetReturnsToTheValuesRead)
{
    Read("Contrast=76\nBrightness=837\n");
    write::display.Contrast = 1;
    write::display.Brightness = 2;
    EXPECT_EQ(ResetContrast, 76);
    EXPECT_EQ(ResetBrightness, 837);
}

TEST_F(DisplaySettings, TheSecondCamerasKeysNeedASecondCamera)
{
    const std::string keys = "SubstBadPixels2=0\nMirrorHoriz2=1\nMirrorVert2=1\n";
    write::display.SubstBadPixels2 = write::display.MirrorHoriz2 = write::display.MirrorVert2 = 9;
    write::camera.ActiveConfig.DualCamera = 0;
    Read(keys);
    EXPECT_EQ(SubstBadPixels2, 9);
    EXPECT_EQ(MirrorHoriz2, 9);
    EXPECT_EQ(MirrorVert2, 9);
    write::camera.ActiveConfig.DualCamera = 1;
    Read(keys);
    EXPECT_EQ(SubstBadPixels2, 0);
    EXPECT_EQ(MirrorHoriz2, 1);
    EXPECT_EQ(MirrorVert2, 1);
    Read("");
    EXPECT_EQ(SubstBadPixels2, 1);
    EXPECT_EQ(MirrorHoriz2, 0);
    EXPECT_EQ(MirrorVert2, 0);
}

TEST_F(DisplaySettings, ReadingChoosesCountsAndTurnsSubstitutionOn)
{
    write::display.DisplayUnit = 21;
    write::display.SubstBadPixels = 0;
    Read("");
    EXPECT_EQ(DisplayUnit, 0);
    EXPECT_EQ(SubstBadPixels, 1);
}

TEST_F(DisplaySettings, StartUpReadsThePanAfterTheCameraClearedIt)
{
    PutKelvoIni("[Setup]\nActiveCamera=3\n");
    PutCameraIni("[Camera.3]\nXpan=4\nYpan=5\nXzoom=8\n");
    ReadAll();
    EXPECT_EQ(Xpan, 4);
    EXPECT_EQ(Ypan, 5);
    EXPECT_EQ(Xzoom, 8);
}

TEST_F(DisplaySettings, BothNamesAreOneOperation)
{
    EXPECT_EQ(&ReadDisplayKeys, &ReadDisplaySettings);
}

}  // namespace
}  // namespace kelvo
