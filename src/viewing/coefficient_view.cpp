#include "viewing/coefficient_view.h"

#include "display/display_pipeline.h"
#include "display/unit_list.h"
#include "display/units.h"
#include "imagefile/frame_file.h"
#include "imagefile/header_write.h"
#include "pixel/bad_pixels.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/camera_config.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "ui/status.h"
#include "video/video.h"
#include "viewing/stored_view.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

enum class Kind { kGain, kOffset, kNoise, kBad, kDecom, kUnknown };
// As the header's DataType names them.
enum class Element : std::int16_t { kNone = 0, kInteger = 1, kByte = 2, kLong = 4, kFloat = 8 };

struct KindRow {
    std::string_view extension;
    Kind kind;
    Element element;
};
constexpr KindRow kKinds[] = {
    {".gai", Kind::kGain, Element::kFloat},    {".off", Kind::kOffset, Element::kInteger},
    {".noi", Kind::kNoise, Element::kInteger}, {".bad", Kind::kBad, Element::kByte},
    {".dcm", Kind::kDecom, Element::kLong},
};

KindRow KindOf(std::string_view path)
{
    std::string name;
    std::string extension;
    SplitPath(path, nullptr, nullptr, &name, &extension);
    for (const KindRow& row : kKinds) {
        if (EqualIgnoringCase(extension, row.extension)) return row;
    }
    if (EqualIgnoringCase(name, "decom") && EqualIgnoringCase(extension, ".tmp")) {
        return {".tmp", Kind::kDecom, Element::kLong};
    }
    return {{}, Kind::kUnknown, Element::kNone};
}

std::string CompanionFile(std::string_view path)
{
    std::string drive;
    std::string directory;
    std::string name;
    SplitPath(path, &drive, &directory, &name, nullptr);
    return MakePath(drive, directory, name, ".cal");
}

std::int32_t ReadNumber(std::string_view section, std::string_view key, std::string_view defaultText,
                        std::string_view file)
{
    return ScanDecimal(GetPrivateProfileString(section, key, defaultText, file)).value_or(0);
}

float ReadFloat(std::string_view section, std::string_view key, std::string_view defaultText, std::string_view file)
{
    return ScanFloat(GetPrivateProfileString(section, key, defaultText, file)).value_or(0.0F);
}

// The sizes of the camera that made the file.
struct MakerSizes {
    std::int32_t hroi;
    std::int32_t vroi;
    std::int32_t htotal;
    std::int32_t vtotal;
};

MakerSizes ReadMakerSizes(Kind kind, std::string_view companion)
{
    const std::string_view settings = kind == Kind::kDecom ? std::string_view(IniFilePath) : companion;
    const std::string section = Format("Camera.%d", ReadNumber("Setup", "ActiveCamera", "1", settings));
    return {.hroi = ReadNumber(section, "Hroi", "128", CameraFilePath),
            .vroi = ReadNumber(section, "Vroi", "128", CameraFilePath),
            .htotal = ReadNumber(section, "Htotal", "128", CameraFilePath),
            .vtotal = ReadNumber(section, "Vtotal", "128", CameraFilePath)};
}

void SetHeaderTime(ImageHeaderRecord& header, std::time_t time)
{
    std::tm local{};
    localtime_r(&time, &local);
    header.Year = static_cast<std::int16_t>(local.tm_year % 100);
    header.Month = static_cast<std::int16_t>(local.tm_mon + 1);
    header.Day = static_cast<std::int16_t>(local.tm_mday);
    header.Hour = static_cast<std::int16_t>(local.tm_hour);
    header.Minute = static_cast<std::int16_t>(local.tm_min);
    header.Second = static_cast<std::int16_t>(local.tm_sec);
}

// A noise image carries the calibration that it was made with.
void ReadNoiseCalibration(ImageHeaderRecord& header, std::string_view companion)
{
    constexpr std::string_view kSection = "Calibration";
    const auto narrowed = [](std::int32_t value) { return static_cast<std::int16_t>(value); };

    const std::int32_t cold = ReadNumber(kSection, "IntensityCold", "-10000", companion);
    const bool coldInRange = cold >= header.DisplayLow && cold <= header.DisplayHigh;
    header.IntensityCold = coldInRange ? narrowed(cold) : kUncalibratedIntensity;
    const std::int32_t hot = ReadNumber(kSection, "IntensityHot", "-10000", companion);
    header.IntensityHot = hot > header.IntensityCold ? narrowed(hot) : kUncalibratedIntensity;
    const float coldC = ReadFloat(kSection, "TemperatureCold", "-999.0", companion);
    header.TemperatureCold = coldC > -273.0F ? coldC : kUncalibratedTemperature;
    header.FramesAveraged = narrowed(GetPrivateProfileInt(kSection, "NumFrames", 1, companion));
    const float hotC = ReadFloat(kSection, "TemperatureHot", "-999.0", companion);
    header.TemperatureHot = hotC > header.TemperatureCold ? hotC : kUncalibratedTemperature;
    header.UnitScale = 1.0F;

    header.VideoGain1 = narrowed(ReadNumber("Setup", "VideoGain1", "6", companion));
    header.VideoOffset1 = narrowed(ReadNumber("Setup", "VideoOffset1", "160", companion));
    header.VideoGain2 = narrowed(ReadNumber("Setup", "VideoGain2", "6", companion));
    header.VideoOffset2 = narrowed(ReadNumber("Setup", "VideoOffset2", "160", companion));
}

