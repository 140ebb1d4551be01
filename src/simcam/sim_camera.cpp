#include "simcam/sim_camera.h"

#include "platform/faults.h"
#include "platform/files.h"
#include "simcam/sim_detector.h"
#include "simcam/sim_physics.h"
#include "simcam/sim_readout.h"
#include "simcam/sim_scene.h"
#include "simcam/sim_settings.h"
#include "state/windows.h"
#include "wirehead/head_registers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <map>
#include <mutex>

namespace kelvo {

namespace {

constexpr double kUsPerSecond = 1e6;
constexpr std::size_t kSources = 4;  // of light

// The window's pixels as the light falls on them now, and the way they leave the array. Kept from frame to frame while
// nothing changes.
struct Exposure {
    bool valid = false;
    FocalPlaneWindow window;
    std::vector<float> mean;      // window pixels, row by row
    std::vector<float> sigma;     // the same
    std::vector<float> radiance;  // one row of it
    std::vector<std::int16_t> counts;
    std::vector<std::uint32_t> order;  // sample -> window pixel
    std::vector<Blinker> blinkers;     // those in the window
    double gainFactor = 1;
    std::int64_t moment = 0;  // of the scene and the drift
};

}  // namespace

struct SimCamera {
    explicit SimCamera(const SimSettings& fileSettings)
        : settings(fileSettings),
          head(PowerUpHead(fileSettings)),
          detectors(DrawDetectors(fileSettings)),
          radiance(fileSettings.bandFromUm, fileSettings.bandToUm),
          light(radiance, fileSettings.emissivity, fileSettings.ambientDegrees),
          degrees{fileSettings.lowDegrees, fileSettings.highDegrees, fileSettings.sceneDegrees, fileSettings.rawDegrees}
    {
    }
    SimCamera(const SimCamera&) = delete;  // the light refers to the table
    SimCamera& operator=(const SimCamera&) = delete;

    SimSettings settings;
    HeadRegisters head;
    DetectorArray detectors;
    RadianceTable radiance;
    BenchLight light;
    SimSource source = SimSource::kScene;
    std::array<double, kSources> degrees;  // °C
    double inputVolts = 0;
    RawScene raw;
    std::string rawName;  // of the file that they came from
    std::vector<float> lightOfSample;
    std::uint64_t noisyAnswers = 0;
    Exposure exposure;
    std::int64_t lookedAtUs = 0;  // when the last frame was read

    mutable std::recursive_mutex mutex;  // of all above; some calls work through others
};

namespace {

std::shared_ptr<SimCamera> current;

std::map<std::string, std::shared_ptr<SimCamera>>& Cameras()
{
    static std::map<std::string, std::shared_ptr<SimCamera>> cameras;
    return cameras;
}

// A name is a file of DefaultDir; one with a directory of its own stands for itself.
std::string WholePath(const std::string& file)
{
    const bool whole = file.starts_with('/') || file.starts_with('\\') || (file.size() > 1 && file[1] == ':');
    const std::string resolved = ResolvePath(whole ? file : DefaultDir + '/' + file);
    std::error_code ignored;
    const std::filesystem::path canonical = std::filesystem::weakly_canonical(resolved, ignored);
    return canonical.empty() ? resolved : canonical.string();
}

std::string DirectoryOf(const std::string& path)
{
    return std::filesystem::path(path).parent_path().string();
}

SimSource SourceOfName(const std::string& name)
{
    if (name == "low") return SimSource::kLow;
    if (name == "high") return SimSource::kHigh;
    if (name == "raw") return SimSource::kRaw;
    return SimSource::kScene;
}

std::shared_ptr<SimCamera> MakeCamera(const std::string& path, std::string& error)
{
    const std::optional<SimSettings> settings = ReadSimSettings(path, error);
    if (!settings) return nullptr;
    auto camera = std::make_shared<SimCamera>(*settings);
    if (!settings->rawFile.empty()) {
        const bool whole = settings->rawFile.starts_with('/');
        error =
            LoadSimRawFrames(*camera, whole ? settings->rawFile : DirectoryOf(path) + '/' + settings->rawFile, 0, 0);
        if (!error.empty()) return nullptr;
    }
    camera->source = SourceOfName(settings->source);
    return camera;
}

}  // namespace

std::shared_ptr<SimCamera> OpenSimCamera(const std::string& file, std::string& error)
{
    error.clear();
    const std::string path = WholePath(file);
    std::shared_ptr<SimCamera>& camera = Cameras()[path];
    if (!camera) camera = MakeCamera(path, error);
    if (!camera) {
        Cameras().erase(path);
        return nullptr;
    }
    current = camera;
    return current;
}

std::shared_ptr<SimCamera> CurrentSimCamera()
{
    return current;
}

namespace {

SimAnswerMode AnswerMode(const SimCamera& camera)
{
    if (FaultIsSet("head silent")) return SimAnswerMode::kSilent;
    if (FaultIsSet("head refuses")) return SimAnswerMode::kRefuses;
    if (FaultIsSet("head short")) return SimAnswerMode::kShort;
    if (FaultIsSet("head noise")) return SimAnswerMode::kNoise;
    return camera.settings.answer;
}

// A disturbed line: every byte arrives wrong, and never as the refusal.
std::vector<std::uint8_t> Disturbed(SimCamera& camera, const WireFrame& answer)
{
    constexpr std::uint8_t kRefusal = 0x69;
    const std::uint64_t noise = MixBits(++camera.noisyAnswers);
    std::vector<std::uint8_t> bytes(answer.begin(), answer.end());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto mask = static_cast<std::uint8_t>((noise >> (8 * i)) | 1U);
        bytes[i] ^= mask;
    }
    if (bytes[0] == kRefusal) bytes[0] ^= 0x80U;
    return bytes;
}

}  // namespace

