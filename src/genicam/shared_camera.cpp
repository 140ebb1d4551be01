#include "genicam/shared_camera.h"

#include "genicam/register_map.h"
#include "genicam/retry_times.h"
#include "platform/clock.h"
#include "platform/text.h"
#include "platform/thread_priority.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

namespace kelvo {

namespace {

constexpr std::int64_t kNsPerUs = 1000;
constexpr std::int64_t kUsPerMs = 1000;
constexpr double kUsPerSecond = 1e6;
constexpr std::int64_t kSliceUs = 10'000;  // the thread looks that often at what is wanted of it
constexpr std::size_t kFramesKept = 16;
constexpr std::size_t kFramesInWait = 4;        // behind one that is missing
constexpr std::int64_t kLeastWaitUs = 100'000;  // for a late one
constexpr std::int64_t kLeastSilenceUs = 1'000'000;
constexpr std::int64_t kSilentPeriods = 3;
constexpr std::int64_t kMostClockStepNs = 200'000'000;  // the camera's clock was set, or is no clock
constexpr auto kStartLimit = std::chrono::seconds(10);
constexpr std::uint8_t kRefusal = 0x69;
constexpr std::uint8_t kIdentifyRegister = 0x20;
constexpr WireFrame kClocksOff = {0x90, 0x10, 0x00, 0x00};

// How long something has been waited for is no matter of the program's clock, which may be virtual.
std::int64_t SteadyUs()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

std::vector<std::uint8_t> Bytes(const WireFrame& frame)
{
    return {frame.begin(), frame.end()};
}

std::vector<std::uint8_t> Refused(const WireFrame& frame)
{
    return {kRefusal, frame[1], frame[2], frame[3]};
}

HeadRegisters FreshHead()
{
    // The array is larger than any window that the wire can name.
    constexpr double kClockHz = 48e6;
    constexpr std::int32_t kMostSide = 1024;
    return PowerUpHead(HeadModel::kInSb, kClockHz, kMostSide, kMostSide);
}

bool IsFrameSize(const WireFrame& frame)
{
    constexpr std::uint8_t kTimingRegister = 0x50;
    constexpr std::uint8_t kSelectFrameSize = 1;
    return frame[0] == kTimingRegister && frame[1] == kSelectFrameSize;
}

// The head was sent a frame size: the section's, as far as a byte can say it. The sentence where it is another.
std::string TakeSectionSize(const SharedCamera::Section& section, HeadRegisters& head)
{
    constexpr std::int32_t kUnit = 4;
    constexpr std::int32_t kByte = 256;
    head.rowsBeyondByte = head.colsBeyondByte = 0;
    if (section.timingRows == 0 || section.timingColumns == 0) return {};
    if (section.timingRows / kUnit % kByte == head.timingRows &&
        section.timingColumns / kUnit % kByte == head.timingCols) {
        head.rowsBeyondByte = section.timingRows - kUnit * head.timingRows;
        head.colsBeyondByte = section.timingColumns - kUnit * head.timingCols;
        return {};
    }
    return Format(
        "The head was sent a frame of %d columns and %d rows where the camera's section has %d and %d: the "
        "frame rate is reckoned from the former.",
        ColumnsOfTiming(head), RowsOfTiming(head), section.timingColumns, section.timingRows);
}

// A frame that can be read, and the board's name for it.
struct Frame {
    FrameStamp stamp;
    CameraBuffer buffer;
    CameraShape shape;
    CountRule counts;
};
using FramePointer = std::shared_ptr<Frame>;

// What is asked for of a frame: whole lines at once, otherwise cut out of all that it has.
void Unpack(const Frame& frame, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
            std::span<std::int16_t> out)
{
    const CameraShape& shape = frame.shape;
    if (x == 0 && y == 0 && width == shape.columns && height <= shape.rows) {
        const auto values = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        UnpackPixels(shape.format, frame.counts, frame.buffer.bytes, out.first(values));
        return;
    }
    const auto columns = static_cast<std::size_t>(shape.columns);
    std::vector<std::int16_t> all(columns * static_cast<std::size_t>(shape.rows));
    UnpackPixels(shape.format, frame.counts, frame.buffer.bytes, all);
    std::ranges::fill(out, std::int16_t{0});
    const std::int32_t wide = std::min(width, shape.columns - x);
    for (std::int32_t row = 0; row < height && y + row < shape.rows && wide > 0; ++row) {
        const auto from = static_cast<std::size_t>(y + row) * columns + static_cast<std::size_t>(x);
        std::copy_n(all.begin() + static_cast<std::ptrdiff_t>(from), wide,
                    out.begin() + static_cast<std::ptrdiff_t>(row) * width);
    }
}

// The times of frames by two clocks: this machine's at the first packet, and the camera's own, which has no such
// jitter, set by this machine's at the first frame and again where the two part.
class FrameClocks {
  public:
    void Stamp(const CameraBuffer& buffer, FrameStamp& stamp)
    {
        const std::int64_t nowTickUs = TickUs();
        const std::int64_t nowUtcNs = UtcNsAtTick(nowTickUs);
        stamp.utcNs = buffer.systemUtcNs > 0 ? buffer.systemUtcNs : nowUtcNs;
        const std::int64_t arrivedNs = nowTickUs * kNsPerUs - std::max<std::int64_t>(nowUtcNs - stamp.utcNs, 0);
        stamp.monotonicNs = arrivedNs;
        if (buffer.deviceNs <= 0) return;
        if (!isSet_ || std::abs(buffer.deviceNs + offsetNs_ - arrivedNs) > kMostClockStepNs) {
            offsetNs_ = arrivedNs - buffer.deviceNs;
            isSet_ = true;
        }
        stamp.monotonicNs = buffer.deviceNs + offsetNs_;
    }
    bool UsesCamera() const { return isSet_; }

