#include "record/recorder.h"

#include "grabber/board_state.h"
#include "grabber/copm2.h"
#include "grabber/frame_size.h"
#include "grabber/recording.h"
#include "platform/clock.h"
#include "platform/disk_space.h"
#include "platform/files.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "record/event_files.h"
#include "record/live_video.h"
#include "record/trigger_watch.h"
#include "state/camera_config.h"
#include "state/head_state.h"
#include "state/windows.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <memory>
#include <mutex>
#include <utility>

namespace kelvo {

namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;
constexpr std::int64_t kNsPerUs = 1000;
constexpr double kUsPerSecond = 1e6;
constexpr std::int64_t kTendMs = 100;
constexpr std::int64_t kWatchUs = 500'000;  // the disk and the file's name are looked at that often
constexpr double kLeastSecondsLeft = 5;

// Losses since the last frame that was recorded.
struct Missing {
    std::int64_t byTransport = 0;
    std::int64_t byBoard = 0;
    std::int64_t byRing = 0;
    std::int64_t passedOver = 0;
    void AddLosses(const CapturedFrame& frame)
    {
        byTransport += frame.lostByTransport;
        byBoard += frame.lostByBoard;
        byRing += frame.lostByRing;
    }
};

std::int64_t NowNs()
{
    return TickUs() * kNsPerUs;
}

std::int64_t NsOf(double seconds)
{
    return std::llround(seconds * static_cast<double>(kNsPerSecond));
}

// A run, from its start until its board is given back. Status, asked and marks are shared and guarded by mutex; the
// rest belongs to who records once the capture runs.
struct Run {
    RunFiles files;
    TriggerWatch watch;
    std::size_t preFrames = 0;
    std::int64_t periodNs = 0;
    std::int64_t startUtcNs = 0;  // frames before it don't belong to the run
    double bytesPerSecond = 0;
    std::atomic<float> integrationMs = 0;

    RecorderState phase = RecorderState::kWaiting;
    std::size_t examined = 0;         // frames in the ring that the trigger watch has seen
    std::int64_t untilTrigger = 0;    // frames to be written before the trigger frame; below 0: it is written
    std::optional<EventFiles> event;  //
    Missing missing;
    std::int64_t firstNs = 0;        // of the event's first frame
    std::int64_t lastNs = 0;         // of its last one
    std::int64_t triggerNs = 0;      // of its trigger frame
    std::int64_t fromTrigger = 0;    // frames recorded from the trigger frame on
    std::int64_t nextTickNs = 0;     // with an interval
    std::int64_t bytesOfEvents = 0;  // that have ended
    std::int64_t recordedNs = 0;
    std::int64_t syncedUs = 0;
    std::int64_t watchedUs = 0;

    mutable std::mutex mutex;
    RecorderStatus status;
    std::optional<std::int64_t> askedNs;  // a trigger
    bool signalled = false;               // one signal came while nothing was armed
    std::vector<std::int64_t> marksNs;    // not yet given to a frame

    bool holdsBoard = false;  // the main thread's
};
std::unique_ptr<Run> run;  // that runs, or ran last

// ---- what has happened, for those who look

template <typename Change>
void Tell(Run& r, Change change)
{
    const std::scoped_lock lock(r.mutex);
    change(r.status);
}

void SetPhase(Run& r, RecorderState phase)
{
    r.phase = phase;
    Tell(r, [phase](RecorderStatus& status) { status.state = phase; });
}

}  // namespace

std::string LostPlacesText(const RecorderStatus& status)
{
    std::string text;
    if (status.lostByTransport > 0) {
        text = Format("%lld by the transport, ", static_cast<long long>(status.lostByTransport));
    }
    return text + Format("%lld by the board, %lld by the ring", static_cast<long long>(status.lostByBoard.value_or(0)),
                         static_cast<long long>(status.lostByRing));
}

