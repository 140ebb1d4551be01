#include "support/fake_camera.h"

#include "genicam/glib_handles.h"
#include "simcam/sim_detector.h"
#include "simcam/sim_physics.h"
#include "simcam/sim_scene.h"
#include "support/address_hold.h"
#include "support/fake_camera_features.h"

#include <arv.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <fstream>
#include <numeric>
#include <optional>

namespace kelvo {

namespace {

constexpr FakePixelFormat kFormats[] = {
    {"Mono8", 0x01080001, 8, 8},          {"Mono10", 0x01100003, 10, 16}, {"Mono10p", 0x010A0046, 10, 10},
    {"Mono10Packed", 0x010C0004, 10, 12}, {"Mono12", 0x01100005, 12, 16}, {"Mono12p", 0x010C0047, 12, 12},
    {"Mono12Packed", 0x010C0006, 12, 12}, {"Mono14", 0x01100025, 14, 16}, {"Mono14p", 0x010E0104, 14, 14},
    {"Mono16", 0x01100007, 14, 16},
};
constexpr int kCountBits = 14;

// Two pixels in three bytes: the upper eight bits of each stand alone, the lower ones share the byte between them.
std::vector<std::uint8_t> PackPairs(std::span<const std::uint32_t> values, int bits)
{
    const int lowBits = bits - 8;
    const std::uint32_t lowMask = (1U << lowBits) - 1;
    std::vector<std::uint8_t> bytes((values.size() * 12 + 7) / 8);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::size_t first = i / 2 * 3;
        bytes[first + (i % 2) * 2] = static_cast<std::uint8_t>(values[i] >> lowBits);
        const std::uint32_t low = values[i] & lowMask;
        if (first + 1 < bytes.size()) {
            bytes[first + 1] = static_cast<std::uint8_t>(bytes[first + 1] | low << (i % 2 * 4));
        }
    }
    return bytes;
}

// Bit after bit, the lowest first: without a gap, or with each pixel beginning a byte.
std::vector<std::uint8_t> PackBits(std::span<const std::uint32_t> values, int pixelBits)
{
    std::vector<std::uint8_t> bytes((values.size() * static_cast<std::size_t>(pixelBits) + 7) / 8);
    std::size_t place = 0;
    for (const std::uint32_t value : values) {
        for (int bit = 0; bit < pixelBits; ++bit, ++place) {
            const std::uint32_t one = value >> bit & 1U;
            bytes[place / 8] = static_cast<std::uint8_t>(bytes[place / 8] | one << place % 8);
        }
    }
    return bytes;
}

}  // namespace

std::span<const FakePixelFormat> FakePixelFormats()
{
    return kFormats;
}

const FakePixelFormat* FakePixelFormatOf(std::string_view name)
{
    const auto* const found = std::ranges::find(kFormats, name, &FakePixelFormat::name);
    return found == std::end(kFormats) ? nullptr : found;
}

std::vector<std::uint8_t> PackFakeCounts(std::span<const std::int16_t> counts, const FakePixelFormat& format)
{
    std::vector<std::uint32_t> values(counts.size());
    std::ranges::transform(counts, values.begin(), [&format](std::int16_t count) {
        return static_cast<std::uint32_t>(count) >> (kCountBits - format.bits);
    });
    return format.name.ends_with("Packed") ? PackPairs(values, format.bits) : PackBits(values, format.pixelBits);
}

// --- The detector ---------------------------------------------------------------------------------------------------

struct FakeDetector::Array {
    explicit Array(const SimSettings& fileSettings)
        : settings(fileSettings),
          detectors(DrawDetectors(fileSettings)),
          table(fileSettings.bandFromUm, fileSettings.bandToUm),
          light(table, fileSettings.emissivity, fileSettings.ambientDegrees),
          mean(detectors.response.size()),
          sigma(mean.size()),
          counts(mean.size())
    {
    }

    VideoPath PathOf(const FakeRegisters& registers) const
    {
        VideoSettings video;
        video.biased = true;
        video.integrationSeconds = registers.exposureUs * 1e-6;
        video.gainIndex = static_cast<std::int32_t>(registers.gain);
        video.offsetDac = static_cast<std::int32_t>(registers.blackLevel);
        return MakeVideoPath(settings, video);
    }

