#include "calib/stored_calibration.h"

#include "acquire/frame_means.h"
#include "calib/calibration_run.h"
#include "calib/one_point.h"
#include "pixel/good_neighbours.h"
#include "platform/memory.h"

#include <algorithm>
#include <utility>

namespace kelvo {

namespace {

constexpr const char* kNoMemory = "no memory is left";

class Calibration {
  public:
    Calibration(const StoredCalibrationSettings& settings, std::string& why)
        : settings_(settings), pixels_(PixelsOf(settings.config)), why_(why)
    {
    }

    bool TwoPoint(GatheredSource& low, GatheredSource& high)
    {
        TwoPointSettings limits = settings_.limits;
        limits.frameCount = static_cast<std::uint32_t>(low.frames);
        limits.replaceNoisy = MeasuresNoise(low);
        std::vector<float> noise;
        if (!Begin(2) || !NoiseOf(low, noise) || !AllocateBlock(noiseList_, pixels_)) return Fail(kNoMemory);
        TwoPointResult result;
        result.means = SumsToMeans(low.sums, high.sums, noise, noiseList_, limits);
        if (!EnoughGoodDetectors(result.means, pixels_)) {
            return Fail("Calibration failed due to too few good detectors in array.");
        }
        if (!EnoughRange(result.means, limits.noiseFloor)) {
            return Fail("Calibration failed due to insufficient range between low source and high source.");
        }
        if (!BuildTable()) return false;
        result.counts = ClassifyDetectors(low.sums, high.sums, noiseList_, result.means, limits, made_.gains, {});
        std::vector<std::int16_t> lowMeans;
        if (!AllocateBlock(lowMeans, pixels_)) return Fail(kNoMemory);
        TruncateMeans(low.sums, lowMeans);
        result.offsets = OffsetsOf(made_.gains, lowMeans, result.means.meanLow, made_.offsets);
        if (result.offsets.outOfRange) return Fail("Some OFFSET coefficients out of range!");
        result.spread = SpreadOf(made_.gains, made_.offsets, result.offsets.meanGain, result.offsets.meanOffset);
        if (limits.replaceNoisy) made_.noise = std::move(noiseList_);
        if (!FindBad()) return false;
        // The set's table is the one in force: substituted, then turned.
        Substitute();
        const Orientation& turned = settings_.orientation;
        if (!ReorderDecomList(made_.table, settings_.config, turned.mirrorHoriz, turned.mirrorVert, turned.rotateCcw)) {
            return Fail(kNoMemory);
        }
        made_.intensityCold = RoundCounts(result.means.meanLow);
        made_.intensityHot = RoundCounts(result.means.meanHigh);
        made_.detectorsBad = result.counts.Bad();
        made_.told = BadPixelCountText(result.counts, pixels_) + "\n\n" +
                     TwoPointResultText(result, pixels_, limits.replaceNoisy, low.temperatureC, high.temperatureC);
        return true;
    }

    bool OnePoint(GatheredSource& low)
    {
        std::vector<std::int16_t> frame;
        std::vector<float> noise;
        if (!Begin(1) || !AllocateBlock(frame, pixels_)) return Fail(kNoMemory);
        if (MeasuresNoise(low) && !AllocateBlock(noise, pixels_)) return Fail(kNoMemory);
        MeansOfSums(low.sums, noise.empty() ? std::span<const double>() : low.squares, low.frames, frame, noise);
        std::ranges::fill(made_.gains, 1.0F);
        if (!BuildTable()) return false;
        const std::optional<OnePointResult> result = MeanOfGood(frame, noise);
        if (!result) return Fail("Failure to find good pixels!");
        const OffsetResult offsets = OffsetsOf(made_.gains, frame, result->mean, made_.offsets);
        if (offsets.outOfRange) return Fail("Some OFFSET coefficients out of range!");
        // The set's table is the plain one: whoever loads it finds the bad ones in the list.
        if (!FindBad()) return false;
        if (!noise.empty()) {
            made_.noise = std::move(frame);
            NoiseToSteps(noise, made_.noise);
        }
        made_.intensityCold = RoundCounts(result->mean);
        made_.detectorsBad = static_cast<std::int32_t>(pixels_) - result->good;
        made_.told = OnePointResultText(*result, pixels_, false, !noise.empty(), low.temperatureC);
        return true;
    }

    StoredCalibration Take() { return std::move(made_); }