std::vector<std::uint8_t> AnswerSimFrame(SimCamera& camera, const WireFrame& frame)
{
    const std::scoped_lock lock(camera.mutex);
    constexpr std::uint8_t kRefusal = 0x69;
    constexpr std::size_t kShortBytes = 3;
    const SimAnswerMode mode = AnswerMode(camera);
    if (mode == SimAnswerMode::kSilent) return {};
    if (mode == SimAnswerMode::kRefuses) return {kRefusal, frame[1], frame[2], frame[3]};

    TakeHeadFrame(camera.head, frame);
    camera.exposure.valid = false;
    const WireFrame answer = HeadAnswer(camera.head, frame);
    if (mode == SimAnswerMode::kNoise) return Disturbed(camera, answer);
    const std::size_t length = mode == SimAnswerMode::kShort ? kShortBytes : answer.size();
    return {answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(length)};
}

std::string SimRegistersText(const SimCamera& camera)
{
    const std::scoped_lock lock(camera.mutex);
    return HeadRegistersText(camera.head);
}

bool TakeSimRegisters(SimCamera& camera, std::string_view text)
{
    const std::scoped_lock lock(camera.mutex);
    camera.exposure.valid = false;
    return TakeHeadRegistersText(camera.head, text);
}

void PowerDownSimHead(SimCamera& camera)
{
    const std::scoped_lock lock(camera.mutex);
    camera.exposure.valid = false;
    camera.head = PowerUpHead(camera.settings);
}

double SimFramePeriodUs(const SimCamera& camera)
{
    const std::scoped_lock lock(camera.mutex);
    return FramePeriodSeconds(camera.head) * kUsPerSecond;
}

double SimIntegrationUs(const SimCamera& camera)
{
    const std::scoped_lock lock(camera.mutex);
    return IntegrationSeconds(camera.head) * kUsPerSecond;
}