    void Expose(const FakeRegisters& registers, FakeFront front, std::int64_t n);
    void DrawBlinkers(double gainFactor, std::uint64_t key, std::int64_t n);

    SimSettings settings;
    DetectorArray detectors;
    RadianceTable table;
    BenchLight light;
    std::vector<float> mean;  // of all detectors, as the one behind it
    std::vector<float> sigma;
    std::vector<std::int16_t> counts;
    // What mean and sigma were made of; a still front has them once.
    std::optional<FakeRegisters> exposed;
    FakeFront front = FakeFront::kScene;
};

void FakeDetector::Array::Expose(const FakeRegisters& registers, FakeFront inFront, std::int64_t n)
{
    if (inFront != FakeFront::kScene && inFront == front && exposed == registers) return;
    front = inFront;
    exposed = registers;
    const VideoPath path = PathOf(registers);
    const double seconds = static_cast<double>(n) * registers.periodUs * 1e-6;
    const auto columns = static_cast<std::size_t>(detectors.columns);
    std::vector<float> radiance(columns);
    for (std::int32_t row = 0; row < detectors.rows; ++row) {
        if (front == FakeFront::kScene) {
            MovingSceneRow(light, settings.sceneDegrees, seconds, {row, 0, detectors.rows, detectors.columns},
                           radiance);
        } else {
            const double degrees = front == FakeFront::kLow ? settings.lowDegrees : settings.highDegrees;
            std::ranges::fill(radiance, light.At(degrees));
        }
        const std::size_t first = static_cast<std::size_t>(row) * columns;
        ExposeDetectors(path, detectors.fullWellElectrons, detectors.Part(first, columns), radiance,
                        std::span(mean).subspan(first, columns), std::span(sigma).subspan(first, columns));
    }
}

void FakeDetector::Array::DrawBlinkers(double gainFactor, std::uint64_t key, std::int64_t n)
{
    for (const Blinker& blinker : detectors.blinkers) {
        if (!BlinkerIsOn(blinker, static_cast<std::uint64_t>(settings.seed), n)) continue;
        const std::size_t i = blinker.detector;
        const float shift = blinker.shift * static_cast<float>(gainFactor);
        counts[i] = CountOf(mean[i] + shift + sigma[i] * DetectorNormal(key, blinker.detector));
    }
}

FakeDetector::FakeDetector(const SimSettings& settings) : array_(std::make_unique<Array>(settings)) {}

FakeDetector::~FakeDetector() = default;

std::uint32_t FakeDetector::Columns() const
{
    return static_cast<std::uint32_t>(array_->detectors.columns);
}

std::uint32_t FakeDetector::Rows() const
{
    return static_cast<std::uint32_t>(array_->detectors.rows);
}

std::vector<std::int16_t> FakeDetector::Frame(const FakeRegisters& registers, FakeFront front, std::int64_t n)
{
    Array& array = *array_;
    array.Expose(registers, front, n);
    const std::uint64_t key = NoiseKey(static_cast<std::uint64_t>(array.settings.seed), n);
    DrawCounts(key, 0, array.mean, array.sigma, array.counts);
    array.DrawBlinkers(array.PathOf(registers).gainFactor, key, n);

    std::vector<std::int16_t> frame;
    frame.reserve(std::size_t{registers.rows} * registers.columns);
    for (std::uint32_t row = 0; row < registers.rows; ++row) {
        const std::uint32_t sentRow = registers.reverseY ? registers.rows - 1 - row : row;
        for (std::uint32_t column = 0; column < registers.columns; ++column) {
            const std::uint32_t sentColumn = registers.reverseX ? registers.columns - 1 - column : column;
            const std::size_t detector = std::size_t{registers.top + sentRow} * Columns() + registers.left + sentColumn;
            const auto ramp = static_cast<std::int16_t>(16 * (row + column) & 16383U);
            frame.push_back(registers.testPattern ? ramp : array.counts[detector]);
        }
    }
    return frame;
}

