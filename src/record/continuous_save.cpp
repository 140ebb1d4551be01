#include "record/continuous_save.h"

#include "display/display_pipeline.h"
#include "grabber/board.h"
#include "grabber/capture.h"
#include "grabber/correction.h"
#include "grabber/frame_account.h"
#include "grabber/frame_read.h"
#include "grabber/frame_size.h"
#include "grabber/recording.h"
#include "imagefile/header_write.h"
#include "imagefile/recorded_sequence.h"
#include "imagefile/sequence_file.h"
#include "platform/clock.h"
#include "platform/disk_space.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "record/save_journal.h"
#include "script/script.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/frame_state_write.h"
#include "state/head_state.h"
#include "state/state_registry.h"
#include "video/video.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr std::int64_t kHeaderBytes = sizeof(ImageHeaderRecord);
constexpr std::int16_t kFrameHeaderBytes = sizeof(FrameHeaderRecord);
constexpr std::size_t kFrameHeaderWords = kFrameHeaderBytes / 2;
constexpr std::size_t kSecondsInStamp = 17;  // where the seconds stand in "Thu Nov 12 19:46:55.123 2026\n"
constexpr float kSecondsOfAMinute = 60;
constexpr std::int64_t kNsPerUs = 1000;
constexpr std::int64_t kTickUs = 20'000;  // frames that wait are saved so long before the window gets a turn

struct State {
    std::vector<std::int16_t> SaveBuffer;
    std::int64_t SaveFrameBytes = 0;
    std::int32_t SaveFrameCount = 0;
    float FrameIntegrationTime = 0;
    std::int64_t frameUtcNs = 0;
    FrameEstimate estimate;
};
State state;
std::unique_ptr<File> SaveFile;  // of the run

// While a run is on, only what it saves is drawn: not the cursor's look at the newest frame.
class DisplayHeldOff {
  public:
    DisplayHeldOff() : before_(std::exchange(write::frames.DisplayEnabled, 0)) {}
    ~DisplayHeldOff() { write::frames.DisplayEnabled = before_; }
    DisplayHeldOff(const DisplayHeldOff&) = delete;
    DisplayHeldOff& operator=(const DisplayHeldOff&) = delete;

  private:
    std::int32_t before_;
};

// What lives as long as a run.
struct Run {
    const Recording recording;
    const DisplayHeldOff display;
    SaveOptions options;
    ImageHeaderRecord header;  // in native order
    std::optional<SaveJournal> journal;
    std::int32_t firstFrame = 0;
    bool partOfAFrame = false;  // stands behind the whole ones
};
std::unique_ptr<Run> run;

const StateNames kStateNames{
    Named("SaveFrameBytes", state.SaveFrameBytes),
    Named("SaveFrameCount", state.SaveFrameCount),
    Named("FrameIntegrationTime", state.FrameIntegrationTime),
    Named("AllFramesNum", state.estimate.allFrames),
    Named("PreviousStep", state.estimate.previousStep),
    Named("PreviousSeconds", state.estimate.previousSeconds),
    Named("OlderSeconds", state.estimate.olderSeconds),
};

// ---- Frame headers

float SecondsOfStamp(const TimeStamp& stamp)
{
    return ScanFloat(std::string_view(stamp.data()).substr(kSecondsInStamp)).value_or(0);
}

// Frames are counted from this moment.
void BeginFrameNumbers()
{
    SetFrameTime(UtcNsAtTick(TickUs()));
    TimeStamp stamp{};
    FormatTimeStamp(stamp);
    const float seconds = SecondsOfStamp(stamp);
    state.estimate = {.previousSeconds = seconds, .olderSeconds = seconds};
}

// ---- The file

std::int64_t EndOfFrames()
{
    return kHeaderBytes + state.SaveFrameCount * state.SaveFrameBytes;
}

std::int64_t RecordBytes(std::int16_t frameHeaderBytes)
{
    return frameHeaderBytes + static_cast<std::int64_t>(CameraFrameValues() * sizeof(std::int16_t));
}

// One that another program is recording into is left alone.
bool OpenSaveFile(FileMode mode)
{
    const std::string& path = run->options.path;
    if (FileExists(path) && IsBeingRecorded(path)) return false;
    std::optional<File> file = File::Open(path, mode);
    if (file && !file->Lock()) return false;
    if (file) SaveFile = std::make_unique<File>(std::move(*file));
    return file.has_value();
}

