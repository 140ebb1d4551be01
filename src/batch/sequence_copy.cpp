#include "batch/sequence_copy.h"

#include "batch/batch_end.h"
#include "batch/new_sequence.h"
#include "imagefile/crc32c.h"
#include "imagefile/frames_file.h"
#include "imagefile/sequence_file.h"
#include "platform/memory.h"
#include "platform/text.h"

#include <cstring>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

using Failure = std::optional<std::string>;
using Progress = std::function<void(std::int64_t done, std::int64_t all)>;

struct Source {
    FrameRange range;
    SequenceFile sequence;
    std::optional<FramesFile> journal;
};

// One that can be copied from, or why not.
std::optional<Source> OpenSource(const FrameRange& wanted, std::string& why)
{
    const auto refuse = [&](const char* reason) {
        why = wanted.path + ' ' + reason;
        return std::nullopt;
    };
    std::optional<SequenceFile> sequence = SequenceFile::Open(wanted.path, FileMode::kRead);
    if (!sequence) return refuse("isn't a sequence that can be read");
    if (IsBeingRecorded(wanted.path)) return refuse("is being recorded");
    FrameRange range = wanted;
    if (range.end < 0) range.end = sequence->Frames();
    if (range.first < 0 || range.first >= range.end || range.end > sequence->Frames()) {
        return refuse(
            Format("has %lld frames: there are none of that range", static_cast<long long>(sequence->Frames()))
                .c_str());
    }
    FramesFile journal = ReadFramesFile(FramesPathOf(wanted.path));
    if (journal.fault == FramesFault::kNotOpened) return Source{range, std::move(*sequence), std::nullopt};
    const bool whole = journal.fault == FramesFault::kNone && journal.closing &&
                       static_cast<std::int64_t>(journal.records.size()) == sequence->Frames() &&
                       sequence->BytesBehind() == 0;
    if (!whole) return refuse("wasn't closed or is damaged: recover it first");
    return Source{range, std::move(*sequence), std::move(journal)};
}

// What has to be the same for frames of one file.
bool SameFrames(const ImageHeaderRecord& a, const ImageHeaderRecord& b)
{
    return a.ByteSwap == b.ByteSwap && a.ImageWidth == b.ImageWidth && a.ImageHeight == b.ImageHeight &&
           a.SampleBytes == b.SampleBytes && a.ImageHeaderDataOffset == b.ImageHeaderDataOffset;
}

// One header speaks for the frames of all: what reads them in degrees has to be the same. Raw frames don't read so.
bool SameSources(const Source& a, const Source& b)
{
    if (a.journal && a.journal->head.Text(frames_key::kPixels) == kRawPixels) return true;
    const ImageHeaderRecord& one = a.sequence.Header();
    const ImageHeaderRecord& other = b.sequence.Header();
    return one.IntensityCold == other.IntensityCold && one.TemperatureCold == other.TemperatureCold &&
           one.IntensityHot == other.IntensityHot && one.TemperatureHot == other.TemperatureHot;
}

Failure WhyNotTogether(std::span<const Source> sources)
{
    const Source& first = sources.front();
    for (const Source& source : sources) {
        if (!SameFrames(source.sequence.Header(), first.sequence.Header())) {
            return source.range.path + " has frames of another kind";
        }
        if (source.journal.has_value() != first.journal.has_value()) return "some have a journal and some don't";
        const bool samePixels =
            !source.journal || source.journal->head.Text(frames_key::kPixels) ==
                                   first.journal.value_or(FramesFile()).head.Text(frames_key::kPixels);
        if (!samePixels) return source.range.path + " has frames of another kind";
        if (!SameSources(source, first)) return source.range.path + " was corrected with other sources";
    }
    return std::nullopt;
}

// A new sequence in the making: its frames go to the disk, its records wait for the end.
class Output {
  public:
    Output(NewSequence sequence, std::int64_t frames, const Progress& progress)
        : sequence_(std::move(sequence)), frames_(frames), progress_(progress)
    {
    }

    Failure Begin(const SequenceFile& first)
    {
        const ImageHeaderRecord header = first.HeaderForFile(frames_);
        return sequence_.Write(std::as_bytes(std::span(&header, 1)));
    }

