// The journal of a continuous save: NAME.seq.frames beside NAME.seq (imagefile/frames_file.h), which knows the board's
// numbers and what became of the frames between, where the frame headers only estimate.
//
//     journal.Append(taken, pixels, integrationMs);      // before the frame is written, as every journal has it
//     journal.TakeBack();                                // the frame didn't reach the disk
//     journal.PassedOver(frame);                         // frames that are left out
//     journal.Close();
#pragma once

#include "grabber/frame_ring.h"
#include "imagefile/frames_file.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace kelvo {

class SaveJournal {
  public:
    // For a new sequence, in place of what lies there from one that was deleted. nullopt where none can be made.
    static std::optional<SaveJournal> New(std::string_view sequencePath, bool corrected);
    // For one that is added to: its journal goes on where it tells of exactly these frames, and there is none
    // otherwise.
    static std::optional<SaveJournal> Continue(std::string_view sequencePath, std::int64_t frames);

    // False where the disk didn't take the record.
    bool Append(const CapturedFrame& taken, std::span<const std::int16_t> pixels, float integrationMs);
    void TakeBack();
    void PassedOver(const CapturedFrame& frame);
    // The closing record. False if it may not have arrived.
    bool Close();

  private:
    // Since the last frame that stands.
    struct Missing {
        std::int64_t byTransport = 0;
        std::int64_t byBoard = 0;
        std::int64_t byRing = 0;
        std::int64_t passedOver = 0;
        void AddLosses(const CapturedFrame& frame);
    };
    SaveJournal(FramesFileWriter file, std::int64_t framesBefore) : file_(std::move(file)), framesBefore_(framesBefore)
    {
    }
    static FrameRecord WithMissing(FrameRecord record, const Missing& missing);

    FramesFileWriter file_;
    Missing missing_;
    Missing beforeLast_;
    std::int64_t framesBefore_;  // of earlier runs
};

}  // namespace kelvo
