// A camera as board and head share it, with one that has no network.
#include "genicam/shared_camera.h"

#include "genicam/genicam_camera.h"
#include "genicam/scripted_camera.h"
#include "grabber/copm2.h"
#include "state/windows_write.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

namespace kelvo {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr std::int64_t kSecondUs = 1'000'000;
constexpr std::int64_t kSecondNs = 1'000'000'000;

constexpr WireFrame kIdentify = {0x20, 0, 0, 0};
constexpr WireFrame kClocksOn = {0x90, 0x30, 0, 0};
constexpr WireFrame kClocksOff = {0x90, 0x10, 0, 0};

// Waits for what another thread does; a bound, no measure.
bool Comes(const std::function<bool()>& that)
{
    for (int i = 0; i < 2000; ++i) {
        if (that()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

class Shared : public testing::Test {
  protected:
    Shared()
    {
        script->features["AcquisitionFrameRate"] = {.value = 100, .range = {1, 200}};
        script->features["ExposureTime"] = {.value = 1000, .range = {10, 100000}};
    }
    std::vector<std::int64_t> ReadNumbers(std::int64_t after, int frames)
    {
        std::vector<std::int64_t> numbers;
        std::vector<std::int16_t> out(8);
        for (int i = 0; i < frames; ++i) {
            if (!camera.ReadFrame(after, kSecondUs, 0, 0, 4, 2, out, stamp)) return numbers;
            after = stamp.number;
            numbers.push_back(after);
            counts.push_back(out[0]);
        }
        return numbers;
    }
    std::shared_ptr<ScriptedCamera> script = std::make_shared<ScriptedCamera>();
    SharedCamera camera{"test", OpenerOf(script)};
    FrameStamp stamp;
    std::vector<std::int16_t> counts;
};

TEST_F(Shared, GivesFramesInOrderAsSignedCounts)
{
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
    script->Send(7, 2);
    script->Send(9, 65535);
    script->Send(8, 40000);
    EXPECT_THAT(ReadNumbers(0, 3), ElementsAre(1, 2, 3));
    EXPECT_THAT(counts, ElementsAre(1, 20000, 32767)) << "16 bits are shifted right by one";
    EXPECT_EQ(camera.FrameCount(), 3);
    EXPECT_EQ(camera.LostByTransport(), 0);
    EXPECT_EQ(camera.Report().counts, "shifted right by 1");
    EXPECT_EQ(camera.Report().bits, 15);
}

TEST_F(Shared, CountsWhatCameDamagedOrNotAtAll)
{
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
    script->Send(65534, 2);
    script->Send(65535, 2, false);
    script->Send(2, 2);  // 1 never comes
    EXPECT_THAT(ReadNumbers(0, 2), ElementsAre(1, 4));
    EXPECT_EQ(stamp.lostByTransport, 2);
    EXPECT_EQ(camera.LostByTransport(), 2);
    EXPECT_EQ(camera.FrameCount(), 4);
}

TEST_F(Shared, ShowsPartsOfAFrameAndNothingBeyondIt)
{
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
    script->Send(1, 200);
    ReadNumbers(0, 1);
    std::vector<std::int16_t> out(12, -1);
    ASSERT_TRUE(camera.ReadFrame(std::nullopt, 0, 2, 1, 4, 3, out, stamp));
    EXPECT_THAT(out, ElementsAre(100, 100, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
}

TEST_F(Shared, TheLastFrameStandsBehindAFreeze)
{
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
    script->Send(1, 200);
    ReadNumbers(0, 1);
    camera.EndGrab();
    EXPECT_FALSE(script->streams);
    std::vector<std::int16_t> out(8);
    ASSERT_TRUE(camera.ReadFrame(std::nullopt, 0, 0, 0, 4, 2, out, stamp));
    EXPECT_THAT(out, Each(100));
}

TEST_F(Shared, ANewGrabCountsFromOne)
{
    for (const std::uint64_t first : {1UL, 300UL}) {
        ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
        EXPECT_EQ(camera.FrameCount(), 0);
        script->Send(first, 2);
        EXPECT_THAT(ReadNumbers(0, 1), ElementsAre(1));
    }
}

TEST_F(Shared, AGrabThatFollowsAnotherHasNoneOfItsFrames)
{
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
    script->Send(1, 2);
    script->Send(3, 2);  // waits for 2
    const auto allAreTaken = [this] {
        const std::scoped_lock lock(script->mutex);
        return script->sent.empty();
    };
    ASSERT_TRUE(Comes(allAreTaken));
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
    EXPECT_EQ(camera.FrameCount(), 0);
    EXPECT_EQ(camera.LostByTransport(), 0);
}

TEST_F(Shared, FollowsTheHeadsRegisters)
{
    EXPECT_THAT(camera.Answer(kIdentify), ElementsAre(0x10, 0x66, 0, 0));
    camera.Answer({0x50, 0, 0, 7});    // 48 MHz / 16
    camera.Answer({0x50, 1, 64, 80});  // 81,920 pixel clocks a frame: 36.62 Hz
    camera.Answer({0x50, 3, 12, 20});  // 10 lines and 80 pixels: 1093.3 us
    EXPECT_THAT(camera.Answer(kClocksOn), ElementsAre(0x90, 0x30, 0, 0));
    EXPECT_NEAR(*camera.Report().rateHz, 3e6 / 81920, 1e-9);
    EXPECT_NEAR(*camera.Report().integrationMs, 3280 / 3e6 * 1e3, 1e-9);
    EXPECT_EQ(camera.Report().link, CameraLink::kUp);
    EXPECT_THAT(camera.Answer({0x70, 4, 128, 0}), ElementsAre(0x70, 4, 128, 0));
    EXPECT_THAT(camera.TakeNotes(), Contains(HasSubstr("DACs 1 to 7")));
    camera.Answer({0x70, 4, 128, 0});
    EXPECT_THAT(camera.TakeNotes(), IsEmpty()) << "each is told once";
}

TEST_F(Shared, DividesTheClockOfTheSection)
{
    camera.SetSection({.clockHz = 8e6});
    camera.Answer(kIdentify);
    camera.Answer({0x50, 0, 0, 1});    // 8 MHz / 4
    camera.Answer({0x50, 1, 25, 50});  // 20,000 pixel clocks a frame
    camera.Answer(kClocksOn);
    EXPECT_DOUBLE_EQ(*camera.Report().rateHz, 100);
}

// 1280 x 1024 go over the wire as 64 and 0: 320 and 256 in a byte each.
TEST_F(Shared, ReckonsWithTheSectionsFrameWhereItIsLargerThanTheWireCanSay)
{
    camera.SetSection({.clockHz = 1280 * 1024 * 100.0 * 2, .timingRows = 1024, .timingColumns = 1280});
    camera.Answer(kIdentify);
    camera.Answer({0x50, 0, 0, 0});
    camera.Answer({0x50, 1, 0, 64});
    camera.Answer({0x50, 3, 102, 0});  // 100 lines
    camera.Answer(kClocksOn);
    EXPECT_DOUBLE_EQ(*camera.Report().rateHz, 100);
    EXPECT_NEAR(*camera.Report().integrationMs, 10.0 * 100 / 1024, 1e-9);
    EXPECT_THAT(camera.TakeNotes(), Not(Contains(HasSubstr("was sent a frame"))));
}

TEST_F(Shared, TellsOfAFrameSizeThatIsntTheSections)
{
    camera.SetSection({.clockHz = 8e6, .timingRows = 1024, .timingColumns = 1280});
    camera.Answer(kIdentify);
    camera.Answer({0x50, 0, 0, 1});    // 8 MHz / 4
    camera.Answer({0x50, 1, 25, 50});  // 20,000 pixel clocks a frame
    camera.Answer(kClocksOn);
    EXPECT_DOUBLE_EQ(*camera.Report().rateHz, 100);
    EXPECT_THAT(camera.TakeNotes(), Contains(HasSubstr("200 columns and 100 rows where the camera's section has 1280 "
                                                       "and 1024")));
}

TEST_F(Shared, TellsOfAFormatAndAPacketSizeThatTheCameraDidntTake)
{
    script->packetSize = 1476;
    camera.SetSettings({.format = "Mono12", .packetSize = 9000});
    std::string error;
    ASSERT_TRUE(camera.Open(error)) << error;
    EXPECT_THAT(camera.TakeNotes(), ElementsAre("The camera gives Mono16 where Mono12 was asked.",
                                                "The camera sends packets of 1476 bytes where 9000 were asked."));
}

TEST_F(Shared, OpensTheCameraWithTheSizeOfItsSection)
{
    std::string error;
    camera.SetSettings({.format = "Mono16"});
    camera.SetSection({.rows = 256, .columns = 320});
    ASSERT_TRUE(camera.Open(error)) << error;
    EXPECT_EQ(script->openedWith, (DeviceSettings{.format = "Mono16", .columns = 320, .rows = 256}));
}

TEST_F(Shared, TellsOnceOfAReceiveBufferThatTheSystemDidntGrant)
{
    script->streamBuffer = ReceiveBuffer{.asked = 327680, .granted = 212992};
    for (std::uint64_t number = 1; number <= 2; ++number) {
        ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
        script->Send(number, 1);
        ASSERT_THAT(ReadNumbers(0, 1), ElementsAre(1));
        camera.EndGrab();
    }
    EXPECT_THAT(camera.TakeNotes(),
                ElementsAre("The network's receive buffer has 212992 bytes where 327680 were asked: frames can get "
                            "lost. Setup, Cameras... says what to do."));
}

TEST_F(Shared, SaysNothingOfAReceiveBufferThatIsGranted)
{
    script->streamBuffer = ReceiveBuffer{.asked = 327680, .granted = 327680};
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
    script->Send(1, 1);
    ASSERT_THAT(ReadNumbers(0, 1), ElementsAre(1));
    EXPECT_THAT(camera.TakeNotes(), IsEmpty());
}

TEST_F(Shared, ACameraThatIsntThereIsASilentHead)
{
    script->Set(&ScriptedCamera::isThere, false);
    EXPECT_THAT(camera.Answer(kIdentify), IsEmpty());
    EXPECT_THAT(camera.TakeNotes(), ElementsAre("No camera test was found."));
    EXPECT_FALSE(camera.BeginGrab(SharedCamera::Trigger::kNone));
}

TEST_F(Shared, TurnOffGivesTheCameraBack)
{
    camera.Answer(kIdentify);
    camera.Answer(kClocksOff);
    EXPECT_EQ(script->openings, 1);
    camera.Answer(kClocksOn);
    EXPECT_EQ(script->openings, 1) << "it was open all the time";
    camera.Answer(kClocksOff);
    camera.Answer(kIdentify);
    EXPECT_EQ(script->openings, 2);
}

TEST_F(Shared, ALostCameraIsHadBackWithItsSettings)
{
    camera.Answer(kIdentify);
    camera.Answer({0x50, 0, 0, 7});
    camera.Answer({0x50, 1, 64, 80});
    camera.Answer(kClocksOn);
    const double rateHz = *camera.Report().rateHz;
    const auto periodNs = static_cast<std::int64_t>(1e9 / rateHz);
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
    script->Send(1, 2, true, kSecondNs);
    script->Send(2, 2, true, kSecondNs + periodNs);
    EXPECT_THAT(ReadNumbers(0, 2), ElementsAre(1, 2));

    script->Set(&ScriptedCamera::isThere, false);
    script->Set(&ScriptedCamera::isLost, true);
    ASSERT_TRUE(Comes([this] { return camera.Report().link == CameraLink::kLost; }));
    EXPECT_THAT(camera.Report().linkText, Not(IsEmpty()));
    EXPECT_THAT(camera.Answer(kClocksOn), ElementsAre(0x69, 0x30, 0, 0)) << "the refusal, while it is lost";
    std::vector<std::int16_t> out(8);
    EXPECT_TRUE(camera.ReadFrame(std::nullopt, 0, 0, 0, 4, 2, out, stamp)) << "the last frame stands";

    {
        const std::scoped_lock lock(script->mutex);
        script->features["AcquisitionFrameRate"].value = 100;  // it was switched off and on
        script->isThere = true;
    }
    ASSERT_TRUE(Comes([this] { return camera.Report().link == CameraLink::kUp; }));
    ASSERT_TRUE(Comes([this] {
        const std::scoped_lock lock(script->mutex);
        return script->streamsBegun == 2;
    }));
    EXPECT_EQ(script->features["AcquisitionFrameRate"].value, rateHz);
    script->Send(1, 2, true, kSecondNs + 31 * periodNs);  // 29 frames later than the next one
    EXPECT_THAT(ReadNumbers(2, 1), ElementsAre(32));
    EXPECT_EQ(camera.LostByTransport(), 29);
    EXPECT_THAT(camera.Answer(kClocksOn), ElementsAre(0x90, 0x30, 0, 0));
}

TEST_F(Shared, ASilentCameraIsAskedAndLostWhereItDoesntAnswer)
{
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
    script->Send(1, 2);
    ReadNumbers(0, 1);
    script->Set(&ScriptedCamera::isThere, false);
    ASSERT_TRUE(Comes([this] { return camera.Report().linkText == "No whole frame comes from the camera."; }));
    script->Set(&ScriptedCamera::answers, false);
    ASSERT_TRUE(Comes([this] { return camera.Report().linkText.starts_with("Camera lost (try "); }));
}

TEST_F(Shared, TurnOffEndsTheTries)
{
    camera.Answer(kIdentify);
    camera.Answer(kClocksOn);
    script->Set(&ScriptedCamera::isThere, false);
    script->Set(&ScriptedCamera::isLost, true);
    ASSERT_TRUE(Comes([this] { return camera.Report().link == CameraLink::kLost; }));
    EXPECT_THAT(camera.Answer(kClocksOff), ElementsAre(0x90, 0x10, 0, 0)) << "nothing runs that could go on";
    EXPECT_EQ(camera.Report().link, CameraLink::kUp);
    script->Set(&ScriptedCamera::isThere, true);
    std::this_thread::sleep_for(std::chrono::milliseconds(700));  // longer than until the first try
    EXPECT_EQ(script->openings, 1);
}

TEST_F(Shared, WaitsForTheSoftwareTrigger)
{
    script->features["TriggerMode"] = {.choices = {"Off", "On"}};
    script->features["TriggerSource"] = {.choices = {"Line1", "Software"}};
    script->features["TriggerSoftware"] = {};
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kSoftware));
    EXPECT_EQ(script->features["TriggerMode"].text, "On");
    EXPECT_EQ(script->features["TriggerSource"].text, "Software");
    EXPECT_THAT(script->asked, Contains("TriggerSoftware"));
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kInput));
    EXPECT_EQ(script->features["TriggerSource"].text, "Line1");
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
    EXPECT_EQ(script->features["TriggerMode"].text, "Off");
}

TEST_F(Shared, ACameraWithoutATriggerSaysSo)
{
    EXPECT_FALSE(camera.BeginGrab(SharedCamera::Trigger::kInput));
    EXPECT_THAT(camera.TakeNotes(), ElementsAre("The camera has no trigger."));
}

// ---- The board's file, and the board above a camera

class GenicamBoard : public testing::Test {
  protected:
    GenicamBoard()
    {
        ResetGenicam();
        SetCameraOpener(OpenerOf(script));
    }
    ~GenicamBoard() override { ResetGenicam(); }
    std::string File(std::string_view text) const
    {
        const std::string path = directory.Path() + "/camera.cnf";
        PutFile(path, text);
        return path;
    }
    TempDirectory directory;
    std::shared_ptr<ScriptedCamera> script = std::make_shared<ScriptedCamera>();
    std::string error;
};

TEST_F(GenicamBoard, IsOneMoreRowOfTheTable)
{
    SetDefaultDir(directory.Path());
    PutFile(directory / "platform.ini", "[Board]\nBoard=genicam\n");
    RegisterGenicamBoard();
    ASSERT_EQ(itx_load_cnf(""), 0);
    ASSERT_EQ(itx_init_sys(0), 0);
    const BoardModule icp = itx_get_modcnf(0, "ICP", 100);
    ASSERT_NE(icp, 0);
    EXPECT_EQ(itx_get_modcnf(0, "CMP", 100), 0);
    EXPECT_NE(icp_get_slot0(icp), 0);
    const BoardFrame frame = icp_create_frame(icp, 32, 2, 16, 0);
    ASSERT_NE(frame, kNoBoardFrame);
    EXPECT_EQ(icp_create_frame(icp, 32, 2, 8, 0), kNoBoardFrame);
    EXPECT_THAT(icp_take_notes(icp), IsEmpty()) << "4 columns are 32 of a pitch";
    BoardFrameAttributes attributes;
    EXPECT_EQ(icp_frame_attrib(icp, frame, attributes), 0);
    EXPECT_EQ(attributes.bits, 16);

    ASSERT_EQ(icp_grab(icp, frame), 0);
    EXPECT_EQ(icp_frame_count(icp), 0);
    script->Send(1, 20);
    script->Send(3, 40);
    FrameStamp stamp;
    std::vector<std::int16_t> out(8);
    ASSERT_EQ(icp_next_frame(icp, frame, 0, kSecondUs, 4, 2, out, stamp), 0);
    EXPECT_THAT(out, Each(10));
    ASSERT_EQ(icp_next_frame(icp, frame, 1, kSecondUs, 4, 2, out, stamp), 0);
    EXPECT_THAT(out, Each(20));
    EXPECT_EQ(stamp.number, 3);
    EXPECT_EQ(stamp.lostByTransport, 1);
    EXPECT_EQ(icp_lost_by_transport(icp), 1);
    EXPECT_EQ(icp_next_frame(icp, frame, 3, 0, 4, 2, out, stamp), kBoardTimeout);
    EXPECT_EQ(icp_report(icp).columns, 4);
    icp_freeze(icp, frame);
    out.assign(8, 0);
    EXPECT_EQ(icp_read_area(icp, frame, 0, 0, 4, 2, out), 0);
    EXPECT_THAT(out, Each(20)) << "the last frame stands";
    EXPECT_NE(icp_read_area(icp, frame, 1, 0, 32, 2, out), 0) << "beyond the frame";
    itx_exit(0);
    EXPECT_FALSE(script->streams);
    ForgetBoardTables();
}

TEST_F(GenicamBoard, SaysWhereItsFileIsWrongOrTheFrameHasAnotherSize)
{
    SetDefaultDir(directory.Path());
    PutFile(directory / "platform.ini", "[Board]\nBoard=genicam\n");
    RegisterGenicamBoard();
    EXPECT_NE(itx_load_cnf(File("[GenICam]\nShift=9\n")), 0);
    EXPECT_THAT(icp_take_notes(1), ElementsAre(HasSubstr("a whole number from 0 to 8")));
    ASSERT_EQ(itx_load_cnf(File("[GenICam]\nDevice=other\n")), 0);
    ASSERT_EQ(itx_init_sys(0), 0);
    ASSERT_NE(icp_create_frame(1, 64, 2, 16, 0), kNoBoardFrame);
    EXPECT_THAT(icp_take_notes(1), ElementsAre(HasSubstr("4 columns and 2 rows")));
    script->Set(&ScriptedCamera::isThere, false);
    itx_exit(0);
    ASSERT_EQ(itx_load_cnf(""), 0);
    EXPECT_NE(itx_init_sys(0), 0);
    EXPECT_THAT(icp_take_notes(1), ElementsAre(HasSubstr("No camera")));
    ForgetBoardTables();
}

TEST_F(GenicamBoard, OtherSettingsOpenTheCameraAnew)
{
    const auto camera = GenicamCamera("test");
    ASSERT_TRUE(camera->Open(error));
    camera->SetSettings({});
    EXPECT_EQ(script->openings, 1);
    camera->SetSettings({.counts = CountRule{.shift = 4}});
    EXPECT_EQ(script->openings, 2);
    EXPECT_EQ(camera->Report().counts, "shifted right by 4");
    EXPECT_EQ(camera->Report().bits, 12);
}

TEST_F(GenicamBoard, ReadsWhichCameraAndHow)
{
    const auto file = ReadBoardFile(
        File("[GenICam]\nDevice=10.0.0.7\nFormat=Mono12p\nPacketSize=8000\nBuffers=40\nPedestal=100\nShift=2\n"),
        error);
    ASSERT_TRUE(file) << error;
    EXPECT_EQ(file->device, "10.0.0.7");
    EXPECT_EQ(
        file->settings,
        (DeviceSettings{
            .format = "Mono12p", .packetSize = 8000, .buffers = 40, .counts = CountRule{.pedestal = 100, .shift = 2}}));
}

TEST_F(GenicamBoard, LeavesWhatIsntSaidToCameraAndTransport)
{
    for (const std::string& path : {std::string(), File("[Head]\nModel=1\n"), directory.Path() + "/none.cnf"}) {
        const auto file = ReadBoardFile(path, error);
        ASSERT_TRUE(file) << path;
        EXPECT_EQ(file->device, std::nullopt);
        EXPECT_EQ(file->settings, DeviceSettings());
    }
    EXPECT_EQ(ReadBoardFile(File("[GenICam]\nShift=0\n"), error)->settings.counts, CountRule());
}

TEST_F(GenicamBoard, RefusesValuesThatAreNone)
{
    for (const std::string_view line : {"Buffers=23", "Buffers=many", "PacketSize=-1", "Pedestal=65536", "Shift=9",
                                        "Shift=1x", "Shift=", "Format=BayerRG8"}) {
        error.clear();
        EXPECT_EQ(ReadBoardFile(File("[GenICam]\n" + std::string(line) + "\n"), error), std::nullopt) << line;
        EXPECT_THAT(error, HasSubstr(std::string(line)));
        EXPECT_THAT(error, HasSubstr("it has to be"));
    }
}

}  // namespace
}  // namespace kelvo
