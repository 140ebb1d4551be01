#include "analysis/image_math.h"

#include "acquire/averaging.h"
#include "grabber/board_state.h"
#include "imagefile/frame_file.h"
#include "imagefile/frames_file.h"
#include "imagefile/header_write.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "state/frame_state.h"
#include "ui/gather.h"
#include "ui/status.h"
#include "viewing/frame_to_save.h"
#include "viewing/stored_view.h"

#include <algorithm>
#include <filesystem>
#include <span>
#include <system_error>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr std::int64_t kProgressMs = 100;

using Failure = std::optional<ImageMathFailure>;

struct Size {
    std::int32_t columns = 0;
    std::int32_t rows = 0;
    std::size_t Pixels() const { return static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows); }
};

// --- A source -------------------------------------------------------------------------------------------------------

struct Source {
    const char* word;  // as the texts name it
    bool used;
    const std::string& path;

    Size size = {};
    std::vector<std::int16_t> counts = {};  // its frame in hand
    std::uint32_t frames = 1;

    std::optional<File> file = {};  // and what belongs to one
    ImageHeaderRecord header = {};
    std::int32_t headerBytes = 0;
    std::vector<float> floats = {};
};

ImageMathFailure Failed(const char* text, const Source& source, std::string_view caption)
{
    return {.text = Format(text, source.word), .caption = caption};
}

ImageMathFailure NoMemory(const char* word)
{
    return {.text = Format("Failure to allocate && lock memory for %s!", word), .caption = kMemoryCaption};
}

// --- The image on the screen ----------------------------------------------------------------------------------------

Size SizeOnScreen()
{
    const Point part = ActivePartOnView();
    return {part.x, part.y};
}

// A board without its modules was told in a box, and gave nothing.
bool GatherScreen(std::span<std::int16_t> frame)
{
    constexpr std::uint32_t kMode = kAverage16 | kTakeNewFrames | kNewFramesOnly;
    if (ViewingFile) return GatherFrameToSave(frame, 1, kMode);
    return GrabberPresent && GatherFrameToSave(frame, 1, kMode) && IcpModule >= 0 && AcqModule >= 0;
}

Failure TakeScreen(Source& source)
{
    constexpr const char* kNotRead = "Failure to read %s!";
    source.size = SizeOnScreen();
    if (source.size.Pixels() == 0) return Failed(kNotRead, source, kScreenCaption);
    if (!AllocateBlock(source.counts, ValuesOnView())) return NoMemory(source.word);
    if (!GatherScreen(source.counts)) return Failed(kNotRead, source, kScreenCaption);
    CutToActivePart(source.counts);
    return {};
}

// --- A file ---------------------------------------------------------------------------------------------------------

// Where the samples of a frame begin; nullopt where the file doesn't hold them all.
std::optional<std::int64_t> PlaceOfSamples(const File& file, const Source& source, std::uint32_t frame)
{
    const ImageHeaderRecord& header = source.header;
    const auto start = FrameRecordPosition(header, source.headerBytes, frame);
    const bool known = header.SampleBytes == 2 || header.SampleBytes == 4;
    if (!start || !known || *start + FrameRecordBytes(header) > file.Length()) return std::nullopt;
    return *start + header.ImageHeaderDataOffset;
}

template <typename Sample>
bool ReadSamples(const File& file, std::int64_t place, std::vector<Sample>& samples)
{
    const auto bytes = std::as_writable_bytes(std::span(samples));
    return file.ReadAt(place, bytes) == bytes.size();
}

bool ReadFrame(Source& source, std::uint32_t frame)
{
    if (!source.file) return false;
    const File& file = *source.file;
    const std::optional<std::int64_t> place = PlaceOfSamples(file, source, frame);
    if (!place) return false;
    if (source.floats.empty()) return ReadSamples(file, *place, source.counts);
    if (!ReadSamples(file, *place, source.floats)) return false;
    std::ranges::transform(source.floats, source.counts.begin(), CountOfFloat);
    return true;
}

bool AllocateFrame(Source& source)
{
    const std::size_t pixels = PixelCount(source.header);
    const bool floats = source.header.SampleBytes == 4;
    return AllocateBlock(source.counts, pixels) && (!floats || AllocateBlock(source.floats, pixels));
}

