#include "batch/apply_command.h"

#include "batch/batch_arguments.h"
#include "batch/cut_command.h"
#include "batch/new_sequence.h"
#include "calib/apply_calibration.h"
#include "calib/set_reader.h"
#include "calib/stored_correction.h"
#include "imagefile/crc32c.h"
#include "imagefile/frames_file.h"
#include "imagefile/header.h"
#include "imagefile/sequence_file.h"
#include "platform/digest.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

using Failure = std::optional<std::string>;

constexpr std::int64_t kHeaderBytes = sizeof(ImageHeaderRecord);
constexpr std::int64_t kBlockBytes = std::int64_t{1} << 20;  // read, corrected and written while caches hold them
constexpr std::size_t kLongestCalFile = std::size_t{16} << 20;

// --- The recording --------------------------------------------------------------------------------------------------

struct Source {
    File file;
    ImageHeaderRecord header;
    std::int64_t frameBytes = 0;  // with its FrameHeader
    std::size_t before = 0;       // of the FrameHeader
    std::int64_t first = 0;
    std::int64_t end = 0;
    std::optional<FramesFile> journal;

    std::size_t Pixels() const
    {
        return static_cast<std::size_t>(header.ImageWidth) * static_cast<std::size_t>(header.ImageHeight);
    }
};

Failure ReadHeader(Source& source)
{
    const auto bytes = std::as_writable_bytes(std::span(&source.header, 1));
    if (source.file.Read(bytes) < bytes.size()) return "isn't an image file";
    const std::int32_t headerBytes = DeclaresSpiff(source.header) ? sizeof(SpiffHeaderRecord) : kHeaderBytes;
    if (source.header.HeaderVersion < kFirstVersionWithFrameHeaders) source.header.ImageHeaderDataOffset = 0;
    const std::string reason = WhyNotCounts(source.header, headerBytes);
    if (!reason.empty()) return "can't be corrected: " + reason;
    if (source.header.ImageHeaderDataOffset % 2 != 0) return "can't be corrected: its FrameHeaders are odd";
    source.before = static_cast<std::size_t>(source.header.ImageHeaderDataOffset);
    source.frameBytes = FrameRecordBytes(source.header);
    return std::nullopt;
}

Failure TakeRange(Source& source, const ApplyRequest& request)
{
    const std::int64_t frames = std::max<std::int64_t>(source.file.Length() - kHeaderBytes, 0) / source.frameBytes;
    source.first = request.first;
    source.end = request.end < 0 ? frames : request.end;
    if (source.first >= 0 && source.first < source.end && source.end <= frames) return std::nullopt;
    return Format("has %lld frames: there are none of that range", static_cast<long long>(frames));
}

Failure ReadJournal(Source& source, const ApplyRequest& request)
{
    FramesFile journal = ReadFramesFile(FramesPathOf(request.in));
    if (journal.fault == FramesFault::kNotOpened) return std::nullopt;
    const std::int64_t bytes = source.file.Length() - kHeaderBytes;
    const bool whole = journal.fault == FramesFault::kNone && journal.closing &&
                       std::ssize(journal.records) * source.frameBytes == bytes;
    if (!whole) return "wasn't closed or is damaged: recover it first";
    if (journal.head.Text(frames_key::kPixels) == kCorrectedPixels) return "is corrected already";
    source.journal = std::move(journal);
    return std::nullopt;
}

std::optional<Source> OpenSource(const ApplyRequest& request, std::string& why)
{
    std::optional<File> file = File::Open(request.in, FileMode::kRead);
    if (!file) {
        why = request.in + " can't be opened";
        return std::nullopt;
    }
    Source source{.file = std::move(*file), .header = {}, .journal = {}};
    Failure failure = IsBeingRecorded(request.in) ? Failure("is being recorded") : ReadHeader(source);
    if (!failure) failure = TakeRange(source, request);
    if (!failure) failure = ReadJournal(source, request);
    if (!failure) return source;
    why = request.in + ' ' + *failure;
    return std::nullopt;
}

// --- The set --------------------------------------------------------------------------------------------------------

template <typename Entry>
Failure WhyNotRead(const SetList<Entry>& list)
{
    if (list.read == ListRead::kComplete) return std::nullopt;
    const char* const reason = list.read == ListRead::kNotRead ? " doesn't fit the frames" : " can't be read";
    return list.path + reason;
}