    Failure Add(Source& source)
    {
        std::vector<std::byte> frame;
        if (!AllocateBlock(frame, static_cast<std::size_t>(source.sequence.FrameBytes()))) return "no memory is left";
        for (std::int64_t i = source.range.first; i < source.range.end; ++i) {
            if (Interrupted()) return std::string(kInterrupted);
            if (!source.sequence.ReadFrame(i, frame)) return source.range.path + " can't be read";
            if (Failure failure = AddRecord(source, i, frame)) return failure;
            Renumber(frame, source);
            if (Failure failure = sequence_.Write(frame)) return failure;
            progress_(added_ + i + 1 - source.range.first, frames_);
        }
        added_ += source.range.end - source.range.first;
        return std::nullopt;
    }

    Failure End(const Source& first, const Source& last)
    {
        if (!first.journal || !last.journal) return sequence_.End({});
        return sequence_.End(FramesFileBytes(first.journal->head, records_, Closing(last)));
    }

  private:
    Failure AddRecord(const Source& source, std::int64_t index, std::span<const std::byte> frame)
    {
        if (!source.journal) return std::nullopt;
        FrameRecord record = source.journal->records[static_cast<std::size_t>(index)];
        if (record.pixelCrc != Crc32c(frame.subspan(source.sequence.HeaderBytesOfFrame()))) {
            return source.range.path + Format(": frame %lld doesn't fit its checksum", static_cast<long long>(index));
        }
        // The first frame of a piece may go on with another file; inside a file none does.
        if (!records_.empty()) {
            record.flags &= ~static_cast<std::uint32_t>(kFirstOfPart);
        } else if (index > 0) {
            record.flags |= kFirstOfPart;
        }
        records_.push_back(record);
        return std::nullopt;
    }

    void Renumber(std::span<std::byte> frame, const Source& source) const
    {
        if (source.sequence.HeaderBytesOfFrame() != sizeof(FrameHeaderRecord)) return;
        FrameHeaderRecord header;
        std::memcpy(&header, frame.data(), sizeof header);
        const std::int64_t number = header.FrameNum - source.range.first + added_;
        header.FrameNum = static_cast<std::int32_t>(number);
        std::memcpy(frame.data(), &header, sizeof header);
    }

    // What is told behind the last frame of a source holds where that frame is taken too.
    FrameRecord Closing(const Source& last) const
    {
        const bool toTheEnd = last.range.end == last.sequence.Frames();
        FrameRecord closing = toTheEnd && last.journal && last.journal->closing
                                  ? *last.journal->closing
                                  : ClosingRecord(0, EndOfRecording::kNextPart);
        closing.number = added_;
        return closing;
    }

    NewSequence sequence_;
    std::int64_t frames_ = 0;
    const Progress& progress_;
    std::vector<FrameRecord> records_;
    std::int64_t added_ = 0;
};

Failure Write(std::vector<Source>& sources, const std::string& out, const Progress& progress)
{
    std::string why;
    std::optional<NewSequence> sequence = NewSequence::Begin(out, why);
    if (!sequence) return why;
    std::int64_t frames = 0;
    for (const Source& source : sources) frames += source.range.end - source.range.first;
    Output output(std::move(*sequence), frames, progress);
    if (Failure failure = output.Begin(sources.front().sequence)) return failure;
    for (Source& source : sources) {
        if (Failure failure = output.Add(source)) return failure;
    }
    if (Interrupted()) return std::string(kInterrupted);
    return output.End(sources.front(), sources.back());
}

}  // namespace

std::optional<std::string> CopyFrames(std::span<const FrameRange> sources, const std::string& out,
                                      const Progress& progress)
{
    std::vector<Source> opened;
    for (const FrameRange& range : sources) {
        std::string why;
        std::optional<Source> source = OpenSource(range, why);
        if (!source) return why;
        opened.push_back(std::move(*source));
    }
    if (opened.empty()) return "no sequence was named";
    if (Failure failure = WhyNotTogether(opened)) return failure;
    return Write(opened, out, progress);
}

}  // namespace kelvo
