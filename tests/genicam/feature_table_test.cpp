#include "genicam/feature_table.h"

#include "genicam/register_map.h"
#include "genicam/scripted_camera.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Features : public testing::Test {
  protected:
    ScriptedFeatures features;
    std::vector<std::string> asked;
    FeatureAccess camera = AccessTo(features, asked);

    CameraSettings settings;
    std::vector<std::string> notes;
    bool Apply(const CameraWishes& wishes, const std::optional<CameraWishes>& former = std::nullopt)
    {
        asked.clear();
        notes.clear();
        return ApplyWishes(camera, wishes, former, settings, notes);
    }
    // A camera that has all that a head asks for.
    void HaveAll()
    {
        features["AcquisitionFrameRate"] = {.range = {1, 500}};
        features["AcquisitionFrameRateEnable"] = {};
        features["ExposureTime"] = {.range = {10, 100000}};
        features["Gain"] = {.range = {0, 30}};
        features["BlackLevel"] = {.range = {0, 510}};
        features["ReverseX"] = features["ReverseY"] = {};
        features["TestPattern"] = {.choices = {"Off", "GreyHorizontalRamp", "White"}};
    }
};

TEST_F(Features, AreFoundUnderEachOfTheirNamesAndMissedWhereTheyAreAbsent)
{
    for (std::size_t i = 0; i < kFeatures; ++i) {
        const auto feature = static_cast<Feature>(i);
        ASSERT_FALSE(NamesOf(feature).empty()) << i;
        for (const FeatureName& name : NamesOf(feature)) {
            features.clear();
            EXPECT_EQ(FindFeature(camera, feature), std::nullopt) << name.name;
            EXPECT_EQ(SetFeature(camera, feature, 1), std::nullopt) << name.name;
            EXPECT_FALSE(SwitchFeature(camera, feature, true)) << name.name;
            features[std::string(name.name)] = {};
            ASSERT_TRUE(FindFeature(camera, feature)) << name.name;
            EXPECT_EQ(FindFeature(camera, feature)->name, name.name);
            EXPECT_EQ(SetFeature(camera, feature, 1), 1) << name.name;
        }
    }
}

TEST_F(Features, TheStandardsNameGoesFirst)
{
    features["GainRaw"] = features["Gain"] = features["GainAbs"] = {};
    EXPECT_EQ(FindFeature(camera, Feature::kGain)->name, "Gain");
    features.erase("Gain");
    features.erase("GainAbs");
    EXPECT_EQ(FindFeature(camera, Feature::kGain)->name, "GainRaw");
    EXPECT_EQ(FindFeature(camera, Feature::kGain)->kind, FeatureKind::kWhole);
}

TEST_F(Features, AreClampedToTheirRangeAndReadBack)
{
    features["ExposureTimeAbs"] = {.range = {20, 5000}, .step = 8};
    EXPECT_EQ(SetFeature(camera, Feature::kExposure, 1001), 1000);
    EXPECT_EQ(SetFeature(camera, Feature::kExposure, 1e9), 5000);
    EXPECT_EQ(SetFeature(camera, Feature::kExposure, 1), 24) << "20 and its step";
    features["ExposureTimeAbs"].refuses = true;
    EXPECT_EQ(SetFeature(camera, Feature::kExposure, 100), std::nullopt);
}

TEST_F(Features, AreSwitchedByTheWordsThatTheCameraKnows)
{
    features["TestImageSelector"] = {.choices = {"Off", "Testimage1", "Testimage2"}};
    constexpr std::string_view kWords[] = {"GreyHorizontalRamp", "Testimage2"};
    EXPECT_TRUE(SwitchFeature(camera, Feature::kTestPattern, true, kWords));
    EXPECT_EQ(features["TestImageSelector"].text, "Testimage2");
    EXPECT_TRUE(SwitchFeature(camera, Feature::kTestPattern, true));
    EXPECT_EQ(features["TestImageSelector"].text, "Testimage1");
    EXPECT_TRUE(SwitchFeature(camera, Feature::kTestPattern, false));
    EXPECT_EQ(features["TestImageSelector"].text, "Off");
    features["TestImageSelector"].choices = {"Off"};
    EXPECT_FALSE(SwitchFeature(camera, Feature::kTestPattern, true)) << "nothing to choose";
}

