#include "batch/calibrate_command.h"

#include "acquire/frame_sums.h"
#include "batch/batch_arguments.h"
#include "batch/batch_end.h"
#include "batch/batch_progress.h"
#include "batch/cut_command.h"
#include "batch/new_set.h"
#include "calib/stored_calibration.h"
#include "config/data_directory.h"
#include "config/settings.h"
#include "imagefile/stored_frames.h"
#include "pixel/bad_pixels.h"
#include "pixel/pixel_pair.h"
#include "platform/files.h"
#include "platform/json_text.h"
#include "platform/memory.h"
#include "platform/profile.h"
#include "platform/profile_text.h"
#include "platform/text.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

using Failure = std::optional<std::string>;

constexpr std::string_view kWord = "calibrate";
constexpr std::size_t kLongestIni = std::size_t{16} << 20;
constexpr float kNotGiven = -999.0F;
constexpr float kColdest = -274.0F;  // as the dialogs of the sources take them
constexpr float kHottest = 2500.0F;

// --- The request ----------------------------------------------------------------------------------------------------

struct Source {
    std::string path;
    float temperatureC = kNotGiven;
    std::optional<float> emissivity;
};

struct Request {
    Source low;
    std::optional<Source> high;
    std::string out;
    std::string data;  // the directory of the settings
    std::int32_t camera = 0;
    std::pair<std::int64_t, std::int64_t> frames = {0, -1};
    std::string badList;  // empty: none
    bool replaceBad = true;
    bool replaceNoisy = true;

    std::string Ini() const { return data + "/kelvo.ini"; }
    std::string CameraIni() const { return data + "/camera.ini"; }
};

