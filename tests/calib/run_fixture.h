// Whole calibration runs on a camera of 2 x 4 detectors whose frames are given.
#pragma once

#include "calib/two_point_run.h"
#include "grabber/board.h"
#include "pixel/decommutation.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/menu.h"
#include "platform/profile.h"
#include "resources/ids.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/state_registry.h"
#include "state/windows.h"
#include "support/calibration_fixture.h"
#include "support/recording_board.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace kelvo {

using Frame = std::vector<std::int16_t>;

// Eight detectors: five good ones, a dead one, one that responds too strongly, one far off.
inline const Frame kLow = {1000, 1010, 990, 1000, 1000, 1005, 1000, 1500};
inline const Frame kHigh = {2000, 2010, 1990, 2000, 2000, 1010, 3000, 2500};

class CalibrationRun : public CalibrationTest {
  protected:
    void SetUp() override
    {
        CalibrationTest::SetUp();
        PutFile(InDirectory("nearccw.prs"), "row,col\n0,1\n-1,0\n0,-1\n1,0\n");
        PutFile(InDirectory("platform.ini"),
                "[Ports]\nCOM2=sim:head.cnf\n[Board]\nBoard=recording\n[Memory]\nLimit=400\n");
        ForgetProfile(InDirectory("platform.ini"));
        write::camera.numBufFrames = 4;
        write::frames.LiveVideo = 1;
        write::calSet.CalSettings.PRSfile = InDirectory("nearccw.prs");
        write::calSet.CalSettings.NumFrames = 2;
        write::calSet.CalSettings.MinOffset = 400;
        write::calSet.CalSettings.MaxOffset = 400;
        write::calSet.ReplaceNoisy = 1;
        write::display.SubstBadPixels = 1;
        write::cal.TemperatureCold = -999.0F;
        write::cal.TemperatureHot = -999.0F;
        SetBoardFrames({kLow});
    }

    // The dialog of that name is in front: frames stand before the camera from here on, a temperature is typed, OK.
    void AtLow(std::vector<Frame> frames, const char* temperature = "")
    {
        op->Do([frames = std::move(frames), temperature] {
            ASSERT_TRUE(DialogInFront());
            ASSERT_EQ(DialogName(DialogInFront()), "CAL_COLD");
            SetBoardFrames(frames);
            OperateText(DialogInFront(), 1224, temperature);
            OperatePress(DialogInFront(), kIdOk);
        });
    }
    void AtHigh(std::vector<Frame> frames, const char* temperature = "", std::function<void()> then = nullptr)
    {
        op->Do([frames = std::move(frames), temperature, then = std::move(then)] {
            ASSERT_TRUE(DialogInFront());
            ASSERT_EQ(DialogName(DialogInFront()), "CAL_HOT");
            SetBoardFrames(frames);
            OperateText(DialogInFront(), 1226, temperature);
            if (then) then();
            OperatePress(DialogInFront(), kIdOk);
        });
    }
    void Press(int id)
    {
        op->Do([id] { OperatePress(DialogInFront(), id); });
    }
    int TwoPoint() { return TwoPointCalibrate(hWndMain, ActiveConfig, write::calSet.CalDone); }
    int TwoPointOf(const Frame& low, const Frame& high)
    {
        AtLow({low});
        AtHigh({high});
        return TwoPoint();
    }

    template <typename Entry>
    std::vector<Entry> ListOf(std::string_view name)
    {
        const std::string bytes = FileContents(InDirectory(name));
        std::vector<Entry> list(bytes.size() / sizeof(Entry));
        std::memcpy(list.data(), bytes.data(), list.size() * sizeof(Entry));
        return list;
    }
    std::vector<std::string> BoxTexts() const
    {
        std::vector<std::string> texts;
        for (const auto& box : op->Boxes()) texts.push_back(box.text);
        return texts;
    }
    // Uncalibrated: the plain table, gain 1, one offset for all.
    static void ExpectUnity()
    {
        EXPECT_EQ(CalType, 0);
        EXPECT_THAT(DecomList, testing::ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
        EXPECT_THAT(GainList, testing::Each(1.0F));
        EXPECT_THAT(OffsetList, testing::Each(16384));
    }
    bool Stands(std::string_view name) const { return FileExists(InDirectory(name)); }

    // All that a calibration works on, to be compared as a whole: state, settings files, the table's copy on the disk,
    // the menu's check, the video settings.
    static std::string Everything();
};

inline std::string CalibrationRun::Everything()
{
    std::ostringstream text;
    for (const char* name : {"CalType",
                             "DecomList",
                             "OffsetList",
                             "GainList",
                             "IntensityCold",
                             "IntensityHot",
                             "TemperatureCold",
                             "TemperatureHot",
                             "CalSettings.CalFile",
                             "CalSettings.GainFile",
                             "CalSettings.OffsetFile",
                             "CalSettings.DecomFile",
                             "CalSettings.BadDetFile",
                             "CalSettings.NumFrames",
                             "CalSettings.ChosenType",
                             "CalSettings.NumSources",
                             "CalSettings.EmissivityCold",
                             "CalSettings.EmissivityHot",
                             "ReplaceNoisy",
                             "BadDetCount",
                             "SubstBadPixels",
                             "MirrorHoriz",
                             "MirrorVert",
                             "RotateCCW",
                             "DisplayLow",
                             "DisplayHigh",
                             "DisplayUnit",
                             "VoltsLow",
                             "VoltsHigh",
                             "CameraOn",
                             "LiveVideo",
                             "ViewingFile",
                             "IndexFrameRate",
                             "FrameRate",
                             "IndexIntegrationTime",
                             "IntegrationTime",
                             "VideoGain",
                             "VideoOffset"}) {
        const auto value = ReadState(name);
        text << name << '=';
        std::visit(
            [&]<typename T>(const T& held) {
                if constexpr (std::is_same_v<T, std::vector<double>>) {
                    for (const double each : held) text << each << ' ';
                } else if constexpr (!std::is_same_v<T, std::monostate>) {
                    text << held;
                }
            },
            value.value());
        text << '\n';
    }
    const CalSettingsRecord& set = CalSettings;
    text << "CalDone=" << CalDone << " sources in the record=" << set.TemperatureCold << ' ' << set.TemperatureHot
         << ' ' << set.IntensityCold << ' ' << set.IntensityHot << " limits=" << set.MinOffset << ' ' << set.MaxOffset
         << ' ' << set.AllowedNoiseLevel << ' ' << set.GainAcceptanceRange << '\n';
    text << "check=" << GetMenuItem(hWndMain, kCmdReplaceBadPixels)->checked << '\n';
    FlushProfiles();
    for (const std::string& file : {std::string(IniFilePath), std::string(CameraFilePath), DecomTempPath()}) {
        text << file << '\n' << FileContents(file) << '\n';
    }
    return text.str();
}

}  // namespace kelvo
