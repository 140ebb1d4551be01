#include "calib/apply_calibration.h"

#include "calib/set_reader.h"
#include "calib/stored_correction.h"
#include "grabber/frame_size.h"
#include "grabber/host_frames_write.h"
#include "head/camera_head.h"
#include "imagefile/header_write.h"
#include "imagefile/sequence_file.h"
#include "pixel/coefficient_lists.h"
#include "platform/box.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/buffer_state_write.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/gather.h"
#include "ui/status.h"
#include "video/video.h"
#include "viewing/stored_view.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr const char* kSection = "Calibration";
constexpr std::int64_t kHeaderBytes = sizeof(ImageHeaderRecord);
constexpr std::int16_t kFloatSamples = 8;
constexpr float kAbsoluteZero = -273.0F;
constexpr std::int64_t kProgressMs = 100;

// --- What stands in a file ------------------------------------------------------------------------------------------

// Where frames lie and how large they are; sides and the offset are positive or 0 (WhyNotCounts).
struct FrameLayout {
    std::size_t pixels = 0;
    std::size_t dataOffset = 0;  // bytes

    std::size_t Bytes() const { return pixels * sizeof(std::int16_t) + dataOffset; }
    std::int64_t Position(std::int64_t frame) const
    {
        return kHeaderBytes + frame * static_cast<std::int64_t>(Bytes());
    }
};

FrameLayout LayoutOf(const ImageHeaderRecord& header)
{
    return {static_cast<std::size_t>(header.ImageWidth) * static_cast<std::size_t>(header.ImageHeight),
            static_cast<std::size_t>(header.ImageHeaderDataOffset)};
}

// The counts of a frame's block; an odd FrameHeader is one byte less, as the viewer takes it.
template <typename Byte>
auto CountsOf(std::span<Byte> block, const FrameLayout& layout)
{
    using Count = std::conditional_t<std::is_const_v<Byte>, const std::int16_t, std::int16_t>;
    const std::size_t start = layout.dataOffset & ~std::size_t{1};
    return std::span<Count>(reinterpret_cast<Count*>(block.data() + start), layout.pixels);
}

// Why the lists in force aren't those of its detectors; empty: they may be.
std::string WhyNotOfCamera(const ImageHeaderRecord& header)
{
    if (header.ImageWidth == ActiveConfig.Hroi && header.ImageHeight == ActiveConfig.Vroi) return {};
    return Format("The frames are %d x %d pixels, those of the camera %d x %d.", header.ImageWidth, header.ImageHeight,
                  ActiveConfig.Hroi, ActiveConfig.Vroi);
}

std::int64_t WholeFrames(std::int64_t fileBytes, const FrameLayout& layout)
{
    return std::max<std::int64_t>((fileBytes - kHeaderBytes) / static_cast<std::int64_t>(layout.Bytes()), 0);
}

bool ReadAt(File& file, std::int64_t position, std::span<std::uint8_t> block)
{
    return file.Seek(position) && file.Read(std::as_writable_bytes(block)) == block.size();
}

bool WriteAt(File& file, std::int64_t position, std::span<const std::uint8_t> block)
{
    return file.Seek(position) && file.Write(std::as_bytes(block)) == block.size();
}

// --- APPLYCAL: what is asked for ------------------------------------------------------------------------------------

struct Job {
    HWND window = nullptr;
    std::string imageName;
    std::string calName;  // as it was given
    std::string calPath;
    std::string resultName;
    std::int32_t startFrame = 0;
    std::int32_t endFrame = 0;
    std::int32_t resultStart = 0;

    bool FromMemory() const { return imageName.empty(); }
    bool ToMemory() const { return resultName.empty(); }
    bool InPlace() const { return !FromMemory() && imageName == resultName; }
    std::int64_t ResultFrame(std::int32_t frame) const
    {
        return ToMemory() ? frame : std::int64_t{frame} + resultStart - startFrame;
    }
};

bool Refuse(const Job& job, std::string_view text, std::string_view title, int field)
{
    MessageBeep(Sound::kExclamation);
    MessageBox(job.window, text, title);
    FocusDlgItem(job.window, field);
    return false;
}

bool Agreed(const Job& job, std::string_view question, std::string_view title, int field)
{
    MessageBeep(Sound::kExclamation);
    if (MessageBox(job.window, question, title, BoxIcon::kQuestion, BoxButtons::kYesNo) == Button::kYes) return true;
    FocusDlgItem(job.window, field);
    return false;
}

