// The settings of a run at start-up, putting a set in force, saving it under another name.
#include "calib/calibration_set.h"

#include "calib/last_set.h"
#include "calib/orientation.h"
#include "calib/report_file.h"
#include "calib/run_steps.h"
#include "calib/unsaved_lists.h"
#include "config/frame_rate_table.h"
#include "display/display_pipeline.h"
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
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/head_state_write.h"
#include "state/windows.h"
#include "video/video.h"

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

// --- Putting a set in force: is it one of this camera? --------------------------------------------------------------

bool IsForActiveCamera(HWND window, const CalibrationSet& set)
{
    if (set.camera == ActiveCamera) return true;
    const bool told = set.camera != kCameraNotNamed;
    MessageBox(window,
               told ? "Can not load previous calibration\nCurrent camera driver is different from calibration requested"
                    : "Failed to get ActiveCamera from calibration file:\n" + set.calPath,
               kMessageCaption);
    return false;
}

// From here on the settings are those of the calibration: nothing that follows can fail. What was pending for the file
// belongs to the settings that go.
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

// --- Putting a set in force: video settings -------------------------------------------------------------------------

void TakeVideoSettings(const CalibrationSet& set)
{
    TellStep("Loading video parameters from calibration file...");
    LoadVideoSettings(set.calPath);
    write::head.VideoGain[0] = set.videoGain1;
    write::head.VideoOffset[0] = set.videoOffset1;
    write::head.VideoOffset[1] = set.videoOffset2;
    TakeIntegrationIndexes(set.integrationTimes);
}

// Taken over before anything is sent; they are as they were unless the load comes to its end.
class FormerVideoSettings {
  public:
    FormerVideoSettings() : former_(write::head) {}
    ~FormerVideoSettings()
    {
        if (!let_) write::head = former_;
    }
    FormerVideoSettings(const FormerVideoSettings&) = delete;
    FormerVideoSettings& operator=(const FormerVideoSettings&) = delete;
    void LetGo() { let_ = true; }

  private:
    HeadStateVariables former_;
    bool let_ = false;
};

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
void SendVideoSettings(HWND window)
{
    const HeadHearing hearing;
    const float toldRate = FrameRate;
    if (LinkIsReady()) {
        SetFrameRateIndex(IndexFrameRate);
        if (RunsOnExternalClock()) SetFrameRate(toldRate);
        SetIntegration(IndexIntegrationTime.at(SlotInUse()));
        SetVideoGain(VideoGain[0]);
        SetVideoOffset(VideoOffset[0]);
    }
    CloseLinkAfterUse();
    hearing.TellIfUnheard(window, "Frame rate, integration time, gain or offset may not be those of the calibration.");
}

// --- Putting a set in force: lists ----------------------------------------------------------------------------------

// Told before anything changes: a table can be made anew, but a set without gains or offsets is of no use, and the
// calibration in force stays.
template <typename Entry>
bool WasRead(const SetList<Entry>& list, const char* step)
{
    if (list.read == ListRead::kComplete) return true;
    TellStep(step);
    TellListRead(list.read, list.path);
    return false;
}

constexpr const char* kTableStep = "Loading decommutation list...";
constexpr const char* kGainStep = "Loading gain list...";
constexpr const char* kOffsetStep = "Loading offset list...";

bool ListsWereRead(HWND window, const CalibrationSet& set)
{
    if (set.memoryRefused) {
        MessageBox(window, "Failure to allocate memory!", "Memory Error");
        return false;
    }
    WasRead(set.decom, kTableStep);
    return WasRead(set.gains, kGainStep) && WasRead(set.offsets, kOffsetStep);
}

// The set's table, or one made anew.
std::optional<DecomTable> TableOf(const CalibrationSet& set)
{
    TellStep(kTableStep);
    if (set.decom.read == ListRead::kComplete) return set.decom.entries;
    return BuildDecomList(ActiveConfig, FrameRateRowAt(IndexFrameRate).ReadoutShift);
}

// Tables that aren't there get their memory first: nothing in force is written over before all three can be installed.
class RoomForTables {
  public:
    RoomForTables() = default;
    ~RoomForTables()
    {
        if (madeTable_) write::cal.DecomList.clear();
        if (madeGains_) write::cal.GainList.clear();
        if (madeOffsets_) write::cal.OffsetList.clear();
    }
    RoomForTables(const RoomForTables&) = delete;
    RoomForTables& operator=(const RoomForTables&) = delete;

    bool Make()
    {
        return MakeOne(write::cal.DecomList, madeTable_, "Gain") &&  // words of the gains for the table too
               MakeOne(write::cal.GainList, madeGains_, "Gain") &&
               MakeOne(write::cal.OffsetList, madeOffsets_, "Offset");
    }
    void Keep() { madeTable_ = madeGains_ = madeOffsets_ = false; }