// Without a calibration that makes sense the image is marked as having none.
void DropSenselessCalibration(ImageHeaderRecord& header)
{
    const bool sensible = header.TemperatureHot > header.TemperatureCold &&
                          header.IntensityHot > header.IntensityCold && header.IntensityCold >= header.DisplayLow &&
                          header.IntensityHot <= header.DisplayHigh;
    if (sensible) return;
    header.IntensityCold = 0;
    header.IntensityHot = 0;
    header.TemperatureCold = kUncalibratedTemperature;
    header.TemperatureHot = kUncalibratedTemperature;
}

ImageHeaderRecord HeaderOfCamera()
{
    const HeaderKeeper former;  // the header on view stays until the list takes its place
    ImageHeaderRecord header;
    return *BuildImageHeader(&header, 0, 0, 0, 0, ActiveConfig.Hroi - 1, ActiveConfig.Vroi - 1);
}

ImageHeaderRecord HeaderOfList(const KindRow& kind, const MakerSizes& sizes, std::string_view path,
                               std::string_view companion)
{
    ImageHeaderRecord header = HeaderOfCamera();
    header.ByteSwap = 0;
    if (const auto modified = FileModificationTime(path)) SetHeaderTime(header, *modified);
    const bool decom = kind.kind == Kind::kDecom;
    header.ImageWidth = static_cast<std::int16_t>(decom ? sizes.htotal : sizes.hroi);
    header.ImageHeight = static_cast<std::int16_t>(decom ? sizes.vtotal : sizes.vroi);
    header.DisplayLow = 0;
    header.DisplayHigh = kind.kind == Kind::kBad ? 255 : 4095;
    header.DataType = static_cast<std::int16_t>(kind.element);
    if (kind.kind == Kind::kNoise) {
        ReadNoiseCalibration(header, companion);
    } else if (kind.kind != Kind::kBad) {
        header.IntensityHot = kUncalibratedIntensity;
    }
    DropSenselessCalibration(header);
    return header;
}

// Entries of the list on disk: the whole array of the camera for gains and tables, the image for the rest.
std::int64_t EntriesInFile(Element element, const MakerSizes& sizes)
{
    if (element == Element::kFloat || element == Element::kLong) return std::int64_t{sizes.htotal} * sizes.vtotal;
    return std::int64_t{sizes.hroi} * sizes.vroi;
}

// Puts the line and the side bar back as they were, whichever way the view ends.
class StatusKeeper {
  public:
    StatusKeeper() : align_(GetStatusText(text_)), bar_(std::exchange(write::display.ColorBarShown, 0)) {}
    ~StatusKeeper()
    {
        if (bar_) write::display.ColorBarShown = bar_;
        StatusMessage(text_, align_);
    }
    StatusKeeper(const StatusKeeper&) = delete;
    StatusKeeper& operator=(const StatusKeeper&) = delete;

  private:
    std::string text_;
    int align_;
    std::int32_t bar_;
};

void TellShortList(std::string_view path)
{
    MessageBox(hWndMain, path, "Failed to read entire file");
}

// The list as it stands in the file.
template <typename T>
bool ReadEntries(File& file, std::int64_t count, std::string_view path, std::string_view noMemory,
                 std::vector<T>& entries)
{
    // The length is asked first: a camera section may claim any size.
    if (count <= 0 || file.Length() / static_cast<std::int64_t>(sizeof(T)) < count) {
        TellShortList(path);
        return false;
    }
    if (!AllocateBlock(entries, static_cast<std::size_t>(count))) {
        MessageBox(hWndMain, noMemory, kMessageCaption);
        return false;
    }
    const std::span bytes = std::as_writable_bytes(std::span(entries));
    if (file.Seek(0) && file.Read(bytes) == bytes.size()) return true;
    TellShortList(path);
    return false;
}

// A list as a picture, in memory of its own until it takes the place of what is on view.
struct ListImage {
    ImageHeaderRecord header;
    std::vector<std::uint8_t> buffer;  // two bytes a count
    std::optional<CountScale> scale;   // of lists that are scaled to counts