bool CanBeRead(const std::string& path)
{
    return File::Open(path, FileMode::kRead).has_value();
}

bool NamesWillDo(const Job& job)
{
    if (!job.FromMemory() && !CanBeRead(job.imageName)) {
        return Refuse(job, job.imageName, "Unable to open image file!", kApplyImageName);
    }
    if (job.FromMemory() && FramesInBuffer < 1) {
        return Refuse(job, "No filename and no frames in Host RAM!", "Invalid image filename!", kApplyImageName);
    }
    if (!CanBeRead(job.calPath)) {
        return Refuse(job, job.calName, "Unable to open calibration file!", kApplyCalName);
    }
    return job.ToMemory() || !FileExists(job.resultName) ||
           Agreed(job, "Result file already exists!\nWrite over it?", "Overwrite file?", kApplyResultName);
}

bool RangeWillDo(const Job& job)
{
    if (job.startFrame < 0) {
        return Refuse(job, "StartFrame less than zero!", "StartFrame Error!", kApplyStartFrame);
    }
    if (job.endFrame < job.startFrame) {
        return Refuse(job, "EndFrame less than StartFrame!", "EndFrame Error!", kApplyEndFrame);
    }
    if (job.resultStart < 0) {
        return Refuse(job, "Resultant start frame less than zero!", "Resultant StartFrame Error!", kApplyResultStart);
    }
    return true;
}

// --- APPLYCAL: the header -------------------------------------------------------------------------------------------

bool ReadInputHeader(const Job& job)
{
    const std::int32_t headerBytes = ReadImageHeader(job.imageName, write::file.ImageHeader);
    if (headerBytes < 0) return false;  // told
    const std::string reason = WhyNotCounts(ImageHeader, headerBytes);
    if (!reason.empty()) {
        return Refuse(job, job.imageName + "\n" + reason, "Unable to apply a calibration!", kApplyImageName);
    }
    return ImageHeader.IntensityCold <= 0 ||
           Agreed(job, "Image file has already been calibrated: Continue?", job.imageName, kApplyImageName);
}

// Of the region that the camera reads out, for a burst holds whole frames of it.
void BuildCaptureHeader(const Job& job)
{
    const std::int32_t left = FpaSerialWord.ColStart;
    const std::int32_t top = FpaSerialWord.RowStart;
    ImageHeaderRecord header;
    BuildImageHeader(&header, job.startFrame, job.endFrame, left, top, left + ActiveConfig.Hroi - 1,
                     top + ActiveConfig.Vroi - 1);
    write::file.ImageHeader.FramesAveraged = 1;
}

bool FillHeader(const Job& job)
{
    if (!job.FromMemory()) return ReadInputHeader(job);
    BuildCaptureHeader(job);
    return true;
}

float TemperatureOf(const char* key, const std::string& calPath)
{
    const std::string text = GetPrivateProfileString(kSection, key, "-999.0", calPath);
    return ScanFloat(text).value_or(kUncalibratedTemperature);
}

// --- APPLYCAL: host memory ------------------------------------------------------------------------------------------

bool MemoryWillDo(const Job& job)
{
    if (!job.ToMemory()) return true;
    if (!HostFramesAllocated) write::buffer.HostFrameBytes = AllocateHostFrames();
    const std::int64_t slots = UsableHostFrames();
    if (job.endFrame >= slots) {
        const std::string text = Format("Host RAM has room for %d frames; frame %d has no place in it.",
                                        static_cast<int>(slots), job.endFrame);
        return Refuse(job, text, "EndFrame Error!", kApplyEndFrame);
    }
    const std::string reason = WhyNotOfCamera(ImageHeader);
    if (!reason.empty()) return Refuse(job, reason, "Unable to use Host RAM!", kApplyResultName);
    return true;
}

const std::vector<std::int16_t>* HostFrameOf(std::int64_t frame, std::size_t pixels)
{
    if (frame < 0 || frame >= std::ssize(HostFrames)) return nullptr;
    const std::vector<std::int16_t>& values = HostFrames[static_cast<std::size_t>(frame)];
    return values.size() == pixels ? &values : nullptr;
}

bool ReadHostFrame(std::int32_t frame, std::span<std::int16_t> counts)
{
    const std::vector<std::int16_t>* const values = HostFrameOf(frame, counts.size());
    if (values == nullptr || frame >= FramesInBuffer) return false;
    std::ranges::copy(*values, counts.begin());
    return true;
}