namespace {

std::string LossText(const RecorderStatus& status)
{
    if (!status.lostByBoard) {
        return status.lostByRing == 0
                   ? "none lost by the ring, unknown by the board"
                   : Format("%lld lost by the ring, unknown by the board", static_cast<long long>(status.lostByRing));
    }
    const std::int64_t lost = status.Lost().value_or(0);
    if (lost == 0) return "none lost";
    return Format("%lld lost (", static_cast<long long>(lost)) + LostPlacesText(status) + ")";
}

std::string VerdictOf(const RecorderStatus& status)
{
    return Format("%lld frames, %s, %.1f s", static_cast<long long>(status.frames), LossText(status).c_str(),
                  status.seconds);
}

int ExitCodeOf(const RecorderStatus& status)
{
    if (status.end != RecorderEnd::kStopped && status.end != RecorderEnd::kComplete) return 2;
    return status.Lost() == 0 ? 0 : 1;
}

std::string MessageOf(const RecorderStatus& status)
{
    const std::string file = status.files.empty() ? std::string() : status.files.back();
    const auto frames = static_cast<long long>(status.frames);
    switch (status.end) {
        case RecorderEnd::kDiskFull:
            return Format("The recording was stopped: the disk has room for less than 5 s. Its %lld frames are safe.",
                          frames);
        case RecorderEnd::kWriteFailed:
            return Format(
                "The recording was stopped: the disk didn't take a frame of\n%s\nThe %lld frames before it "
                "are safe.",
                file.c_str(), frames);
        case RecorderEnd::kFileDeleted:
            return Format("The recording was stopped: its file was deleted.\n%s", file.c_str());
        case RecorderEnd::kNoFile:
            return Format("The recording was stopped: a file couldn't be made. Its %lld frames are safe.", frames);
        case RecorderEnd::kNone:
        case RecorderEnd::kStopped:
        case RecorderEnd::kComplete:
            break;
    }
    return {};
}

EndOfRecording JournalEnd(RecorderEnd end)
{
    switch (end) {
        case RecorderEnd::kComplete:
            return EndOfRecording::kComplete;
        case RecorderEnd::kDiskFull:
            return EndOfRecording::kDiskFull;
        case RecorderEnd::kWriteFailed:
        case RecorderEnd::kNoFile:
            return EndOfRecording::kWriteFailed;
        case RecorderEnd::kFileDeleted:
            return EndOfRecording::kFileDeleted;
        case RecorderEnd::kNone:
        case RecorderEnd::kStopped:
            break;
    }
    return EndOfRecording::kStopped;
}

// ---- events

// Closes the event's files; false where that failed.
bool CloseEvent(Run& r, RecorderEnd end)
{
    if (!r.event) return true;
    FrameRecord closing = ClosingRecord(0, JournalEnd(end));
    closing.monotonicNs = r.lastNs;
    closing.lostByTransport = RecordField(r.missing.byTransport);
    closing.lostByBoard = RecordField(r.missing.byBoard);
    closing.lostByRing = RecordField(r.missing.byRing);
    closing.passedOver = RecordField(r.missing.passedOver);
    const bool closed = r.event->Close(closing);
    r.bytesOfEvents += r.event->Bytes();
    r.event.reset();
    return closed;
}

void EndRun(Run& r, RecorderEnd end)
{
    if (!CloseEvent(r, end) && end <= RecorderEnd::kComplete) end = RecorderEnd::kWriteFailed;
    r.phase = RecorderState::kIdle;
    Tell(r, [end](RecorderStatus& status) {
        status.state = RecorderState::kIdle;
        status.end = end;
        status.preTriggerWaiting = 0;
        status.verdict = VerdictOf(status);
        status.message = MessageOf(status);
        status.exitCode = ExitCodeOf(status);
    });
}

void Arm(Run& r)
{
    r.examined = 0;
    r.watch.Arm();
    {
        const std::scoped_lock lock(r.mutex);
        ++r.status.event;
        if (std::exchange(r.signalled, false)) r.askedNs = 0;
    }
    SetPhase(r, r.files.settings.trigger == RecordTrigger::kNone ? RecorderState::kRecording : RecorderState::kArmed);
    r.untilTrigger = 0;
}

// With the oldest frame in the ring; the trigger frame is so many behind it.
bool BeginEvent(Run& r, std::int64_t untilTrigger)
{
    const FrameStamp& first = WaitingFrame(0).stamp;
    r.event = EventFiles::Begin(r.files, first);
    if (!r.event) {
        EndRun(r, RecorderEnd::kNoFile);
        return false;
    }
    r.untilTrigger = untilTrigger;
    r.firstNs = r.lastNs = first.monotonicNs;
    r.fromTrigger = 0;
    r.nextTickNs = first.monotonicNs;
    r.syncedUs = r.watchedUs = TickUs();
    Tell(r, [&r](RecorderStatus& status) {
        status.files.push_back(r.event->Paths().back());
        status.framesOfEvent = 0;
        status.preTriggerWaiting = 0;
    });
    SetPhase(r, RecorderState::kRecording);
    return true;
}

void EndEvent(Run& r)
{
    const std::int64_t events = r.files.settings.events;
    if (events > 0 && r.status.event >= events) {
        EndRun(r, RecorderEnd::kComplete);
    } else if (!CloseEvent(r, RecorderEnd::kComplete)) {
        EndRun(r, RecorderEnd::kWriteFailed);
    } else {
        Arm(r);
    }
}

// ---- frames

void PassOver(Run& r)
{
    const CapturedFrame& frame = WaitingFrame(0);
    r.missing.AddLosses(frame);
    ++r.missing.passedOver;
    DropFrames(1, FrameFate::kPassedOver);
}

// The mark that belongs to a frame of that moment; 0: none. Of marks that fall on one frame the last one tells.
std::uint32_t TakeMark(Run& r, std::int64_t frameNs)
{
    const std::scoped_lock lock(r.mutex);
    const auto later = std::ranges::find_if(r.marksNs, [frameNs](std::int64_t ns) { return ns > frameNs; });
    if (later == r.marksNs.begin()) return 0;
    const std::int64_t still = r.marksNs.end() - later;
    r.marksNs.erase(r.marksNs.begin(), later);
    return static_cast<std::uint32_t>(r.status.marks - still);
}

FrameRecord RecordOf(Run& r, const CapturedFrame& frame)
{
    Missing missing = r.missing;
    missing.AddLosses(frame);
    FrameRecord record = {.number = frame.stamp.number,
                          .monotonicNs = frame.stamp.monotonicNs,
                          .utcNs = frame.stamp.utcNs,
                          .integrationMs = r.integrationMs,
                          .lostByBoard = RecordField(missing.byBoard),
                          .lostByRing = RecordField(missing.byRing),
                          .passedOver = RecordField(missing.passedOver),
                          .triggers = static_cast<std::uint32_t>(frame.stamp.triggers),
                          .mark = TakeMark(r, frame.stamp.monotonicNs),
                          .lostByTransport = RecordField(missing.byTransport)};
    if (record.mark != 0) record.flags |= kMarkedFrame;
    if (r.untilTrigger == 0 && r.files.settings.trigger != RecordTrigger::kNone) record.flags |= kTriggerFrame;
    return record;
}

void TellRecorded(Run& r, const FrameRecord& record)
{
    Tell(r, [&](RecorderStatus& status) {
        const bool first = status.framesOfEvent == 0;
        r.recordedNs += first ? r.periodNs : record.monotonicNs - r.lastNs;
        status.seconds = static_cast<double>(r.recordedNs) / static_cast<double>(kNsPerSecond);
        ++status.frames;
        ++status.framesOfEvent;
        status.bytes = r.bytesOfEvents + r.event->Bytes();
        const std::string& path = r.event->Paths().back();
        if (status.files.back() != path) status.files.push_back(path);
        if (record.number == kUncounted) status.lostByBoard.reset();
        if (first) return;
        if (status.lostByBoard) *status.lostByBoard += record.lostByBoard;
        status.lostByRing += record.lostByRing;
        status.lostByTransport += record.lostByTransport;
    });
}

// The event has had as much from its trigger on as was wished, and this frame belongs to it no more.
bool IsBeyond(const Run& r, const CapturedFrame& frame)
{
    if (r.untilTrigger >= 0 || r.files.settings.length != RecordLength::kSeconds) return false;
    // Half a period: a blank that comes a moment early isn't one more.
    return frame.stamp.monotonicNs - r.triggerNs + r.periodNs / 2 >= NsOf(r.files.settings.seconds);
}

bool IsBetweenTicks(const Run& r, const CapturedFrame& frame)
{
    return r.files.settings.intervalSeconds > 0 && frame.stamp.monotonicNs < r.nextTickNs;
}

void NoteRecorded(Run& r, const CapturedFrame& frame)
{
    if (r.untilTrigger == 0) r.triggerNs = frame.stamp.monotonicNs;
    if (r.untilTrigger <= 0) ++r.fromTrigger;
    if (r.untilTrigger < 0) r.watch.Note(frame);
    r.untilTrigger = std::max<std::int64_t>(r.untilTrigger - 1, -1);
    r.missing = {};
    r.lastNs = frame.stamp.monotonicNs;
    const std::int64_t tickNs = NsOf(r.files.settings.intervalSeconds);
    if (tickNs > 0) r.nextTickNs = r.firstNs + ((r.lastNs - r.firstNs) / tickNs + 1) * tickNs;
}

// Now and then: the disk's room, and whether the file still has a name.
void WatchDisk(Run& r)
{
    const std::int64_t nowUs = TickUs();
    if (!r.event || nowUs - r.watchedUs < kWatchUs) return;
    r.watchedUs = nowUs;
    if (!r.event->AreNamed()) return EndRun(r, RecorderEnd::kFileDeleted);
    const std::optional<std::int64_t> free = FreeDiskBytes(r.files.settings.directory);
    if (!free || r.bytesPerSecond <= 0) return;
    const double seconds = static_cast<double>(*free) / r.bytesPerSecond;
    Tell(r, [seconds](RecorderStatus& status) { status.secondsLeft = seconds; });
    if (seconds < kLeastSecondsLeft) EndRun(r, RecorderEnd::kDiskFull);
}

void SyncNowAndThen(Run& r)
{
    const std::int64_t nowUs = TickUs();
    if (!r.event || static_cast<double>(nowUs - r.syncedUs) < r.files.settings.syncSeconds * kUsPerSecond) return;
    r.syncedUs = nowUs;
    if (!r.event->SyncData()) EndRun(r, RecorderEnd::kWriteFailed);
}

// ---- one step of who records

enum class Step {
    kDropped,  // a frame has left the ring
    kWent,     // it went on, and may go on at once
    kRests     // there is nothing to do before the next frame
};

Step WaitForStart(Run& r)
{
    if (FramesWaiting() == 0) return Step::kRests;
    if (WaitingFrame(0).stamp.utcNs < r.startUtcNs) {
        PassOver(r);
        return Step::kDropped;
    }
    Arm(r);
    return Step::kWent;
}

void HandOnRequest(Run& r)
{
    const std::scoped_lock lock(r.mutex);
    if (r.askedNs) r.watch.AskAt(*r.askedNs);
    r.askedNs.reset();
}

Step WatchForTrigger(Run& r)
{
    if (r.examined >= FramesWaiting()) return Step::kRests;
    HandOnRequest(r);
    if (r.watch.ComesWith(WaitingFrame(r.examined))) {
        BeginEvent(r, static_cast<std::int64_t>(r.examined));
        return Step::kWent;
    }
    ++r.examined;
    const bool full = r.examined > r.preFrames;
    if (full) {
        PassOver(r);
        --r.examined;
    }
    Tell(r, [&r](RecorderStatus& status) {
        status.mean = r.watch.Mean();
        status.preTriggerWaiting = static_cast<std::int64_t>(r.examined);
    });
    return full ? Step::kDropped : Step::kWent;
}

Step RecordOne(Run& r)
{
    if (FramesWaiting() == 0) return Step::kRests;
    if (!r.event) {
        BeginEvent(r, 0);
        return Step::kWent;
    }
    const CapturedFrame& frame = WaitingFrame(0);
    if (IsBeyond(r, frame)) {
        EndEvent(r);
        return Step::kWent;
    }
    if (IsBetweenTicks(r, frame)) {
        PassOver(r);
        return Step::kDropped;
    }
    const FrameRecord record = RecordOf(r, frame);
    if (!r.event->Append(r.files, record, frame.values)) {
        EndRun(r, RecorderEnd::kWriteFailed);
        return Step::kWent;
    }
    TellRecorded(r, record);
    NoteRecorded(r, frame);
    DropFrames(1, FrameFate::kRecorded);
    if (r.files.settings.length == RecordLength::kFrames && r.fromTrigger >= r.files.settings.frames) EndEvent(r);
    SyncNowAndThen(r);
    WatchDisk(r);
    return Step::kDropped;
}

Step PassOverTheRest(Run& r)
{
    if (FramesWaiting() == 0) return Step::kRests;
    PassOver(r);
    return Step::kDropped;
}

Step TakeStep(Run& r)
{
    switch (r.phase) {
        case RecorderState::kWaiting:
            return WaitForStart(r);
        case RecorderState::kArmed:
            return WatchForTrigger(r);
        case RecorderState::kRecording:
            return RecordOne(r);
        case RecorderState::kIdle:
            break;
    }
    return PassOverTheRest(r);
}

void Consume(Run& r)
{
    while (TakeStep(r) == Step::kWent) {
    }
}

// ---- before

bool CanWriteInto(const std::string& directory)
{
    const std::string probe = MakePath({}, directory, ".kelvo-probe", {});
    DeleteFileNamed(probe);  // of one that was killed
    return File::Open(probe, FileMode::kNew).has_value() && DeleteFileNamed(probe);
}

struct Check {
    bool holds;
    const char* otherwise;
};

// The first thing that makes no sense; empty: none does.
std::string WhyNot(const RecorderSettings& s)
{
    const bool byMean = s.trigger == RecordTrigger::kMean;
    const Check checks[] = {
        {!RecorderRuns() && !RecordingRuns(), "A recording runs already."},
        {DirectoryExists(s.directory), "The directory of the recordings isn't there."},
        {PatternIsUsable(s.namePattern),
         "The name pattern makes no file name. Its words are {date}, {time}, {sample}, "
         "{n} and {n:03}."},
        {s.length != RecordLength::kFrames || s.frames >= 1, "A recording of n frames needs at least one."},
        {s.length != RecordLength::kSeconds || s.seconds > 0, "A recording of n seconds needs more than 0 s."},
        {s.intervalSeconds >= 0 && s.preTriggerSeconds >= 0 && s.preTriggerFrames >= 0 && s.events >= 0 &&
             s.splitGigabytes >= 0 && s.splitMinutes >= 0 && s.syncSeconds > 0,
         "A time or a number is below 0."},
        {s.startTime.empty() || SecondsUntil(s.startTime, 0) >= 0, "The start time isn't a time of day like 14:30:00."},
        {s.intervalSeconds == 0 || PreTriggerFramesOf(s) == 0,
         "A pre-trigger keeps every frame: there is none with an interval."},
        {!byMean || s.meanLow <= s.meanHigh, "The window of the mean has its low end above its high one."},
    };
    for (const Check& check : checks) {
        if (!check.holds) return check.otherwise;
    }
    return {};
}

std::string WhyNotWithThisCamera(const RecorderSettings& settings)
{
    if (PreTriggerFramesOf(settings) > LongestPreTrigger()) return LongestPreTriggerText();
    if (!CanWriteInto(settings.directory)) return "No file can be made in the directory of the recordings.";
    return {};
}

std::unique_ptr<Run> NewRun(const RecorderSettings& settings, std::string& why)
{
    std::optional<TriggerMean> mean;
    const bool byMean = settings.trigger == RecordTrigger::kMean || settings.trigger == RecordTrigger::kRegion;
    if (byMean) mean = TriggerMean::Make(settings, why);
    std::optional<RunFiles> files = PrepareRunFiles(settings);
    if (!files) why = "Unable to allocate memory to store data to disk!";
    if (!files || !why.empty()) return nullptr;

    auto fresh = std::make_unique<Run>();
    fresh->files = std::move(*files);
    fresh->watch = TriggerWatch(settings, std::move(mean));
    fresh->preFrames = static_cast<std::size_t>(PreTriggerFramesOf(settings));
    fresh->periodNs = FrameRate > 0 ? NsOf(1 / double{FrameRate}) : 0;
    fresh->bytesPerSecond = BytesPerSecondNeeded(settings);
    fresh->integrationMs = static_cast<float>(IntegrationMsecInForce);
    return fresh;
}

// With the trigger input as the trigger it is on as long as the run lasts; a pulse from now on is one.
void ListenToTriggerInput(Run& r)
{
    if (r.files.settings.trigger != RecordTrigger::kBoardInput) return;
    amdig_trigen(AcqModule, 1);
    FrameStamp newest;
    const std::int64_t before = icp_frame_count(IcpModule) - 1;
    if (icp_next_frame(IcpModule, FrameA, before, 0, 0, 0, {}, newest) == 0) r.watch.NotePulses(newest.triggers);
}

void LeaveTriggerInput(const Run& r)
{
    if (r.files.settings.trigger == RecordTrigger::kBoardInput) amdig_trigen(AcqModule, 0);
}

// Everything is told; the board and the menu are everybody's again.
void GiveBack(Run& r)
{
    EndRecording();
    LeaveTriggerInput(r);
    if (r.phase != RecorderState::kIdle) EndRun(r, RecorderEnd::kStopped);
    r.status.counts = CurrentCaptureCounts();
    r.holdsBoard = false;
    if (hWndMain) KillTimer(hWndMain, kRecorderTimer);
}

}  // namespace