// A camera that follows the scene by itself measures nothing.
TEST_F(Features, ThatTheCameraChoosesByItselfAreItsNoLonger)
{
    HaveAll();
    for (const char* const name : {"ExposureAuto", "GainAuto", "BlackLevelAuto"}) {
        features[name] = {.text = "Continuous", .choices = {"Continuous", "Once", "Off"}};
    }
    EXPECT_TRUE(Apply({.rateHz = 50, .exposureUs = 1000, .gainIndex = 3, .blackLevel = 10}));
    for (const char* const name : {"ExposureAuto", "GainAuto", "BlackLevelAuto"}) {
        EXPECT_EQ(features[name].text, "Off") << name;
    }
    EXPECT_THAT(notes, IsEmpty());
}

// 48 MHz / (2 x 3 + 2) is a pixel clock of 6 MHz; a frame of 16 x 64 x 80 pixel clocks takes 13.65 ms.
HeadRegisters RunningHead()
{
    HeadRegisters head = PowerUpHead(HeadModel::kInSb, 48e6, 320, 256);
    head.clockIndex = 3;
    head.timingRows = 64;
    head.timingCols = 80;
    head.integrationLines = 12;  // 10 lines of 320 pixels
    head.integrationCols = 20;   // and 80 pixels
    head.clocksOn = true;
    return head;
}

TEST(Wishes, FollowFromTheRegisters)
{
    HeadRegisters head = RunningHead();
    head.gainCode = 4;  // the second of the list 8, 4, 2, ...
    head.dac[0] = 100;
    head.flipRows = true;
    const CameraWishes wishes = WishesOf(head);
    EXPECT_NEAR(*wishes.rateHz, 6e6 / 81920, 1e-9);
    EXPECT_NEAR(*wishes.exposureUs, (10 * 320 + 80) / 6.0, 1e-9);
    EXPECT_EQ(wishes.gainIndex, 2);
    EXPECT_EQ(wishes.blackLevel, 100);
    EXPECT_TRUE(wishes.flipRows);
    EXPECT_FALSE(wishes.flipColumns);
    head.clocksOn = false;
    EXPECT_EQ(WishesOf(head).rateHz, std::nullopt);
    EXPECT_EQ(WishesOf(head).exposureUs, std::nullopt);
}

TEST(Steps, SpanTheCamerasRange)
{
    EXPECT_EQ(ValueOfStep(0, 15, {-6, 24}), -6);
    EXPECT_EQ(ValueOfStep(15, 15, {-6, 24}), 24);
    EXPECT_EQ(ValueOfStep(5, 15, {-6, 24}), 4);
}

TEST_F(Features, TakeAllThatAHeadAsks)
{
    HaveAll();
    EXPECT_TRUE(Apply({.rateHz = 50, .exposureUs = 2000, .gainIndex = 5, .blackLevel = 128, .flipRows = true}));
    EXPECT_THAT(notes, IsEmpty());
    EXPECT_EQ(settings, (CameraSettings{.rateHz = 50, .exposureUs = 2000, .gain = 10, .blackLevel = 256}));
    EXPECT_EQ(features["AcquisitionFrameRateEnable"].value, 1);
    EXPECT_EQ(features["ReverseX"].value, 0);
    EXPECT_EQ(features["ReverseY"].value, 1);
    EXPECT_EQ(features["TestPattern"].text, "Off");
}

TEST_F(Features, AreWrittenAgainOnlyWhereAWishChanged)
{
    HaveAll();
    const CameraWishes before{.rateHz = 50, .exposureUs = 2000, .gainIndex = 5};
    Apply(before);
    CameraWishes wishes = before;
    wishes.gainIndex = 6;
    EXPECT_TRUE(Apply(wishes, before));
    EXPECT_THAT(asked, ElementsAre("Gain=12"));
    EXPECT_TRUE(Apply(wishes, wishes));
    EXPECT_THAT(asked, IsEmpty());
}