// What is stored next stands behind it.
bool WriteHostFrame(std::int64_t frame, std::span<const std::int16_t> counts)
{
    if (HostFrameOf(frame, counts.size()) == nullptr) return false;
    std::ranges::copy(counts, write::hostFrames.HostFrames[static_cast<std::size_t>(frame)].begin());
    if (frame >= FramesInBuffer) {
        write::buffer.FramesInBuffer = static_cast<std::int32_t>(frame) + 1;
        write::hostFrames.HostFrameNext = FramesInBuffer % std::max(numBufFrames, 1);
    }
    return true;
}

// --- APPLYCAL: the set's lists --------------------------------------------------------------------------------------

// pixels entries; words of 32 bits are in the file.
template <typename Entry>
bool LoadOne(const Job& job, const char* key, std::string_view step, std::string_view title, std::vector<Entry>& list,
             std::size_t words)
{
    StatusMessage(step, kLeftAligned);
    const std::string path = InSetDirectory(job.calPath, GetPrivateProfileString(kSection, key, "", job.calPath));
    const auto bytes = std::span(reinterpret_cast<std::uint8_t*>(list.data()), list.size() * sizeof(Entry));
    return LoadList(path, bytes, words) != 0 || Refuse(job, path, title, kApplyCalName);
}

std::optional<StoredLists> LoadLists(const Job& job, std::size_t pixels)
{
    StoredLists lists;
    if (!AllocateBlock(lists.decom, pixels) || !AllocateBlock(lists.gain, pixels) ||
        !AllocateBlock(lists.offset, pixels)) {
        Refuse(job, "Failure to allocate memory!", "Memory Error", kApplyCalName);
        return std::nullopt;
    }
    // Two offsets a word: of an odd frame the last one isn't in the file, and 0.
    if (!LoadOne(job, "DecomFile", "Loading decommutation list...", "Decommutation File Load Error!", lists.decom,
                 pixels) ||
        !LoadOne(job, "GainFile", "Loading gain list...", "Gain File Load Error!", lists.gain, pixels) ||
        !LoadOne(job, "OffsetFile", "Loading offset list...", "Offset File Load Error!", lists.offset, pixels / 2)) {
        return std::nullopt;
    }
    return lists;
}

// --- APPLYCAL: the run ----------------------------------------------------------------------------------------------

// Where the frames come from and go to. Of the files those are open that the job names; in place it is one.
struct Streams {
    std::optional<File> image;
    std::optional<File> result;
    std::optional<NewFile> newResult;

    // NOLINTBEGIN(bugprone-unchecked-optional-access): OpenStreams opened what the job needs
    File& Input() { return *image; }
    File& Output(const Job& job)
    {
        if (job.InPlace()) return *image;
        return newResult ? newResult->Contents() : *result;
    }
    // NOLINTEND(bugprone-unchecked-optional-access)
};

bool OpenInput(const Job& job, Streams& streams)
{
    if (job.FromMemory()) return true;
    streams.image = File::Open(job.imageName, job.InPlace() ? FileMode::kReadWrite : FileMode::kRead);
    return streams.image || Refuse(job, job.imageName, "Unable to open image file!", kApplyImageName);
}

bool OpenOutput(const Job& job, Streams& streams)
{
    if (job.ToMemory() || job.InPlace()) return true;
    if (FileExists(job.resultName)) {
        streams.result = File::Open(job.resultName, FileMode::kReadWrite);
    } else {
        streams.newResult = NewFile::Begin(job.resultName);
    }
    return streams.result || streams.newResult ||
           Refuse(job, job.resultName, "Unable to open result file!", kApplyResultName);
}

bool WriteResultHeader(const Job& job, Streams& streams)
{
    if (job.ToMemory()) return true;
    write::file.ImageHeader.FrameCount = static_cast<std::uint32_t>(std::int64_t{job.endFrame} + 1 - job.startFrame);
    const auto bytes = std::as_bytes(std::span(&ImageHeader, 1));
    File& file = streams.Output(job);
    return (file.Seek(0) && file.Write(bytes) == bytes.size()) ||
           Refuse(job, job.resultName, "Error writing image data", kApplyResultName);
}

struct Blocks {
    std::vector<std::uint8_t> in;
    std::vector<std::uint8_t> out;  // what the table doesn't reach stays 0
};

struct Run {
    const Job& job;
    FrameLayout layout;
    Streams streams = {};
    Blocks blocks = {};
    std::optional<std::int64_t> toldMs{};