  private:
    template <typename Entry>
    static bool MakeOne(std::vector<Entry>& list, bool& made, const char* name)
    {
        if (!list.empty()) return true;
        made = AllocateBlock(list, PixelsOf(ActiveConfig));
        if (!made) {
            MessageBox(hWndMain, Format("Hardware Timeout Error, Download of %s Coefficients", name), kMessageCaption);
        }
        return made;
    }

    bool madeTable_ = false;
    bool madeGains_ = false;
    bool madeOffsets_ = false;
};

template <typename Entry>
void NameList(const SetList<Entry>& list, const char* key, std::string& path)
{
    WriteCalKey(key, list.name);
    path = list.path;
}

// There is room for them.
void InstallLists(const CalibrationSet& set, const DecomTable& table)
{
    NameList(set.decom, "DecomFile", write::calSet.CalSettings.DecomFile);
    DownloadCoefficients(kDecomKind, BytesOf(std::span(table)));
    TellStep(kGainStep);
    NameList(set.gains, "GainFile", write::calSet.CalSettings.GainFile);
    DownloadGains(set.gains.entries);
    TellStep(kOffsetStep);
    NameList(set.offsets, "OffsetFile", write::calSet.CalSettings.OffsetFile);
    DownloadOffsets(set.offsets.entries);
}

// --- Putting a set in force: display and calibration parameters -----------------------------------------------------

void TakeType(const CalibrationSet& set)
{
    write::cal.CalType = set.type;
    ShowFullScale();
}

// A key of the set is kept in the settings too; one that the set lacks is kept with the value that holds then.
void KeepKey(const char* section, const char* key, const SetText& text)
{
    if (text) WritePrivateProfileString(section, key, *text, IniFilePath);
}

// A text that is no number leaves the value.
template <typename Number>
void TakeNumber(const char* key, const SetNumber<Number>& number, const char* textOfDefault, Number defaultValue,
                Number& value)
{
    KeepKey(kSection, key, number.text.value_or(textOfDefault));
    value = number.text ? number.value.value_or(value) : defaultValue;
}

// One that the set lacks leaves the value.
void TakeFlag(const char* section, const char* key, const SetNumber<std::int32_t>& flag, std::int32_t& value)
{
    KeepKey(section, key, flag.text);
    value = flag.value.value_or(value);
}

void TakeBadDetFile(const CalibrationSet& set)
{
    const SetText& name = set.badDetFile;
    KeepKey(kSection, "BadDetFile", name);
    if (name) write::calSet.CalSettings.BadDetFile = name->empty() ? std::string() : InSetDirectory(set.calPath, *name);
    if (!name || name->empty()) write::display.SubstBadPixels = 0;
}

// A set that doesn't name itself gets the name of the settings.
void TakeCalFile(const CalibrationSet& set)
{
    const std::string name = set.calFile.value_or(std::string(ProfileDefault(IniFilePath)));
    KeepKey(kSection, "CalFile", name);
    write::calSet.CalSettings.CalFile = InSetDirectory(set.calPath, name);
}

void TakeParameters(const CalibrationSet& set)
{
    TellStep("Resetting display & calibration parameters...");
    TakeNumber("TemperatureCold", set.temperatureCold, "-999.0", -999.0F, write::cal.TemperatureCold);
    TakeNumber("TemperatureHot", set.temperatureHot, "999.0", 999.0F, write::cal.TemperatureHot);
    TakeNumber("IntensityCold", set.intensityCold, "0", 0, write::cal.IntensityCold);
    TakeNumber("IntensityHot", set.intensityHot, "0", 0, write::cal.IntensityHot);
    write::calSet.CalSettings.TemperatureCold = TemperatureCold;
    write::calSet.CalSettings.TemperatureHot = TemperatureHot;
    write::calSet.CalSettings.IntensityCold = IntensityCold;
    write::calSet.CalSettings.IntensityHot = IntensityHot;
    TakeCalFile(set);
    KeepKey(kSection, "CalType", set.typeText.value_or("2"));
    KeepKey(kSection, "DriverNumber", set.driverNumber.value_or("999"));
    // A run writes the flag to section Display, so that a set says nothing here and the flag stays as the operator has
    // it; only a set that was edited by hand decides it.
    TakeFlag(kSection, "SubstBadPixels", set.substBadPixels, write::display.SubstBadPixels);
    TakeFlag("Display", "MirrorVert", set.mirrorVert, write::display.MirrorVert);
    TakeFlag("Display", "MirrorHoriz", set.mirrorHoriz, write::display.MirrorHoriz);
    TakeFlag("Display", "RotateCCW", set.rotateCcw, write::display.RotateCCW);
    TakeBadDetFile(set);
}

void RestartLiveVideo()
{
    TellStep("Re-starting image...");
    RestartGrab();
}