// --- The camera -----------------------------------------------------------------------------------------------------

namespace {

// A file that is gone with the object: the feature list, which Aravis takes by its name.
class FeatureFile {
  public:
    explicit FeatureFile(const std::string& text)
    {
        std::array<char, 32> name{"/tmp/kelvo-features-XXXXXX"};
        const int descriptor = mkstemp(name.data());
        if (descriptor < 0) return;
        close(descriptor);
        path_ = name.data();
        std::ofstream(path_) << text;
    }
    FeatureFile(const FeatureFile&) = delete;
    FeatureFile& operator=(const FeatureFile&) = delete;
    ~FeatureFile()
    {
        if (!path_.empty()) unlink(path_.c_str());
    }
    const std::string& Path() const { return path_; }

  private:
    std::string path_;
};

std::uint32_t ReadRegister(ArvFakeCamera* camera, std::uint32_t address)
{
    guint32 value = 0;
    arv_fake_camera_read_register(camera, address, &value);
    return value;
}

FakeRegisters ReadRegisters(ArvFakeCamera* camera)
{
    const auto at = [camera](std::uint32_t address) { return ReadRegister(camera, address); };
    return {.exposureUs = at(ARV_FAKE_CAMERA_REGISTER_EXPOSURE_TIME_US),
            .periodUs = at(ARV_FAKE_CAMERA_REGISTER_ACQUISITION_FRAME_PERIOD_US),
            .gain = std::min(at(ARV_FAKE_CAMERA_REGISTER_GAIN_RAW), 15U),
            .blackLevel = std::min(at(kFakeBlackLevelRegister), 255U),
            .reverseX = at(kFakeReverseXRegister) != 0,
            .reverseY = at(kFakeReverseYRegister) != 0,
            .testPattern = at(kFakeTestPatternRegister) != 0,
            .columns = at(ARV_FAKE_CAMERA_REGISTER_WIDTH),
            .rows = at(ARV_FAKE_CAMERA_REGISTER_HEIGHT),
            .left = at(ARV_FAKE_CAMERA_REGISTER_X_OFFSET),
            .top = at(ARV_FAKE_CAMERA_REGISTER_Y_OFFSET)};
}

// A text register keeps its length: what is behind the text is 0.
void WriteText(ArvFakeCamera* camera, std::uint32_t address, std::uint32_t length, std::string_view text)
{
    std::vector<char> bytes(length);
    std::ranges::copy(text.substr(0, length - 1), bytes.begin());
    arv_fake_camera_write_memory(camera, address, length, bytes.data());
}

std::optional<FakeFront> FrontOfFile(const std::string& path)
{
    std::ifstream stream(path);
    std::string word;
    stream >> word;
    if (word == "low") return FakeFront::kLow;
    if (word == "high") return FakeFront::kHigh;
    if (word == "scene") return FakeFront::kScene;
    return std::nullopt;
}

}  // namespace

struct FakeCamera::Inside {
    std::string error;
    std::string frontFile;
    std::atomic<FakeFront> front = FakeFront::kScene;
    std::unique_ptr<FakeDetector> detector;  // the sending thread's
    std::optional<AddressHold> turn;
    ObjectHold<ArvGvFakeCamera> device;
    ArvFakeCamera* registers = nullptr;  // device's

    void ComeUp(const FakeCameraSetup& setup);
    void WriteRegisters(const FakeCameraSetup& setup);
    void Fill(ArvBuffer* buffer, std::uint32_t formatCode);
};