  private:
    std::int64_t offsetNs_ = 0;
    bool isSet_ = false;
};

// What the thread has of a stream that runs.
struct Stream {
    Stream(const CameraShape& frameShape, const CountRule& rule, std::int64_t waitUs)
        : numbers(frameShape.numbering), order(kFramesInWait, waitUs), shape(frameShape), counts(rule)
    {
    }
    NumberUnwrapper numbers;
    ArrivalOrder order;
    CameraShape shape;
    CountRule counts;
    std::map<std::size_t, CameraBuffer> waiting;  // in order's hands, by handle
    std::size_t nextHandle = 0;
    std::int64_t silentSinceUs = 0;
    std::optional<std::int64_t> base;  // the number of the frame before the stream's first; nullopt: none has come
    std::int64_t lostBase = 0;         // frames lost up to it
};

}  // namespace

struct SharedCamera::State {
    State(std::string name, CameraOpener openCamera) : device(std::move(name)), opener(std::move(openCamera)) {}

    const std::string device;
    const CameraOpener opener;

    // ---- The camera and its features; taken before the other mutex.
    std::mutex cameraMutex;
    std::shared_ptr<CameraDevice> camera;
    DeviceSettings settings;
    std::optional<CameraWishes> applied;
    CameraSettings actual;
    bool wasOn = false;  // the head's clocks, since the camera was opened

    // ---- What all see.
    std::mutex mutex;
    std::condition_variable changed;
    HeadRegisters head = FreshHead();
    Section section;
    std::optional<CameraShape> shape;  // of the camera opened last
    CountRule counts;
    CameraSettings told;  // actual, for those who ask
    bool cameraClock = false;
    std::vector<std::string> notes;
    std::set<std::string> noted;  // each once, until the camera is released
    bool isLost = false;
    bool isSilent = false;
    std::string lostText;
    bool wantsStream = false;
    bool countsAnew = false;  // from 1, with the next stream
    Trigger trigger = Trigger::kNone;
    std::int64_t wish = 0;  // one more with each change of these two
    std::int64_t doneWish = 0;
    bool streamWasRefused = false;
    std::deque<FramePointer> frames;  // kept, the oldest first
    std::int64_t newest = 0;
    std::int64_t lost = 0;