namespace {

// The part of the focal plane's window that lies on the array.
FocalPlaneWindow WindowOnArray(const HeadRegisters& head)
{
    FocalPlaneWindow window = head.window;
    window.colEnd = std::min(window.colEnd, head.array.colEnd);
    window.rowEnd = std::min(window.rowEnd, head.array.rowEnd);
    return window;
}

std::size_t PixelsOf(const FocalPlaneWindow& window)
{
    return static_cast<std::size_t>(window.Rows()) * static_cast<std::size_t>(window.Columns());
}

VideoSettings VideoOf(const SimCamera& camera)
{
    const HeadRegisters& head = camera.head;
    VideoSettings video;
    video.biased = head.biasesOn;
    video.integrationSeconds = IntegrationSeconds(head);
    video.gainIndex = GainIndexOfCode(head.gainCode);
    video.offsetDac = head.dac[0];
    video.detBias = head.detBias;
    video.pedBias = head.pedBias;
    video.colGain = head.colGain;
    return video;
}

std::int32_t RawFrameAt(const SimCamera& camera, std::int64_t timeUs)
{
    const double number = static_cast<double>(timeUs) / kUsPerSecond * camera.settings.rawFramesPerSecond;
    return static_cast<std::int32_t>(std::fmod(std::max(0.0, std::floor(number)), camera.raw.frames));
}

void LightOnRow(const SimCamera& camera, std::int64_t timeUs, const ArrayRow& row, std::span<float> radiance)
{
    const double degrees = SimSourceDegrees(camera, camera.source);
    if (camera.source == SimSource::kScene) {
        MovingSceneRow(camera.light, degrees, static_cast<double>(timeUs) / kUsPerSecond, row, radiance);
    } else if (camera.source == SimSource::kRaw && camera.raw.frames > 0) {
        RawSceneRow(camera.raw, camera.lightOfSample, RawFrameAt(camera, timeUs), row, radiance);
    } else {
        std::ranges::fill(radiance, camera.light.At(degrees));
    }
}

// What the exposure depends on besides registers and bench: a still picture has one moment only.
std::int64_t MomentOf(const SimCamera& camera, std::int64_t timeUs)
{
    if (camera.source == SimSource::kVolts) return 0;
    if (camera.source == SimSource::kScene || camera.settings.driftCountsPerMinute > 0) return timeUs;
    if (camera.source == SimSource::kRaw && camera.raw.frames > 0) return RawFrameAt(camera, timeUs);
    return 0;
}

void AddDrift(const SimCamera& camera, std::int64_t timeUs, double gainFactor, std::size_t firstDetector,
              std::span<float> mean)
{
    const double minutes = static_cast<double>(timeUs) / kUsPerSecond / 60.0;
    const auto factor = static_cast<float>(minutes * gainFactor);
    for (std::size_t i = 0; i < mean.size(); ++i) mean[i] += factor * camera.detectors.drift[firstDetector + i];
}

std::size_t FirstDetectorOfRow(const SimCamera& camera, const FocalPlaneWindow& window, std::int32_t row)
{
    return static_cast<std::size_t>(window.rowStart + row) * static_cast<std::size_t>(camera.detectors.columns) +
           static_cast<std::size_t>(window.colStart);
}

// Lays out the window: its sizes, its readout order, its blinking detectors.
void LayOut(SimCamera& camera)
{
    Exposure& exposure = camera.exposure;
    const HeadRegisters& head = camera.head;
    exposure.window = WindowOnArray(head);
    const std::size_t pixels = PixelsOf(exposure.window);
    exposure.mean.assign(pixels, 0);
    exposure.sigma.assign(pixels, 0);
    exposure.counts.assign(pixels, 0);
    exposure.order = ReadoutOrder(static_cast<std::int32_t>(camera.settings.scheme), exposure.window.Rows(),
                                  exposure.window.Columns(), head.flipRows, head.flipCols);
    exposure.blinkers.clear();
    for (const Blinker& blinker : camera.detectors.blinkers) {
        const auto row = static_cast<std::int32_t>(blinker.detector) / camera.detectors.columns;
        const auto column = static_cast<std::int32_t>(blinker.detector) % camera.detectors.columns;
        const FocalPlaneWindow& window = exposure.window;
        if (row >= window.rowStart && row <= window.rowEnd && column >= window.colStart && column <= window.colEnd) {
            exposure.blinkers.push_back(blinker);
        }
    }
}

// Nothing of the detectors comes through.
void ExposeToInput(SimCamera& camera)
{
    Exposure& exposure = camera.exposure;
    const InputCounts counts = CountsOfInput(camera.settings, VideoOf(camera), camera.inputVolts);
    std::ranges::fill(exposure.mean, counts.mean);
    std::ranges::fill(exposure.sigma, counts.sigma);
    exposure.gainFactor = 0;
    exposure.moment = 0;
}

void ExposeToLight(SimCamera& camera, std::int64_t timeUs)
{
    Exposure& exposure = camera.exposure;
    const VideoPath path = MakeVideoPath(camera.settings, VideoOf(camera));
    const auto columns = static_cast<std::size_t>(exposure.window.Columns());
    exposure.radiance.resize(columns);
    const std::span<float> radiance(exposure.radiance);
    for (std::int32_t row = 0; row < exposure.window.Rows(); ++row) {
        const ArrayRow place{exposure.window.rowStart + row, exposure.window.colStart, camera.detectors.rows,
                             camera.detectors.columns};
        LightOnRow(camera, timeUs, place, radiance);
        const std::size_t first = FirstDetectorOfRow(camera, exposure.window, row);
        const std::span<float> mean =
            std::span(exposure.mean).subspan(static_cast<std::size_t>(row) * columns, columns);
        const std::span<float> sigma =
            std::span(exposure.sigma).subspan(static_cast<std::size_t>(row) * columns, columns);
        ExposeDetectors(path, camera.detectors.fullWellElectrons, camera.detectors.Part(first, columns), radiance, mean,
                        sigma);
        if (path.biased && !camera.detectors.drift.empty()) AddDrift(camera, timeUs, path.gainFactor, first, mean);
    }
    exposure.gainFactor = path.biased ? path.gainFactor : 0;
    exposure.moment = MomentOf(camera, timeUs);
}

void Expose(SimCamera& camera, std::int64_t timeUs)
{
    if (camera.source == SimSource::kVolts) {
        ExposeToInput(camera);
    } else {
        ExposeToLight(camera, timeUs);
    }
}

void KeepExposureUpToDate(SimCamera& camera, std::int64_t timeUs)
{
    if (!camera.exposure.valid) LayOut(camera);
    if (!camera.exposure.valid || camera.exposure.moment != MomentOf(camera, timeUs)) Expose(camera, timeUs);
    camera.exposure.valid = true;
}

// The focal plane's own pattern instead of the detectors: 16 counts more a row and a column, without noise.
void DrawTestRamp(Exposure& exposure)
{
    constexpr std::int32_t kStep = 16;
    constexpr std::int32_t kCountMask = 16383;
    std::size_t i = 0;
    for (std::int32_t row = 0; row < exposure.window.Rows(); ++row) {
        for (std::int32_t column = 0; column < exposure.window.Columns(); ++column) {
            exposure.counts[i++] = static_cast<std::int16_t>(kStep * (row + column) & kCountMask);
        }
    }
}

void DrawBlinkers(const SimCamera& camera, std::uint64_t seed, std::int64_t n, std::uint64_t key, Exposure& exposure)
{
    const FocalPlaneWindow& window = exposure.window;
    for (const Blinker& blinker : exposure.blinkers) {
        if (!BlinkerIsOn(blinker, seed, n)) continue;
        const auto row = static_cast<std::int32_t>(blinker.detector) / camera.detectors.columns - window.rowStart;
        const auto column = static_cast<std::int32_t>(blinker.detector) % camera.detectors.columns - window.colStart;
        const std::size_t pixel = static_cast<std::size_t>(row) * static_cast<std::size_t>(window.Columns()) +
                                  static_cast<std::size_t>(column);
        const float shift = blinker.shift * static_cast<float>(exposure.gainFactor);
        exposure.counts[pixel] =
            CountOf(exposure.mean[pixel] + shift + exposure.sigma[pixel] * DetectorNormal(key, blinker.detector));
    }
}

void DrawDetectorCounts(SimCamera& camera, std::int64_t n)
{
    Exposure& exposure = camera.exposure;
    const auto seed = static_cast<std::uint64_t>(camera.settings.seed);
    const std::uint64_t key = NoiseKey(seed, n);
    const auto columns = static_cast<std::size_t>(exposure.window.Columns());
    for (std::int32_t row = 0; row < exposure.window.Rows(); ++row) {
        const std::size_t first = static_cast<std::size_t>(row) * columns;
        DrawCounts(key, static_cast<std::uint32_t>(FirstDetectorOfRow(camera, exposure.window, row)),
                   std::span<const float>(exposure.mean).subspan(first, columns),
                   std::span<const float>(exposure.sigma).subspan(first, columns),
                   std::span(exposure.counts).subspan(first, columns));
    }
    DrawBlinkers(camera, seed, n, key, exposure);
}

// Sample r x columns + c of the readout goes to row r, column c of the board.
void SendToBoard(const Exposure& exposure, std::size_t width, std::size_t height, std::span<std::int16_t> out)
{
    const auto columns = static_cast<std::size_t>(exposure.window.Columns());
    const std::size_t rowsSent = std::min(height, static_cast<std::size_t>(exposure.window.Rows()));
    const std::size_t columnsSent = std::min(width, columns);
    for (std::size_t row = 0; row < rowsSent; ++row) {
        const std::uint32_t* const order = exposure.order.data() + row * columns;
        std::int16_t* const line = out.data() + row * width;
        for (std::size_t column = 0; column < columnsSent; ++column) line[column] = exposure.counts[order[column]];
        std::fill(line + columnsSent, line + width, std::int16_t{0});
    }
    std::ranges::fill(out.subspan(rowsSent * width), std::int16_t{0});
}

}  // namespace