bool StartRecorder(const RecorderSettings& settings, std::string& why)
{
    TendRecorder();
    why = WhyNot(settings);
    if (!why.empty()) return false;
    if (!BeginLiveVideo()) {
        why = "No camera is on.";
        return false;
    }
    why = WhyNotWithThisCamera(settings);
    if (!why.empty()) return false;
    std::unique_ptr<Run> fresh = NewRun(settings, why);
    if (!fresh) return false;

    run = std::move(fresh);
    if (settings.startTime.empty()) {
        Arm(*run);
    } else {
        const std::time_t now = WallClockSeconds();
        run->startUtcNs = (now + SecondsUntil(settings.startTime, now)) * kNsPerSecond;
        run->status.state = RecorderState::kWaiting;
    }
    const std::size_t ring = RingFrames(static_cast<std::int64_t>(CameraFrameValues()));
    run->status.ringFrames = ring;
    run->status.ringSeconds = FrameRate > 0 ? static_cast<double>(ring) / double{FrameRate} : 0;
    ListenToTriggerInput(*run);
    if (!BeginRecording(ring, [] { Consume(*run); })) {
        LeaveTriggerInput(*run);
        run.reset();
        why = "Unable to allocate memory to store data to disk!";
        return false;
    }
    run->holdsBoard = true;
    if (hWndMain) SetTimer(hWndMain, kRecorderTimer, kTendMs);
    return true;
}