    // ---- Of the thread alone.
    std::unique_ptr<Stream> stream;
    std::shared_ptr<CameraDevice> streaming;
    std::vector<FramePointer> old;  // no longer kept, perhaps still being read
    FrameClocks clocks;
    std::int64_t lastFrameUtcNs = 0;
    std::size_t tries = 0;
    std::chrono::steady_clock::time_point nextTry;

    std::jthread thread;  // from the first opening to the release

    void Note(std::string sentence)
    {
        const std::scoped_lock lock(mutex);
        if (!sentence.empty() && noted.insert(sentence).second) notes.push_back(std::move(sentence));
    }

    bool WasOn()
    {
        const std::scoped_lock lock(cameraMutex);
        return wasOn;
    }

    std::int64_t PeriodUs()
    {
        const std::scoped_lock lock(mutex);
        return told.rateHz && *told.rateHz > 0 ? std::llround(kUsPerSecond / *told.rateHz) : 0;
    }

    // ---- Opening, with cameraMutex

    bool OpenCamera(std::string& error)
    {
        DeviceSettings asked = settings;
        {
            const std::scoped_lock lock(mutex);
            asked.columns = section.columns;
            asked.rows = section.rows;
        }
        std::shared_ptr<CameraDevice> opened = opener(device, asked, error);
        if (!opened) return false;
        camera = std::move(opened);
        applied.reset();
        const CameraShape found = camera->Shape();
        if (!settings.format.empty() && found.format.name != settings.format) {
            Note(Format("The camera gives %.*s where %s was asked.", static_cast<int>(found.format.name.size()),
                        found.format.name.data(), settings.format.c_str()));
        }
        const std::int32_t packetSize = camera->PacketSize();
        if (settings.packetSize > 0 && packetSize > 0 && packetSize != settings.packetSize) {
            Note(Format("The camera sends packets of %d bytes where %d were asked.", packetSize, settings.packetSize));
        }
        const std::optional<double> rateHz = ReadFeature(camera->Features(), Feature::kActualRate);
        actual = {.rateHz = rateHz ? rateHz : ReadFeature(camera->Features(), Feature::kRate),
                  .exposureUs = ReadFeature(camera->Features(), Feature::kExposure),
                  .gain = ReadFeature(camera->Features(), Feature::kGain),
                  .blackLevel = ReadFeature(camera->Features(), Feature::kBlackLevel)};
        const std::scoped_lock lock(mutex);
        shape = found;
        counts = settings.counts.value_or(DefaultCountRule(found.format.bits));
        told = actual;
        return true;
    }

    // Before the head's clocks are on nothing is asked: who only looks which head is there changes no camera. False
    // where the camera refused something that it has.
    bool ApplyRegisters()
    {
        CameraWishes wishes;
        bool isOn = false;
        {
            const std::scoped_lock lock(mutex);
            wishes = WishesOf(head);
            isOn = head.clocksOn;
        }
        if (!camera || !isOn || applied == wishes) return true;
        std::vector<std::string> sentences;
        const bool taken = ApplyWishes(camera->Features(), wishes, applied, actual, sentences);
        applied = wishes;
        for (std::string& sentence : sentences) Note(std::move(sentence));
        const std::scoped_lock lock(mutex);
        told = actual;
        return taken;
    }

    // ---- Loss

    void Lose(std::string text)
    {
        StopStream();
        {
            const std::scoped_lock lock(cameraMutex);
            camera.reset();
        }
        tries = 0;
        nextTry = std::chrono::steady_clock::now() + std::chrono::milliseconds(RetryDelayMs(0));
        const std::scoped_lock lock(mutex);
        isLost = true;
        lostText = std::move(text);
        changed.notify_all();
    }

