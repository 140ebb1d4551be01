#include "record/capture_sequence.h"

#include "grabber/board_state.h"
#include "grabber/capture.h"
#include "grabber/correction.h"
#include "grabber/frame_size.h"
#include "grabber/host_frames_write.h"
#include "grabber/recording.h"
#include "platform/clock.h"
#include "platform/text.h"
#include "state/cal_state_write.h"
#include "state/camera_config.h"
#include "ui/gather.h"
#include "ui/status.h"
#include "video/video.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <vector>

namespace kelvo {

namespace {

constexpr std::int64_t kLongestWaitMs = 2000;  // as the board's own (init_itex)
constexpr float kRingSeconds = 2;              // while the windows are painted; the rest of the memory is the store's
constexpr std::size_t kFewestRingFrames = 16;

Burst burst;

std::size_t BurstRingFrames(float frameRate)
{
    const std::size_t wanted =
        std::max(static_cast<std::size_t>(std::ceil(frameRate * kRingSeconds)), kFewestRingFrames);
    return std::min(wanted, RingFrames(static_cast<std::int64_t>(CameraFrameValues())));
}

// The subsequences that a composition names, in order.
std::vector<SubSeqRecord> SubSequencesOf(std::string_view composition, std::span<const SubSeqRecord> list)
{
    std::vector<SubSeqRecord> found;
    for (const char letter : composition) {
        const std::optional<std::size_t> index = SubSequenceOf(letter);
        if (index && *index < list.size()) found.push_back(list[*index]);
    }
    return found;
}

// Whether a burst may go on with it. The first one isn't looked at.
bool MayFollow(const SubSeqRecord& record)
{
    return record.Trigger == kTriggerNone || record.Trigger == kTriggerInAll || record.Trigger == kTriggerOutFirst;
}

int WaitForFrame()
{
    switch (WaitForNextFrame(kLongestWaitMs)) {
        case TakeResult::kTaken:
            return 1;
        case TakeResult::kUnreadable:
            return kBurstFrameUnreadable;
        case TakeResult::kTimeout:
        case TakeResult::kEnded:
            break;
    }
    return kBurstNoFrame;
}

// From the ring into its slot in the one pass that brings it into image order.
void StoreFrame()
{
    if (HostFrameNext > UsableHostFrames() - 1) write::hostFrames.HostFrameNext = 0;
    const std::span<const std::int16_t> raw = WaitingFrame(0).values;
    CorrectLiveFrame(raw, write::hostFrames.HostFrames[static_cast<std::size_t>(HostFrameNext)], DataOffset);
    DropFrames(1, FrameFate::kRecorded);
    ++write::hostFrames.HostFrameNext;
    ++burst.frames;
}

// 1, or a code.
int CaptureSubSequence(const SubSeqRecord& record)
{
    const std::int64_t frames = std::max(record.Frames, 0);
    const std::int64_t skip = std::max(record.Skip, 0);
    const std::int64_t frameTimes = frames + (frames - 1) * skip;
    for (std::int64_t i = 0; i < frameTimes && GatherGoesOn(); ++i) {
        if (const int code = WaitForFrame(); code < 0) return code;
        if (i % (skip + 1) == 0) {
            StoreFrame();
        } else {
            DropFrames(1, FrameFate::kPassedOver);
        }
    }
    return 1;
}

int CaptureAll(std::span<const SubSeqRecord> subSequences)
{
    bool isFirst = true;
    for (const SubSeqRecord& record : subSequences) {
        if (!GatherGoesOn()) return 1;
        if (!isFirst && !MayFollow(record)) return kBurstTrigger;
        isFirst = false;
        if (const int code = CaptureSubSequence(record); code < 0) return code;
    }
    return 1;
}

void TellCaptured()
{
    StatusNote(Format(" Captured %u frames to Host RAM in %6.3f seconds (%6.3f MB/s).",
                      static_cast<unsigned>(burst.frames), burst.seconds, burst.MegabytesPerSecond()));
}

// The store's frame numbers are held against the number of frames of this burst alone: required, and those who append
// to a store correct their frames afterwards.
void CorrectStoredFrames()
{
    const std::int32_t end = std::min(burst.frames, UsableHostFrames());
    for (std::int32_t frame = burst.firstSlot; frame < end; ++frame) {
        CalibrateImageFrame(write::hostFrames.HostFrames[static_cast<std::size_t>(frame)]);
    }
}

// 1, or a code.
int CaptureRaw(float frameRate, std::span<const SubSeqRecord> subSequences)
{
    if (UsableHostFrames() == 0 || !EnsureDecomList()) return kBurstNoStore;
    const Recording recording(BurstRingFrames(frameRate));
    if (!recording.Began()) return kBurstNoStore;
    const Gather gather(true);
    return CaptureAll(subSequences);
}

}  // namespace

double Burst::MegabytesPerSecond() const
{
    const double bytes = static_cast<double>(CameraFrameValues()) * 2.0 * frames;
    return seconds > 0 ? bytes / (seconds * 1e6) : 0.0;
}

const Burst& LastBurst()
{
    return burst;
}

int CaptureSequence(float frameRate, int wholeRate, std::string_view composition, std::span<const SubSeqRecord> list)
{
    const std::int64_t beganMs = TickMs();
    burst = {.firstSlot = HostFrameNext};
    if (wholeRate < 0) return kBurstWholeRate;
    if (frameRate < 0) return kBurstRate;
    const std::vector<SubSeqRecord> subSequences = SubSequencesOf(composition, list);
    if (subSequences.empty()) return 1;

    const std::int32_t calType = CalType;
    write::cal.CalType = 0;
    const int result = CaptureRaw(frameRate, subSequences);
    if (result == kBurstTrigger) return result;  // required: the calibration stays off
    write::cal.CalType = calType;
    if (result < 0) return result;
    burst.seconds = static_cast<double>(TickMs() - beganMs) / 1000.0;
    TellCaptured();
    if (CalType != 0) CorrectStoredFrames();
    return 1;
}

void ResetCaptureSequence()
{
    burst = {};
}

}  // namespace kelvo