  private:
    bool Fail(const char* reason)
    {
        why_ = reason;
        return false;
    }

    bool Begin(std::int32_t type)
    {
        made_.type = type;
        return AllocateBlock(made_.gains, pixels_) && AllocateBlock(made_.offsets, pixels_);
    }

    bool MeasuresNoise(const GatheredSource& low) const
    {
        return settings_.limits.replaceNoisy && low.frames != 1 && !low.squares.empty();
    }

    bool NoiseOf(const GatheredSource& low, std::vector<float>& noise) const
    {
        if (!MeasuresNoise(low)) return true;
        if (!AllocateBlock(noise, pixels_)) return false;
        DeviationsOfSums(std::span<const std::int32_t>(low.sums), low.squares, low.frames, noise);
        return true;
    }

    // The readout order alone: no head of today comes late (config/frame_rate_table.h).
    bool BuildTable()
    {
        std::optional<DecomTable> table = BuildDecomList(settings_.config, 0);
        if (!table || !DecomEntriesLieInFrame(*table, settings_.config)) {
            return Fail("the readout order of the camera's section can't be built");
        }
        made_.table = *std::move(table);
        return true;
    }

    std::optional<OnePointResult> MeanOfGood(std::span<const std::int16_t> frame, std::span<const float> noise)
    {
        const float mean = MeanOfPixels(frame, made_.table);
        if (!settings_.replaceBad) return AcceptAllPixels(mean, noise, pixels_);
        const OnePointSettings limits{.minOffset = settings_.limits.minOffset,
                                      .maxOffset = settings_.limits.maxOffset,
                                      .replaceNoisy = settings_.limits.replaceNoisy,
                                      .allowedNoise = settings_.limits.allowedNoise};
        const std::optional<float> inside = MeanInsideWindow(frame, made_.table, mean, limits);
        if (!inside) return std::nullopt;
        return RejectOutsideWindow(frame, noise, made_.table, *inside, limits, made_.gains, {});
    }

    // What is listed, and what the gains show.
    bool FindBad()
    {
        if (!settings_.replaceBad) return true;
        if (!AllocateBlock(made_.bad, pixels_)) return Fail(kNoMemory);
        std::copy_n(settings_.listed.begin(), std::min(settings_.listed.size(), pixels_), made_.bad.begin());
        IdentifyBadDet(made_.bad, made_.gains, made_.table, settings_.config);
        return true;
    }

    // The map isn't changed as pixels are repaired: a repaired pixel never answers for another.
    void Substitute()
    {
        if (!settings_.replaceBad || settings_.pattern.rows.empty()) return;
        const CameraConfig& config = settings_.config;
        for (const PixelAnswer& answer : FindGoodNeighbours(made_.bad, config.Vroi, config.Hroi, settings_.pattern)) {
            made_.table[answer.bad] = made_.table[answer.source];
        }
    }

    const StoredCalibrationSettings& settings_;
    std::size_t pixels_;
    std::string& why_;
    std::vector<std::int16_t> noiseList_;
    StoredCalibration made_;
};

const char* WhyNotGathered(const GatheredSource& source, std::size_t pixels)
{
    if (source.frames < 1 || source.frames > kMostGatheredFrames) return "1 to 65535 frames of a source are needed";
    const bool fits = source.sums.size() == pixels && (source.squares.empty() || source.squares.size() == pixels);
    if (!fits) return "the frames don't fit the camera's section";
    return WereGathered<std::int32_t>(source.sums) ? nullptr : "the frames of a source are all zero";
}

}  // namespace

std::optional<StoredCalibration> CalibrateStored(const StoredCalibrationSettings& settings, GatheredSource low,
                                                 std::optional<GatheredSource> high, std::string& why)
{
    const std::size_t pixels = PixelsOf(settings.config);
    const char* refusal = WhyNotGathered(low, pixels);
    if (!refusal && high) refusal = WhyNotGathered(*high, pixels);
    if (!refusal && high && high->frames != low.frames)
        refusal = "as many frames are needed of one source as of the other";
    if (refusal) {
        why = refusal;
        return std::nullopt;
    }
    Calibration calibration(settings, why);
    const bool done = high ? calibration.TwoPoint(low, *high) : calibration.OnePoint(low);
    return done ? std::optional(calibration.Take()) : std::nullopt;
}

}  // namespace kelvo