    void TryAgain(const std::stop_token& stop)
    {
        {
            std::unique_lock lock(mutex);
            changed.wait_until(
                lock, std::min(nextTry, std::chrono::steady_clock::now() + std::chrono::microseconds(kSliceUs)));
        }
        if (std::chrono::steady_clock::now() < nextTry || stop.stop_requested()) return;
        std::string error;
        const std::scoped_lock cameraLock(cameraMutex);
        const CameraSettings before = actual;
        if (!OpenCamera(error)) {
            ++tries;
            nextTry = std::chrono::steady_clock::now() + std::chrono::milliseconds(RetryDelayMs(tries));
            const std::scoped_lock lock(mutex);
            lostText = Format("Camera lost (try %zu): ", tries) + error;
            return;
        }
        ApplyRegisters();
        if (actual != before) Note("The camera came back with other settings than it had.");
        const std::scoped_lock lock(mutex);
        isLost = false;
        lostText.clear();
        --doneWish;  // the stream begins again where one is wanted
        changed.notify_all();
    }

    // ---- The stream

    bool StartStream(std::string& error)
    {
        const std::scoped_lock cameraLock(cameraMutex);
        if (!camera) return false;
        Trigger wanted = Trigger::kNone;
        CountRule rule;
        {
            const std::scoped_lock lock(mutex);
            wanted = trigger;
            rule = counts;
        }
        constexpr std::string_view kInputs[] = {"Line1", "Line0", "Line2", "Line3"};
        constexpr std::string_view kSoftware[] = {"Software"};
        const FeatureAccess& features = camera->Features();
        const bool waits = wanted != Trigger::kNone;
        if (!SwitchFeature(features, Feature::kTrigger, waits) && waits) {
            error = "The camera has no trigger.";
            return false;
        }
        if (wanted == Trigger::kInput) SwitchFeature(features, Feature::kTriggerSource, true, kInputs);
        if (wanted == Trigger::kSoftware) SwitchFeature(features, Feature::kTriggerSource, true, kSoftware);
        if (!camera->BeginStream(error)) return false;
        if (wanted == Trigger::kSoftware) {
            const auto now = FindFeature(features, Feature::kTriggerNow);
            if (now) features.execute(std::string(now->name));
        }
        streaming = camera;
        stream = std::make_unique<Stream>(camera->Shape(), rule, std::max(2 * PeriodUs(), kLeastWaitUs));
        stream->silentSinceUs = SteadyUs();
        return true;
    }

    void StopStream()
    {
        if (!stream) return;
        Publish(stream->order.TakeAll());
        stream.reset();
        old.clear();
        const std::scoped_lock cameraLock(cameraMutex);
        streaming->EndStream();
        streaming.reset();
    }

    // Starts or stops the stream as it is wanted now.
    void FollowWish()
    {
        std::int64_t seen = 0;
        bool wanted = false;
        {
            const std::scoped_lock lock(mutex);
            if (doneWish == wish) return;
            seen = wish;
            wanted = wantsStream;
        }
        StopStream();
        if (wanted) DropFramesOfLastGrab();
        std::string error;
        const bool started = !wanted || StartStream(error);
        if (!started) Note(error);
        const std::scoped_lock lock(mutex);
        streamWasRefused = !started;
        doneWish = seen;
        changed.notify_all();
    }

    // What the end of the former stream brought is none of the new grab's.
    void DropFramesOfLastGrab()
    {
        const std::scoped_lock lock(mutex);
        if (!std::exchange(countsAnew, false)) return;
        frames.clear();
        newest = lost = 0;
    }

    // Where a stream begins in the numbers of the grab: with its first frame for one that the grab began; behind a loss
    // by the time that has passed since the last frame.
    void PlaceStream(const CameraBuffer& buffer, std::int64_t ofStream)
    {
        const std::int64_t periodUs = PeriodUs();
        const std::scoped_lock lock(mutex);
        std::int64_t missed = 0;
        const std::int64_t passedNs = buffer.systemUtcNs - lastFrameUtcNs;
        if (newest > 0 && periodUs > 0 && lastFrameUtcNs > 0 && passedNs > 0) {
            missed = std::max<std::int64_t>(
                std::llround(static_cast<double>(passedNs) / kNsPerUs / static_cast<double>(periodUs)) - ofStream, 0);
        }
        stream->base = newest + missed;
        stream->lostBase = lost + missed;
    }