    std::span<std::int16_t> In() { return CountsOf(std::span(blocks.in), layout); }
    std::span<std::int16_t> Out() { return CountsOf(std::span(blocks.out), layout); }
};

bool ReadFrame(Run& run, std::int32_t frame)
{
    const bool read = run.job.FromMemory() ? ReadHostFrame(frame, run.In())
                                           : ReadAt(run.streams.Input(), run.layout.Position(frame), run.blocks.in);
    if (read) return true;
    MessageBeep(Sound::kExclamation);
    MessageBox(run.job.window, Format("Error reading uncalibrated frame #%d.", frame), "Error reading image data");
    return false;
}

bool WriteFrame(Run& run, std::int32_t frame)
{
    std::copy_n(run.blocks.in.begin(), run.layout.dataOffset, run.blocks.out.begin());
    const std::int64_t place = run.job.ResultFrame(frame);
    const bool written = run.job.ToMemory()
                             ? WriteHostFrame(place, run.Out())
                             : WriteAt(run.streams.Output(run.job), run.layout.Position(place), run.blocks.out);
    if (written) return true;
    MessageBeep(Sound::kExclamation);
    MessageBox(run.job.window, Format("Error writing calibrated frame #%d.", frame), "Error writing image data");
    return false;
}

void ShowProgress(Run& run, std::int32_t frame)
{
    if (run.toldMs && TickMs() - *run.toldMs < kProgressMs) return;
    run.toldMs = TickMs();
    StatusMessage(Format(" Correcting frame %d of %d to %d", frame, run.job.startFrame, run.job.endFrame),
                  kLeftAligned);
}

bool GoesOn(const Job& job, std::int32_t frame)
{
    if (GatherGoesOn()) return true;
    MessageBox(job.window, Format("Stopped before frame #%d.", frame), "Apply Calibration to Data",
               BoxIcon::kInformation);
    return false;
}

// Ends at the first frame that fails, which was told.
void CorrectFrames(Run& run, const StoredCorrection* correction)
{
    const Gather gather(run.job.endFrame > run.job.startFrame);
    for (std::int64_t f = run.job.startFrame; f <= run.job.endFrame; ++f) {
        const auto frame = static_cast<std::int32_t>(f);
        if (!GoesOn(run.job, frame) || !ReadFrame(run, frame)) return;
        if (correction == nullptr) continue;
        correction->Correct(run.In(), run.Out());
        if (!WriteFrame(run, frame)) return;
        ShowProgress(run, frame);
    }
}

StoredOrder OrderOf(const Job& job)
{
    if (job.FromMemory()) return StoredOrder::kImageInPlace;
    return job.ToMemory() ? StoredOrder::kReadoutToImage : StoredOrder::kReadoutInPlace;
}

bool EndResult(const Job& job, Streams& streams)
{
    bool arrived = true;
    if (streams.newResult) arrived = streams.newResult->Keep();
    if (streams.result) arrived = streams.result->Close();
    if (job.InPlace() && streams.image) arrived = streams.image->Close();
    const std::int64_t frames = std::int64_t{job.endFrame} - job.startFrame + 1;
    if (arrived && !job.ToMemory()) arrived = RenewChecksums(job.resultName, job.resultStart, frames, {});
    return arrived || Refuse(job, job.resultName, "Error writing image data", kApplyResultName);
}

bool AllocateRun(Run& run)
{
    return (AllocateBlock(run.blocks.in, run.layout.Bytes()) && AllocateBlock(run.blocks.out, run.layout.Bytes())) ||
           Refuse(run.job, "Failure to allocate memory!", "Memory Error", kApplyImageName);
}

// The marks in the header say what is applied: without a cold source nothing is.
bool RunJob(const Job& job)
{
    Run run{.job = job, .layout = LayoutOf(ImageHeader)};
    std::optional<StoredLists> lists = LoadLists(job, run.layout.pixels);
    if (!lists) return false;
    const std::int32_t calType = ImageHeader.IntensityHot >= 0 ? 2 : 1;
    const auto width = static_cast<std::size_t>(ImageHeader.ImageWidth);
    std::optional<StoredCorrection> correction =
        StoredCorrection::Make(calType, std::move(*lists), width, OrderOf(job));
    if (!correction) return Refuse(job, "Failure to allocate memory!", "Memory Error", kApplyCalName);
    if (!AllocateRun(run) || !OpenInput(job, run.streams) || !OpenOutput(job, run.streams) ||
        !WriteResultHeader(job, run.streams)) {
        return false;
    }
    CorrectFrames(run, ImageHeader.IntensityCold < 0 ? nullptr : &*correction);
    return EndResult(job, run.streams);
}

