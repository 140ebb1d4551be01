// Which frame a trigger comes with: each frame is looked at once, in order, by the one who records.
#pragma once

#include "grabber/capture.h"
#include "grabber/correction.h"
#include "record/recorder_settings.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo {

// The mean of a rectangle of the picture, straight from a frame in readout order: only the rectangle is corrected.
class RectangleMean {
  public:
    // Of the settings' rectangle with the lists in force; nothing where it lies outside the picture or memory is
    // refused.
    static std::optional<RectangleMean> Make(const RecorderSettings& settings);
    double Of(std::span<const std::int16_t> raw);

  private:
    RectangleMean(CorrectionPlanPtr plan, std::size_t pixels) : plan_(std::move(plan)), pixels_(pixels) {}
    CorrectionPlanPtr plan_;
    std::vector<std::int16_t> pixels_;
};

class TriggerWatch {
  public:
    TriggerWatch() = default;
    TriggerWatch(const RecorderSettings& settings, std::optional<RectangleMean> mean);

    // From here on a trigger counts. After the first time the mean has to leave its window before it may come back.
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

    RecordTrigger kind_ = RecordTrigger::kNone;
    double low_ = 0;
    double high_ = 0;
    std::optional<RectangleMean> rectangle_;
    std::optional<double> mean_;
    std::optional<std::int64_t> askedNs_;
    std::optional<std::int64_t> pulses_;  // at the trigger input by the frame before
    bool armedBefore_ = false;
    bool mustLeave_ = false;
};

}  // namespace kelvo
