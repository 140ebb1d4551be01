#include "grabber/correction.h"

#include "grabber/correct_pixel.h"
#include "state/cal_state.h"
#include "state/camera_config.h"

#include <algorithm>
#include <optional>
#include <type_traits>

namespace kelvo {

namespace {

template <typename T>
T EntryOr0(std::span<const T> list, std::size_t index)
{
    return index < list.size() ? list[index] : T{};
}

CorrectionLists ListsInForce(std::int32_t dataOffset)
{
    return {CalType, dataOffset, DecomList, OffsetList, GainList};
}

bool SameLists(const CorrectionLists& a, const CorrectionLists& b)
{
    const auto same = [](const auto& x, const auto& y) { return x.data() == y.data() && x.size() == y.size(); };
    return a.calType == b.calType && a.dataOffset == b.dataOffset && same(a.decom, b.decom) &&
           same(a.offset, b.offset) && same(a.gain, b.gain);
}

// The plan of live video and what it was made from.
struct LivePlan {
    CorrectionPlanPtr plan;
    CorrectionLists lists;
    std::size_t width = 0;
    std::size_t rawSize = 0;
    std::optional<std::uint32_t>
        version;  // of the lists; none before the first plan, which may be null where memory was refused
};

LivePlan livePlan;

const CorrectionPlan* PlanInForce(const CorrectionLists& lists, std::size_t width, std::size_t rawSize)
{
    LivePlan& live = livePlan;
    const bool same = live.version == CalibrationListsVersion && SameLists(live.lists, lists) && live.width == width &&
                      live.rawSize == rawSize;
    if (!same) {
        live.plan.reset();
        live = {NewCorrectionPlan(lists, width, rawSize), lists, width, rawSize, CalibrationListsVersion};
    }
    return live.plan.get();
}

// A value as its block stores it: without limiting, floats as they are.
template <typename T>
T Stored(double value)
{
    if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(value);
    } else {
        return static_cast<T>(TruncateToInt(value));
    }
}

// gathered may be the frame itself: each value is read before the pixel is written.
template <typename T>
void Calibrate(std::span<const T> gathered, std::span<T> frame)
{
    if (CalType != 1 && CalType != 2) return;
    const std::size_t pixels = std::min({PixelsOf(ActiveConfig), frame.size(), DecomList.size()});
    const std::size_t sources =
        std::min({gathered.size(), OffsetList.size(), CalType == 2 ? GainList.size() : gathered.size()});
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint32_t d = DecomList[i];
        if (d >= sources) continue;
        const double difference = static_cast<double>(gathered[d]) - OffsetList[d];
        frame[i] = Stored<T>(CalType == 1 ? difference : difference / double{GainList[d]});
    }
}

}  // namespace

void CorrectByDefinition(const CorrectionLists& lists, std::span<const std::int16_t> raw, std::span<std::int16_t> frame)
{
    const std::size_t pixels = std::min(lists.decom.size(), frame.size());
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint32_t d = lists.decom[i];
        const std::int16_t r = EntryOr0(raw, d);
        switch (lists.calType) {
            case 1:
                frame[i] = OffsetCount(lists.dataOffset, r, EntryOr0(lists.offset, d));
                break;
            case 2:
                frame[i] = GainCount(lists.dataOffset, r, EntryOr0(lists.offset, d), EntryOr0(lists.gain, d));
                break;
            default:
                frame[i] = PlainCount(lists.dataOffset, r);
        }
    }
}

bool CorrectLiveFrame(std::span<const std::int16_t> raw, std::span<std::int16_t> frame, std::int32_t dataOffset,
                      const GrayRows& grays)
{
    const CorrectionLists lists = ListsInForce(dataOffset);
    const auto width = static_cast<std::size_t>(std::max(ActiveConfig.Hroi, 1));
    const CorrectionPlan* plan = PlanInForce(lists, width, raw.size());
    if (!plan || frame.size() < lists.decom.size()) {
        CorrectByDefinition(lists, raw, frame);
        return false;
    }
    const bool lookUp = grays.table && lists.decom.size() / width >= grays.rows;
    CorrectAndLookUp(*plan, raw, frame, lookUp ? grays : GrayRows{});
    return lookUp;
}

void CalibrateRawFrame16(std::span<std::int16_t> frame)
{
    Calibrate<std::int16_t>(frame, frame);
}

void CalibrateRawFrame32(std::span<std::int32_t> frame)
{
    Calibrate<std::int32_t>(frame, frame);
}

void CalibrateRawFrameFloat(std::span<float> frame)
{
    Calibrate<float>(frame, frame);
}

void CalibrateGathered(std::span<const std::int16_t> gathered, std::span<std::int16_t> frame)
{
    Calibrate(gathered, frame);
}

void CalibrateGathered(std::span<const std::int32_t> gathered, std::span<std::int32_t> frame)
{
    Calibrate(gathered, frame);
}

void CalibrateGathered(std::span<const float> gathered, std::span<float> frame)
{
    Calibrate(gathered, frame);
}

void CalibrateImageFrame(std::span<std::int16_t> frame)
{
    if (CalType != 1 && CalType != 2) return;
    const std::size_t pixels = std::min(frame.size(), DecomList.size());
    const std::size_t detectors = CalType == 2 ? std::min(OffsetList.size(), GainList.size()) : OffsetList.size();
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint32_t d = DecomList[i];
        if (d >= detectors) continue;
        frame[i] =
            CalType == 1 ? OffsetCount(0, frame[i], OffsetList[d]) : GainCount(0, frame[i], OffsetList[d], GainList[d]);
    }
}

void ResetCorrection()
{
    livePlan = {};
}

}  // namespace kelvo
