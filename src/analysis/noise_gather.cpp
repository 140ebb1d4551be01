#include "analysis/noise_gather.h"

#include "calib/set_bad_detectors.h"
#include "grabber/frame_read.h"
#include "grabber/frame_size.h"
#include "grabber/recording.h"
#include "imagefile/header.h"
#include "imagefile/stored_frames.h"
#include "pixel/bad_marks.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/frame_state.h"
#include "ui/gather.h"
#include "ui/status.h"

#include <algorithm>
#include <vector>

namespace kelvo {

namespace {

constexpr std::int32_t kTwoPoint = 2;         // CalType
constexpr std::size_t kMostRingFrames = 256;  // that may wait for the sums
constexpr std::int64_t kFramesBetweenTellings = 16;
constexpr const char* kNoMemory = "There is no memory for the noise of so many pixels.";

using Measured = std::optional<NoiseMeasurement>;

Measured Refuse(std::string& why, std::string text)
{
    why = std::move(text);
    return std::nullopt;
}

bool GoesOn(std::int64_t frame, std::int64_t frames)
{
    if (frame % kFramesBetweenTellings == 0) {
        const auto done = static_cast<long long>(frame);
        StatusMessage(Format("Noise: %lld of %lld frames", done, static_cast<long long>(frames)), kLeftAligned);
    }
    return GatherGoesOn();
}

std::string Stopped()
{
    return std::string(WhyNothingWasGathered({}));
}

bool Finish(NoiseMeasurement& measured, const NoiseSums& sums, const NoiseLists& lists)
{
    measured.frames = sums.Frames();
    std::optional<PixelNoise> noise = NoiseOf(sums, lists, measured.countsPerDegree);
    if (noise) measured.noise = std::move(*noise);
    return noise.has_value();
}

// --- Live -----------------------------------------------------------------------------------------------------------

std::string WhyNotLive()
{
    if (!CameraOn) return "The camera isn't on. Turn it on, or choose a file.";
    if (ViewingFile || !LiveVideo) return "Live video doesn't run. Press F2 to resume it, or choose a file.";
    if (RecordingRuns()) return "A recording takes the frames of the camera. End it first.";
    if (CameraFrameValues() == 0) return "The camera's section names no size of a frame.";
    return {};
}

// False with the reason in why.
bool AddLiveFrames(std::int64_t frames, NoiseSums& sums, std::int64_t& lost, std::string& why)
{
    std::vector<std::int16_t> frame;
    if (!AllocateBlock(frame, sums.Pixels())) {
        why = kNoMemory;
        return false;
    }
    const Gather gather(true);
    const ReadsWithoutBoxes told;
    const TakesNextFrame next;
    for (std::int64_t i = 0; i < frames; ++i) {
        if (!GoesOn(i, frames)) {
            why = Stopped();
            return false;
        }
        if (!ReadBoardFrame(frame)) {
            why = LastFrameReadFault().text.empty() ? "The camera gave no frame."
                                                    : std::string(LastFrameReadFault().text);
            return false;
        }
        const CapturedFrame& taken = LastTakenFrame();
        if (i > 0) lost += taken.lostByTransport + taken.lostByBoard + taken.lostByRing;
        sums.Add(frame);
    }
    return true;
}

Measured GatherLive(const NoiseRequest& request, std::string& why)
{
    if (std::string reason = WhyNotLive(); !reason.empty()) return Refuse(why, std::move(reason));
    std::optional<NoiseSums> sums = NoiseSums::Make(CameraFrameValues());
    if (!sums) return Refuse(why, kNoMemory);

    NoiseMeasurement measured;
    measured.source = "live video";
    measured.calibration = CalType == 0 ? "none" : CalSettings.CalFile;
    measured.knowsSaturated = true;
    measured.columns = ActiveConfig.Hroi;
    measured.rows = ActiveConfig.Vroi;
    {
        const Recording recording(std::min(static_cast<std::size_t>(request.frames), kMostRingFrames));
        if (!recording.Began()) return Refuse(why, {});  // a box has told it
        if (!AddLiveFrames(request.frames, *sums, measured.lost, why)) return std::nullopt;
    }
    const std::optional<BadDetMap> bad = BadDetectorsInForce(why);
    if (!bad && !why.empty()) return std::nullopt;
    NoiseLists lists{.order = DecomList, .gains = {}, .bad = {}};
    if (bad) lists.bad = *bad;
    measured.knowsBad = CalType != 0 && bad;
    if (CalType == kTwoPoint) {
        lists.gains = GainList;
        measured.pair = {IntensityCold, IntensityHot, TemperatureCold, TemperatureHot};
        measured.countsPerDegree = CountsPerDegree(measured.pair);
    }
    if (!Finish(measured, *sums, lists)) return Refuse(why, kNoMemory);
    return measured;
}

// --- A file ---------------------------------------------------------------------------------------------------------

bool ListsAreComplete(const CalibrationSet& set)
{
    return set.decom.read == ListRead::kComplete && set.gains.read == ListRead::kComplete;
}

NoisePair PairOf(const ImageHeaderRecord& header)
{
    return {header.IntensityCold, header.IntensityHot, header.TemperatureCold, header.TemperatureHot};
}

NoisePair PairOf(const CalibrationSet& set)
{
    return {set.intensityCold.value.value_or(kUncalibratedIntensity),
            set.intensityHot.value.value_or(kUncalibratedIntensity),
            set.temperatureCold.value.value_or(kUncalibratedTemperature),
            set.temperatureHot.value.value_or(kUncalibratedTemperature)};
}

// The set, and the map of the pixels that are bad by it. False with the reason in why.
bool ReadSetFor(const StoredFrames& file, const std::string& path, CalibrationSet& set, BadDetMap& bad,
                std::string& why)
{
    set = ReadSet(path, file.Pixels());
    std::optional<BadDetMap> map =
        BadDetectorsOfSet(set, static_cast<std::int32_t>(file.Columns()), static_cast<std::int32_t>(file.Rows()), why);
    if (!map) return false;
    if (!ListsAreComplete(set)) {
        why = FileNameOf(path) + " has no lists for frames of this size.";
        return false;
    }
    bad = *std::move(map);
    return true;
}

std::string WhyTooShort(const StoredFrames& file)
{
    const auto held = static_cast<long long>(file.Frames());
    const std::string name = FileNameOf(file.Path());
    if (held < kLeastNoiseFrames) return name + " holds only 1 frame: one has no deviation.";
    return Format("%s holds only %lld frames. Please enter 2 to %lld.", name.c_str(), held, held);
}

// False with the reason in why.
bool AddFileFrames(StoredFrames& file, std::int64_t frames, NoiseSums& sums, std::int64_t& lost, std::string& why)
{
    std::vector<std::int16_t> frame;
    if (!AllocateBlock(frame, sums.Pixels())) {
        why = kNoMemory;
        return false;
    }
    const Gather gather(frames > kFramesBetweenTellings);
    for (std::int64_t i = 0; i < frames; ++i) {
        if (!GoesOn(i, frames)) {
            why = Stopped();
            return false;
        }
        if (!file.ReadCounts(i, frame, why)) {
            why = Format("%s %s.", FileNameOf(file.Path()).c_str(), why.c_str());
            return false;
        }
        const FrameRecord* const record = i > 0 ? file.RecordOf(i) : nullptr;
        if (record) lost += std::int64_t{record->lostByTransport} + record->lostByBoard + record->lostByRing;
        sums.Add(frame);
    }
    return true;
}

Measured GatherFile(const NoiseRequest& request, std::string& why)
{
    std::optional<StoredFrames> file = StoredFrames::Open(request.file, why);
    if (!file) return Refuse(why, FileNameOf(request.file) + " " + why + ".");
    if (file->Frames() < request.frames) return Refuse(why, WhyTooShort(*file));
    std::optional<NoiseSums> sums = NoiseSums::Make(file->Pixels());
    if (!sums) return Refuse(why, kNoMemory);

    NoiseMeasurement measured;
    measured.source = request.file;
    measured.calibration = "none";
    measured.raw = !file->AreCorrected();
    measured.knowsSaturated = measured.raw && !ForeignKindOf(request.file);
    measured.changes = file->Changes();
    measured.columns = file->Header().ImageWidth;
    measured.rows = file->Header().ImageHeight;
    if (!measured.raw) {
        measured.pair = PairOf(file->Header());
        measured.calibration = "the file's own";
    }
    CalibrationSet set;
    BadDetMap bad;
    NoiseLists lists;
    if (!request.set.empty()) {
        if (!ReadSetFor(*file, request.set, set, bad, why)) return std::nullopt;
        measured.knowsBad = true;
        measured.calibration = request.set;
        if (measured.raw) {
            lists.order = set.decom.entries;
            if (set.type == kTwoPoint) lists.gains = set.gains.entries;
            if (set.type == kTwoPoint) measured.pair = PairOf(set);
        }
    }
    lists.bad = bad;
    if (!AddFileFrames(*file, request.frames, *sums, measured.lost, why)) return std::nullopt;
    measured.countsPerDegree = CountsPerDegree(measured.pair);
    if (!Finish(measured, *sums, lists)) return Refuse(why, kNoMemory);
    return measured;
}

}  // namespace

std::optional<NoiseMeasurement> GatherNoise(const NoiseRequest& request, std::string& why)
{
    why.clear();
    const std::int64_t began = UtcNsAtTick(TickUs());
    Measured measured = request.live ? GatherLive(request, why) : GatherFile(request, why);
    if (measured) measured->beganUtcNs = began;
    return measured;
}

}  // namespace kelvo