TEST_F(Features, ExposureAndRateMakeRoomForEachOther)
{
    HaveAll();
    const CameraWishes slow{.rateHz = 10, .exposureUs = 90000};
    const CameraWishes fast{.rateHz = 100, .exposureUs = 5000};
    Apply(slow);
    Apply(fast, slow);
    EXPECT_THAT(asked, ElementsAre("ExposureTime=5000", "AcquisitionFrameRateEnable=1", "AcquisitionFrameRate=100"));
    Apply(slow, fast);
    EXPECT_THAT(asked, ElementsAre("AcquisitionFrameRateEnable=1", "AcquisitionFrameRate=10", "ExposureTime=90000"));
}

TEST_F(Features, WhatBecameSomethingElseIsTold)
{
    HaveAll();
    features["AcquisitionFrameRate"].range = {1, 60};
    features["AcquisitionResultingFrameRate"] = {.value = 48.5};
    features["ExposureTime"].step = 500;
    EXPECT_TRUE(Apply({.rateHz = 73.2421875, .exposureUs = 546.7}));
    EXPECT_THAT(notes, ElementsAre("The camera gives 60 frames a second where 73.242 were asked.",
                                   "The camera integrates for 0.5 ms where 0.5467 ms were asked."));
    EXPECT_EQ(settings.rateHz, 48.5) << "what the camera says of itself goes before what it was set to";
    EXPECT_EQ(settings.exposureUs, 500);
}

TEST_F(Features, ARoundingByTheCamerasOwnStepsIsntWorthATelling)
{
    HaveAll();
    features["ExposureTime"].step = 1;
    EXPECT_TRUE(Apply({.rateHz = 50, .exposureUs = 2000.4}));
    EXPECT_THAT(notes, IsEmpty());
    EXPECT_EQ(settings.exposureUs, 2000);
}

TEST_F(Features, ACameraThatHasNoneIsLeftAlone)
{
    EXPECT_TRUE(Apply({.rateHz = 50, .exposureUs = 2000, .flipColumns = true}));
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_EQ(settings, CameraSettings());
    EXPECT_THAT(notes, Contains(HasSubstr("no feature for a frame rate")));
    EXPECT_THAT(notes, Contains(HasSubstr("no feature for an integration time")));
    EXPECT_THAT(notes, Contains(HasSubstr("no feature for a black level")));
    EXPECT_THAT(notes, Contains("The camera has no flip of columns."));
    EXPECT_THAT(notes, testing::Not(Contains(HasSubstr("flip of rows")))) << "nobody asked for it";
}

TEST_F(Features, ARefusalIsToldAndSaid)
{
    HaveAll();
    features["Gain"].refuses = true;
    EXPECT_FALSE(Apply({.rateHz = 50, .exposureUs = 2000}));
    EXPECT_THAT(notes, ElementsAre("The camera refused a gain."));
}

TEST(KeptFrames, AreToldWhereACameraHasNothingForThem)
{
    EXPECT_THAT(NoteOnKeptFrame({0x50, 5, 0, 0x11}), HasSubstr("start delays"));
    EXPECT_THAT(NoteOnKeptFrame({0x70, 2, 128, 0}), HasSubstr("DACs 1 to 7"));
    EXPECT_THAT(NoteOnKeptFrame({0x60, 0, 0x7F, 0x12}), HasSubstr("biases"));
    EXPECT_EQ(NoteOnKeptFrame({0x70, 1, 128, 0}), "") << "DAC 0 is the black level";
    EXPECT_EQ(NoteOnKeptFrame({0x60, 16, 0, 0}), "") << "a gain";
    EXPECT_EQ(NoteOnKeptFrame({0x50, 0, 0, 3}), "") << "a clock";
}

}  // namespace
}  // namespace kelvo