// Live video is frozen for the run, and goes on where nothing came of it.
class FrozenVideo {
  public:
    FrozenVideo() : wasLive_(LiveVideo != 0) { FreezeLiveVideo(); }
    ~FrozenVideo()
    {
        if (wasLive_ && !kept_ && !LiveVideo) ToggleLiveVideo();
    }
    FrozenVideo(const FrozenVideo&) = delete;
    FrozenVideo& operator=(const FrozenVideo&) = delete;
    void Keep() { kept_ = true; }

  private:
    bool wasLive_;
    bool kept_ = false;
};

// --- Recordings, in place -------------------------------------------------------------------------------------------

int TellFileFailure(std::string_view text, std::string_view title)
{
    MessageBeep(Sound::kExclamation);
    MessageBox(hWndMain, text, title);
    return 0;
}

// Makes a frame's block of what was read. Both are as long.
using CorrectBlock = std::function<void(std::span<const std::uint8_t> read, std::span<std::uint8_t> corrected)>;

struct RecordedFile {
    std::string path;
    File file;
    FrameLayout layout;
    std::int64_t frames = 0;  // whole ones
};

// nullopt after a box.
std::optional<RecordedFile> OpenRecorded(std::string_view path)
{
    std::optional<File> file = File::Open(path, FileMode::kReadWrite);
    if (!file) {
        TellFileFailure("Unable to open file!", "Filename Error!");
        return std::nullopt;
    }
    const HeaderKeeper keeper;
    const std::int32_t headerBytes = ReadImageHeader(path, write::file.ImageHeader);
    if (headerBytes < 0) return std::nullopt;
    std::string reason = WhyNotCounts(ImageHeader, headerBytes);
    if (reason.empty()) reason = WhyNotOfCamera(ImageHeader);
    if (!reason.empty()) {
        TellFileFailure(std::string(path) + "\n" + reason, "Unable to apply a calibration!");
        return std::nullopt;
    }
    const FrameLayout layout = LayoutOf(ImageHeader);
    const std::int64_t frames = WholeFrames(file->Length(), layout);
    return RecordedFile{std::string(path), std::move(*file), layout, frames};
}

int CorrectFramesInPlace(RecordedFile& recording, std::uint32_t firstFrame, std::uint32_t count,
                         const CorrectBlock& correct)
{
    std::vector<std::uint8_t> read;
    std::vector<std::uint8_t> corrected;
    const std::size_t bytes = recording.layout.Bytes();
    if (!AllocateBlock(read, bytes) || !AllocateBlock(corrected, bytes)) {
        return TellFileFailure("Failure to allocate memory!", "Memory Error");
    }
    const std::int64_t end = std::min(recording.frames, std::int64_t{firstFrame} + count);
    for (std::int64_t frame = firstFrame; frame < end; ++frame) {
        const std::int64_t position = recording.layout.Position(frame);
        if (!ReadAt(recording.file, position, read)) {
            return TellFileFailure("Unable to read uncalibrated data from file!", "File Read Error!");
        }
        std::ranges::copy(read, corrected.begin());
        correct(read, corrected);
        if (!WriteAt(recording.file, position, corrected)) {
            return TellFileFailure("Unable to write calibrated data to file!", "File Write Error!");
        }
    }
    return recording.file.Close() ? 1
                                  : TellFileFailure("Unable to write calibrated data to file!", "File Write Error!");
}

// At a fault too: frames before it are corrected.
int CorrectInPlace(RecordedFile& recording, std::uint32_t firstFrame, std::uint32_t count, const CorrectBlock& correct)
{
    const int result = CorrectFramesInPlace(recording, firstFrame, count, correct);
    if (RenewChecksums(recording.path, firstFrame, count, {}) || result == 0) return result;
    return TellFileFailure("Unable to write calibrated data to file!", "File Write Error!");
}

// The lists in force as a value.
std::optional<StoredCorrection> CorrectionInForce()
{
    StoredLists lists{DecomList, OffsetList, GainList};
    return StoredCorrection::Make(CalType, std::move(lists), static_cast<std::size_t>(ActiveConfig.Hroi),
                                  StoredOrder::kReadoutToImage);
}

}  // namespace

