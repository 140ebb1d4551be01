// The files of one event: the raw sequence, the corrected one or both, in parts where they are split.
#pragma once

#include "grabber/copm2.h"
#include "grabber/correction.h"
#include "imagefile/recorded_sequence.h"
#include "record/recorder_settings.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

// What all files of a run share, made once before it begins.
struct RunFiles {
    RecorderSettings settings;
    ImageHeaderRecord rawHeader;
    ImageHeaderRecord correctedHeader;
    FramesHead head;  // of the raw one
    std::int32_t dataOffset = 0;
    CorrectionPlanPtr plan;               // of the corrected one
    std::vector<std::int16_t> corrected;  // a frame; empty where none is wished
    std::vector<std::int16_t> offset;     // a raw frame with DataOffset added; empty where that is 0
    std::int64_t nextName = 1;            // {n} of the next event

    bool WantsRaw() const { return settings.pixels != RecordPixels::kCorrected; }
    bool WantsCorrected() const { return settings.pixels != RecordPixels::kRaw; }
};
// As the state is now: header, lists, texts. nullopt where memory is refused, or there is no table for the image.
std::optional<RunFiles> PrepareRunFiles(const RecorderSettings& settings);

class EventFiles {
  public:
    // The first part, under names that nothing bears yet. nullopt where it can't be made.
    static std::optional<EventFiles> Begin(RunFiles& run, const FrameStamp& first);
    // The frame into each file, in a new part where this one would grow too large or too long. False: the disk refused,
    // and no file has it.
    bool Append(RunFiles& run, const FrameRecord& record, std::span<const std::int16_t> raw);
    bool SyncData();
    bool Close(const FrameRecord& closing);

    // The parts of this event so far; the raw one stands for both.
    const std::vector<std::string>& Paths() const { return paths_; }
    std::int64_t Bytes() const;  // of all parts
    bool AreNamed() const;

  private:
    // NOLINTNEXTLINE(bugprone-unchecked-optional-access): one of the two is there
    const SequenceWriter& Leading() const { return raw_ ? *raw_ : *corrected_; }
    bool BeginPart(const RunFiles& run);
    bool NextPart(const RunFiles& run);
    bool IsFull(const RunFiles& run, std::int64_t monotonicNs) const;

    std::string base_;  // whole, without an extension
    std::optional<SequenceWriter> raw_;
    std::optional<SequenceWriter> corrected_;
    std::vector<std::string> paths_;
    ImageHeaderRecord rawHeader_;
    ImageHeaderRecord correctedHeader_;
    std::int64_t partBeganNs_ = 0;
    std::int64_t bytesBefore_ = 0;  // of parts that are closed
    std::int64_t part_ = 1;
};

}  // namespace kelvo