std::optional<StoredCorrection> CorrectionOf(const ApplyRequest& request, const Source& source, std::string& why)
{
    if (!FileExists(request.set)) {
        why = request.set + " can't be opened";
        return std::nullopt;
    }
    CalibrationSet set = ReadSet(AbsolutePath(request.set), source.Pixels());
    Failure failure = set.memoryRefused ? Failure("no memory is left") : WhyNotRead(set.decom);
    if (!failure && set.type != 1 && set.type != 2)
        failure = request.set + " is no calibration with one or two sources";
    if (!failure && set.type == 2) failure = WhyNotRead(set.gains);
    if (!failure) failure = WhyNotRead(set.offsets);
    if (failure) {
        why = *failure;
        return std::nullopt;
    }
    StoredLists lists{std::move(set.decom.entries), std::move(set.offsets.entries), std::move(set.gains.entries)};
    std::optional<StoredCorrection> correction = StoredCorrection::Make(
        set.type, std::move(lists), static_cast<std::size_t>(source.header.ImageWidth), StoredOrder::kReadoutToImage);
    if (!correction) why = "no memory is left";
    return correction;
}

// --- The result -----------------------------------------------------------------------------------------------------

FramesHead HeadOfResult(const FramesHead& head, const std::string& set)
{
    FramesHead corrected = head;
    corrected.SetText(frames_key::kPixels, kCorrectedPixels);
    corrected.SetText(frames_key::kCalibration, AbsolutePath(set));
    corrected.SetText(frames_key::kChecksum, Sha256Of(ReadWholeFile(set, kLongestCalFile).value_or("")));
    return corrected;
}

// A new sequence in the making: frames go to the disk in blocks, records of the journal wait for the end.
class Result {
  public:
    Result(Source& source, const StoredCorrection& correction, const ApplyRequest& request, NewSequence sequence)
        : source_(source), correction_(correction), request_(request), sequence_(std::move(sequence))
    {
    }

    Failure Begin()
    {
        framesABlock_ = std::clamp<std::int64_t>(kBlockBytes / source_.frameBytes, 1, source_.end - source_.first);
        const auto bytes = static_cast<std::size_t>(framesABlock_ * source_.frameBytes);
        if (!AllocateBlock(in_, bytes) || !AllocateBlock(out_, bytes)) return "no memory is left";
        ImageHeaderRecord header = source_.header;
        MarkCalibrated(header, AbsolutePath(request_.set));
        header.FrameCount = static_cast<std::uint32_t>(source_.end - source_.first);
        if (!source_.file.Seek(kHeaderBytes + source_.first * source_.frameBytes))
            return request_.in + " can't be read";
        return sequence_.Write(std::as_bytes(std::span(&header, 1)));
    }

    Failure Add(std::int64_t from)
    {
        const std::int64_t frames = std::min(framesABlock_, source_.end - from);
        const auto bytes = static_cast<std::size_t>(frames * source_.frameBytes);
        const auto read = std::span(in_).first(bytes);
        if (source_.file.Read(std::as_writable_bytes(read)) < bytes) return request_.in + " can't be read";
        for (std::int64_t i = 0; i < frames; ++i) {
            const auto place = static_cast<std::size_t>(i * source_.frameBytes);
            const auto size = static_cast<std::size_t>(source_.frameBytes);
            if (Failure failure = Correct(from + i, read.subspan(place, size), std::span(out_).subspan(place, size))) {
                return failure;
            }
        }
        return sequence_.Write(std::as_bytes(std::span(out_).first(bytes)));
    }

    Failure End()
    {
        if (!source_.journal) return sequence_.End({});
        return sequence_.End(FramesFileBytes(HeadOfResult(source_.journal->head, request_.set), records_, Closing()));
    }

    std::int64_t FramesABlock() const { return framesABlock_; }

  private:
    Failure Correct(std::int64_t index, std::span<const std::uint8_t> read, std::span<std::uint8_t> corrected)
    {
        std::copy_n(read.begin(), source_.before, corrected.begin());
        Renumber(index, corrected);
        const auto* const counts = reinterpret_cast<const std::int16_t*>(read.data() + source_.before);
        auto* const result = reinterpret_cast<std::int16_t*>(corrected.data() + source_.before);
        correction_.Correct({counts, source_.Pixels()}, {result, source_.Pixels()});
        return AddRecord(index, std::as_bytes(read.subspan(source_.before)),
                         std::as_bytes(corrected.subspan(source_.before)));
    }

    void Renumber(std::int64_t index, std::span<std::uint8_t> frame) const
    {
        if (source_.before != sizeof(FrameHeaderRecord)) return;
        FrameHeaderRecord header;
        std::memcpy(&header, frame.data(), sizeof header);
        header.FrameNum = static_cast<std::int32_t>(index - source_.first);
        std::memcpy(frame.data(), &header, sizeof header);
    }

