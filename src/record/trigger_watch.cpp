#include "record/trigger_watch.h"

#include "regions/region_list.h"
#include "state/camera_config.h"

namespace kelvo {

namespace {

std::optional<Region> RectangleOf(const RecorderSettings& settings, std::string& why)
{
    const bool ordered = settings.meanLeft <= settings.meanRight && settings.meanTop <= settings.meanBottom;
    const bool inside = settings.meanLeft >= 0 && settings.meanTop >= 0 && settings.meanRight < ActiveConfig.Hroi &&
                        settings.meanBottom < ActiveConfig.Vroi;
    if (!ordered || !inside) {
        why = "The rectangle of the mean lies outside the picture.";
        return std::nullopt;
    }
    Region region;
    region.place = {settings.meanLeft, settings.meanTop, settings.meanRight, settings.meanBottom};
    return region;
}

std::optional<Region> NamedRegion(const RecorderSettings& settings, std::string& why)
{
    const Region* const region = FindRegion(settings.region);
    if (region) return *region;
    why = settings.region.empty() ? "Please choose the region that triggers."
                                  : "There is no region " + settings.region + ".";
    return std::nullopt;
}

}  // namespace

std::optional<TriggerMean> TriggerMean::Make(const RecorderSettings& settings, std::string& why)
{
    const std::optional<Region> region =
        settings.trigger == RecordTrigger::kRegion ? NamedRegion(settings, why) : RectangleOf(settings, why);
    if (!region) return std::nullopt;
    std::optional<RegionCounts> counts =
        RegionCounts::Make(std::span(&*region, 1), ActiveConfig.Hroi, ActiveConfig.Vroi, why);
    if (!counts) return std::nullopt;
    if (!counts->PrepareCorrection()) {
        why = "There is not enough memory to measure the trigger's mean.";
        return std::nullopt;
    }
    return TriggerMean(std::move(*counts));
}

double TriggerMean::Of(std::span<const std::int16_t> raw)
{
    counts_.FromRaw(raw);
    return counts_.Measure(0).mean;
}

TriggerWatch::TriggerWatch(const RecorderSettings& settings, std::optional<TriggerMean> mean)
    : kind_(settings.trigger),
      low_(settings.meanLow),
      high_(settings.meanHigh),
      level_(settings.regionLevel),
      pass_(settings.regionPass),
      measures_(std::move(mean))
{
}

void TriggerWatch::Arm()
{
    mustLeave_ = std::exchange(armedBefore_, true);
    mean_.reset();
}

bool TriggerWatch::MeanComes(const CapturedFrame& frame)
{
    if (!measures_) return false;
    mean_ = measures_->Of(frame.values);
    const bool inside = *mean_ >= low_ && *mean_ <= high_;
    mustLeave_ = mustLeave_ && inside;
    return inside && !mustLeave_;
}

bool TriggerWatch::MeanPasses(const CapturedFrame& frame)
{
    if (!measures_) return false;
    const double now = measures_->Of(frame.values);
    const std::optional<double> before = std::exchange(mean_, now);
    if (!before) return false;
    const bool rises = *before < level_ && now >= level_;
    const bool falls = *before > level_ && now <= level_;
    return pass_ == RegionPass::kRising ? rises : falls;
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
        case RecordTrigger::kRegion:
            return MeanPasses(frame);
        case RecordTrigger::kButton:
        case RecordTrigger::kSignal:
            break;
    }
    if (!askedNs_ || frame.stamp.monotonicNs < *askedNs_) return false;
    askedNs_.reset();
    return true;
}

}  // namespace kelvo
