#include "batch/apply_command.h"

#include "batch/batch_arguments.h"
#include "batch/batch_end.h"
#include "batch/batch_progress.h"
#include "batch/cut_command.h"
#include "batch/new_sequence.h"
#include "calib/apply_calibration.h"
#include "calib/set_correction.h"
#include "calib/stored_correction.h"
#include "imagefile/crc32c.h"
#include "imagefile/frames_file.h"
#include "imagefile/header.h"
#include "imagefile/sequence_file.h"
#include "platform/digest.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <string_view>
#include <system_error>
#include <thread>
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

// --- The result -----------------------------------------------------------------------------------------------------

FramesHead HeadOfResult(const FramesHead& head, const std::string& set)
{
    FramesHead corrected = head;
    corrected.SetText(frames_key::kPixels, kCorrectedPixels);
    corrected.SetText(frames_key::kCalibration, AbsolutePath(set));
    corrected.SetText(frames_key::kChecksum, Sha256Of(ReadWholeFile(set, kLongestCalFile).value_or("")));
    return corrected;
}

// Frames one behind the other, as they go to the disk at once, and what corrects them.
struct Block {
    std::optional<StoredCorrection> correction;
    std::vector<std::uint8_t> in;
    std::vector<std::uint8_t> out;
    std::size_t bytes = 0;             // of out that count
    std::vector<FrameRecord> records;  // where there is a journal
};

// A new sequence in the making. Correct may be called by several threads at once, each with a block of its own; the
// rest is one thread's at a time. Records of the journal wait for the end.
class Result {
  public:
    Result(const Source& source, const StoredCorrection& correction, const ApplyRequest& request, NewSequence sequence)
        : source_(source), correction_(correction), request_(request), sequence_(std::move(sequence))
    {
        framesABlock_ = std::clamp<std::int64_t>(kBlockBytes / source_.frameBytes, 1, source_.end - source_.first);
    }

    bool Allocate(Block& block) const
    {
        const auto bytes = static_cast<std::size_t>(framesABlock_ * source_.frameBytes);
        block.correction = correction_.Copy();
        return block.correction && AllocateBlock(block.in, bytes) && AllocateBlock(block.out, bytes);
    }

    Failure Begin()
    {
        ImageHeaderRecord header = source_.header;
        MarkCalibrated(header, AbsolutePath(request_.set));
        header.FrameCount = static_cast<std::uint32_t>(source_.end - source_.first);
        return sequence_.Write(std::as_bytes(std::span(&header, 1)));
    }

    // The frames from one on, as many as a block takes.
    Failure Correct(std::int64_t from, Block& block) const
    {
        const std::int64_t frames = std::min(framesABlock_, source_.end - from);
        block.bytes = static_cast<std::size_t>(frames * source_.frameBytes);
        block.records.clear();
        const auto read = std::span(block.in).first(block.bytes);
        const std::int64_t place = kHeaderBytes + from * source_.frameBytes;
        if (source_.file.ReadAt(place, std::as_writable_bytes(read)) < block.bytes) {
            return request_.in + " can't be read";
        }
        const auto size = static_cast<std::size_t>(source_.frameBytes);
        for (std::size_t i = 0; i < static_cast<std::size_t>(frames); ++i) {
            const std::int64_t index = from + static_cast<std::int64_t>(i);
            const std::span<std::uint8_t> corrected = std::span(block.out).subspan(i * size, size);
            CorrectFrameOf(index, read.subspan(i * size, size), corrected, block);
            if (Failure failure = AddRecord(index, read.subspan(i * size, size), corrected, block)) return failure;
        }
        return std::nullopt;
    }

    // Behind what has been added.
    Failure Add(const Block& block)
    {
        records_.insert(records_.end(), block.records.begin(), block.records.end());
        return sequence_.Write(std::as_bytes(std::span(block.out).first(block.bytes)));
    }

    Failure End()
    {
        if (!source_.journal) return sequence_.End({});
        return sequence_.End(FramesFileBytes(HeadOfResult(source_.journal->head, request_.set), records_, Closing()));
    }

    std::int64_t FramesABlock() const { return framesABlock_; }

  private:
    void CorrectFrameOf(std::int64_t index, std::span<const std::uint8_t> read, std::span<std::uint8_t> corrected,
                        const Block& block) const
    {
        std::copy_n(read.begin(), source_.before, corrected.begin());
        Renumber(index, corrected);
        const auto* const counts = reinterpret_cast<const std::int16_t*>(read.data() + source_.before);
        auto* const result = reinterpret_cast<std::int16_t*>(corrected.data() + source_.before);
        if (block.correction) block.correction->Correct({counts, source_.Pixels()}, {result, source_.Pixels()});
    }

    void Renumber(std::int64_t index, std::span<std::uint8_t> frame) const
    {
        if (source_.before != sizeof(FrameHeaderRecord)) return;
        FrameHeaderRecord header;
        std::memcpy(&header, frame.data(), sizeof header);
        header.FrameNum = static_cast<std::int32_t>(index - source_.first);
        std::memcpy(frame.data(), &header, sizeof header);
    }