    Failure AddRecord(std::int64_t index, std::span<const std::byte> read, std::span<const std::byte> corrected)
    {
        if (!source_.journal) return std::nullopt;
        FrameRecord record = source_.journal->records[static_cast<std::size_t>(index)];
        if (record.pixelCrc != Crc32c(read)) {
            return request_.in + Format(": frame %lld doesn't fit its checksum", static_cast<long long>(index));
        }
        record.pixelCrc = Crc32c(corrected);
        if (index > 0 && index == source_.first) record.flags |= kFirstOfPart;
        records_.push_back(Sealed(record));
        return std::nullopt;
    }

    FrameRecord Closing() const
    {
        const FramesFile& journal = *source_.journal;  // NOLINT(bugprone-unchecked-optional-access): End looked
        const bool toTheEnd = source_.end == std::ssize(journal.records) && journal.closing;
        FrameRecord closing = toTheEnd ? *journal.closing : ClosingRecord(0, EndOfRecording::kNextPart);
        closing.number = std::ssize(records_);
        return Sealed(closing);
    }

    Source& source_;
    const StoredCorrection& correction_;
    const ApplyRequest& request_;
    NewSequence sequence_;
    std::int64_t framesABlock_ = 1;
    std::vector<std::uint8_t> in_;
    std::vector<std::uint8_t> out_;
    std::vector<FrameRecord> records_;
};

// --- The arguments --------------------------------------------------------------------------------------------------

constexpr std::string_view kWord = "apply";
constexpr std::string_view kSet = "--set";
constexpr std::string_view kFrames = "--frames";

std::optional<ApplyRequest> RequestOf(const BatchArguments& taken, std::string& why)
{
    why = taken.error;
    if (!why.empty()) return std::nullopt;
    const std::optional<std::string> set = taken.Value(kSet);
    const auto range = FrameRangeOf(taken.Value(kFrames).value_or(":"));
    if (!set || taken.files.size() != 2) {
        why = "--set DIR/x.cal, a sequence and the name of the new one are needed";
    } else if (!range) {
        why = kFrameRangeForm;
    } else {
        return ApplyRequest{
            .set = *set, .in = taken.files[0], .out = taken.files[1], .first = range->first, .end = range->second};
    }
    return std::nullopt;
}

// On a terminal one line that is written over; elsewhere a line at each tenth.
void ShowProgress(std::int64_t done, std::int64_t all, std::int64_t& tenthShown)
{
    const bool terminal = isatty(STDERR_FILENO) != 0;
    const std::int64_t tenth = 10 * done / all;
    if (!terminal && tenth == tenthShown) return;
    tenthShown = tenth;
    std::fprintf(stderr, terminal ? "\rkelvo apply: %lld of %lld frames" : "kelvo apply: %lld of %lld frames\n",
                 static_cast<long long>(done), static_cast<long long>(all));
    if (terminal && done == all) std::fputc('\n', stderr);
}

}  // namespace

std::optional<std::string> ApplySet(const ApplyRequest& request,
                                    const std::function<void(std::int64_t done, std::int64_t all)>& progress)
{
    std::string why;
    std::optional<Source> source = OpenSource(request, why);
    if (!source) return why;
    const std::optional<StoredCorrection> correction = CorrectionOf(request, *source, why);
    if (!correction) return why;
    std::optional<NewSequence> sequence = NewSequence::Begin(request.out, why);
    if (!sequence) return why;

    Result result(*source, *correction, request, std::move(*sequence));
    Failure failure = result.Begin();
    for (std::int64_t frame = source->first; !failure && frame < source->end; frame += result.FramesABlock()) {
        failure = result.Add(frame);
        const std::int64_t done = std::min(frame + result.FramesABlock(), source->end) - source->first;
        if (!failure && progress) progress(done, source->end - source->first);
    }
    return failure ? failure : result.End();
}

int ApplyCommand(std::span<const std::string> arguments)
{
    constexpr std::string_view kOptions[] = {kSet, kFrames};
    std::string why;
    const std::optional<ApplyRequest> request = RequestOf(TakeApart(arguments, {}, kOptions), why);
    if (!request) return TellBatchFailure(kWord, why);
    std::int64_t tenthShown = -1;
    const Failure failure =
        ApplySet(*request, [&](std::int64_t done, std::int64_t all) { ShowProgress(done, all, tenthShown); });
    return failure ? TellBatchFailure(kWord, *failure) : kBatchDone;
}

}  // namespace kelvo
