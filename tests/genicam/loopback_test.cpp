// The way of a real camera's frames, on the loopback: Aravis's own fake camera at one end, the board at the other.
#include "genicam/aravis_camera.h"
#include "genicam/genicam_camera.h"
#include "genicam/network_check.h"
#include "genicam/shared_camera.h"
#include "support/address_hold.h"

#include <arv.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <thread>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kAddress = "127.0.0.1";
constexpr std::int64_t kSecondUs = 1'000'000;
constexpr std::int32_t kSide = 512;  // of the fake camera's frames
constexpr std::size_t kPixels = 512UL * 512UL;

// The count of pixel i: two bytes that differ from each other and from those beside them.
std::uint16_t PatternAt(std::size_t i)
{
    return static_cast<std::uint16_t>(i * 40503U);
}

void FillPattern(ArvBuffer* buffer, void* /*data*/, guint32 /*exposureUs*/, guint32 /*gain*/, ArvPixelFormat /*format*/)
{
    // The buffer is the camera's to fill. It has room for the frame, and says 0 of itself before it is filled.
    std::size_t filled = 0;
    auto* const out = static_cast<std::uint8_t*>(const_cast<void*>(arv_buffer_get_data(buffer, &filled)));
    for (std::size_t i = 0; i < kPixels; ++i) {
        const std::uint16_t count = PatternAt(i);
        std::memcpy(out + 2 * i, &count, sizeof count);
    }
}