bool WriteHeader(ImageHeaderRecord header)
{
    const std::span<std::byte> bytes = std::as_writable_bytes(std::span(&header, 1));
    if (header.ByteSwap == 0) SwapHeaderBytes(bytes, bytes.size() / 2);
    return SaveFile->Seek(0) && SaveFile->Write(bytes) == bytes.size();
}

void MarkUncalibrated(ImageHeaderRecord& header)
{
    header.IntensityCold = kUncalibratedIntensity;
    header.IntensityHot = kUncalibratedIntensity;
    header.TemperatureCold = kUncalibratedTemperature;
    header.TemperatureHot = kUncalibratedTemperature;
}

SaveStart CreateSaveFile()
{
    const ImageHeaderRecord before = ImageHeader;
    if (!OpenSaveFile(FileMode::kCreate)) return SaveStart::kCantOpen;
    BuildImageHeader(&run->header, 0, -1, 0, 0, ActiveConfig.Hroi - 1, ActiveConfig.Vroi - 1);
    run->header.FramesAveraged = 1;
    run->header.ImageHeaderDataOffset = run->options.frameHeaders ? kFrameHeaderBytes : std::int16_t{0};
    if (!run->options.calibrated) MarkUncalibrated(run->header);
    if (!WriteHeader(run->header)) {
        SaveFile.reset();
        DeleteFileNamed(run->options.path);
        DeleteFileNamed(FramesPathOf(run->options.path));  // of a file that was to be deleted
        write::file.ImageHeader = before;
        return SaveStart::kCantOpen;
    }
    state.SaveFrameCount = 0;
    run->journal = SaveJournal::New(run->options.path, run->options.calibrated);
    return SaveStart::kBegun;
}

bool HoldsFramesOfTheCamera(const ImageHeaderRecord& header)
{
    const bool layout = header.ImageHeaderDataOffset == 0 || header.ImageHeaderDataOffset == kFrameHeaderBytes;
    return layout && header.ImageWidth == ActiveConfig.Hroi && header.ImageHeight == ActiveConfig.Vroi &&
           header.SampleBytes == sizeof(std::int16_t);
}

// The header of a file that stands, in native order.
SaveStart ReadSavedHeader(ImageHeaderRecord& header)
{
    const std::span<std::byte> bytes = std::as_writable_bytes(std::span(&header, 1));
    if (SaveFile->Read(bytes) < bytes.size()) return SaveStart::kShortHeader;
    if (DeclaresSpiff(header)) return SaveStart::kOtherFrames;
    if (header.ByteSwap == 0) SwapHeaderBytes(bytes, bytes.size() / 2);
    if (header.HeaderVersion < kFirstVersionWithFrameHeaders) header.ImageHeaderDataOffset = 0;
    return HoldsFramesOfTheCamera(header) ? SaveStart::kBegun : SaveStart::kOtherFrames;
}

// Part of a frame that a failed write left, now or in an earlier run, goes.
bool CutPartOfAFrame()
{
    run->partOfAFrame = !SaveFile->SetLength(EndOfFrames()) || !SaveFile->Seek(EndOfFrames());
    return !run->partOfAFrame;
}

SaveStart ContinueSaveFile()
{
    if (!OpenSaveFile(FileMode::kReadWrite)) return SaveStart::kCantOpen;
    const SaveStart read = ReadSavedHeader(run->header);
    if (read != SaveStart::kBegun) return read;
    if (!run->options.calibrated) MarkUncalibrated(run->header);
    state.SaveFrameBytes = RecordBytes(run->header.ImageHeaderDataOffset);
    state.SaveFrameCount = static_cast<std::int32_t>((SaveFile->Length() - kHeaderBytes) / state.SaveFrameBytes);
    if (!CutPartOfAFrame()) return SaveStart::kCantOpen;
    run->journal = SaveJournal::Continue(run->options.path, SaveFrameCount);
    return SaveStart::kBegun;
}

bool WriteFrame()
{
    if (run->partOfAFrame && !CutPartOfAFrame()) return false;
    const std::span<const std::byte> record =
        std::as_bytes(std::span(state.SaveBuffer)).first(static_cast<std::size_t>(state.SaveFrameBytes));
    if (SaveFile->Write(record) == record.size()) return true;
    CutPartOfAFrame();
    return false;
}