    void NoteStreamBuffer()
    {
        const std::optional<ReceiveBuffer> buffer = streaming->StreamBuffer();
        if (!buffer || buffer->granted >= buffer->asked) return;
        Note(
            Format("The network's receive buffer has %lld bytes where %lld were asked: frames can get lost. Setup, "
                   "Cameras... says what to do.",
                   static_cast<long long>(buffer->granted), static_cast<long long>(buffer->asked)));
    }

    void TakeBuffer(CameraBuffer buffer)
    {
        const std::int64_t nowUs = SteadyUs();
        const std::int64_t number = stream->numbers.NumberOf(buffer.number);
        if (!stream->base) {
            PlaceStream(buffer, number);
            NoteStreamBuffer();
        }
        if (buffer.isWhole) stream->silentSinceUs = nowUs;
        const std::size_t handle = stream->nextHandle++;
        if (stream->order.Take(number, buffer.isWhole, handle, nowUs)) {
            stream->waiting.emplace(handle, std::move(buffer));
        } else {
            streaming->GiveBack(std::move(buffer));
        }
    }

    void Publish(const std::vector<OrderedFrame>& ready)
    {
        for (const OrderedFrame& each : ready) {
            auto frame = std::make_shared<Frame>();
            frame->buffer = std::move(stream->waiting.extract(each.buffer).mapped());
            frame->shape = stream->shape;
            frame->counts = stream->counts;
            clocks.Stamp(frame->buffer, frame->stamp);
            frame->stamp.number = stream->base.value_or(0) + each.number;
            frame->stamp.lostByTransport = stream->lostBase + each.lostBefore;
            lastFrameUtcNs = frame->stamp.utcNs;
            const std::scoped_lock lock(mutex);
            newest = frame->stamp.number;
            lost = frame->stamp.lostByTransport;
            cameraClock = clocks.UsesCamera();
            isSilent = false;
            frames.push_back(std::move(frame));
            while (frames.size() > kFramesKept) {
                old.push_back(std::move(frames.front()));
                frames.pop_front();
            }
            changed.notify_all();
        }
    }

    // Buffers that nobody reads any more are filled again.
    void GiveBackOld()
    {
        const auto isFree = [](const FramePointer& frame) { return frame.use_count() == 1; };
        for (FramePointer& frame : old) {
            if (isFree(frame)) streaming->GiveBack(std::move(frame->buffer));
        }
        std::erase_if(old, isFree);
    }

    bool TakeNext(std::int64_t limitUs)
    {
        std::optional<CameraBuffer> buffer = streaming->WaitForBuffer(limitUs);
        if (!buffer) return false;
        TakeBuffer(*std::move(buffer));
        Publish(stream->order.TakeReady(SteadyUs()));
        GiveBackOld();
        return true;
    }

    void TakeBuffers()
    {
        if (TakeNext(kSliceUs)) {
            while (TakeNext(0)) {
            }
        }
        Publish(stream->order.TakeReady(SteadyUs()));
        GiveBackOld();
    }

    // A stream that is silent for longer than a frame can take, and a camera that is gone.
    void Watch()
    {
        std::shared_ptr<CameraDevice> watched;
        {
            const std::scoped_lock lock(cameraMutex);
            watched = camera;
        }
        if (!watched) return;
        if (watched->IsLost()) return Lose("Control over the camera was lost.");
        if (!stream) return;
        bool waitsForTrigger = false;
        {
            const std::scoped_lock lock(mutex);
            waitsForTrigger = trigger != Trigger::kNone;
        }
        const std::int64_t limitUs = std::max(kSilentPeriods * PeriodUs(), kLeastSilenceUs);
        if (waitsForTrigger || SteadyUs() - stream->silentSinceUs < limitUs) return;
        {
            const std::scoped_lock lock(mutex);
            isSilent = true;
            changed.notify_all();
            lostText = "No whole frame comes from the camera.";
        }
        stream->silentSinceUs = SteadyUs();
        bool answers = false;
        {
            const std::scoped_lock lock(cameraMutex);
            answers = watched->Answers();
        }
        if (!answers) Lose("The camera doesn't answer any more.");
    }

