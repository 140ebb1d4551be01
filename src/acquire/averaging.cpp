#include "acquire/averaging.h"

#include "acquire/frame_means.h"
#include "acquire/frame_sums.h"
#include "grabber/board.h"
#include "grabber/correction.h"
#include "grabber/frame_size.h"
#include "grabber/host_frames_write.h"
#include "platform/box.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/buffer_state_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/gather.h"
#include "ui/status.h"

#include <algorithm>
#include <type_traits>
#include <utility>

namespace kelvo {

namespace {

struct Rectangle {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = -1;
    std::int32_t bottom = -1;
    std::int64_t Values() const { return RectangleValues(left, top, right, bottom); }
};

// One run of averaging; T is the result's format.
template <typename T>
struct Run {
    std::uint32_t mode = 0;
    std::uint32_t count = 0;
    Rectangle rectangle;
    std::span<T> result;
    std::span<float> deviation;

    std::span<std::int16_t> work;  // a frame as it is read
    std::vector<std::int16_t> workBlock;
    std::vector<std::int32_t> longSums;
    std::vector<double> squares;
    std::vector<T> gathered;  // the frame before correction
};

// Frames are added up raw. The calibration in force comes back however the gathering ends.
class RawCounts {
  public:
    RawCounts() : calType_(std::exchange(write::cal.CalType, 0)) {}
    ~RawCounts() { write::cal.CalType = calType_; }
    RawCounts(const RawCounts&) = delete;
    RawCounts& operator=(const RawCounts&) = delete;

