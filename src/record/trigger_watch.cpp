#include "record/trigger_watch.h"

#include "grabber/board_state.h"
#include "grabber/frame_size.h"
#include "state/cal_state.h"
#include "state/camera_config.h"

#include <numeric>
#include <utility>

namespace kelvo {

namespace {

// The rectangle's part of the table that makes the image; empty where it lies outside.
std::vector<std::uint32_t> TableOf(const RecorderSettings& settings)
{
    const bool ordered = settings.meanLeft <= settings.meanRight && settings.meanTop <= settings.meanBottom;
    const bool inside = settings.meanLeft >= 0 && settings.meanTop >= 0 && settings.meanRight < ActiveConfig.Hroi &&
                        settings.meanBottom < ActiveConfig.Vroi;
    std::vector<std::uint32_t> table;
    if (!ordered || !inside || DecomList.size() < CameraFrameValues()) return table;
    for (std::int32_t row = settings.meanTop; row <= settings.meanBottom; ++row) {
        const auto begin = DecomList.begin() + std::ptrdiff_t{row} * ActiveConfig.Hroi;
        table.insert(table.end(), begin + settings.meanLeft, begin + settings.meanRight + 1);
    }
    return table;
}

}  // namespace

std::optional<RectangleMean> RectangleMean::Make(const RecorderSettings& settings)
{
    const std::vector<std::uint32_t> table = TableOf(settings);
    if (table.empty()) return std::nullopt;
    const std::size_t width =
        static_cast<std::size_t>(settings.meanRight) - static_cast<std::size_t>(settings.meanLeft) + 1;
    CorrectionPlanPtr plan =
        NewCorrectionPlan({CalType, DataOffset, table, OffsetList, GainList}, width, CameraFrameValues());
    if (!plan) return std::nullopt;
    return RectangleMean(std::move(plan), table.size());
}

double RectangleMean::Of(std::span<const std::int16_t> raw)
{
    CorrectFrame(*plan_, raw, pixels_);
    const auto sum = std::accumulate(pixels_.begin(), pixels_.end(), std::int64_t{0});
    return static_cast<double>(sum) / static_cast<double>(pixels_.size());
}

TriggerWatch::TriggerWatch(const RecorderSettings& settings, std::optional<RectangleMean> mean)
    : kind_(settings.trigger), low_(settings.meanLow), high_(settings.meanHigh), rectangle_(std::move(mean))
{
}

void TriggerWatch::Arm()
{
    mustLeave_ = std::exchange(armedBefore_, true);
}

bool TriggerWatch::MeanComes(const CapturedFrame& frame)
{
    if (!rectangle_) return false;
    mean_ = rectangle_->Of(frame.values);
    const bool inside = *mean_ >= low_ && *mean_ <= high_;
    mustLeave_ = mustLeave_ && inside;
    return inside && !mustLeave_;
}

bool TriggerWatch::ComesWith(const CapturedFrame& frame)
{
    const std::int64_t pulsesBefore = pulses_.value_or(frame.stamp.triggers);
    Note(frame);
    switch (kind_) {
        case RecordTrigger::kNone:
            return true;
        case RecordTrigger::kBoardInput:
            return frame.stamp.triggers > pulsesBefore;
        case RecordTrigger::kMean:
            return MeanComes(frame);
        case RecordTrigger::kButton:
        case RecordTrigger::kSignal:
            break;
    }
    if (!askedNs_ || frame.stamp.monotonicNs < *askedNs_) return false;
    askedNs_.reset();
    return true;
}

}  // namespace kelvo
