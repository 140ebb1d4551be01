// Loading the settings of a set at start-up, loading a set, saving it under another name.
#include "calib/calibration.h"
#include "calib/calibration_run.h"
#include "calib/last_set.h"
#include "calib/orientation.h"
#include "config/frame_rate_table.h"
#include "display/display_pipeline.h"
#include "display/unit_list.h"
#include "display/units.h"
#include "head/camera_head.h"
#include "head/external_clock_dialog.h"
#include "head/head_transaction.h"
#include "head/video_settings.h"
#include "pixel/coefficient_lists.h"
#include "pixel/decommutation.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/profile_text.h"
#include "platform/text.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/windows.h"
#include "ui/status.h"
#include "video/video.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>
#include <system_error>
#include <vector>

namespace kelvo {

namespace {

constexpr const char* kSection = "Calibration";
constexpr std::int32_t kNoCamera = 999;
constexpr std::int32_t kDefaultGain = 128;
constexpr std::int32_t kDefaultOffset = 128;
constexpr std::int32_t kDefaultType = 2;
constexpr std::size_t kLongestCalFile = std::size_t{16} << 20;  // as far as settings files are read

// --- Settings at start-up -------------------------------------------------------------------------------------------

// The keys of the second camera's record end in 2.
struct KeySource {
    const char* suffix;