void SetUpDisplay()
{
    TellStep("Setting up image display...");
    BuildDisplayLut(Contrast, Brightness);
    write::head.FirstSetupPending = 0;  // the video set-up would start from a clean state again
    ShowDegrees();
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

// A set that has no files yet has no report either.
bool CopyReport(const UnsavedSet* unsaved, const SetNames& names)
{
    return CopyOrClear(unsaved ? std::string() : ReportPath(CalSettings.CalFile), ReportPath(names.calPath));
}

bool CopyLists(SetNames& names)
{
    return CopyList(CalSettings.GainFile, ".gai", "GainFile", names) &&
           CopyList(CalSettings.OffsetFile, ".off", "OffsetFile", names) && CopyBadDetFile(names) &&
           CopyList(CalSettings.DecomFile, ".dcm", "DecomFile", names) && CopyNoise(names);
}

bool WriteLists(const UnsavedSet& set, SetNames& names)
{
    names.Add("GainFile", ".gai");
    names.Add("OffsetFile", ".off");
    names.Add("DecomFile", ".dcm");
    if (set.badDetectors.empty()) {
        names.keys.emplace_back("BadDetFile", "");
    } else {
        names.Add("BadDetFile", ".bad");
    }
    return WriteUnsavedLists(set, names.calPath);
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
    const UnsavedSet* const unsaved = SetWithoutFiles();
    const std::string& calFile = unsaved ? IniFilePath : CalSettings.CalFile;
    const std::optional<std::string> former = ReadWholeFile(calFile, kLongestCalFile);
    SetReplacement target(calPath);
    if (!former || !target.Begin()) return false;
    if (FileExists(calPath) && !DeleteFileNamed(calPath)) return false;
    SetNames names{calPath, {{"CalFile", calPath}}};
    const bool listsStand = unsaved ? WriteLists(*unsaved, names) : CopyLists(names);
    return listsStand && CopyReport(unsaved, names) && WriteCalFile(*former, names) && target.Commit();
}

void TakeNewNames(const std::string& calPath)
{
    write::calSet.CalSettings.CalFile = calPath;
    write::calSet.CalSettings.GainFile = SetFile(calPath, ".gai");
    write::calSet.CalSettings.OffsetFile = SetFile(calPath, ".off");
    const std::string badDetFile = SetFile(calPath, ".bad");
    write::calSet.CalSettings.BadDetFile = FileExists(badDetFile) ? badDetFile : std::string();
    write::calSet.CalSettings.DecomFile = SetFile(calPath, ".dcm");
}

}  // namespace

void LoadCalibrationSettings()
{
    FinishInterruptedReplacement();
    const KeySource first{""};
    ReadRunSettings(first, write::calSet.CalSettings);
    ReadSources(first, write::calSet.CalSettings);
    write::calSet.CalSettings.CalFile = first.Text("CalFile", IniFilePath.c_str());
    if (ActiveConfig.DualCamera) {
        ReadRunSettings({"2"}, write::calSet.CalSettings2);
        write::calSet.CalSettings2.CalFile = IniFilePath;
    }
    write::cal.CalType = 0;
    write::calSet.CalDone = 0;
}

int PutInForce(HWND window, const CalibrationSet& set)
{
    if (!IsForActiveCamera(window, set) || !ListsWereRead(window, set)) return 0;
    {
        const Hourglass hourglass;
        FormerVideoSettings video;
        RoomForTables room;
        TakeVideoSettings(set);
        if (!ExternalRateIsGiven(window)) return 0;
        const std::optional<DecomTable> table = TableOf(set);
        if (!table || !room.Make() || !MakeSettingsOf(window, set.calPath)) return 0;
        video.LetGo();
        room.Keep();
        SaveVideoSettings(IniFilePath);
        SendVideoSettings(window);
        InstallLists(set, *table);
        ForgetUnsavedSet();
        TakeType(set);
        TakeParameters(set);
        RestartLiveVideo();
        RebuildTable(ActiveConfig);
    }
    SetUpDisplay();
    return 1;
}

int LoadCalibration(HWND window, const std::string& calPath)
{
    return PutInForce(window, ReadSet(calPath));
}

int SaveCalibrationAs(const std::string& calPath)
{
    if (CalType == 0) {
        MessageBox(hWndMain, "Can not save a calibration that is not loaded", "Kelvo warning");
        return 0;
    }
    if (!SetWithoutFiles() && IsSetInForce(calPath)) return 1;
    if (!IsCalFile(calPath)) return 0;
    const Hourglass hourglass;
    // Of this only the camera's own section lasts: the set keeps the video settings with which it was made.
    SaveVideoSettings(calPath);
    ForgetProfile(calPath);
    FlushProfiles();
    if (!CopySetTo(calPath)) return 0;
    TakeNewNames(calPath);
    ForgetUnsavedSet();
    return 1;
}

std::int32_t FullScaleCounts()
{
    const double counts =
        static_cast<double>(ActiveConfig.UnityGain) * (2.0 * ActiveConfig.UnityOffset - 1.0) / 16384.0;
    const double magnitude = std::trunc(std::fabs(counts));
    return magnitude < 2147483647.0 ? static_cast<std::int32_t>(magnitude) : 2147483647;
}

void ShowFullScale()
{
    write::display.DisplayLow = 0;
    write::display.DisplayHigh = FullScaleCounts();
    SetVoltsRange(VideoGain[0], VideoOffset[0]);
}

}  // namespace kelvo