// ---- The run

// The frame's place in SaveBuffer, behind its header, so that one write takes both.
std::span<std::int16_t> PixelsOf(std::int16_t frameHeaderBytes)
{
    return std::span(state.SaveBuffer).subspan(static_cast<std::size_t>(frameHeaderBytes) / 2, CameraFrameValues());
}

void ShowFrame(std::span<const std::int16_t> pixels)
{
    DrawFrame(pixels);
    AccountFrameRead(true);
}

bool WriteFrameAndRecord(std::span<const std::int16_t> pixels)
{
    std::optional<SaveJournal>& journal = run->journal;
    if (journal && !journal->Append(LastTakenFrame(), pixels, FrameIntegrationTime)) return false;
    if (WriteFrame()) return true;
    if (journal) journal->TakeBack();
    return false;
}

bool TakeFrame(std::span<std::int16_t> pixels)
{
    const TakesNextFrame takes;
    const ReadsWithoutBoxes quietly;
    return (run->options.calibrated ? GetVideoData(pixels) : ReadFrameNow(pixels)) != 0;
}

SaveTrouble SaveNextFrame()
{
    const std::span<std::int16_t> pixels = PixelsOf(run->header.ImageHeaderDataOffset);
    if (!TakeFrame(pixels)) return SaveTrouble::kNoFrame;
    SetFrameTime(LastTakenFrame().stamp.utcNs);
    if (run->header.ImageHeaderDataOffset != 0) FillFrameHeader(state.SaveBuffer);
    if (!WriteFrameAndRecord(pixels)) return SaveTrouble::kNotWritten;
    if (run->options.shows) ShowFrame(pixels);
    ++state.SaveFrameCount;
    NoteScriptFrame();
    return SaveTrouble::kNone;
}

void PassOverOldest()
{
    if (std::optional<SaveJournal>& journal = run->journal) journal->PassedOver(WaitingFrame(0));
    DropFrames(1, FrameFate::kPassedOver);
}

bool OldestWasCompleteBy(std::int64_t tickUs)
{
    return WaitingFrame(0).stamp.monotonicNs <= tickUs * kNsPerUs;
}

// Frames that were complete by then. The last of them may still be on its way into the ring: the one that is waited for
// comes behind it.
void PassOverFramesUntil(std::int64_t tickUs)
{
    constexpr double kTwoPeriodsMs = 2000;
    const double limitMs = FrameRate > 0 ? kTwoPeriodsMs / static_cast<double>(FrameRate) : kTwoPeriodsMs;
    while (WaitForFrames(0, static_cast<std::int64_t>(std::min(limitMs, kTwoPeriodsMs)) + 1) > 0 &&
           OldestWasCompleteBy(tickUs)) {
        PassOverOldest();
    }
}

void PassOverWhatIsNotSaved()
{
    const std::int64_t beganUs = TickUs();
    const bool pulses = run->options.syncOut && state.SaveFrameCount == 0;
    if (pulses) ExternalSyncPulse();
    if (pulses || run->options.updateRate > 0) PassOverFramesUntil(pulses ? TickUs() : beganUs);
}

void SaveWhatWaits()
{
    const std::int64_t endUs = TickUs();
    while (FramesWaiting() > 0 && OldestWasCompleteBy(endUs) && SaveNextFrame() == SaveTrouble::kNone) {
    }
}

bool CloseSaveFile(ImageHeaderRecord header)
{
    const bool whole = !run->partOfAFrame || CutPartOfAFrame();
    const bool written = WriteHeader(header);
    // The journal last: a closed one says that all before it has arrived.
    std::optional<SaveJournal>& journal = run->journal;
    const bool journalClosed = !journal || (SaveFile->SyncData() && journal->Close());
    const bool closed = SaveFile->Close();
    SaveFile.reset();
    return whole && written && journalClosed && closed;
}

// ---- Afterwards

class SavedFrames {
  public:
    SavedFrames(File file, std::int16_t frameHeaderBytes) : file_(std::move(file)), frameHeaderBytes_(frameHeaderBytes)
    {
    }

    // False where memory is refused. Without a plan the definition does the same, slower.
    bool Allocate()
    {
        const std::size_t values = CameraFrameValues();
        if (!AllocateBlock(raw_, values) || !AllocateBlock(frame_, values)) return false;
        plan_ = NewCorrectionPlan(Lists(), static_cast<std::size_t>(ActiveConfig.Hroi), values);
        return true;
    }