  private:
    std::int32_t calType_;
};

int Refuse(const char* text)
{
    MessageBeep(Sound::kDefault);
    MessageBox(hWndMain, text, kMessageCaption);
    return 0;
}

void ShowGrabberError(std::int32_t code, const char* caption)
{
    std::string text;
    GetBoardErrorText(code, text);
    MessageBox(hWndMain, text, caption);
}

template <typename T>
void ShowProgress(const Run<T>& run, const std::string& text)
{
    if (run.mode & kShowProgress) StatusMessage(text, 0);
}

// False: the operator doesn't want the one frame that is there.
bool AgreeOnCount(std::uint32_t& count)
{
    if (count <= 1 || LiveVideo) return true;
    MessageBeep(Sound::kDefault);
    const std::string text =
        Format("Number of frames to average is %d, but image is frozen.", static_cast<std::int32_t>(count));
    const Button answer = MessageBox(hWndMain, text, "Capture Only One Frame?", BoxIcon::kQuestion, BoxButtons::kYesNo);
    if (answer != Button::kYes) return false;
    count = 1;
    return true;
}

// ---- Memory

template <typename T>
constexpr bool kIs16 = std::is_same_v<T, std::int16_t>;

template <typename T>
bool AllocateWork(Run<T>& run, std::size_t values)
{
    if constexpr (kIs16<T>) {
        run.work = run.result;
        return true;
    } else {
        if (!AllocateBlock(run.workBlock, values)) return false;
        run.work = run.workBlock;
        return true;
    }
}

// What the run needs, or 0 after a box.
template <typename T>
int AllocateRun(Run<T>& run)
{
    const std::int64_t values = run.rectangle.Values();
    if (std::ssize(run.result) < values) return Refuse("Unable to allocate or lock memory!");
    const auto size = static_cast<std::size_t>(values);
    run.result = run.result.first(size);
    run.deviation = run.deviation.first(std::min(run.deviation.size(), size));
    if (!AllocateWork(run, size)) return Refuse("Unable to allocate or lock memory!");
    if (kIs16<T> && run.count > 1 && !AllocateBlock(run.longSums, size)) {
        return Refuse("Unable to allocate or lock 32-bit LONG memory!");
    }
    if (!run.deviation.empty() && run.count != 1 && !AllocateBlock(run.squares, size)) {
        return Refuse("Unable to allocate or lock 32-bit double memory for sum of squares!");
    }
    if (CalType != 0 && !AllocateBlock(run.gathered, size)) return Refuse("Unable to allocate or lock memory!");
    return 1;
}

// ---- Gathering

// Adds the frame in work; the first of a run is stored.
template <typename T>
void AddWork(Run<T>& run, bool first)
{
    if constexpr (kIs16<T>) {
        if (run.count > 1) AddFrame(run.work, std::span(run.longSums), run.squares);
    } else {
        if (first) std::ranges::fill(run.result, T{});
        AddFrame(run.work, run.result, run.squares);
    }
}

std::int64_t FrameBytesOnView()
{
    const Point size = FrameSizeOnView();
    return std::int64_t{size.x} * size.y * 2;
}

// Frames that the store has room for, worked out once for the frames that stand.
void EnsureCapacity()
{
    const std::int64_t storeBytes = AllocateHostFrames();
    if (AveragingCapacity != 0) return;
    write::buffer.HostFrameBytes = storeBytes;
    if (HostFrameBytes == 0) MessageBox(hWndMain, "Buffer board memory not accessable!", "Hardware Error");
    const std::int64_t frameBytes = FrameBytesOnView();
    if (frameBytes > 0) write::buffer.AveragingCapacity = static_cast<std::uint32_t>(HostFrameBytes / frameBytes);
}

// Frames that a batch can hold; 0 after a box. A capacity that was worked out for a smaller stored picture, or where
// memory was refused part-way, is more than there are: the frames beyond would add old counts.
std::uint32_t LargestBatch()
{
    EnsureCapacity();
    const std::int64_t frames = UsableHostFrames();
    const std::int64_t batch = std::clamp<std::int64_t>(frames, 0, AveragingCapacity);
    if (batch == 0) ShowGrabberError(0, "Image Buffer Board Error!");
    return static_cast<std::uint32_t>(batch);
}

template <typename T>
void ReadStoredFrame(Run<T>& run, const Rectangle& from, std::int32_t frame)
{
    ReadHostFrameRect(run.work, frame, frame, from.top, from.left, from.bottom, from.right);
}

// The frozen frame goes the way of captured ones, through host frame 0.
template <typename T>
void TakeFrozenFrame(Run<T>& run)
{
    if (!HostFrames.empty()) {
        std::copy_n(RawFrame.begin(), std::min(RawFrame.size(), HostFrames[0].size()),
                    write::hostFrames.HostFrames[0].begin());
    }
    ReadStoredFrame(run, run.rectangle, 0);
    AddWork(run, true);
}

// Errors are shown. True where the store holds as many new frames.
bool CaptureBatch(std::uint32_t batch)
{
    const std::int32_t code = ResetHostFrameNext();
    if (code < 0) ShowGrabberError(code, "Buffer Board Error");
    const std::int32_t captured = CaptureToHostFrames(static_cast<std::int32_t>(batch), 0);
    if (captured < 0) ShowGrabberError(captured, "Store to Host RAM Error");
    return code >= 0 && std::cmp_equal(captured, batch) && HostFramesWithoutBlank == 0;
}

// False where the operator stops it.
template <typename T>
bool AddBatch(Run<T>& run, const Rectangle& from, std::int32_t firstFrame, std::uint32_t done, std::uint32_t batch)
{
    for (std::uint32_t k = 0; k < batch; ++k) {
        if (!GatherGoesOn()) return false;
        ReadStoredFrame(run, from, firstFrame + static_cast<std::int32_t>(k));
        ShowProgress(run, Format(" Captured %u of %u frames; reading frame %u", done + batch, run.count, done + k + 1));
        AddWork(run, done + k == 0);
    }
    return true;
}

// While a burst is stored the run gathers into frames of its own, as many as it wants and memory allows: none where
// there isn't enough for both.
class OwnFrames {
  public:
    explicit OwnFrames(std::uint32_t wanted) : needed_(FramesInBuffer > 0)
    {
        if (!needed_) return;
        const std::size_t values = CameraFrameValues();
        const std::uint64_t affordable = AvailablePhysicalMemory() / std::max<std::uint64_t>(2 * values, 1);
        const std::uint64_t frames = std::min<std::uint64_t>(std::max(wanted, 1U), affordable);
        std::vector<std::vector<std::int16_t>> own;
        std::vector<std::int16_t> frame;
        while (own.size() < frames && std::ssize(own) < numBufFrames && AllocateBlock(frame, values)) {
            own.push_back(std::move(frame));
        }
        stored_ = std::exchange(write::hostFrames.HostFrames, std::move(own));
    }
    ~OwnFrames()
    {
        if (!needed_) return;
        write::hostFrames.HostFrames = std::move(stored_);
        write::hostFrames.HostFrameNext = next_;
    }
    OwnFrames(const OwnFrames&) = delete;
    OwnFrames& operator=(const OwnFrames&) = delete;