// Waits for what another thread does; a bound, no measure.
bool Comes(const std::function<bool()>& that, int seconds = 30)
{
    for (int i = 0; i < seconds * 100; ++i) {
        if (that()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

class FakeCamera {
  public:
    FakeCamera()
    {
        Comes([this] {
            camera_ = arv_gv_fake_camera_new(kAddress, "KV1");
            if (arv_gv_fake_camera_is_running(camera_)) return true;
            g_clear_object(&camera_);
            return false;
        });
        if (!camera_) return;
        arv_fake_camera_set_fill_pattern(arv_gv_fake_camera_get_fake_camera(camera_), FillPattern, nullptr);
    }
    ~FakeCamera() { g_clear_object(&camera_); }
    FakeCamera(const FakeCamera&) = delete;
    FakeCamera& operator=(const FakeCamera&) = delete;
    bool Runs() const { return camera_ != nullptr; }
    // Of all packets of pictures.
    void LosePackets(double share) { g_object_set(camera_, "gvsp-lost-ratio", share, nullptr); }

  private:
    ArvGvFakeCamera* camera_ = nullptr;
};

class Loopback : public testing::Test {
  protected:
    Loopback() { camera.SetSettings({.format = "Mono16"}); }
    void SetUp() override { ASSERT_TRUE(address.Holds() && fake->Runs()) << "the address is taken"; }

    AddressHold address;
    std::unique_ptr<FakeCamera> fake = std::make_unique<FakeCamera>();
    SharedCamera camera{kAddress, OpenAravisCamera};
    std::string error;
    FrameStamp stamp;
    std::vector<std::int16_t> frame = std::vector<std::int16_t>(kPixels);

    bool Read(std::int64_t after) { return camera.ReadFrame(after, 10 * kSecondUs, 0, 0, kSide, kSide, frame, stamp); }
};

TEST_F(Loopback, FramesComeWholeAndInOrder)
{
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
    ASSERT_TRUE(Read(0));
    for (std::size_t i = 0; i < kPixels; ++i) ASSERT_EQ(frame[i], PatternAt(i) >> 1) << i;
    const FrameStamp first = stamp;
    ASSERT_TRUE(Read(first.number));
    EXPECT_GT(stamp.number, first.number);
    EXPECT_GT(stamp.monotonicNs, first.monotonicNs);
    EXPECT_GT(stamp.utcNs, first.utcNs);
    const CameraReport report = camera.Report();
    EXPECT_EQ(report.columns, kSide);
    EXPECT_EQ(report.rows, kSide);
    EXPECT_EQ(report.bits, 15);
    EXPECT_GT(report.rateHz, 0);
    EXPECT_THAT(report.clock, HasSubstr("the camera's clock"));
}

TEST_F(Loopback, APacketSizeThatIsGivenIsTakenReadBackAndKept)
{
    constexpr std::int32_t kBytes = 3000;
    const std::unique_ptr<CameraDevice> device =
        OpenAravisCamera(kAddress, {.format = "Mono16", .packetSize = kBytes}, error);
    ASSERT_TRUE(device) << error;
    EXPECT_EQ(device->PacketSize(), kBytes);
    ASSERT_TRUE(device->BeginStream(error)) << error;
    const auto buffer = device->WaitForBuffer(10 * kSecondUs);
    ASSERT_TRUE(buffer);
    EXPECT_TRUE(buffer->isWhole);
    EXPECT_EQ(device->PacketSize(), kBytes);
}

TEST_F(Loopback, TheFrameGetsTheSizeThatIsAskedAsFarAsTheCameraGoes)
{
    struct Asked {
        std::int32_t columns;
        std::int32_t rows;
        std::int32_t columnsGot;
        std::int32_t rowsGot;
    };
    // The fake camera's sensor has 2048 x 2048, and any side is its own.
    for (const Asked& each : {Asked{0, 0, kSide, kSide}, {1024, 600, 1024, 600}, {9000, 600, 2048, 600}}) {
        const std::unique_ptr<CameraDevice> device =
            OpenAravisCamera(kAddress, {.format = "Mono16", .columns = each.columns, .rows = each.rows}, error);
        ASSERT_TRUE(device) << error;
        EXPECT_EQ(device->Shape().columns, each.columnsGot);
        EXPECT_EQ(device->Shape().rows, each.rowsGot);
        ASSERT_TRUE(device->BeginStream(error)) << error;
        const auto buffer = device->WaitForBuffer(10 * kSecondUs);
        ASSERT_TRUE(buffer);
        EXPECT_TRUE(buffer->isWhole);
        EXPECT_GE(buffer->bytes.size(), std::size_t{2} * static_cast<std::size_t>(each.columnsGot * each.rowsGot));
    }
}

TEST_F(Loopback, TheReceiveBufferHasRoomForTwoFramesWhereTheSystemGrantsIt)
{
    const std::unique_ptr<CameraDevice> device = OpenAravisCamera(kAddress, {.format = "Mono16"}, error);
    ASSERT_TRUE(device && device->BeginStream(error)) << error;
    ASSERT_TRUE(device->WaitForBuffer(10 * kSecondUs));
    const std::optional<ReceiveBuffer> buffer = device->StreamBuffer();
    ASSERT_TRUE(buffer);
    EXPECT_EQ(buffer->asked, std::int64_t{2 * 2 * kPixels});
    EXPECT_EQ(buffer->granted, std::min(buffer->asked, ReadNetworkFigures(kAddress).receiveBufferMax));
    device->EndStream();
    EXPECT_EQ(device->StreamBuffer(), std::nullopt);
}

TEST_F(Loopback, TheCameraFollowsTheWire)
{
    EXPECT_THAT(camera.Answer({0x20, 0, 0, 0}), ElementsAre(0x10, 0x66, 0, 0));
    camera.Answer({0x50, 0, 0, 14});   // 48 MHz / 30
    camera.Answer({0x50, 1, 64, 80});  // 81,920 pixel clocks a frame: 19.53 Hz
    camera.Answer({0x50, 3, 12, 20});  // 3280 of them: 2050 us
    camera.Answer({0x90, 0x30, 0, 0});
    EXPECT_NEAR(*camera.Report().rateHz, 1.6e6 / 81920, 0.01);
    EXPECT_NEAR(*camera.Report().integrationMs, 2.05, 0.001);
}

TEST_F(Loopback, AnotherClientsCameraIsToldAndLeftAlone)
{
    const std::unique_ptr<CameraDevice> other = OpenAravisCamera(kAddress, {}, error);
    ASSERT_TRUE(other) << error;
    EXPECT_FALSE(camera.Open(error));
    EXPECT_EQ(error, "Another program holds the camera.");
    EXPECT_TRUE(other->Answers());
}

TEST_F(Loopback, FramesWithALostPacketAreCountedAndNeverRead)
{
    constexpr int kFrames = 40;
    fake->LosePackets(0.002);  // of the 190 that a frame has: about each third one misses one
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
    std::int64_t last = 0;
    for (int i = 1; i <= kFrames; ++i) {
        ASSERT_TRUE(Read(last)) << i;
        ASSERT_GT(stamp.number, last);
        ASSERT_EQ(stamp.number, i + stamp.lostByTransport) << "each number is a frame or a lost one";
        last = stamp.number;
        for (std::size_t pixel = 0; pixel < kPixels; ++pixel) ASSERT_EQ(frame[pixel], PatternAt(pixel) >> 1) << pixel;
    }
    EXPECT_GT(stamp.lostByTransport, 0);
}

TEST_F(Loopback, ACameraThatIsSwitchedOffAndOnGoesOn)
{
    ASSERT_TRUE(camera.BeginGrab(SharedCamera::Trigger::kNone));
    ASSERT_TRUE(Read(0));
    ASSERT_TRUE(Read(stamp.number));
    fake.reset();
    ASSERT_TRUE(Comes([this] { return camera.Report().link == CameraLink::kLost; }));
    const std::int64_t last = camera.FrameCount();
    EXPECT_TRUE(camera.ReadFrame(std::nullopt, 0, 0, 0, kSide, kSide, frame, stamp)) << "the last frame stands";
    EXPECT_EQ(frame[1], PatternAt(1) >> 1);
    fake = std::make_unique<FakeCamera>();
    ASSERT_TRUE(fake->Runs());
    ASSERT_TRUE(Comes([this, last] { return camera.FrameCount() > last; }));
    EXPECT_EQ(camera.Report().link, CameraLink::kUp);
    ASSERT_TRUE(Read(last));
    EXPECT_GT(stamp.lostByTransport, 0) << "what the camera would have sent meanwhile";
    EXPECT_GE(stamp.number, last + stamp.lostByTransport);
}

TEST_F(Loopback, AnAddressWithoutACameraSaysSo)
{
    EXPECT_EQ(OpenAravisCamera("127.0.0.99", {}, error), nullptr);
    EXPECT_THAT(error, HasSubstr("No camera 127.0.0.99 was found."));
}

}  // namespace
}  // namespace kelvo