    std::string Text(const char* key, const char* defaultValue) const
    {
        return GetPrivateProfileString(kSection, std::string(key) + suffix, defaultValue, IniFilePath);
    }
    std::int32_t Integer(const char* key, std::int32_t defaultValue) const
    {
        return GetPrivateProfileInt(kSection, std::string(key) + suffix, defaultValue, IniFilePath);
    }
    // A text that is no number leaves the value.
    void Scan(const char* key, const char* defaultValue, std::int32_t& value) const
    {
        value = ScanDecimal(Text(key, defaultValue)).value_or(value);
    }
    void Scan(const char* key, const char* defaultValue, float& value) const
    {
        value = ScanFloat(Text(key, defaultValue)).value_or(value);
    }
};

void ReadRunSettings(const KeySource& keys, CalSettingsRecord& record)
{
    record.NumSources = keys.Integer("NumSources", 2);
    record.NumFrames = static_cast<std::uint32_t>(keys.Integer("NumFrames", 30));
    record.ChosenType = keys.Integer("CalType", kDefaultType);
    record.NoiseFloor = keys.Integer("NoiseFloor", 25);
    record.Factor = 1.0F;
    keys.Scan("GainAcceptanceRange", "0.22", record.GainAcceptanceRange);
    record.PRSfile = keys.Text("PRSfile", "nearccw.prs");
    record.DecomFile = keys.Text("DecomFile", "");
    record.BadDetFile = keys.Text("BadDetFile", "");
    record.GainFile = keys.Text("GainFile", "");
    record.OffsetFile = keys.Text("OffsetFile", "");
    keys.Scan("MinOffset", "400", record.MinOffset);
    keys.Scan("MaxOffset", "400", record.MaxOffset);
    keys.Scan("AllowedNoiseLevel", "9.0", record.AllowedNoiseLevel);
    keys.Scan("EmissivityCold", "1.0", record.EmissivityCold);
    keys.Scan("EmissivityHot", "1.0", record.EmissivityHot);
    record.OpticsFile = keys.Text("OpticsFile", "");
}

void ReadSources(const KeySource& keys, CalSettingsRecord& record)
{
    keys.Scan("IntensityCold", "0", record.IntensityCold);
    keys.Scan("TemperatureCold", "-999.0", record.TemperatureCold);
    keys.Scan("IntensityHot", "0", record.IntensityHot);
    keys.Scan("TemperatureHot", "999.0", record.TemperatureHot);
}

// --- Loading: is it a set of this camera? ---------------------------------------------------------------------------

bool IsForActiveCamera(HWND window, const std::string& calPath)
{
    const std::int32_t camera = GetPrivateProfileInt("Setup", "ActiveCamera", kNoCamera, calPath);
    if (camera == ActiveCamera) return true;
    const bool told = camera != kNoCamera;
    MessageBox(window,
               told ? "Can not load previous calibration\nCurrent camera driver is different from calibration requested"
                    : "Failed to get ActiveCamera from calibration file:\n" + calPath,
               kMessageCaption);
    return false;
}

// From here on the settings are those of the calibration, whatever follows. What was pending for the file belongs to
// the settings that go.
bool MakeSettingsOf(HWND window, const std::string& calPath)
{
    FlushProfiles();
    if (!CopyFileTo(calPath, IniFilePath, false)) {
        MessageBox(window, "Failed to save file: " + IniFilePath, "Kelvo File Error!");
        return false;
    }
    ForgetProfile(IniFilePath);
    return true;
}

// --- Loading: video settings ----------------------------------------------------------------------------------------

void TakeVideoSettings(const std::string& calPath)
{
    StatusMessage("Loading video parameters from calibration file...", kLeftAligned);
    LoadVideoSettings(IniFilePath);
    VideoGain[0] = GetPrivateProfileInt("Setup", "VideoGain1", kDefaultGain, calPath);
    VideoOffset[0] = GetPrivateProfileInt("Setup", "VideoOffset1", kDefaultOffset, calPath);
    VideoOffset[1] = GetPrivateProfileInt("Setup", "VideoOffset2", kDefaultOffset, calPath);
    TakeIntegrationIndexes(GetPrivateProfileString("Setup", "IntTime", "", calPath));
    SaveVideoSettings(IniFilePath);
}

bool RunsOnExternalClock()
{
    const char mode = FrameRateRowAt(IndexFrameRate).Mode;
    return mode == 'e' || mode == 'E';
}

// A head that runs by an external clock: only the operator knows its rate.
bool ExternalRateIsGiven(HWND window)
{
    if (!RunsOnExternalClock()) return true;
    const FrameRateRow row = FrameRateRowAt(IndexFrameRate);
    const std::string text(row.RateText.data(), strnlen(row.RateText.data(), row.RateText.size()));
    return ExternalClockDialog(window, text) != 0;
}

// Setting the head's clock works a rate out from it; where an external clock runs, what the operator told holds.
void SendVideoSettings()
{
    const float toldRate = FrameRate;
    if (LinkIsReady()) {
        SetFrameRateIndex(IndexFrameRate);
        if (RunsOnExternalClock()) SetFrameRate(toldRate);
        SetIntegration(IndexIntegrationTime.at(SlotInUse()));
        SetVideoGain(VideoGain[0]);
        SetVideoOffset(VideoOffset[0]);
    }
    CloseLinkAfterUse();
}

// --- Loading: lists -------------------------------------------------------------------------------------------------

// A set may have been moved as a whole: of a path in it only the name counts, and the directory is the set's own.
std::string InSetDirectory(const std::string& calPath, std::string_view path)
{
    std::string drive;
    std::string directory;
    std::string name;
    std::string extension;
    SplitPath(calPath, &drive, &directory, nullptr, nullptr);
    SplitPath(path, nullptr, nullptr, &name, &extension);
    return MakePath(drive, directory, name, extension);
}

std::string TakeListPath(const std::string& calPath, const char* key)
{
    const std::string name = GetPrivateProfileString(kSection, key, "", calPath);
    WritePrivateProfileString(kSection, key, name, IniFilePath);
    return InSetDirectory(calPath, name);
}

template <typename Entry>
std::vector<Entry> EntriesOf(std::span<const std::uint8_t> bytes, std::size_t count)
{
    std::vector<Entry> entries(count);
    std::memcpy(entries.data(), bytes.data(), count * sizeof(Entry));
    return entries;
}

// An entry outside the frame would read other memory than the frame's.
bool LiesInFrame(std::span<const std::uint8_t> bytes)
{
    const std::vector<std::uint32_t> entries = EntriesOf<std::uint32_t>(bytes, PixelsOf(ActiveConfig));
    return std::ranges::all_of(entries,
                               [count = PixelsOf(ActiveConfig)](std::uint32_t entry) { return entry < count; });
}

bool ReadDecommutation(HWND window, std::span<std::uint8_t> list)
{
    if (!LoadList(CalSettings.DecomFile, list, PixelsOf(ActiveConfig))) return false;
    if (LiesInFrame(list)) return true;
    MessageBox(window, "Failed to read file: " + CalSettings.DecomFile, kMessageCaption);
    return false;
}

bool RebuildDecommutation()
{
    auto table = BuildDecomList(ActiveConfig, FrameRateRowAt(IndexFrameRate).ReadoutShift);
    if (!table) return false;
    DecomList = std::move(*table);
    CalibrationListsChanged();
    return true;
}

bool LoadDecommutation(HWND window, const std::string& calPath, std::span<std::uint8_t> list)
{
    StatusMessage("Loading decommutation list...", kLeftAligned);
    CalSettings.DecomFile = TakeListPath(calPath, "DecomFile");
    if (!ReadDecommutation(window, list)) return RebuildDecommutation();
    if (DownloadCoefficients(kDecomKind, list)) return true;
    MessageBox(window, "Hardware Timeout Error, Download of Gain Coefficients", kMessageCaption);  // words of all lists
    return false;
}

bool LoadGains(const std::string& calPath, std::span<std::uint8_t> list)
{
    StatusMessage("Loading gain list...", kLeftAligned);
    CalSettings.GainFile = TakeListPath(calPath, "GainFile");
    return LoadList(CalSettings.GainFile, list, PixelsOf(ActiveConfig)) &&
           DownloadGains(EntriesOf<float>(list, PixelsOf(ActiveConfig))) != 0;
}

bool LoadOffsets(const std::string& calPath, std::span<std::uint8_t> list)
{
    StatusMessage("Loading offset list...", kLeftAligned);
    CalSettings.OffsetFile = TakeListPath(calPath, "OffsetFile");
    // Two offsets a word: an odd last one isn't in the file, and counts as 0.
    std::ranges::fill(list, std::uint8_t{0});
    return LoadList(CalSettings.OffsetFile, list, PixelsOf(ActiveConfig) / 2) &&
           DownloadOffsets(EntriesOf<std::int16_t>(list, PixelsOf(ActiveConfig))) != 0;
}

bool LoadLists(HWND window, const std::string& calPath)
{
    std::vector<std::uint8_t> list;
    if (!AllocateBlock(list, PixelsOf(ActiveConfig) * sizeof(std::uint32_t))) {
        MessageBox(window, "Failure to allocate memory!", "Memory Error");
        return false;
    }
    return LoadDecommutation(window, calPath, list) && LoadGains(calPath, list) && LoadOffsets(calPath, list);
}

// --- Loading: display and calibration parameters --------------------------------------------------------------------

void TakeDisplayRange(const std::string& calPath)
{
    CalType = GetPrivateProfileInt(kSection, "CalType", kDefaultType, calPath);
    DisplayLow = 0;
    DisplayHigh = FullScaleCounts();
    SetVoltsRange(VideoGain[0], VideoOffset[0]);
}

// Reads a key of the set and keeps it in the settings too; nullopt where there is none and no default.
std::optional<std::string> TakeKey(const std::string& calPath, const char* section, const char* key,
                                   std::string_view defaultValue)
{
    std::string text = GetPrivateProfileString(section, key, defaultValue, calPath);
    if (text.empty() && !HasProfileKey(section, key, calPath)) return std::nullopt;
    WritePrivateProfileString(section, key, text, IniFilePath);
    return text;
}

template <typename Number>
void TakeNumber(const std::string& calPath, const char* section, const char* key, const char* defaultValue,
                Number& value)
{
    const std::string text = TakeKey(calPath, section, key, defaultValue).value_or("");
    if constexpr (std::is_same_v<Number, float>) {
        value = ScanFloat(text).value_or(value);
    } else {
        value = ScanDecimal(text).value_or(value);
    }
}

void TakeBadDetFile(const std::string& calPath)
{
    const auto name = TakeKey(calPath, kSection, "BadDetFile", "");
    if (name) CalSettings.BadDetFile = name->empty() ? std::string() : InSetDirectory(calPath, *name);
    if (!name || name->empty()) SubstBadPixels = 0;
}

void TakeParameters(const std::string& calPath)
{
    StatusMessage("Resetting display & calibration parameters...", kLeftAligned);
    TakeNumber(calPath, kSection, "TemperatureCold", "-999.0", TemperatureCold);
    TakeNumber(calPath, kSection, "TemperatureHot", "999.0", TemperatureHot);
    TakeNumber(calPath, kSection, "IntensityCold", "0", IntensityCold);
    TakeNumber(calPath, kSection, "IntensityHot", "0", IntensityHot);
    CalSettings.TemperatureCold = TemperatureCold;
    CalSettings.TemperatureHot = TemperatureHot;
    CalSettings.IntensityCold = IntensityCold;
    CalSettings.IntensityHot = IntensityHot;
    CalSettings.CalFile = InSetDirectory(calPath, TakeKey(calPath, kSection, "CalFile", IniFilePath).value_or(""));
    TakeKey(calPath, kSection, "CalType", "2");
    TakeKey(calPath, kSection, "DriverNumber", "999");
    // A run writes the flag to section Display, so that a set says nothing here and the flag stays as the operator has
    // it; only a set that was edited by hand decides it.
    TakeNumber(calPath, kSection, "SubstBadPixels", "", SubstBadPixels);
    TakeNumber(calPath, "Display", "MirrorVert", "", MirrorVert);
    TakeNumber(calPath, "Display", "MirrorHoriz", "", MirrorHoriz);
    TakeNumber(calPath, "Display", "RotateCCW", "", RotateCCW);
    TakeBadDetFile(calPath);
}

void RestartLiveVideo()
{
    StatusMessage("Re-starting image...", kLeftAligned);
    RestartGrab();
}

void OrientImage()
{
    SetImageOrientation(SubstBadPixels, MirrorHoriz, MirrorVert, RotateCCW, CalSettings.BadDetFile, ActiveConfig,
                        FrameRateRowAt(IndexFrameRate).ReadoutShift);
}

void SetUpDisplay()
{
    StatusMessage("Setting up image display...", kLeftAligned);
    BuildDisplayLut(Contrast, Brightness);
    FirstSetupPending = 0;  // the video set-up would start from a clean state again
    DisplayUnit = kUnitCelsius;
    FillUnitCombo(hDlgPanel, DisplayUnit);
    StatusString(kIdleHint, kLeftAligned);
}

// --- Saving ---------------------------------------------------------------------------------------------------------

bool IsSetInForce(const std::string& calPath)
{
    if (EqualIgnoringCase(calPath, CalSettings.CalFile)) return true;
    std::error_code error;
    return std::filesystem::equivalent(ResolvePath(calPath), ResolvePath(CalSettings.CalFile), error);
}

// What the .cal of the new set says of its files, in the order in which it is told.
struct SetNames {
    std::string calPath;
    std::vector<std::pair<const char*, std::string>> keys;