void StopRecorder()
{
    if (run && run->holdsBoard) GiveBack(*run);
}

bool RecorderRuns()
{
    return run && CurrentRecorderStatus().state != RecorderState::kIdle;
}

void TendRecorder()
{
    if (!run || !run->holdsBoard) return;
    run->integrationMs = static_cast<float>(IntegrationMsecInForce);
    if (!RecorderRuns()) {
        GiveBack(*run);
    } else if (hWndMain) {
        SetTimer(hWndMain, kRecorderTimer, kTendMs);
    }
}

void TriggerRecorder()
{
    if (!run || run->files.settings.trigger != RecordTrigger::kButton) return;
    const std::scoped_lock lock(run->mutex);
    if (run->status.state == RecorderState::kArmed) run->askedNs = NowNs();
}

void SignalRecorder()
{
    if (!run || run->files.settings.trigger != RecordTrigger::kSignal) return;
    const std::scoped_lock lock(run->mutex);
    if (run->status.state == RecorderState::kArmed) {
        run->askedNs = NowNs();
    } else {
        run->signalled = true;
    }
}

std::int64_t MarkRecorder()
{
    if (!run) return 0;
    const std::scoped_lock lock(run->mutex);
    if (run->status.state != RecorderState::kRecording) return 0;
    run->marksNs.push_back(NowNs());
    return ++run->status.marks;
}

