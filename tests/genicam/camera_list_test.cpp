#include "genicam/camera_list.h"

#include "genicam/aravis_camera.h"
#include "genicam/glib_handles.h"
#include "support/address_hold.h"
#include "support/fake_camera.h"
#include "support/shipped_file.h"

#include <arv.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {
namespace {

using testing::ElementsAre;

FakeCameraSetup LoopbackSetup()
{
    return {.settingsFile = ShippedFile("insb320.cnf"),
            .serial = "KTEST1",
            .format = "Mono14",
            .rateHz = 50,
            .frontFile = {}};
}

std::optional<FoundCamera> Find(std::string_view serial)
{
    const std::vector<FoundCamera> cameras = FindCameras();
    const auto found = std::ranges::find(cameras, serial, &FoundCamera::serial);
    return found == cameras.end() ? std::nullopt : std::optional(*found);
}

TEST(CameraList, HasACameraByItsNames)
{
    const FakeCamera camera(LoopbackSetup());
    ASSERT_EQ(camera.Error(), "");
    const auto found = Find("KTEST1");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->vendor, "Kelvo");
    EXPECT_EQ(found->model, "Loopback");
    EXPECT_EQ(found->address, "127.0.0.1");
    EXPECT_EQ(found->transport, "GigE Vision");
    EXPECT_EQ(CameraLine(*found), "Kelvo Loopback, KTEST1, 127.0.0.1");
}

TEST(CameraList, AsksACameraWhatItIs)
{
    const FakeCamera camera(LoopbackSetup());
    ASSERT_EQ(camera.Error(), "");
    const auto found = Find("KTEST1");
    ASSERT_TRUE(found);
    const CameraAnswer answer = AskFoundCamera(*found);
    EXPECT_EQ(answer.trouble, "");
    ASSERT_TRUE(answer.offer);
    EXPECT_EQ(answer.offer->columns, 320);
    EXPECT_EQ(answer.offer->rows, 256);
    EXPECT_THAT(answer.offer->formats, ElementsAre("Mono16", "Mono14", "Mono14p", "Mono12", "Mono12p", "Mono12Packed",
                                                   "Mono10", "Mono10p", "Mono10Packed", "Mono8"));
    EXPECT_EQ(answer.offer->format, "Mono14");
    EXPECT_EQ(answer.offer->ratesHz, (NumberRange{2, 200}));
    EXPECT_EQ(answer.offer->rateHz, 50);
    EXPECT_EQ(answer.offer->exposureUs, 19400);
    EXPECT_EQ(answer.offer->frameBytes, 320 * 256 * 2);
    ASSERT_TRUE(answer.picture);
    EXPECT_EQ(answer.picture->columns, 320);
    EXPECT_EQ(answer.picture->rows, 256);
}

// What it is can be read all the same; a frame can't be had, and who has the camera keeps it.
TEST(CameraList, LeavesACameraToTheProgramThatHasIt)
{
    const FakeCamera camera(LoopbackSetup());
    ASSERT_EQ(camera.Error(), "");
    const auto found = Find("KTEST1");
    ASSERT_TRUE(found);
    GError* failure = nullptr;
    const ObjectHold<ArvCamera> other(arv_camera_new("127.0.0.1", &failure));
    ASSERT_TRUE(other) << failure->message;
    const FakeRegisters before = camera.Registers();
    const CameraAnswer answer = AskFoundCamera(*found);
    ASSERT_TRUE(answer.offer);
    EXPECT_EQ(answer.offer->columns, 320);
    EXPECT_FALSE(answer.picture);
    EXPECT_EQ(answer.trouble, "Another program has the camera: no picture can be had.");
    EXPECT_EQ(camera.Registers(), before);
    EXPECT_TRUE(arv_gv_device_is_controller(ARV_GV_DEVICE(arv_camera_get_device(other.get()))));
}

TEST(CameraList, NamesACameraAsTheBoardOpensIt)
{
    const FakeCamera camera(LoopbackSetup());
    ASSERT_EQ(camera.Error(), "");
    const auto found = Find("KTEST1");
    ASSERT_TRUE(found);
    ASSERT_EQ(HeadName(*found), "KTEST1");
    std::string error;
    const std::unique_ptr<CameraDevice> opened = OpenAravisCamera(HeadName(*found), {}, error);
    ASSERT_TRUE(opened) << error;
    EXPECT_EQ(opened->Shape().columns, 320);
}

TEST(CameraList, HasNoCameraThatIsSwitchedOff)
{
    {
        const FakeCamera camera(LoopbackSetup());
        ASSERT_EQ(camera.Error(), "");
        ASSERT_TRUE(Find("KTEST1"));
    }
    const AddressHold nobodysElse;
    ASSERT_TRUE(nobodysElse.Holds());
    EXPECT_FALSE(Find("KTEST1"));
    FoundCamera gone;
    gone.id = "127.0.0.1";
    const CameraAnswer answer = AskFoundCamera(gone);
    EXPECT_FALSE(answer.offer);
    EXPECT_THAT(answer.trouble, testing::StartsWith("It can't be opened: "));
}

}  // namespace
}  // namespace kelvo