CameraReport SimReport(const SimCamera& camera)
{
    const std::scoped_lock lock(camera.mutex);
    const FocalPlaneWindow window = WindowOnArray(camera.head);
    CameraReport report;
    report.columns = window.Columns();
    report.rows = window.Rows();
    report.bits = kConverterBits;
    return report;
}

void ReadSimFrame(SimCamera& camera, std::int64_t n, std::int64_t timeUs, std::int32_t width, std::int32_t height,
                  std::span<std::int16_t> out)
{
    const std::scoped_lock lock(camera.mutex);
    if (width < 1 || height < 1 || out.empty()) return;
    const auto pitch = static_cast<std::size_t>(width);
    const std::size_t rows = std::min(static_cast<std::size_t>(height), out.size() / pitch);
    camera.lookedAtUs = timeUs;
    KeepExposureUpToDate(camera, timeUs);
    if (camera.head.testMode && camera.source != SimSource::kVolts) {
        DrawTestRamp(camera.exposure);
    } else {
        DrawDetectorCounts(camera, n);
    }
    SendToBoard(camera.exposure, pitch, rows, out.first(rows * pitch));
}

SimSource SimSourceInFront(const SimCamera& camera)
{
    const std::scoped_lock lock(camera.mutex);
    return camera.source;
}