template <typename Number>
std::optional<Number> WholeNumber(std::string_view text)
{
    Number value{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

Failure ReadSource(const BatchArguments& taken, const char* degrees, const char* emissivity, Source& source)
{
    if (const auto text = taken.Value(degrees)) {
        const auto value = WholeNumber<float>(*text);
        if (!value || !(*value >= kColdest && *value <= kHottest)) {
            return std::string(degrees) + " wants degrees Celsius from -274 to 2500, not " + *text;
        }
        source.temperatureC = *value;
    }
    if (const auto text = taken.Value(emissivity)) {
        const auto value = WholeNumber<float>(*text);
        if (!value || !(*value > 0 && *value <= 1)) {
            return std::string(emissivity) + " wants a number above 0, at most 1, not " + *text;
        }
        source.emissivity = *value;
    }
    return std::nullopt;
}

Failure ReadSources(const BatchArguments& taken, Request& request)
{
    request.low.path = taken.Value("--low").value_or("");
    if (Failure failure = ReadSource(taken, "--tlow", "--elow", request.low)) return failure;
    if (const auto high = taken.Value("--high")) {
        request.high.emplace().path = *high;
        if (Failure failure = ReadSource(taken, "--thigh", "--ehigh", *request.high)) return failure;
        const bool ordered = request.low.temperatureC == kNotGiven || request.high->temperatureC == kNotGiven ||
                             request.high->temperatureC > request.low.temperatureC;
        if (!ordered) return "--thigh is not above --tlow";
    } else if (taken.Value("--thigh") || taken.Value("--ehigh")) {
        return "--thigh and --ehigh tell of a second source: --high FILE is needed";
    }
    return std::nullopt;
}

Failure ReadRequest(const BatchArguments& taken, Request& request)
{
    if (!taken.error.empty()) return taken.error;
    if (!taken.files.empty()) return "files are named by --low, --high and --out alone, not " + taken.files.front();
    if (!taken.Value("--low") || !taken.Value("--out")) return "--low FILE and --out X.cal are needed";
    if (Failure failure = ReadSources(taken, request)) return failure;
    request.out = taken.Value("--out").value_or("");
    request.badList = taken.Value("--bad-list").value_or("");
    request.replaceBad = !taken.Has("--keep-bad");
    request.replaceNoisy = request.replaceBad && !taken.Has("--keep-noisy");
    if (!request.replaceBad && !request.badList.empty()) return "--bad-list and --keep-bad exclude each other";
    const auto range = FrameRangeOf(taken.Value("--frames").value_or(":"));
    if (!range) return std::string(kFrameRangeForm);
    request.frames = *range;
    request.data = AbsolutePath(taken.Value("--data").value_or(DataDirectoryByDefault()));
    request.camera = GetPrivateProfileInt("Setup", "ActiveCamera", 2, request.Ini());
    if (const auto text = taken.Value("--camera")) {
        const auto number = WholeNumber<std::int32_t>(*text);
        if (!number || *number < 0) return "--camera wants the number of a section of camera.ini, not " + *text;
        request.camera = *number;
    }
    return std::nullopt;
}

// --- The settings ---------------------------------------------------------------------------------------------------

std::string CalibrationKey(const Request& request, const char* key, const char* otherwise)
{
    return GetPrivateProfileString("Calibration", key, otherwise, request.Ini());
}

std::int32_t DisplayKey(const Request& request, const char* key)
{
    return GetPrivateProfileInt("Display", key, 0, request.Ini());
}

// Values that are no numbers leave what a run has by default.
TwoPointSettings LimitsOf(const Request& request, const CameraConfig& config)
{
    TwoPointSettings limits;
    limits.noiseFloor = GetPrivateProfileInt("Calibration", "NoiseFloor", limits.noiseFloor, request.Ini());
    limits.gainRange = ScanFloat(CalibrationKey(request, "GainAcceptanceRange", "0.22")).value_or(limits.gainRange);
    limits.minOffset = ScanDecimal(CalibrationKey(request, "MinOffset", "400")).value_or(limits.minOffset);
    limits.maxOffset = ScanDecimal(CalibrationKey(request, "MaxOffset", "400")).value_or(limits.maxOffset);
    limits.allowedNoise = ScanFloat(CalibrationKey(request, "AllowedNoiseLevel", "9.0")).value_or(limits.allowedNoise);
    limits.replaceNoisy = request.replaceNoisy;
    limits.unityOffset = config.UnityOffset;
    return limits;
}

// A plain name lies beside the settings.
std::string BesideSettings(const Request& request, const std::string& name)
{
    const bool plain = name.find_first_of("/\\") == std::string::npos;
    return plain ? request.data + '/' + name : name;
}

Failure ReadBadList(const Request& request, StoredCalibrationSettings& settings)
{
    if (request.badList.empty()) return std::nullopt;
    if (!FileExists(request.badList)) return request.badList + " can't be opened";
    if (!AllocateBlock(settings.listed, static_cast<std::size_t>(settings.config.Vroi) *
                                            static_cast<std::size_t>(settings.config.Hroi))) {
        return "no memory is left";
    }
    if (LoadBadDetFile(request.badList, settings.listed, settings.config)) return std::nullopt;
    return request.badList + " can't be read";
}

Failure ReadSettings(const Request& request, StoredCalibrationSettings& settings)
{
    const std::optional<CameraConfig> config = CameraRecordOf(request.camera, request.CameraIni());
    if (!config || config->Vroi <= 0 || config->Hroi <= 0) {
        return request.CameraIni() + Format(" has no section Camera.%d with a region", request.camera);
    }
    settings.config = *config;
    settings.orientation = {.mirrorHoriz = DisplayKey(request, "MirrorHoriz"),
                            .mirrorVert = DisplayKey(request, "MirrorVert"),
                            .rotateCcw = DisplayKey(request, "RotateCCW")};
    settings.replaceBad = request.replaceBad;
    settings.limits = LimitsOf(request, *config);
    if (!request.replaceBad) return std::nullopt;
    const std::string pattern = BesideSettings(request, CalibrationKey(request, "PRSfile", "nearccw.prs"));
    if (!FileExists(pattern)) return pattern + ", where neighbours of bad pixels are looked for, can't be opened";
    const auto read = ReadSearchPattern(pattern);
    if (!read) return pattern + " can't be read";
    settings.pattern = *read;
    return ReadBadList(request, settings);
}

// --- The frames -----------------------------------------------------------------------------------------------------

Failure WhyNotRaw(const StoredFrames& frames, const CameraConfig& config, std::int32_t camera)
{
    if (frames.Header().SampleBytes != sizeof(std::int16_t)) return "holds floats, not counts";
    if (frames.AreCorrected()) return "is corrected already: raw frames are needed";
    if (std::cmp_equal(frames.Columns(), config.Hroi) && std::cmp_equal(frames.Rows(), config.Vroi)) {
        return std::nullopt;
    }
    return Format("has frames of %zu x %zu pixels, Camera.%d has %d x %d", frames.Columns(), frames.Rows(), camera,
                  config.Hroi, config.Vroi);
}

Failure AddFrames(StoredFrames& frames, const Request& request, std::string_view which, GatheredSource& gathered)
{
    const std::int64_t first = request.frames.first;
    const std::int64_t end = request.frames.second < 0 ? frames.Frames() : request.frames.second;
    if (first >= end || end > frames.Frames()) {
        return Format("has %lld frames: there are none of that range", static_cast<long long>(frames.Frames()));
    }
    if (end - first > kMostGatheredFrames) return "has more than 65535 frames: --frames A:B says which";
    std::vector<std::int16_t> counts;
    const bool measuresNoise = request.replaceNoisy && which == "low source";
    if (!AllocateBlock(counts, frames.Pixels()) || !AllocateBlock(gathered.sums, frames.Pixels()) ||
        (measuresNoise && !AllocateBlock(gathered.squares, frames.Pixels()))) {
        return "needs more memory than is left";
    }
    BatchProgress progress(kWord, which);
    for (std::int64_t frame = first; frame < end; ++frame) {
        if (Interrupted()) return std::string(kInterrupted);
        std::string why;
        if (!frames.ReadCounts(frame, counts, why)) return why;
        AddFrame(counts, std::span(gathered.sums), gathered.squares);
        progress.Show(frame - first + 1, end - first);
    }
    gathered.frames = static_cast<std::int32_t>(end - first);
    return std::nullopt;
}

// nullopt with the reason in why.
std::optional<StoredFrames> OpenRaw(const Source& source, const Request& request, const CameraConfig& config,
                                    std::string& why)
{
    std::optional<StoredFrames> frames = StoredFrames::Open(source.path, why);
    const Failure failure = frames ? WhyNotRaw(*frames, config, request.camera) : why;
    if (!failure) return frames;
    why = source.path + ' ' + *failure;
    return std::nullopt;
}

// Where the samples of one file are taken 32768 lower, those of the other are too: their difference is the response.
Failure TakeAlike(StoredFrames& low, StoredFrames& high)
{
    if (low.AreLowered() == high.AreLowered()) return std::nullopt;
    StoredFrames& lowered = low.AreLowered() ? low : high;
    StoredFrames& other = low.AreLowered() ? high : low;
    if (other.Lower()) return std::nullopt;
    return lowered.Path() + " has samples above 32767, which are taken 32768 lower, and " + other.Path() +
           " has samples with a sign: they can't be compared";
}

std::optional<GatheredSource> Gather(const Request& request, const Source& source, std::string_view which,
                                     StoredFrames& frames, std::string& why)
{
    GatheredSource gathered;
    gathered.temperatureC = source.temperatureC;
    const Failure failure = AddFrames(frames, request, which, gathered);
    if (!failure) return gathered;
    why = source.path + ' ' + *failure;
    return std::nullopt;
}

// --- The set --------------------------------------------------------------------------------------------------------

// kelvo.ini as the run leaves it, whose copy the .cal is.
class CalText {
  public:
    explicit CalText(std::string contents) : contents_(std::move(contents)) {}

    void Set(const char* section, const char* key, std::string_view value)
    {
        contents_ = WithProfileKey(contents_, section, key, &value);
    }
    void Calibration(const char* key, std::string_view value) { Set("Calibration", key, value); }
    void Calibration(const char* key, std::int32_t value) { Calibration(key, std::to_string(value)); }
    void Calibration(const char* key, float value) { Calibration(key, Format("%f", static_cast<double>(value))); }

    const std::string& Contents() const { return contents_; }

  private:
    std::string contents_;
};

// What the head ran with, as the camera's section keeps it; keys that nobody has written yet stay as kelvo.ini has
// them.
void SetVideoKeys(CalText& cal, const Request& request)
{
    struct VideoKey {
        const char* setup;
        const char* camera;
    };
    constexpr VideoKey kKeys[] = {{"FrameRate", "fFrameRate"},
                                  {"IndexFrameRate", "IndexFrameRate"},
                                  {"IntTime", "IndexIntegrationTime"},
                                  {"VideoGain1", "QVF1058_Gain0"},
                                  {"VideoOffset1", "QVF1058_DAC0"}};
    const std::string section = Format("Camera.%d", request.camera);
    for (const VideoKey& key : kKeys) {
        if (!HasProfileKey(section, key.camera, request.CameraIni())) continue;
        const std::string value = GetPrivateProfileString(section, key.camera, "", request.CameraIni());
        cal.Set("Setup", key.setup, std::string_view(value).substr(0, value.find(',')));  // of the first slot
    }
}

std::string NameIn(const Request& request, const char* extension)
{
    std::string name;
    SplitPath(request.out, nullptr, nullptr, &name, nullptr);
    return name + extension;
}

std::string CalContents(const Request& request, const StoredCalibrationSettings& settings,
                        const StoredCalibration& made, std::int32_t frames)
{
    CalText cal(ReadWholeFile(request.Ini(), kLongestIni).value_or(std::string()));
    cal.Calibration("NumFrames", frames);
    cal.Calibration("GainAcceptanceRange", settings.limits.gainRange);
    cal.Calibration("MinOffset", settings.limits.minOffset);
    cal.Calibration("MaxOffset", settings.limits.maxOffset);
    cal.Calibration("AllowedNoiseLevel", settings.limits.allowedNoise);
    cal.Set("Display", "SubstBadPixels", request.replaceBad ? "1" : "0");
    cal.Calibration("BadDetFile", made.bad.empty() ? std::string() : NameIn(request, ".bad"));
    cal.Calibration("DecomFile", NameIn(request, ".dcm"));
    cal.Calibration("GainFile", NameIn(request, ".gai"));
    cal.Calibration("OffsetFile", NameIn(request, ".off"));
    cal.Calibration("CalType", made.type);
    cal.Calibration("CalFile", AbsolutePath(request.out));
    cal.Calibration("DriverNumber", request.camera);
    cal.Calibration("TemperatureCold", request.low.temperatureC);
    cal.Calibration("IntensityCold", made.intensityCold);
    if (request.low.emissivity) cal.Calibration("EmissivityCold", *request.low.emissivity);
    if (request.high) {
        cal.Calibration("TemperatureHot", request.high->temperatureC);
        cal.Calibration("IntensityHot", made.intensityHot);
        if (request.high->emissivity) cal.Calibration("EmissivityHot", *request.high->emissivity);
    }
    cal.Set("Setup", "ActiveCamera", std::to_string(request.camera));
    SetVideoKeys(cal, request);
    return cal.Contents();
}

template <typename Entry>
std::string_view BytesIn(const std::vector<Entry>& list, std::size_t entries)
{
    return {reinterpret_cast<const char*>(list.data()), entries * sizeof(Entry)};
}

std::string BadLines(const BadDetMap& bad, const CameraConfig& config)
{
    std::string lines;
    for (std::size_t i = 0; i < bad.size(); ++i) {
        if (bad[i] == 0) continue;
        const auto at = static_cast<std::int32_t>(i);
        lines += PixelPairText({.row = at / config.Hroi, .column = at % config.Hroi}) + '\n';
    }
    return lines;
}

Failure WriteSet(NewSet& set, const StoredCalibrationSettings& settings, const StoredCalibration& made,
                 const std::string& calContents)
{
    if (Failure failure = set.Add(".gai", BytesIn(made.gains, made.gains.size()))) return failure;
    // Two offsets a word: an odd last one isn't stored.
    if (Failure failure = set.Add(".off", BytesIn(made.offsets, made.offsets.size() / 2 * 2))) return failure;
    if (!made.noise.empty()) {
        if (Failure failure = set.Add(".noi", BytesIn(made.noise, made.noise.size()))) return failure;
    }
    if (Failure failure = set.Add(".dcm", BytesIn(made.table, made.table.size()))) return failure;
    if (!made.bad.empty()) {
        if (Failure failure = set.Add(".bad", BadLines(made.bad, settings.config))) return failure;
    }
    if (Failure failure = set.Add(".cal", calContents)) return failure;
    if (Interrupted()) return std::string(kInterrupted);
    return set.End();
}

// --- What is told ---------------------------------------------------------------------------------------------------

std::string ResultJson(const Request& request, const StoredCalibration& made, std::int32_t frames)
{
    JsonText json;
    json.Text("set", AbsolutePath(request.out))
        .Whole("type", made.type)
        .Whole("camera", request.camera)
        .Whole("frames", frames)
        .Whole("detectors", std::ssize(made.gains))
        .Whole("bad", made.detectorsBad)
        .Whole("intensity_cold", made.intensityCold);
    if (made.type == 2) json.Whole("intensity_hot", made.intensityHot);
    return json.Json();
}

Failure Calibrate(const Request& request, bool asJson)
{
    std::string why;
    StoredCalibrationSettings settings;
    if (Failure failure = ReadSettings(request, settings)) return failure;
    std::optional<NewSet> set = NewSet::Begin(request.out, why);
    if (!set) return why;
    std::optional<StoredFrames> lowFrames = OpenRaw(request.low, request, settings.config, why);
    if (!lowFrames) return why;
    std::optional<StoredFrames> highFrames;
    if (request.high) {
        highFrames = OpenRaw(*request.high, request, settings.config, why);
        if (!highFrames) return why;
        if (Failure failure = TakeAlike(*lowFrames, *highFrames)) return failure;
    }
    if (lowFrames->AreLowered()) std::fputs("kelvo calibrate: samples are taken 32768 lower\n", stderr);
    std::optional<GatheredSource> low = Gather(request, request.low, "low source", *lowFrames, why);
    if (!low) return why;
    std::optional<GatheredSource> high;
    if (request.high && highFrames) {
        high = Gather(request, *request.high, "high source", *highFrames, why);
        if (!high) return why;
    }
    const std::int32_t frames = low->frames;
    const auto made = CalibrateStored(settings, *std::move(low), std::move(high), why);
    if (!made) return why;
    if (Failure failure = WriteSet(*set, settings, *made, CalContents(request, settings, *made, frames)))
        return failure;
    std::fputs((asJson ? ResultJson(request, *made, frames) : ToUtf8(made->told)).c_str(), stdout);
    std::fputc('\n', stdout);
    return std::nullopt;
}

}  // namespace

int CalibrateCommand(std::span<const std::string> arguments)
{
    const BatchArguments taken = TakeApart(arguments, kWord);
    Request request;
    Failure failure = ReadRequest(taken, request);
    if (!failure) failure = Calibrate(request, taken.Has("--json"));
    return failure ? TellBatchFailure(kWord, *failure) : kBatchDone;
}

}  // namespace kelvo