std::string WhyNotCounts(const ImageHeaderRecord& header, std::int32_t headerBytes)
{
    if (headerBytes != kHeaderBytes) return "The file is one of the spectrometer trigger: its frames are averages.";
    if (header.ByteSwap == 0) return "The file is byte-swapped.";
    if (header.SampleBytes == sizeof(float) || header.DataType == kFloatSamples)
        return "The file holds floats, not counts.";
    if (header.SampleBytes != sizeof(std::int16_t) || header.ImageWidth <= 0 || header.ImageHeight <= 0 ||
        header.ImageHeaderDataOffset < 0) {
        return "The file's header makes no frames of 16-bit counts.";
    }
    return {};
}

void MarkCalibrated(ImageHeaderRecord& header, const std::string& calPath)
{
    const auto intensity = [&](const char* key) {
        return static_cast<std::int16_t>(GetPrivateProfileInt(kSection, key, kUncalibratedIntensity, calPath));
    };
    header.IntensityCold = intensity("IntensityCold");
    header.IntensityHot = intensity("IntensityHot");
    const float cold = TemperatureOf("TemperatureCold", calPath);
    const float coldMark = cold > kAbsoluteZero ? cold : kUncalibratedTemperature;
    const float hot = TemperatureOf("TemperatureHot", calPath);
    header.TemperatureCold = coldMark;
    header.TemperatureHot = hot > coldMark ? hot : kUncalibratedTemperature;
}

std::int32_t CountImageFrames(std::string_view path)
{
    if (path.empty()) return FramesInBuffer;
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (!file) return 0;
    ImageHeaderRecord header;
    if (ReadImageHeader(path, header) < 0) return 0;
    const std::int64_t recordBytes = FrameRecordBytes(header);
    const bool isEmpty = recordBytes > 0 && file->Length() < kHeaderBytes + recordBytes;
    const std::int64_t frames = isEmpty ? 0 : std::int64_t{header.FrameCount};
    return static_cast<std::int32_t>(std::min<std::int64_t>(frames, std::numeric_limits<std::int32_t>::max()));
}

std::int32_t ApplyCalibration(HWND window, const std::string& imageName, const std::string& calName,
                              const std::string& resultName, std::int32_t startFrame, std::int32_t endFrame,
                              std::int32_t resultStart)
{
    const Job job{window, imageName, calName, AbsolutePath(calName), resultName, startFrame, endFrame, resultStart};
    const Hourglass hourglass;
    FrozenVideo frozen;
    HeaderKeeper header;
    if (!NamesWillDo(job) || !RangeWillDo(job) || !FillHeader(job)) return 0;
    MarkCalibrated(write::file.ImageHeader, job.calPath);
    if (!MemoryWillDo(job) || !RunJob(job)) return 0;
    frozen.Keep();
    if (!job.ToMemory()) header.KeepNew();
    return 1;
}

std::int32_t ApplyCalToFile(std::string_view path)
{
    return ApplyCalToFrames(path, 0, std::numeric_limits<std::uint32_t>::max());
}

std::int32_t ApplyCalToFrames(std::string_view path, std::uint32_t firstFrame, std::uint32_t count)
{
    if (CalType == 0) return 1;
    const Hourglass hourglass;
    std::optional<RecordedFile> recording = OpenRecorded(path);
    if (!recording) return 0;
    const FrameLayout layout = recording->layout;
    return CorrectInPlace(
        *recording, firstFrame, count, [&](std::span<const std::uint8_t> read, std::span<std::uint8_t> corrected) {
            // The table counts from the start of the block, as these files were first corrected.
            const auto* const block = reinterpret_cast<const std::int16_t*>(read.data());
            CalibrateGathered({block, read.size() / sizeof(std::int16_t)}, CountsOf(corrected, layout));
        });
}

std::int32_t CorrectRecordedFrames(std::string_view path, std::uint32_t firstFrame, std::uint32_t count)
{
    if (CalType == 0) return 1;
    const Hourglass hourglass;
    const std::optional<StoredCorrection> correction = CorrectionInForce();
    if (!correction) return TellFileFailure("Failure to allocate memory!", "Memory Error");
    std::optional<RecordedFile> recording = OpenRecorded(path);
    if (!recording) return 0;
    const FrameLayout layout = recording->layout;
    return CorrectInPlace(*recording, firstFrame, count,
                          [&](std::span<const std::uint8_t> read, std::span<std::uint8_t> corrected) {
                              correction->Correct(CountsOf(read, layout), CountsOf(corrected, layout));
                          });
}

}  // namespace kelvo