Failure OpenSource(Source& source)
{
    constexpr const char* kNotRead = "Failure to read %s image data!";
    source.file = File::Open(source.path, FileMode::kRead);
    if (!source.file) return Failed("Failure to open %s file!", source, kOpenCaption);
    source.headerBytes = ReadHeaderOf(*source.file, source.header);
    if (source.headerBytes < 0) return Failed("Failure to read %s ImageHeader!", source, kReadCaption);
    source.frames = source.header.FrameCount;
    source.size = {source.header.ImageWidth, source.header.ImageHeight};
    // Before memory is taken for what isn't there.
    if (!PlaceOfSamples(*source.file, source, 0)) return Failed(kNotRead, source, kReadCaption);
    if (!AllocateFrame(source)) return NoMemory(source.word);
    if (!ReadFrame(source, 0)) return Failed(kNotRead, source, kReadCaption);
    return {};
}

Failure TakeFirstFrame(Source& source)
{
    if (!source.used) return {};
    return source.path.empty() ? TakeScreen(source) : OpenSource(source);
}

// --- A run ----------------------------------------------------------------------------------------------------------

struct Run {
    const ImageMath& math;
    Source source1;
    Source source2;
    std::uint32_t frames = 1;

    Size size = {};
    std::vector<std::int16_t> counts = {};
    ImageMathOutcome outcome = {};
    std::optional<std::int64_t> toldMs = {};
};

Size ResultSize(const Run& run)
{
    const Source& one = run.source1;
    const Source& two = run.source2;
    if (!one.used && !two.used) return SizeOnScreen();
    if (!two.used) return one.size;
    if (!one.used) return two.size;
    return {std::min(one.size.columns, two.size.columns), std::min(one.size.rows, two.size.rows)};
}

Failure TakeSources(Run& run)
{
    if (Failure failure = TakeFirstFrame(run.source1)) return failure;
    if (Failure failure = TakeFirstFrame(run.source2)) return failure;
    run.frames = std::max(run.source1.frames, run.source2.frames);
    run.size = ResultSize(run);
    if (run.size.Pixels() == 0 || !AllocateBlock(run.counts, run.size.Pixels())) return NoMemory("Result");
    return {};
}

// Sources of which one is longer go on with that one alone.
Failure TakeNextFrame(Source& source, std::uint32_t frame, bool alike)
{
    if (!source.used || frame >= source.frames || (alike && ReadFrame(source, frame))) return {};
    return ImageMathFailure{.text = Format("Failure to read %s (Frame %u) image data!", source.word, frame + 1),
                            .caption = kReadCaption};
}

Failure TakeNextFrames(Run& run, std::uint32_t frame)
{
    // Source 1 reads on in steps of source 2, where there is one.
    const bool alike = !run.source2.used || run.source1.counts.size() == run.source2.counts.size();
    if (Failure failure = TakeNextFrame(run.source1, frame, alike)) return failure;
    return TakeNextFrame(run.source2, frame, true);
}

// The range that spans those of the sources that are files; without one it is the one in force.
void SpanRanges(const Run& run, ImageHeaderRecord& header)
{
    bool first = true;
    for (const Source* source : {&run.source1, &run.source2}) {
        if (!source->file) continue;
        const std::int16_t low = source->header.DisplayLow;
        const std::int16_t high = source->header.DisplayHigh;
        const std::int16_t lowBefore = header.DisplayLow;
        const std::int16_t highBefore = header.DisplayHigh;
        header.DisplayLow = first ? low : std::min(low, lowBefore);
        header.DisplayHigh = first ? high : std::max(high, highBefore);
        first = false;
    }
}

ImageMathFailure ResultFailed(std::string text)
{
    return {.text = std::move(text), .caption = kResultCaption};
}

bool WriteHeader(const Run& run, File& file)
{
    ImageHeaderRecord header;
    BuildImageHeader(&header, 0, 0, 0, 0, run.size.columns - 1, run.size.rows - 1);
    SpanRanges(run, header);
    write::file.ImageHeader = header;
    const auto bytes = std::as_bytes(std::span(&header, 1));
    return file.Write(bytes) == bytes.size();
}