    CorrectionEnd Correct(std::int32_t frame)
    {
        const std::int64_t place = kHeaderBytes + frame * RecordBytes(frameHeaderBytes_) + frameHeaderBytes_;
        const std::span<std::byte> bytes = std::as_writable_bytes(std::span(raw_));
        if (!file_.Seek(place) || file_.Read(bytes) < bytes.size()) return CorrectionEnd::kCantRead;
        if (plan_) {
            CorrectFrame(*plan_, raw_, frame_);
        } else {
            CorrectByDefinition(Lists(), raw_, frame_);
        }
        const std::span<const std::byte> corrected = std::as_bytes(std::span(frame_));
        const bool written = file_.Seek(place) && file_.Write(corrected) == corrected.size();
        return written ? CorrectionEnd::kDone : CorrectionEnd::kCantWrite;
    }

    bool Close() { return file_.Close(); }

  private:
    // DataOffset is in the counts already.
    static CorrectionLists Lists()
    {
        return {.calType = CalType, .decom = DecomList, .offset = OffsetList, .gain = GainList};
    }

    File file_;
    std::int16_t frameHeaderBytes_;
    std::vector<std::int16_t> raw_;
    std::vector<std::int16_t> frame_;
    CorrectionPlanPtr plan_;
};

}  // namespace

constinit const std::int64_t& SaveFrameBytes = state.SaveFrameBytes;
constinit const std::int32_t& SaveFrameCount = state.SaveFrameCount;
constinit const std::int32_t& AllFramesNum = state.estimate.allFrames;
constinit const float& FrameIntegrationTime = state.FrameIntegrationTime;

void SetFrameIntegrationTime(float milliseconds)
{
    state.FrameIntegrationTime = milliseconds;
}

bool AllocateSaveBuffer()
{
    state.SaveFrameCount = 0;
    return AllocateBlock(state.SaveBuffer, kFrameHeaderWords + CameraFrameValues());
}

void FreeSaveBuffer()
{
    std::vector<std::int16_t>().swap(state.SaveBuffer);
}

bool ShowPreviewFrame()
{
    AccountHeldUp();  // a look at a frame now and then; the others aren't lost
    const std::span<std::int16_t> pixels = PixelsOf(0);
    if (!GetVideoData(pixels)) return false;
    ShowFrame(pixels);
    AccountHeldUp();
    NoteScriptFrame();
    return true;
}

void SetFrameTime(std::int64_t utcNs)
{
    state.frameUtcNs = utcNs;
}

void FormatTimeStamp(TimeStamp& text)
{
    text = FrameTimeText(state.frameUtcNs);
}

void AddFrame(FrameEstimate& estimate, float nowSeconds, float frameRate, bool firstOfFile)
{
    const auto rate = static_cast<double>(frameRate);
    float delta = nowSeconds - estimate.previousSeconds;
    if (delta < 0) delta += kSecondsOfAMinute;
    const double nearest = static_cast<double>(delta) * rate + 0.5;  // its whole part
    auto step = static_cast<std::int32_t>(nearest);
    if (step < 1) {
        step = 1;
    } else if (step > 1) {
        // The clock's milliseconds may round a frame into both of two steps: over the two together it shows.
        if (nowSeconds - estimate.olderSeconds < 0) nowSeconds += kSecondsOfAMinute;
        const auto twoSteps = static_cast<double>(nowSeconds - estimate.olderSeconds);
        if (twoSteps * rate < estimate.previousStep + step) --step;
    }
    if (firstOfFile) step = 0;
    estimate.allFrames += step;
    estimate.olderSeconds = estimate.previousSeconds;
    estimate.previousSeconds = nowSeconds;
    estimate.previousStep = step;
}

void FillFrameHeader(std::span<std::int16_t> buffer)
{
    FrameHeaderRecord header;
    FormatTimeStamp(header.FrameTimeText);
    AddFrame(state.estimate, SecondsOfStamp(header.FrameTimeText), FrameRate, state.SaveFrameCount == 0);
    header.FrameNum = state.SaveFrameCount;
    header.AllFramesNum = state.estimate.allFrames;
    header.FrameIntegrationMsec = state.FrameIntegrationTime;
    std::memcpy(buffer.data(), &header, sizeof header);
}

