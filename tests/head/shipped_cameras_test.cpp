// What each camera as it ships says over the wire from its identification to its turn-off, byte for byte.
#include "config/settings.h"
#include "head/camera_head.h"
#include "head/identify_head.h"
#include "head/program_head.h"
#include "head/video_settings.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "state/camera_config_write.h"
#include "state/head_state.h"
#include "state/windows.h"
#include "support/head_fixture.h"
#include "support/shipped_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using testing::IsEmpty;

// All DACs at mid-scale in the order of turn-on, and in that of turn-off.
const Frames kDacs = {{0x70, 0x01, 0x80, 0x00}, {0x70, 0x02, 0x80, 0x00}, {0x70, 0x20, 0x80, 0x00},
                      {0x70, 0x40, 0x80, 0x00}, {0x70, 0x80, 0x80, 0x00}, {0x70, 0x08, 0x80, 0x00},
                      {0x70, 0x10, 0x80, 0x00}, {0x70, 0x04, 0x80, 0x00}};
const Frames kDacsOff = {{0x70, 0x01, 0x80, 0x00}, {0x70, 0x02, 0x80, 0x00}, {0x70, 0x04, 0x80, 0x00},
                         {0x70, 0x10, 0x80, 0x00}, {0x70, 0x08, 0x80, 0x00}, {0x70, 0x20, 0x80, 0x00},
                         {0x70, 0x40, 0x80, 0x00}, {0x70, 0x80, 0x80, 0x00}};
const Frames kInSbGreetings = {
    {0x20, 0x00, 0x00, 0x00}, {0x90, 0x10, 0x00, 0x00}, {0x70, 0x00, 0x00, 0x00}, {0x40, 0x00, 0xBF, 0x00}};
const CommFrame kBiasesOn = {0x80, 0x03, 0x00, 0x00};
const CommFrame kBiasesOff = {0x80, 0x00, 0x00, 0x00};
const CommFrame kClocksOn = {0x90, 0x30, 0x00, 0x00};
const CommFrame kClocksOff = {0x90, 0x10, 0x00, 0x00};
const CommFrame kStartDelays = {0x50, 0x05, 0x00, 0xFF};  // 15 x 16 + 15
const CommFrame kBiasWord = {0x60, 0x00, 0x7E, 0x42};     // 15 x 8 + 3 x 2; gain 4 mirrored 1 x 64, fast frame x 2
const CommFrame kGainZero = {0x60, 0x00, 0x00, 0x00};
const CommFrame kOffset = {0x70, 0x01, 0x80, 0x00};

