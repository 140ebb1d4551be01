// A frame of a camera from the transport's buffer into the ring of frames, unpacking included, beside a plain copy of
// as many counts from memory into the same ring, on one thread:
//
//   build/bench/bench/genicam_bench [rounds]
//
// What runs is what a capture runs: the oldest frame behind the last one is looked up among those that are kept, and
// unpacked into the place that the ring gives. Sixteen buffers go round, as many as are kept, so that none is found in
// the caches nearest by. Rounds go in turn; each figure is the median of the rounds' ratios. Frames are 640 x 512.
#include "genicam/shared_camera.h"
#include "grabber/frame_ring.h"
#include "median.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string_view>
#include <thread>

namespace {

using namespace kelvo;

constexpr std::int32_t kColumns = 640;
constexpr std::int32_t kRows = 512;
constexpr std::size_t kPixels = std::size_t{kColumns} * kRows;
constexpr std::size_t kBuffers = 16;
constexpr std::int64_t kSecondUs = 1'000'000;

std::vector<std::uint8_t> RandomBytes(std::size_t count)
{
    static std::mt19937 random(1);
    std::vector<std::uint8_t> bytes(count);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

// A camera whose frames have come by the time that it is asked.
class MemoryCamera final : public CameraDevice {
  public:
    explicit MemoryCamera(const PixelFormat& format) : shape_{.columns = kColumns, .rows = kRows, .format = format}
    {
        features_.has = [](const std::string&) { return false; };
        for (std::size_t i = 0; i < kBuffers; ++i) {
            auto bytes = std::make_shared<std::vector<std::uint8_t>>(RandomBytes(BytesOfPixels(format, kPixels)));
            buffers_.push_back({.keeper = bytes, .bytes = *bytes, .number = i + 1, .isWhole = true});
        }
    }
    const FeatureAccess& Features() override { return features_; }
    CameraShape Shape() const override { return shape_; }
    std::int32_t PacketSize() const override { return 0; }
    std::optional<ReceiveBuffer> StreamBuffer() const override { return std::nullopt; }
    bool BeginStream(std::string&) override { return true; }
    void EndStream() override {}
    std::optional<CameraBuffer> WaitForBuffer(std::int64_t limitUs) override
    {
        if (given_ < buffers_.size()) return buffers_[given_++];
        std::this_thread::sleep_for(std::chrono::microseconds(limitUs));
        return std::nullopt;
    }
    void GiveBack(CameraBuffer) override {}
    bool IsLost() const override { return false; }
    bool Answers() override { return true; }

  private:
    CameraShape shape_;
    FeatureAccess features_;
    std::vector<CameraBuffer> buffers_;
    std::size_t given_ = 0;
};

// All frames into the ring, one after the other; fill gives the values of the n-th, from 0.
template <typename Fill>
double UsOfAFrame(FrameRing& ring, Fill&& fill)
{
    return Microseconds([&] {
               for (std::size_t i = 0; i < kBuffers; ++i) {
                   fill(i, ring.Claim());
                   ring.Commit();
                   ring.Drop(1);
               }
           }) /
           static_cast<double>(kBuffers);
}

bool Measure(std::string_view name, const CountRule& rule, double most, int rounds)
{
    const PixelFormat format = PixelFormatNamed(name).value();
    SharedCamera camera("", [&format](const std::string&, const DeviceSettings&, std::string&) {
        return std::make_unique<MemoryCamera>(format);
    });
    camera.SetSettings({.counts = rule});
    const bool began = camera.BeginGrab(SharedCamera::Trigger::kNone);
    if (!began || !camera.WaitForFrame(kBuffers - 1, 10 * kSecondUs)) return false;
    FrameRing ring;
    if (!ring.Allocate(4, kPixels)) return false;
    std::vector<std::vector<std::uint8_t>> plain;
    for (std::size_t i = 0; i < kBuffers; ++i) plain.push_back(RandomBytes(kPixels * sizeof(std::int16_t)));

    bool read = true;
    std::vector<double> frames;
    std::vector<double> copies;
    for (int round = 0; round < rounds; ++round) {
        frames.push_back(UsOfAFrame(ring, [&](std::size_t i, CapturedFrame& frame) {
            const auto after = static_cast<std::int64_t>(i);
            read = camera.ReadFrame(after, 0, 0, 0, kColumns, kRows, frame.values, frame.stamp) &&
                   frame.stamp.number == after + 1 && read;
        }));
        copies.push_back(UsOfAFrame(ring, [&](std::size_t i, CapturedFrame& frame) {
            std::memcpy(frame.values.data(), plain[i].data(), plain[i].size());
        }));
    }
    const std::string rest = CountRuleText(rule);
    std::printf("%-14s %-22s %7.1f us   %5.2f copies (at most %.1f)\n", std::string(name).c_str(), rest.c_str(),
                Median(frames), MedianRatio(frames, copies), most);
    return read;
}

}  // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 200;
    constexpr double kMostOfWords = 1.5;
    constexpr double kMostOfPacked = 2.5;
    const bool measured =
        Measure("Mono16", {.shift = 1}, kMostOfWords, rounds) &&
        Measure("Mono16", {.pedestal = 32768}, kMostOfWords, rounds) && Measure("Mono14", {}, kMostOfWords, rounds) &&
        Measure("Mono12p", {}, kMostOfPacked, rounds) && Measure("Mono12Packed", {}, kMostOfPacked, rounds);
    return measured ? 0 : 1;
}