void FakeCamera::Inside::Fill(ArvBuffer* buffer, std::uint32_t formatCode)
{
    if (!frontFile.empty()) front = FrontOfFile(frontFile).value_or(front);
    const FakeRegisters now = ReadRegisters(registers);
    const auto* const format = std::ranges::find(kFormats, formatCode, &FakePixelFormat::code);
    const bool onArray = now.left + now.columns <= detector->Columns() && now.top + now.rows <= detector->Rows();
    if (format == std::end(kFormats) || !onArray) return;
    const auto number = static_cast<std::int64_t>(arv_buffer_get_frame_id(buffer));
    const std::vector<std::uint8_t> bytes = PackFakeCounts(detector->Frame(now, front, number), *format);
    // The buffer is the camera's to fill. It has room for the payload, and says 0 of itself before it is filled.
    std::size_t filled = 0;
    const void* const data = arv_buffer_get_data(buffer, &filled);
    std::copy_n(bytes.begin(), std::min(bytes.size(), arv_fake_camera_get_payload(registers)),
                static_cast<std::uint8_t*>(const_cast<void*>(data)));
}

void FakeCamera::Inside::WriteRegisters(const FakeCameraSetup& setup)
{
    const auto write = [this](std::uint32_t address, std::uint32_t value) {
        arv_fake_camera_write_register(registers, address, value);
    };
    write(ARV_FAKE_CAMERA_REGISTER_SENSOR_WIDTH, detector->Columns());
    write(ARV_FAKE_CAMERA_REGISTER_SENSOR_HEIGHT, detector->Rows());
    write(ARV_FAKE_CAMERA_REGISTER_WIDTH, detector->Columns());
    write(ARV_FAKE_CAMERA_REGISTER_HEIGHT, detector->Rows());
    write(ARV_FAKE_CAMERA_REGISTER_PIXEL_FORMAT, FakePixelFormatOf(setup.format)->code);
    write(ARV_FAKE_CAMERA_REGISTER_EXPOSURE_TIME_US, setup.exposureUs);
    write(ARV_FAKE_CAMERA_REGISTER_ACQUISITION_FRAME_PERIOD_US,
          static_cast<std::uint32_t>(std::lround(1e6 / setup.rateHz)));
    write(kFakeBlackLevelRegister, 128);
    WriteText(registers, kFakeVendorRegister, 32, "Kelvo");
    WriteText(registers, kFakeModelRegister, 32, "Loopback");
}

void FakeCamera::Inside::ComeUp(const FakeCameraSetup& setup)
{
    if (!FakePixelFormatOf(setup.format)) {
        error = "There is no format " + setup.format + ".";
        return;
    }
    if (!(setup.rateHz >= kFakeLowestRateHz && setup.rateHz <= kFakeHighestRateHz)) {
        error = "The rate must lie between 2 and 200 Hz.";
        return;
    }
    const std::optional<SimSettings> settings = ReadSimSettings(setup.settingsFile, error);
    if (!settings) return;
    detector = std::make_unique<FakeDetector>(*settings);
    const FeatureFile features(FakeCameraFeatures(detector->Columns(), detector->Rows(), kFormats));
    turn.emplace(setup.address);
    if (!turn->Holds()) {
        error = "Another camera stands at " + setup.address + ".";
        return;
    }
    device.reset(arv_gv_fake_camera_new_full(setup.address.c_str(), setup.serial.c_str(), features.Path().c_str()));
    if (!device || !arv_gv_fake_camera_is_running(device.get())) {
        error = "No camera can stand at " + setup.address + ": is it one of this machine's, and free?";
        device.reset();
        return;
    }
    registers = arv_gv_fake_camera_get_fake_camera(device.get());
    WriteRegisters(setup);
    const auto fill = [](ArvBuffer* buffer, void* inside, guint32, guint32, ArvPixelFormat format) {
        static_cast<Inside*>(inside)->Fill(buffer, static_cast<std::uint32_t>(format));
    };
    arv_fake_camera_set_fill_pattern(registers, fill, this);
}

FakeCamera::FakeCamera(const FakeCameraSetup& setup) : inside_(std::make_unique<Inside>())
{
    inside_->frontFile = setup.frontFile;
    inside_->ComeUp(setup);
}

FakeCamera::~FakeCamera() = default;

const std::string& FakeCamera::Error() const
{
    return inside_->error;
}

void FakeCamera::Put(FakeFront front)
{
    inside_->front = front;
}

FakeRegisters FakeCamera::Registers() const
{
    return inside_->registers ? ReadRegisters(inside_->registers) : FakeRegisters{};
}

}  // namespace kelvo