Frames Joined(std::initializer_list<Frames> parts)
{
    Frames all;
    for (const Frames& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

class ShippedCameras : public HeadTest {
  protected:
    void Choose(std::int32_t number)
    {
        const auto sections = ReadWholeFile(ShippedFile("camera.ini"), 1 << 20);
        ASSERT_TRUE(sections);
        FlushProfiles();
        PutFile(CameraFilePath, *sections);
        ForgetProfile(CameraFilePath);
        for (const char* port : {"COM1", "COM2", "COM3"}) {
            WritePrivateProfileString("Ports", port, "sim:head.cnf", DefaultDir + "/platform.ini");
        }
        write::camera.ActiveCamera = number;
        ReadCameraConfig(number, 1, write::camera.ActiveConfig);
        LoadVideoSettings();
    }
    Frames Identified()
    {
        EXPECT_EQ(IdentifyCameraHead(), 1);
        return head->Taken();
    }
    Frames Programmed()
    {
        EXPECT_EQ(LoadCameraHead(), 1);
        return head->Taken();
    }
    // What goes to the head when the operator leaves integration, offset and gain of the video set-up as the section
    // has them.
    Frames SetUpAsShipped()
    {
        SetIntegrationIndex(IndexIntegrationTime[0], 0);
        SetVideoOffset(VideoOffset[0]);
        SetVideoGain(VideoGain[0]);
        return head->Taken();
    }
    Frames TurnedOff()
    {
        TurnCameraHeadOff();
        return head->Taken();
    }
};

TEST_F(ShippedCameras, InSb320By256)
{
    Choose(2);
    head->BeInSb();
    EXPECT_EQ(Identified(), kInSbGreetings);
    EXPECT_EQ(Programmed(),
              Joined({{{0x50, 0x00, 0x00, 0x05},  // row 3, the lowest index 2
                       {0x50, 0x01, 0x40, 0x50},  // 256 / 4, 320 / 4
                       {0x50, 0x03, 0x0E, 0x00},  // no window yet: 15 - (10 + 9) / 5 = 12 lines, + 2
                       kStartDelays},
                      kDacs,
                      {kBiasesOn,
                       kClocksOn,
                       kBiasWord,
                       {0x60, 0x02, 0x01, 0xCA},  // 319 / 8 = 39 = 0100111 -> 1110010 = 114: >> 6; x 4 + 2
                       {0x60, 0x04, 0x80, 0x3E},  // 255 / 8 = 31 = 011111 -> 111110 = 62
                       kGainZero,
                       kOffset}}));
    EXPECT_EQ(FrameRate, 48.828125F);  // 48000000 / 12 / 81920
    // 2 + 252 - 3 x 4 = 242 lines, + 2; (2 - 1) x 159 columns: 162 / 4
    EXPECT_EQ(SetUpAsShipped(), Frames({{0x50, 0x03, 0xF4, 0x28}, kOffset, kGainZero}));
    EXPECT_EQ(TurnedOff(), Joined({{kClocksOff, kBiasesOff}, kDacsOff}));
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(ShippedCameras, InSb640By512)
{
    Choose(1);
    head->BeInSb();
    EXPECT_EQ(Identified(), kInSbGreetings);
    EXPECT_EQ(Programmed(),
              Joined({{{0x50, 0x00, 0x00, 0x02},  // row 0
                       {0x50, 0x01, 0x80, 0xA0},  // 512 / 4, 640 / 4
                       {0x50, 0x03, 0x02, 0x00},  // no window yet: index 195 lies beyond its table, 0 lines, + 2
                       kStartDelays},
                      kDacs,
                      {kBiasesOn,
                       kClocksOn,
                       kBiasWord,
                       {0x60, 0x02, 0x01, 0xE6},  // 639 / 8 = 79 = 1001111 -> 1111001 = 121: >> 6; 484 + 2 - 256
                       {0x60, 0x04, 0x80, 0x3F},  // 511 / 8 = 63, the same mirrored
                       kGainZero,
                       kOffset}}));
    EXPECT_EQ(FrameRate, 100.0F);  // 196608000 / 6 / 327680
    // 2 + 508 - 65 x 4 = 250 lines, + 2; 2 x 319 columns: 641 / 4
    EXPECT_EQ(SetUpAsShipped(), Frames({{0x50, 0x03, 0xFC, 0xA0}, kOffset, kGainZero}));
    EXPECT_EQ(TurnedOff(), Joined({{kClocksOff, kBiasesOff}, kDacsOff}));
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

// A step longer and the byte of the lines wraps: 254 + 2 is 0 on the wire, though the time shown is that of 254 lines.
TEST_F(ShippedCameras, TheLinesByteOf640By512WrapsBelowRow195)
{
    Choose(1);
    head->BeInSb();
    Identified();
    Programmed();
    SetIntegrationIndex(194, 0);
    EXPECT_EQ(head->Taken(), Frames({{0x50, 0x03, 0x00, 0x00}}));  // 2 + 508 - 64 x 4 = 254; (2 - 2) x 319
    EXPECT_DOUBLE_EQ(IntegrationTimeMsec(FrameRate, 194), 254.0 * 640 * 1000 / (512 * 640 * 100.0));
}

TEST_F(ShippedCameras, HgCdTe64By64)
{
    Choose(3);
    head->BeHgCdTe();
    EXPECT_EQ(Identified(), Frames({{0x20, 0x00, 0x00, 0x00}, {0x80, 0x00, 0x00, 0x00}}));
    EXPECT_EQ(Programmed(), Joined({{{0x90, 0x05, 0x0B, 0xF0}},  // 2 x 5 + 1; 3 x 64 + 3 x 16 + 0
                                    kDacs,
                                    {kBiasesOn, kGainZero, kOffset}}));
    EXPECT_EQ(FrameRate, 244.140625F);  // 48000000 / 12 / 4 / 4096
    EXPECT_EQ(SetUpAsShipped(), Frames({kOffset, kGainZero}));
    EXPECT_EQ(TurnedOff(), Joined({{kBiasesOff}, kDacsOff}));
    EXPECT_THAT(op->Boxes(), IsEmpty()) << "section and head fit";
}

}  // namespace
}  // namespace kelvo