void PutSimSource(SimCamera& camera, SimSource source)
{
    const std::scoped_lock lock(camera.mutex);
    camera.source = source;
    camera.exposure.valid = false;
}

double SimSourceDegrees(const SimCamera& camera, SimSource source)
{
    const std::scoped_lock lock(camera.mutex);
    return source == SimSource::kVolts ? 0 : camera.degrees[static_cast<std::size_t>(source)];
}

double SimInputVolts(const SimCamera& camera)
{
    const std::scoped_lock lock(camera.mutex);
    return camera.inputVolts;
}

bool SetSimInputVolts(SimCamera& camera, double volts)
{
    const std::scoped_lock lock(camera.mutex);
    if (!(volts >= -kMostInputVolts && volts <= kMostInputVolts)) return false;
    camera.inputVolts = volts;
    camera.exposure.valid = false;
    return true;
}

namespace {

void LightRawScene(SimCamera& camera)
{
    camera.lightOfSample = LightOfSamples(camera.light, camera.raw, SimSourceDegrees(camera, SimSource::kRaw),
                                          camera.settings.rawCountsPerDegree);
}

// The size in pixels of raw frames: as told, as the settings tell, as the file's name tells.
RawSize RawSizeFor(const SimCamera& camera, const std::string& path, std::int32_t columns, std::int32_t rows)
{
    if (columns != 0 || rows != 0) return {columns, rows};
    const RawSize inSettings{static_cast<std::int32_t>(camera.settings.rawColumns),
                             static_cast<std::int32_t>(camera.settings.rawRows)};
    if (inSettings.columns != 0 || inSettings.rows != 0) return inSettings;
    return RawSizeOfName(path).value_or(RawSize{});
}

}  // namespace

bool SetSimSourceDegrees(SimCamera& camera, SimSource source, double degrees)
{
    const std::scoped_lock lock(camera.mutex);
    if (source == SimSource::kVolts) return false;
    if (!(degrees >= kLowestBenchDegrees && degrees <= kHighestBenchDegrees)) return false;
    camera.degrees[static_cast<std::size_t>(source)] = degrees;
    if (source == SimSource::kRaw && camera.raw.frames > 0) LightRawScene(camera);
    camera.exposure.valid = false;
    return true;
}