    void Run(const std::stop_token& stop)
    {
        RaiseThreadPriority();
        while (!stop.stop_requested()) {
            bool lostNow = false;
            {
                const std::scoped_lock lock(mutex);
                lostNow = isLost;
            }
            if (lostNow) {
                TryAgain(stop);
                continue;
            }
            FollowWish();
            if (stream) {
                TakeBuffers();
            } else {
                std::unique_lock lock(mutex);
                changed.wait_for(lock, std::chrono::microseconds(kSliceUs));
            }
            Watch();
        }
        StopStream();
    }
};

SharedCamera::SharedCamera(std::string device, CameraOpener opener)
    : state_(std::make_unique<State>(std::move(device), std::move(opener)))
{
}

SharedCamera::~SharedCamera()
{
    Release();
}

void SharedCamera::SetSettings(const DeviceSettings& settings)
{
    State& s = *state_;
    {
        const std::scoped_lock lock(s.cameraMutex);
        if (std::exchange(s.settings, settings) == settings || !s.camera) return;
    }
    EndGrab();
    std::string error;
    const std::scoped_lock lock(s.cameraMutex);
    s.camera.reset();
    if (s.OpenCamera(error)) {
        s.ApplyRegisters();
    } else {
        s.Note(error);
    }
}

void SharedCamera::SetSection(const Section& section)
{
    const std::scoped_lock lock(state_->mutex);
    state_->section = section;
    state_->head.clockHz = section.clockHz;
}

bool SharedCamera::Open(std::string& error)
{
    State& s = *state_;
    {
        const std::scoped_lock lock(s.mutex);
        if (s.isLost) {
            error = s.lostText;
            return false;
        }
    }
    const std::scoped_lock cameraLock(s.cameraMutex);
    if (s.camera) return true;
    if (!s.OpenCamera(error)) return false;
    if (s.thread.joinable()) return true;
    s.thread = std::jthread([&s](const std::stop_token& stop) { s.Run(stop); });
    return true;
}

void SharedCamera::Release()
{
    State& s = *state_;
    s.thread.request_stop();
    if (s.thread.joinable()) s.thread.join();
    s.thread = {};
    const std::scoped_lock cameraLock(s.cameraMutex);
    s.camera.reset();
    s.applied.reset();
    s.wasOn = false;
    const std::scoped_lock lock(s.mutex);
    s.isLost = s.isSilent = false;
    s.lostText.clear();
    s.doneWish = s.wish - (s.wantsStream ? 1 : 0);
    s.noted.clear();
    s.changed.notify_all();
}

std::vector<std::uint8_t> SharedCamera::Answer(const WireFrame& frame)
{
    State& s = *state_;
    if (frame == kClocksOff && s.WasOn()) {
        Release();
        const std::scoped_lock lock(s.mutex);
        TakeHeadFrame(s.head, frame);
        return Bytes(frame);
    }
    std::string error;
    if (!Open(error)) {
        const std::scoped_lock lock(s.mutex);
        if (s.isLost) return Refused(frame);
        if (frame[0] == kIdentifyRegister) s.notes.push_back(error);
        return {};
    }
    WireFrame answer{};
    {
        const std::scoped_lock lock(s.mutex);
        const auto place = static_cast<std::uint16_t>(frame[0] * 256 + frame[1]);
        const auto former = s.head.kept.find(place);
        const bool isNew = former == s.head.kept.end() || former->second != std::array{frame[2], frame[3]};
        TakeHeadFrame(s.head, frame);
        answer = HeadAnswer(s.head, frame);
        std::string sentence = isNew ? NoteOnKeptFrame(frame) : std::string();
        if (IsFrameSize(frame)) sentence = TakeSectionSize(s.section, s.head);
        if (!sentence.empty() && s.noted.insert(sentence).second) s.notes.push_back(sentence);
    }
    const std::scoped_lock cameraLock(s.cameraMutex);
    if (!s.ApplyRegisters() && (!s.camera || s.camera->IsLost())) return Refused(frame);
    const std::scoped_lock lock(s.mutex);
    if (s.head.clocksOn) s.wasOn = true;
    return Bytes(answer);
}

bool SharedCamera::BeginGrab(Trigger trigger)
{
    State& s = *state_;
    std::string error;
    const bool isOpen = Open(error);
    std::unique_lock lock(s.mutex);
    if (!isOpen && !s.isLost) return false;
    s.wantsStream = s.countsAnew = true;
    s.trigger = trigger;
    s.frames.clear();
    s.newest = s.lost = 0;
    const std::int64_t wish = ++s.wish;
    s.changed.notify_all();
    s.changed.wait_for(lock, kStartLimit, [&s, wish] { return s.doneWish >= wish || s.isLost; });
    return s.isLost || (s.doneWish >= wish && !s.streamWasRefused);
}

void SharedCamera::EndGrab()
{
    State& s = *state_;
    std::unique_lock lock(s.mutex);
    if (!s.wantsStream) return;
    s.wantsStream = false;
    const std::int64_t wish = ++s.wish;
    s.changed.notify_all();
    if (!s.thread.joinable()) return;
    s.changed.wait_for(lock, kStartLimit, [&s, wish] { return s.doneWish >= wish || s.isLost; });
}

std::int64_t SharedCamera::FrameCount()
{
    const std::scoped_lock lock(state_->mutex);
    return state_->newest;
}

std::int64_t SharedCamera::LostByTransport()
{
    const std::scoped_lock lock(state_->mutex);
    return state_->lost;
}

bool SharedCamera::ReadFrame(std::optional<std::int64_t> after, std::int64_t limitUs, std::int32_t x, std::int32_t y,
                             std::int32_t width, std::int32_t height, std::span<std::int16_t> out, FrameStamp& stamp)
{
    State& s = *state_;
    FramePointer frame;
    {
        std::unique_lock lock(s.mutex);
        const auto isThere = [&s, after] { return !s.frames.empty() && (!after || s.newest > *after); };
        if (!s.changed.wait_for(lock, std::chrono::microseconds(limitUs), isThere)) return false;
        const auto isLater = [after](const FramePointer& each) { return each->stamp.number > *after; };
        frame = after ? *std::ranges::find_if(s.frames, isLater) : s.frames.back();
    }
    Unpack(*frame, x, y, width, height, out);
    stamp = frame->stamp;
    return true;
}

bool SharedCamera::WaitForFrame(std::int64_t after, std::int64_t limitUs)
{
    State& s = *state_;
    std::unique_lock lock(s.mutex);
    s.changed.wait_for(lock, std::chrono::microseconds(limitUs),
                       [&s, after] { return s.newest > after || s.isLost || s.isSilent; });
    return s.newest > after;
}

CameraReport SharedCamera::Report()
{
    State& s = *state_;
    const std::scoped_lock lock(s.mutex);
    CameraReport report;
    if (!s.shape) return report;
    report.rateHz = s.told.rateHz;
    if (s.told.exposureUs) report.integrationMs = *s.told.exposureUs / kUsPerMs;
    report.columns = s.shape->columns;
    report.rows = s.shape->rows;
    report.bits = BitsOfCounts(s.shape->format.bits, s.counts);
    report.counts = CountRuleText(s.counts);
    report.clock = s.cameraClock
                       ? "monotonic times: the camera's clock, set by this machine's; UTC: this machine's at the "
                         "first packet of a frame"
                       : "this machine's clock at the first packet of a frame";
    if (s.isLost || s.isSilent) {
        report.link = CameraLink::kLost;
        report.linkText = s.lostText;
    }
    return report;
}

std::vector<std::string> SharedCamera::TakeNotes()
{
    const std::scoped_lock lock(state_->mutex);
    return std::exchange(state_->notes, {});
}

}  // namespace kelvo
