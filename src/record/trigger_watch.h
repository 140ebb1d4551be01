// Which frame a trigger comes with: each frame is looked at once, in order, by the one who records.
#pragma once

#include "grabber/capture.h"
#include "record/recorder_settings.h"
#include "regions/region_counts.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace kelvo {

// The mean that a trigger goes by, straight from a frame in readout order: only its pixels are corrected.
class TriggerMean {
  public:
    // Of the settings' rectangle or region, as they are now, with the lists in force. nullopt with a sentence in why
    // where it lies outside the picture, there is no such region, or memory is refused.
    static std::optional<TriggerMean> Make(const RecorderSettings& settings, std::string& why);
    double Of(std::span<const std::int16_t> raw);

  private:
    explicit TriggerMean(RegionCounts counts) : counts_(std::move(counts)) {}
    RegionCounts counts_;
};

class TriggerWatch {
  public:
    TriggerWatch() = default;
    TriggerWatch(const RecorderSettings& settings, std::optional<TriggerMean> mean);

    // From here on a trigger counts. After the first time the mean has to leave its window before it may come back. A
    // region's mean passes its value between two frames that are looked at from here on: it is at the value or beyond
    // it, and wasn't in the frame before.
    void Arm();
    // The operator, or the external signal, asks for one: the first frame completed at or after this moment.
    void AskAt(std::int64_t monotonicNs) { askedNs_ = monotonicNs; }
    // Looks at the next frame while armed; true: it is the trigger frame.
    bool ComesWith(const CapturedFrame& frame);
    // A frame that passes while nothing is armed.
    void Note(const CapturedFrame& frame) { NotePulses(frame.stamp.triggers); }
    // Pulses that the trigger input has had, and that are no trigger any more.
    void NotePulses(std::int64_t pulses) { pulses_ = pulses; }
    std::optional<double> Mean() const { return mean_; }  // in the frame looked at last

  private:
    bool MeanComes(const CapturedFrame& frame);
    bool MeanPasses(const CapturedFrame& frame);

    RecordTrigger kind_ = RecordTrigger::kNone;
    double low_ = 0;
    double high_ = 0;
    double level_ = 0;
    RegionPass pass_ = RegionPass::kRising;
    std::optional<TriggerMean> measures_;
    std::optional<double> mean_;
    std::optional<std::int64_t> askedNs_;
    std::optional<std::int64_t> pulses_;  // at the trigger input by the frame before
    bool armedBefore_ = false;
    bool mustLeave_ = false;
};

}  // namespace kelvo