    void Add(const char* key, std::string_view extension)
    {
        std::string name;
        SplitPath(calPath, nullptr, nullptr, &name, nullptr);
        keys.emplace_back(key, name.append(extension));
    }
};

bool CopyList(const std::string& from, std::string_view extension, const char* key, SetNames& names)
{
    if (!CopyFileTo(from, SetFile(names.calPath, extension), false)) return false;
    names.Add(key, extension);
    return true;
}

// A file that the set in force doesn't have must not stay behind from a set that had the name before.
bool CopyOrClear(const std::string& from, const std::string& to)
{
    if (FileExists(from)) return CopyFileTo(from, to, false);
    return !FileExists(to) || DeleteFileNamed(to);
}

bool CopyBadDetFile(SetNames& names)
{
    const bool stands = !CalSettings.BadDetFile.empty() && FileExists(CalSettings.BadDetFile);
    if (stands) {
        names.Add("BadDetFile", ".bad");
    } else {
        names.keys.emplace_back("BadDetFile", "");
    }
    return CopyOrClear(stands ? CalSettings.BadDetFile : std::string(), SetFile(names.calPath, ".bad"));
}

bool CopyNoise(const SetNames& names)
{
    return CopyOrClear(SetFile(CalSettings.CalFile, ".noi"), SetFile(names.calPath, ".noi"));
}

bool CopyLists(SetNames& names)
{
    return CopyList(CalSettings.GainFile, ".gai", "GainFile", names) &&
           CopyList(CalSettings.OffsetFile, ".off", "OffsetFile", names) && CopyBadDetFile(names) &&
           CopyList(CalSettings.DecomFile, ".dcm", "DecomFile", names) && CopyNoise(names);
}

bool WriteCalFile(const std::string& former, const SetNames& names)
{
    std::string contents = former;
    for (const auto& [key, value] : names.keys) {
        const std::string_view view = value;
        contents = WithProfileKey(contents, kSection, key, &view);
    }
    if (!ReplaceFile(names.calPath, contents)) return false;
    ForgetProfile(names.calPath);
    return true;
}

// The lists first: the .cal stands only once all that it names is there.
bool CopySetTo(const std::string& calPath)
{
    const std::optional<std::string> former = ReadWholeFile(CalSettings.CalFile, kLongestCalFile);
    SetReplacement target(calPath);
    if (!former || !target.Begin()) return false;
    if (FileExists(calPath) && !DeleteFileNamed(calPath)) return false;
    SetNames names{calPath, {{"CalFile", calPath}}};
    return CopyLists(names) && WriteCalFile(*former, names) && target.Commit();
}

void TakeNewNames(const std::string& calPath)
{
    CalSettings.CalFile = calPath;
    CalSettings.GainFile = SetFile(calPath, ".gai");
    CalSettings.OffsetFile = SetFile(calPath, ".off");
    const std::string badDetFile = SetFile(calPath, ".bad");
    CalSettings.BadDetFile = FileExists(badDetFile) ? badDetFile : std::string();
    CalSettings.DecomFile = SetFile(calPath, ".dcm");
}

}  // namespace

void LoadCalibrationSettings()
{
    FinishInterruptedReplacement();
    const KeySource first{""};
    ReadRunSettings(first, CalSettings);
    ReadSources(first, CalSettings);
    CalSettings.CalFile = first.Text("CalFile", IniFilePath.c_str());
    if (ActiveConfig.DualCamera) {
        ReadRunSettings({"2"}, CalSettings2);
        CalSettings2.CalFile = IniFilePath;
    }
    CalType = 0;
    CalDone = 0;
}

int LoadCalibration(HWND window, const std::string& calPath)
{
    if (!IsForActiveCamera(window, calPath)) return 0;
    {
        const Hourglass hourglass;
        if (!MakeSettingsOf(window, calPath)) return 0;
        TakeVideoSettings(calPath);
        if (!ExternalRateIsGiven(window)) return 0;
        SendVideoSettings();
        if (!LoadLists(window, calPath)) return 0;
        TakeDisplayRange(calPath);
        TakeParameters(calPath);
        RestartLiveVideo();
        OrientImage();
    }
    SetUpDisplay();
    return 1;
}

int SaveCalibrationAs(const std::string& calPath)
{
    if (CalType == 0) {
        MessageBox(hWndMain, "Can not save a calibration that is not loaded", "Kelvo warning");
        return 0;
    }
    if (IsSetInForce(calPath)) return 1;
    if (!IsCalFile(calPath)) return 0;
    const Hourglass hourglass;
    // Of this only the camera's own section lasts: the set keeps the video settings with which it was made.
    SaveVideoSettings(calPath);
    ForgetProfile(calPath);
    FlushProfiles();
    if (!CopySetTo(calPath)) return 0;
    TakeNewNames(calPath);
    return 1;
}

std::int32_t FullScaleCounts()
{
    const double counts =
        static_cast<double>(ActiveConfig.UnityGain) * (2.0 * ActiveConfig.UnityOffset - 1.0) / 16384.0;
    const double magnitude = std::trunc(std::fabs(counts));
    return magnitude < 2147483647.0 ? static_cast<std::int32_t>(magnitude) : 2147483647;
}

}  // namespace kelvo