    // Of a frame whose pixels fit the checksum of its own record.
    Failure AddRecord(std::int64_t index, std::span<const std::uint8_t> read, std::span<const std::uint8_t> corrected,
                      Block& block) const
    {
        const std::optional<FramesFile>& journal = source_.journal;
        if (!journal) return std::nullopt;
        FrameRecord record = journal->records[static_cast<std::size_t>(index)];
        if (record.pixelCrc != Crc32c(std::as_bytes(read.subspan(source_.before)))) {
            return request_.in + Format(": frame %lld doesn't fit its checksum", static_cast<long long>(index));
        }
        record.pixelCrc = Crc32c(std::as_bytes(corrected.subspan(source_.before)));
        if (index > 0 && index == source_.first) record.flags |= kFirstOfPart;
        block.records.push_back(Sealed(record));
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

    const Source& source_;
    const StoredCorrection& correction_;
    const ApplyRequest& request_;
    NewSequence sequence_;
    std::int64_t framesABlock_ = 1;
    std::vector<FrameRecord> records_;
};

using Progress = std::function<void(std::int64_t done, std::int64_t all)>;

// Two threads share the frames: while one has the system write its block, which takes as long as all the rest, the
// other reads and corrects the next. Each writes its own when its turn has come, so that the file is the same whoever
// is faster.
class SharedWork {
  public:
    SharedWork(Result& result, const Source& source, const Progress& progress)
        : result_(result), source_(source), progress_(progress), nextToTake_(source.first), nextToAdd_(source.first)
    {
    }

    Failure Do()
    {
        std::array<Block, 2> blocks;
        if (!result_.Allocate(blocks[0])) return "no memory is left";
        const bool isLong = source_.end - source_.first > result_.FramesABlock();
        std::optional<std::jthread> second;
        try {
            if (isLong && result_.Allocate(blocks[1])) second.emplace([&] { Share(blocks[1]); });
        } catch (const std::system_error&) {
            second.reset();  // there is no thread to be had: one does it all
        }
        Share(blocks[0]);
        second.reset();
        return failure_;
    }

  private:
    static constexpr std::int64_t kNoMore = -1;

    void Share(Block& block)
    {
        for (std::int64_t from = Take(); from != kNoMore; from = Take()) {
            AddInTurn(from, block, result_.Correct(from, block));
        }
    }

    // The first frame of a block that nobody has taken yet.
    std::int64_t Take()
    {
        const std::scoped_lock lock(mutex_);
        if (failure_ || nextToTake_ >= source_.end) return kNoMore;
        return std::exchange(nextToTake_, nextToTake_ + result_.FramesABlock());
    }

    void AddInTurn(std::int64_t from, const Block& block, Failure failure)
    {
        std::unique_lock lock(mutex_);
        turn_.wait(lock, [&] { return failure_ || nextToAdd_ == from; });
        if (failure_) return;
        lock.unlock();  // the turn is this thread's alone
        if (!failure && Interrupted()) failure = kInterrupted;
        if (!failure) failure = result_.Add(block);
        const std::int64_t done = std::min(from + result_.FramesABlock(), source_.end) - source_.first;
        if (!failure && progress_) progress_(done, source_.end - source_.first);
        lock.lock();
        failure_ = std::move(failure);
        nextToAdd_ = from + result_.FramesABlock();
        turn_.notify_all();
    }

    Result& result_;
    const Source& source_;
    const Progress& progress_;
    std::mutex mutex_;  // of what follows
    std::condition_variable turn_;
    std::int64_t nextToTake_;
    std::int64_t nextToAdd_;
    Failure failure_;
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

}  // namespace

std::optional<std::string> ApplySet(const ApplyRequest& request,
                                    const std::function<void(std::int64_t done, std::int64_t all)>& progress)
{
    std::string why;
    std::optional<Source> source = OpenSource(request, why);
    if (!source) return why;
    const std::optional<StoredCorrection> correction =
        CorrectionOfSet(request.set, source->Pixels(), static_cast<std::size_t>(source->header.ImageWidth), why);
    if (!correction) return why;
    std::optional<NewSequence> sequence = NewSequence::Begin(request.out, why);
    if (!sequence) return why;

    Result result(*source, *correction, request, std::move(*sequence));
    Failure failure = result.Begin();
    if (!failure) failure = SharedWork(result, *source, progress).Do();
    if (!failure && Interrupted()) failure = kInterrupted;
    return failure ? failure : result.End();
}

int ApplyCommand(std::span<const std::string> arguments)
{
    std::string why;
    const std::optional<ApplyRequest> request = RequestOf(TakeApart(arguments, kWord), why);
    if (!request) return TellBatchFailure(kWord, why);
    BatchProgress progress(kWord);
    const Failure failure =
        ApplySet(*request, [&progress](std::int64_t done, std::int64_t all) { progress.Show(done, all); });
    return failure ? TellBatchFailure(kWord, *failure) : kBatchDone;
}

}  // namespace kelvo