std::string LoadSimRawFrames(SimCamera& camera, const std::string& path, std::int32_t columns, std::int32_t rows)
{
    const std::scoped_lock lock(camera.mutex);
    std::string error;
    const RawSize size = RawSizeFor(camera, path, columns, rows);
    std::optional<RawScene> scene = ReadRawScene(path, size.columns, size.rows, error);
    if (!scene) return error;
    camera.raw = std::move(*scene);
    camera.rawName = std::filesystem::path(path).filename().string();
    LightRawScene(camera);
    camera.exposure.valid = false;
    return {};
}

const std::string& SimRawName(const SimCamera& camera)
{
    const std::scoped_lock lock(camera.mutex);
    return camera.rawName;
}

namespace {

struct KindName {
    DetectorKind kind;
    const char* name;
};
constexpr KindName kKindNames[] = {
    {DetectorKind::kDead, "dead"},
    {DetectorKind::kWeak, "weak"},
    {DetectorKind::kStrong, "strong"},
    {DetectorKind::kHot, "hot"},
    {DetectorKind::kNoisy, "noisy"},
    {DetectorKind::kBlinking, "blinking"},
    {DetectorKind::kOffsetBad, "offset_bad"},
};

// Counts, of shot and read noise: what DrawCounts spreads about the mean.
double SigmaOf(const SimCamera& camera, std::int32_t row, std::int32_t column, std::size_t detector)
{
    if (camera.source == SimSource::kVolts) {
        return CountsOfInput(camera.settings, VideoOf(camera), camera.inputVolts).sigma;
    }
    std::vector<float> radiance(static_cast<std::size_t>(column) + 1);
    LightOnRow(camera, camera.lookedAtUs, {row, 0, camera.detectors.rows, camera.detectors.columns}, radiance);
    float mean = 0;
    float sigma = 0;
    ExposeDetectors(MakeVideoPath(camera.settings, VideoOf(camera)), camera.detectors.fullWellElectrons,
                    camera.detectors.Part(detector, 1), std::span(radiance).last(1), std::span(&mean, 1),
                    std::span(&sigma, 1));
    return sigma;
}

double DeviationOf(const SimCamera& camera, std::int32_t row, std::int32_t column, std::size_t detector)
{
    constexpr double kRoundingVariance = 1.0 / 12.0;  // counts squared, of a value spread evenly over a count
    if (camera.head.testMode && camera.source != SimSource::kVolts) return 0;  // the ramp has no noise
    const double sigma = SigmaOf(camera, row, column, detector);
    return std::sqrt(sigma * sigma + kRoundingVariance);
}

}  // namespace

std::vector<std::pair<std::string, double>> SimTruth(const SimCamera& camera, int x, int y)
{
    const std::scoped_lock lock(camera.mutex);
    const FocalPlaneWindow window = WindowOnArray(camera.head);
    if (x < 0 || y < 0 || x >= window.Columns() || y >= window.Rows()) return {};
    const std::int32_t row = camera.head.flipRows ? window.rowEnd - y : window.rowStart + y;
    const std::int32_t column = camera.head.flipCols ? window.colEnd - x : window.colStart + x;
    const DetectorArray& array = camera.detectors;
    const std::size_t i =
        static_cast<std::size_t>(row) * static_cast<std::size_t>(array.columns) + static_cast<std::size_t>(column);
    std::vector<std::pair<std::string, double>> truth{
        {"gain", static_cast<double>(array.response[i]) / array.meanResponse},
        {"offset", static_cast<double>(array.offset[i])},
        {"dark", static_cast<double>(array.dark[i])},
        {"noise", static_cast<double>(array.noise[i])},
        {"deviation", DeviationOf(camera, row, column, i)},
    };
    for (const KindName& each : kKindNames) {
        if (array.kind[i] == each.kind) truth.emplace_back(each.name, 1.0);
    }
    return truth;
}

std::vector<std::pair<std::string, double>> SimHeadRegisters(const SimCamera& camera)
{
    const std::scoped_lock lock(camera.mutex);
    return NamedRegisters(camera.head);
}

void ForgetSimCameras()
{
    current = nullptr;
    Cameras().clear();
}

}  // namespace kelvo