SaveStart BeginSave(const SaveOptions& options)
{
    run = std::make_unique<Run>();
    if (!run->recording.Began()) {
        run.reset();
        return SaveStart::kNoMemory;
    }
    run->options = options;
    run->options.calibrated = options.calibrated && CalType != 0;
    const SaveStart start = options.addsToFile ? ContinueSaveFile() : CreateSaveFile();
    if (start != SaveStart::kBegun) {
        SaveFile.reset();
        run.reset();
        return start;
    }
    state.SaveFrameBytes = RecordBytes(run->header.ImageHeaderDataOffset);
    run->firstFrame = state.SaveFrameCount;
    write::file.ImageHeader = run->header;
    DropFrames(FramesWaiting(), FrameFate::kPassedOver);  // of the time that the file took
    BeginFrameNumbers();
    return SaveStart::kBegun;
}

bool SaveRuns()
{
    return run != nullptr;
}

bool SaveKeepsJournal()
{
    return run && run->journal;
}

SaveTrouble SaveTick()
{
    const std::int64_t beganUs = TickUs();
    PassOverWhatIsNotSaved();
    SaveTrouble trouble = SaveNextFrame();
    const bool savesAll = run->options.updateRate <= 0;
    while (savesAll && trouble == SaveTrouble::kNone && FramesWaiting() > 0 && TickUs() - beganUs < kTickUs) {
        trouble = SaveNextFrame();
    }
    return trouble;
}

void PassOverWhatWaits()
{
    if (run->options.updateRate <= 0) return;
    while (FramesWaiting() > 0) PassOverOldest();
}

std::optional<std::int64_t> LostFrames()
{
    const CaptureCounts counts = CurrentCaptureCounts();
    if (!counts.lostByBoard) return std::nullopt;
    return counts.lostByTransport + *counts.lostByBoard + counts.lostByRing;
}

SavedRun EndSave()
{
    if (run->options.updateRate <= 0) SaveWhatWaits();
    run->header.FrameCount = static_cast<std::uint32_t>(state.SaveFrameCount);
    write::file.ImageHeader = run->header;
    SavedRun saved{.path = run->options.path,
                   .firstFrame = run->firstFrame,
                   .frames = SaveFrameCount - run->firstFrame,
                   .closed = CloseSaveFile(run->header)};
    run.reset();
    return saved;
}

std::optional<double> SecondsOfRoom(const SaveOptions& options, std::int64_t freed)
{
    const std::optional<std::int64_t> bytes = FreeDiskBytes(options.path);
    if (!bytes || FrameRate <= 0) return std::nullopt;
    const auto cameraRate = static_cast<double>(FrameRate);
    const auto interval = static_cast<double>(options.updateRate);
    const double framesASecond = interval > 0 ? std::min(cameraRate, 1 / interval) : cameraRate;
    const auto frameBytes =
        static_cast<double>(RecordBytes(options.frameHeaders ? kFrameHeaderBytes : std::int16_t{0}));
    return (static_cast<double>(*bytes) + static_cast<double>(freed)) / (frameBytes * framesASecond);
}

CorrectionEnd CorrectSavedRun(const SavedRun& saved)
{
    std::optional<File> file = File::Open(saved.path, FileMode::kReadWrite);
    if (!file) return CorrectionEnd::kCantOpen;
    SavedFrames frames(std::move(*file), ImageHeader.ImageHeaderDataOffset);
    if (!frames.Allocate()) return CorrectionEnd::kNoMemory;
    CorrectionEnd end = CorrectionEnd::kDone;
    for (std::int32_t i = 0; i < saved.frames && end == CorrectionEnd::kDone; ++i) {
        end = frames.Correct(saved.firstFrame + i);
    }
    if (!frames.Close() && end == CorrectionEnd::kDone) end = CorrectionEnd::kCantWrite;
    const std::string_view pixels = end == CorrectionEnd::kDone ? kCorrectedPixels : std::string_view();
    const bool told = RenewChecksums(saved.path, saved.firstFrame, saved.frames, pixels);
    return told || end != CorrectionEnd::kDone ? end : CorrectionEnd::kCantWrite;
}

void ResetContinuousSave()
{
    run.reset();
    SaveFile.reset();
    state = {};
}

}  // namespace kelvo