  private:
    bool needed_;
    std::vector<std::vector<std::int16_t>> stored_;
    std::int32_t next_ = HostFrameNext;
};

// 0 where the run ends: after its one box, stopped, or after a capture that failed where only new frames serve.
template <typename T>
int GatherNewFrames(Run<T>& run)
{
    const OwnFrames own(run.count);
    const std::uint32_t largestBatch = LargestBatch();
    if (largestBatch == 0) return 0;
    if (!LiveVideo && run.count == 1) {
        TakeFrozenFrame(run);
        return 1;
    }
    for (std::uint32_t done = 0; done < run.count;) {
        const std::uint32_t batch = std::min(largestBatch, run.count - done);
        const bool captured = CaptureBatch(batch);
        if (!GatherGoesOn() || (!captured && run.mode & kNewFramesOnly)) return 0;
        ShowProgress(run, Format(" Captured %u of %u frames", done + batch, run.count));
        if (!AddBatch(run, run.rectangle, 0, done, batch)) return 0;
        done += batch;
    }
    return 1;
}

std::uint32_t StoredFrames()
{
    const std::int64_t frames = std::int64_t{BufferLastFrame} + 1 - BufferFirstFrame;
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(frames, 0, kMostHostFrames));
}

template <typename T>
int GatherStoredFrames(Run<T>& run)
{
    const Rectangle from = {BufferRectLeft, BufferRectTop, BufferRectRight, BufferRectBottom};
    return AddBatch(run, from, BufferFirstFrame, 0, run.count) ? 1 : 0;
}

template <typename T>
int GatherFrames(Run<T>& run)
{
    const Gather gather(run.count > 1);
    const RawCounts raw;
    if (run.mode & kTakeNewFrames) return GatherNewFrames(run);
    if (run.mode & kUseStoredFrames) return GatherStoredFrames(run);
    return 1;
}

// ---- Finishing

void Finish(Run<std::int16_t>& run)
{
    if (run.count <= 1) return;
    ShowProgress(run, " Averaging data");
    MeansOfSums(run.longSums, run.squares, static_cast<std::int32_t>(run.count), run.result, run.deviation);
}

template <typename T>
void FinishDeviations(Run<T>& run)
{
    DeviationsOfSums(std::span<const T>(run.result), run.squares, static_cast<std::int32_t>(run.count), run.deviation);
}

void Finish(Run<std::int32_t>& run)
{
    if (run.squares.empty()) return;
    ShowProgress(run, " Calculting pixel standard deviations");
    FinishDeviations(run);
}

void Finish(Run<float>& run)
{
    ShowProgress(run, " Averaging data");
    FinishDeviations(run);
    if (run.count <= 1) return;
    const auto count = static_cast<float>(static_cast<std::int32_t>(run.count));
    for (float& value : run.result) value /= count;
}

// The calibrated result is the calibrated mean (or sum) of raw frames. It is taken from a copy: a mirrored or
// substituted pixel reads its detector's value, whatever has been written there.
template <typename T>
void Correct(Run<T>& run)
{
    if (CalType == 0) return;
    std::ranges::copy(run.result, run.gathered.begin());
    CalibrateGathered(std::span<const T>(run.gathered), run.result);
}

// The grabber's handles are looked up anew; a negative one is an error code.
std::int32_t LookUpGrabber()
{
    CheckBoardModules();
    return std::min(IcpModule, AcqModule);
}

template <typename T>
int Average(Run<T>& run)
{
    if (!AgreeOnCount(run.count)) return 0;
    const bool stored = (run.mode & (kTakeNewFrames | kUseStoredFrames)) == kUseStoredFrames;
    if (stored) run.count = StoredFrames();
    if (!AllocateRun(run)) return 0;
    if (run.mode & kTakeNewFrames) {
        if (const std::int32_t code = LookUpGrabber(); code < 0) {
            ShowGrabberError(code, "Buffer Board Error");
            return 1;
        }
    }
    if (!GatherFrames(run)) return 0;
    Finish(run);
    Correct(run);
    return 1;
}

}  // namespace

int AverageFrames(AverageBlock result, std::span<float> deviation, std::uint32_t count, std::int32_t left,
                  std::int32_t top, std::int32_t right, std::int32_t bottom, std::uint32_t mode)
{
    return std::visit(
        [&]<typename T>(std::span<T> block) {
            Run<T> run{.mode = mode,
                       .count = count,
                       .rectangle = {left, top, right, bottom},
                       .result = block,
                       .deviation = deviation,
                       .work = {},
                       .workBlock = {},
                       .longSums = {},
                       .squares = {},
                       .gathered = {}};
            return Average(run);
        },
        result);
}

}  // namespace kelvo
