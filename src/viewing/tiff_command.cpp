#include "viewing/tiff_command.h"

#include "acquire/averaging.h"
#include "imagefile/header.h"
#include "imagefile/tiff_file.h"
#include "platform/box.h"
#include "platform/memory.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "state/cal_state.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/windows.h"
#include "ui/gather.h"
#include "ui/select_file.h"
#include "viewing/frame_to_save.h"
#include "viewing/playback.h"
#include "viewing/written_note.h"

#include <algorithm>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

namespace {

CommandEnd Refuse(std::string_view text)
{
    MessageBox(hWndMain, text, kMessageCaption);
    return CommandEnd::kResetStatus;
}

// A frame that the board didn't give is no frame to save: what the store holds is of an earlier capture.
std::uint32_t CaptureMode()
{
    return kAverage16 | kShowProgress | kTakeNewFrames | kNewFramesOnly | (LiveVideo ? kPlainFrame : 0);
}

bool ThereIsAPicture()
{
    return ViewingFile || (GrabberPresent && FrameCanBeGathered(CaptureMode()));
}

// The frame's active part, of ActivePartOnView. False after a box.
bool TakePicture(std::vector<std::int16_t>& counts)
{
    if (!AllocateBlock(counts, ValuesOnView())) {
        Refuse("Failure to allocate video memory!");
        return false;
    }
    if (counts.empty() || !GatherFrameToSave(counts, 1, CaptureMode())) {
        Refuse(WhyNothingWasGathered("Video Data Acquisition Failed, Hardware error"));
        return false;
    }
    CutToActivePart(counts);
    return true;
}

// What goes into the file beside the samples.
struct Facts {
    std::int32_t low = 0;
    std::int32_t high = 0;
    std::int32_t intensityCold = 0;
    std::int32_t intensityHot = 0;
    float temperatureCold = 0;
    float temperatureHot = 0;
    float frameRate = 0;
    float integrationMsec = 0;
};

Facts FactsOnView()
{
    if (ViewingFile) {
        return {.low = ImageHeader.DisplayLow,
                .high = ImageHeader.DisplayHigh,
                .intensityCold = ImageHeader.IntensityCold,
                .intensityHot = ImageHeader.IntensityHot,
                .temperatureCold = ImageHeader.TemperatureCold,
                .temperatureHot = ImageHeader.TemperatureHot,
                .frameRate = ImageHeader.FrameRate,
                .integrationMsec = ImageHeader.IntegrationMsec};
    }
    return {.low = DisplayLow,
            .high = DisplayHigh,
            .intensityCold = IntensityCold,
            .intensityHot = IntensityHot,
            .temperatureCold = TemperatureCold,
            .temperatureHot = TemperatureHot,
            .frameRate = FrameRate,
            .integrationMsec = static_cast<float>(IntegrationMsecInForce)};
}

// A field of the file takes the low bits of a wider number.
std::int16_t Low16(std::int32_t value)
{
    return static_cast<std::int16_t>(value);
}

int WritePicture(const std::string& path, std::span<const std::int16_t> counts, std::int16_t bits, const Facts& facts,
                 std::int32_t scale)
{
    const Point size = ActivePartOnView();
    return WriteTiffFile(path, std::as_bytes(counts), bits, facts.frameRate, facts.integrationMsec, Low16(size.y),
                         Low16(size.x), Low16(facts.intensityCold / scale), facts.temperatureCold,
                         Low16(facts.intensityHot / scale), facts.temperatureHot, Low16(facts.low / scale),
                         Low16(facts.high / scale));
}

std::string HeldText(std::size_t held)
{
    return held == 0 ? std::string() : Format(", %zu sample%s held at 0 or 255", held, held == 1 ? "" : "s");
}

CommandEnd SaveTiff(std::int16_t bits)
{
    StopPlaying();
    if (!ThereIsAPicture()) return Refuse("Video Data Acquisition Failed, Hardware error");
    std::string path = "*.tif";
    if (!SelectFile(hWndMain, path, kSelectToSave)) return CommandEnd::kLeaveStatus;

    const Hourglass hourglass;
    std::vector<std::int16_t> counts;
    if (!TakePicture(counts)) return CommandEnd::kResetStatus;
    const Facts facts = FactsOnView();
    const std::int32_t scale = bits == 8 ? TiffScale(facts.low, facts.high) : 1;
    const std::size_t held = bits == 8 ? PackToBytes(counts, scale) : 0;
    if (!WritePicture(path, counts, bits, facts, scale)) return Refuse("Failed to save file: " + path);
    return NoteSavedPicture(path, HeldText(held));
}

}  // namespace

std::int32_t TiffScale(std::int32_t low, std::int32_t high)
{
    const std::int64_t scale = (std::int64_t{high} + 1 - low) / 256;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(scale, 1, std::numeric_limits<std::int32_t>::max()));
}

std::size_t PackToBytes(std::span<std::int16_t> counts, std::int32_t scale)
{
    const std::span<std::byte> bytes = std::as_writable_bytes(counts);
    std::size_t held = 0;
    for (std::size_t i = 0; i < counts.size(); ++i) {  // byte i lies at or before count i
        const std::int32_t value = counts[i] / scale;
        const std::int32_t fitting = std::clamp(value, 0, 255);
        held += value == fitting ? 0U : 1U;
        bytes[i] = static_cast<std::byte>(fitting);
    }
    return held;
}

CommandEnd SaveTiff8()
{
    return SaveTiff(8);
}

CommandEnd SaveTiff16()
{
    return SaveTiff(16);
}

}  // namespace kelvo