    // Room for the list, and for the whole image where the list is shorter. Empty after a box.
    std::span<std::int16_t> MakeCounts(std::size_t entries)
    {
        StatusMessage(" Loading image data to screen...", 0);
        if (!AllocateBlock(buffer, std::max(entries, PixelCount(header)) * 2)) {
            TellNoViewMemory();
            return {};
        }
        return {reinterpret_cast<std::int16_t*>(buffer.data()), entries};
    }
};

bool LoadBadList(ListImage& image, std::string_view path)
{
    BadDetMap map;
    const std::size_t pixels = PixelCount(image.header);
    if (!AllocateBlock(map, pixels)) {
        MessageBox(hWndMain, "Failure to allocate & lock BYTE memory!", kMessageCaption);
        return false;
    }
    CameraConfig sizes = ActiveConfig;  // the list's rows and columns are those of the image
    sizes.Hroi = image.header.ImageWidth;
    sizes.Vroi = image.header.ImageHeight;
    if (!LoadBadDetFile(path, map, sizes)) return false;
    const std::span<std::int16_t> counts = image.MakeCounts(pixels);
    if (counts.empty()) return false;
    BadMapToCounts(map, counts);
    return true;
}

// Reads the list and leaves its picture in image. False after a box.
bool LoadEntries(ListImage& image, File& file, const KindRow& kind, const MakerSizes& sizes, std::string_view path)
{
    if (PixelCount(image.header) == 0) {
        TellShortList(path);
        return false;
    }
    const std::int64_t count = EntriesInFile(kind.element, sizes);
    const auto convert = [&](auto& entries, std::string_view noMemory, auto conversion) {
        if (!ReadEntries(file, count, path, noMemory, entries)) return false;
        const std::span<std::int16_t> counts = image.MakeCounts(entries.size());
        if (counts.empty()) return false;
        conversion(entries, counts);
        return true;
    };
    switch (kind.element) {
        case Element::kByte:
            return LoadBadList(image, path);
        case Element::kInteger: {
            std::vector<std::int16_t> entries;
            return convert(entries, "Failure to lock INTEGER memory!",
                           [](const auto& from, std::span<std::int16_t> to) { IntegersToCounts(from, to); });
        }
        case Element::kLong: {
            std::vector<std::int32_t> entries;
            return convert(entries, "Failure to lock LONG memory!", [&](const auto& from, std::span<std::int16_t> to) {
                image.scale = LongsToCounts(from, DisplayLow, DisplayHigh, to);
            });
        }
        case Element::kFloat: {
            std::vector<float> entries;
            return convert(entries, "Failure to lock FLOAT memory!", [&](const auto& from, std::span<std::int16_t> to) {
                image.scale = FloatsToCounts(from, DisplayLow, DisplayHigh, to);
            });
        }
        case Element::kNone:
            break;
    }
    return false;
}

// Puts the list in the place of what is on view.
void TakeOver(ListImage& image)
{
    write::file.ImageHeader = image.header;
    write::frames.ImageBuffer.swap(image.buffer);
    if (image.scale) {
        write::display.ViewScaleGain = image.scale->gain;
        write::display.ViewScaleOffset = image.scale->offset;
        SetDisplayUnit(kUnitValue);
    }
    write::frames.ViewingFile = 0;
    write::display.Xpan = 0;
    write::display.Ypan = 0;
    RefreshPicture();
    write::frames.ViewingFile = 1;
}

}  // namespace

bool IsCoefficientFile(std::string_view path)
{
    return KindOf(path).kind != Kind::kUnknown;
}

int ViewCoefficientFile(std::string_view path)
{
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (!file) {
        MessageBeep(Sound::kExclamation);
        MessageBox(hWndMain, path, "Unable to open file");
        return 0;
    }
    const StatusKeeper status;
    StatusMessage(" Setting up image header ...", 0);
    TakeCursorOff();

    const KindRow kind = KindOf(path);
    const std::string companion = CompanionFile(path);
    const MakerSizes sizes = kind.kind != Kind::kUnknown ? ReadMakerSizes(kind.kind, companion) : MakerSizes{};
    ListImage image{.header = HeaderOfList(kind, sizes, path, companion), .buffer = {}, .scale = {}};

    StatusMessage(" Reading image data from file...", 0);
    if (kind.kind == Kind::kUnknown) {
        MessageBeep(Sound::kExclamation);
        MessageBox(hWndMain, path, "Incorrect data type passed");
        return 0;
    }
    if (!LoadEntries(image, *file, kind, sizes, path)) return 0;
    FreezeLiveVideo();  // with the live picture's own header and buffer
    TakeOver(image);
    StatusMessage(" Setting screen display parameters...", 0);
    BuildDisplayLut(Contrast, Brightness);  // for the list's own range; draws the image
    PutCursorBack();
    write::windows.ViewFilePath = path;
    KeepUnitAvailable();
    return 1;
}

}  // namespace kelvo