bool WriteFrame(Run& run, File& file)
{
    run.outcome.wrapped += WeightedSum(run.math.weights, run.source1.counts, run.source2.counts, run.counts);
    const auto bytes = std::as_bytes(std::span(run.counts));
    return file.Write(bytes) == bytes.size();
}

void ShowProgress(Run& run, std::uint32_t frame)
{
    if (run.frames < 2 || (run.toldMs && TickMs() - *run.toldMs < kProgressMs)) return;
    run.toldMs = TickMs();
    StatusMessage(Format(" Image math: frame %u of %u", frame + 1, run.frames), kLeftAligned);
}

Failure WriteFrames(Run& run, NewFile& file)
{
    constexpr const char* kNotStored = "Unable to store image data to Result file!";
    const Gather gather(run.frames > 1);
    for (std::uint32_t frame = 0; frame < run.frames; ++frame) {
        if (!GatherGoesOn()) {
            return ImageMathFailure{
                .text = Format("Stopped before frame %u.", frame + 1), .caption = "Image Math", .isStop = true};
        }
        ShowProgress(run, frame);
        if (frame > 0) {
            if (Failure failure = TakeNextFrames(run, frame)) return failure;
        }
        if (!WriteFrame(run, file.Contents())) return ResultFailed(kNotStored);
        ++run.outcome.frames;
    }
    if (!file.Keep()) return ResultFailed(kNotStored);
    return {};
}

Failure Write(Run& run)
{
    std::optional<NewFile> file = NewFile::Begin(run.math.result);
    if (!file) {
        return ImageMathFailure{
            .text = "Unable to create Result file!", .caption = kResultCaption, .namesResult = true};
    }
    if (!WriteHeader(run, file->Contents())) return ResultFailed("Unable to store ImageHeader to Result file!");
    Failure failure = WriteFrames(run, *file);
    if (!failure) {
        DeleteFileNamed(FramesPathOf(run.math.result));  // the journal of the sequence that stood there
        return {};
    }
    const std::string beside = file->LeaveBeside();
    if (!beside.empty()) failure->text += "\nWhat was written stays in " + beside;
    return failure;
}

// The line as it was, where a run fails.
class StatusKeeper {
  public:
    StatusKeeper() : align_(GetStatusText(text_)) {}
    ~StatusKeeper()
    {
        if (StatusText != text_) StatusMessage(text_, align_);
    }
    StatusKeeper(const StatusKeeper&) = delete;
    StatusKeeper& operator=(const StatusKeeper&) = delete;

  private:
    std::string text_;
    int align_;
};

bool AreOneFile(const std::string& a, const std::string& b)
{
    std::error_code error;
    return std::filesystem::equivalent(a, b, error);
}

}  // namespace

bool ResultIsSource(const ImageMath& math)
{
    const std::string result = ResolvePath(math.result);
    const std::string beside = NewFile::NameBeside(math.result);  // the part that a former run left
    const auto isResult = [&](float constant, const std::string& path) {
        return constant != 0 && !path.empty() &&
               (AreOneFile(ResolvePath(path), result) || AreOneFile(ResolvePath(path), beside));
    };
    return isResult(math.weights.c1, math.frame1) || isResult(math.weights.c2, math.frame2);
}

bool ResultCanBeWritten(const std::string& path)
{
    return File::Open(path, FileMode::kReadWrite) || NewFile::Begin(path);
}

ImageMathOutcome RunImageMath(const ImageMath& math)
{
    const Hourglass hourglass;
    const StatusKeeper status;
    HeaderKeeper header;
    Run run{.math = math,
            .source1 = {.word = "Source1", .used = math.weights.c1 != 0, .path = math.frame1},
            .source2 = {.word = "Source2", .used = math.weights.c2 != 0, .path = math.frame2}};
    run.outcome.failure = TakeSources(run);
    if (!run.outcome.failure) run.outcome.failure = Write(run);
    if (!run.outcome.failure && !ViewingFile) header.KeepNew();
    return std::move(run.outcome);
}

}  // namespace kelvo