RecorderStatus CurrentRecorderStatus()
{
    if (!run) return {};
    RecorderStatus status;
    {
        const std::scoped_lock lock(run->mutex);
        status = run->status;
    }
    if (run->holdsBoard) status.counts = CurrentCaptureCounts();
    return status;
}

std::int64_t LongestPreTrigger()
{
    // The rest of the ring is for what comes while the disk takes the frames before the trigger.
    return static_cast<std::int64_t>(RingFrames(static_cast<std::int64_t>(CameraFrameValues())) / 4 * 3);
}

std::int64_t PreTriggerFramesOf(const RecorderSettings& settings)
{
    if (settings.trigger == RecordTrigger::kNone) return 0;
    if (settings.preTriggerFrames > 0) return settings.preTriggerFrames;
    return static_cast<std::int64_t>(std::ceil(settings.preTriggerSeconds * double{FrameRate}));
}

std::string LongestPreTriggerText()
{
    const std::int64_t longest = LongestPreTrigger();
    const auto frames = static_cast<long long>(longest);
    if (FrameRate <= 0) return Format("The ring holds at most %lld frames before the trigger.", frames);
    return Format("The ring holds at most %.1f s (%lld frames) before the trigger.",
                  std::floor(static_cast<double>(longest) / double{FrameRate} * 10) / 10, frames);
}

