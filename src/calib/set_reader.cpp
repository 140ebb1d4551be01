#include "calib/set_reader.h"

#include "platform/memory.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/camera_config.h"

#include <algorithm>
#include <exception>
#include <span>

namespace kelvo {

namespace {

constexpr const char* kCalibration = "Calibration";
constexpr const char* kSetup = "Setup";
constexpr const char* kDisplay = "Display";
constexpr std::int32_t kDefaultType = 2;
constexpr std::int32_t kDefaultGain = 128;
constexpr std::int32_t kDefaultOffset = 128;

// --- Keys -----------------------------------------------------------------------------------------------------------

SetText TextOf(const CalibrationSet& set, const char* section, const char* key)
{
    if (!HasProfileKey(section, key, set.calPath)) return std::nullopt;
    return GetPrivateProfileString(section, key, "", set.calPath);
}

SetNumber<float> RealOf(const CalibrationSet& set, const char* section, const char* key)
{
    const SetText text = TextOf(set, section, key);
    return {text, text ? ScanFloat(*text) : std::nullopt};
}

SetNumber<std::int32_t> IntegerOf(const CalibrationSet& set, const char* section, const char* key)
{
    const SetText text = TextOf(set, section, key);
    return {text, text ? ScanDecimal(*text) : std::nullopt};
}

void ReadVideoKeys(CalibrationSet& set)
{
    set.videoGain1 = GetPrivateProfileInt(kSetup, "VideoGain1", kDefaultGain, set.calPath);
    set.videoOffset1 = GetPrivateProfileInt(kSetup, "VideoOffset1", kDefaultOffset, set.calPath);
    set.videoOffset2 = GetPrivateProfileInt(kSetup, "VideoOffset2", kDefaultOffset, set.calPath);
    set.integrationTimes = GetPrivateProfileString(kSetup, "IntTime", "", set.calPath);
}

void ReadParameters(CalibrationSet& set)
{
    set.type = GetPrivateProfileInt(kCalibration, "CalType", kDefaultType, set.calPath);
    set.typeText = TextOf(set, kCalibration, "CalType");
    set.driverNumber = TextOf(set, kCalibration, "DriverNumber");
    set.calFile = TextOf(set, kCalibration, "CalFile");
    set.badDetFile = TextOf(set, kCalibration, "BadDetFile");
    set.temperatureCold = RealOf(set, kCalibration, "TemperatureCold");
    set.temperatureHot = RealOf(set, kCalibration, "TemperatureHot");
    set.intensityCold = IntegerOf(set, kCalibration, "IntensityCold");
    set.intensityHot = IntegerOf(set, kCalibration, "IntensityHot");
    set.substBadPixels = IntegerOf(set, kCalibration, "SubstBadPixels");
    set.mirrorVert = IntegerOf(set, kDisplay, "MirrorVert");
    set.mirrorHoriz = IntegerOf(set, kDisplay, "MirrorHoriz");
    set.rotateCcw = IntegerOf(set, kDisplay, "RotateCCW");
}

// --- Lists ----------------------------------------------------------------------------------------------------------

template <typename Entry>
void NameList(const CalibrationSet& set, const char* key, SetList<Entry>& list)
{
    list.name = GetPrivateProfileString(kCalibration, key, "", set.calPath);
    list.path = InSetDirectory(set.calPath, list.name);
}

// All three at once: a set without one of them is of no use.
bool MakeRoom(CalibrationSet& set, std::size_t pixels)
{
    constexpr std::size_t kBytesAPixel = sizeof(std::uint32_t) + sizeof(float) + sizeof(std::int16_t);
    if (pixels > static_cast<std::size_t>(-1) / kBytesAPixel || !MemoryAvailable(pixels * kBytesAPixel)) return false;
    try {
        set.decom.entries.resize(pixels);
        set.gains.entries.resize(pixels);
        set.offsets.entries.resize(pixels);
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

template <typename Entry>
void ReadEntries(SetList<Entry>& list, std::size_t words)
{
    const std::span<Entry> entries(list.entries);
    list.read = ReadList(list.path, {reinterpret_cast<std::uint8_t*>(entries.data()), entries.size_bytes()}, words);
}

// An entry outside the frame would read other memory than the frame's.
void CheckTable(SetList<std::uint32_t>& list)
{
    const auto liesInFrame = [count = list.entries.size()](std::uint32_t entry) { return entry < count; };
    if (list.read == ListRead::kComplete && !std::ranges::all_of(list.entries, liesInFrame)) {
        list.read = ListRead::kNotRead;
    }
}

template <typename Entry>
void KeepIfComplete(SetList<Entry>& list)
{
    if (list.read != ListRead::kComplete) std::vector<Entry>().swap(list.entries);
}

void ReadLists(CalibrationSet& set, std::size_t pixels)
{
    NameList(set, "DecomFile", set.decom);
    NameList(set, "GainFile", set.gains);
    NameList(set, "OffsetFile", set.offsets);
    set.memoryRefused = !MakeRoom(set, pixels);
    if (!set.memoryRefused) {
        ReadEntries(set.decom, pixels);
        CheckTable(set.decom);
        ReadEntries(set.gains, pixels);
        ReadEntries(set.offsets, pixels / 2);  // two offsets a word
    }
    KeepIfComplete(set.decom);
    KeepIfComplete(set.gains);
    KeepIfComplete(set.offsets);
}

}  // namespace

CalibrationSet ReadSet(const std::string& calPath, std::size_t pixels)
{
    const HeldProfile held(calPath);  // one that fails in the midst would be a set of other keys
    CalibrationSet set;
    set.calPath = calPath;
    set.camera = GetPrivateProfileInt(kSetup, "ActiveCamera", kCameraNotNamed, calPath);
    ReadVideoKeys(set);
    ReadLists(set, pixels);
    ReadParameters(set);
    return set;
}

CalibrationSet ReadSet(const std::string& calPath)
{
    return ReadSet(calPath, PixelsOf(ActiveConfig));
}

std::string InSetDirectory(const std::string& calPath, const std::string& path)
{
    std::string drive;
    std::string directory;
    std::string name;
    std::string extension;
    SplitPath(calPath, &drive, &directory, nullptr, nullptr);
    SplitPath(path, nullptr, nullptr, &name, &extension);
    return MakePath(drive, directory, name, extension);
}

}  // namespace kelvo