double BytesPerSecondNeeded(const RecorderSettings& settings)
{
    const auto pixelBytes = static_cast<double>(CameraFrameValues() * sizeof(std::int16_t));
    const double frameBytes = pixelBytes + sizeof(FrameHeaderRecord) + sizeof(FrameRecord);
    const double rate =
        settings.intervalSeconds > 0 ? std::min(double{FrameRate}, 1 / settings.intervalSeconds) : double{FrameRate};
    return frameBytes * rate * (settings.pixels == RecordPixels::kBoth ? 2 : 1);
}

std::optional<double> MeasureWriteRate(std::string_view directory)
{
    using std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kLong(500);
    constexpr std::size_t kBlockBytes = std::size_t{4} << 20;
    const std::string path = MakePath({}, directory, ".kelvo-rate", {});
    DeleteFileNamed(path);  // of one that was killed
    std::optional<File> file = File::Open(path, FileMode::kNew);
    if (!file) return std::nullopt;
    std::vector<std::byte> block(kBlockBytes, std::byte{0x5A});
    std::size_t written = 0;
    bool taken = true;
    const auto began = steady_clock::now();
    while (taken && steady_clock::now() - began < kLong) {
        const std::size_t bytes = file->Write(block);
        written += bytes;
        taken = bytes == block.size() && file->SyncData();
    }
    const std::chrono::duration<double> took = steady_clock::now() - began;
    file.reset();
    DeleteFileNamed(path);
    if (!taken) return std::nullopt;
    return static_cast<double>(written) / took.count();
}

void ResetRecorder()
{
    StopRecorder();
    run.reset();
}

}  // namespace kelvo
