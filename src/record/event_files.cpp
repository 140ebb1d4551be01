#include "record/event_files.h"

#include "grabber/board_state.h"
#include "grabber/frame_size.h"
#include "imagefile/header.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "record/recording_head.h"
#include "state/cal_state.h"
#include "state/camera_config.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <utility>

namespace kelvo {

namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;
constexpr double kNsPerMinute = 60e9;
constexpr double kBytesPerGigabyte = 1e9;

ImageHeaderRecord MarkedUncalibrated(ImageHeaderRecord header)
{
    header.IntensityCold = header.IntensityHot = kUncalibratedIntensity;
    header.TemperatureCold = header.TemperatureHot = kUncalibratedTemperature;
    return header;
}

void SetDate(ImageHeaderRecord& header, std::int64_t utcNs)
{
    const auto seconds = static_cast<std::time_t>(utcNs / kNsPerSecond);
    std::tm local{};
    localtime_r(&seconds, &local);
    header.Hour = static_cast<std::int16_t>(local.tm_hour);
    header.Minute = static_cast<std::int16_t>(local.tm_min);
    header.Second = static_cast<std::int16_t>(local.tm_sec);
    header.Month = static_cast<std::int16_t>(local.tm_mon + 1);
    header.Day = static_cast<std::int16_t>(local.tm_mday);
    header.Year = static_cast<std::int16_t>(local.tm_year % 100);
}

FramesHead HeadOfRun(const RecorderSettings& settings)
{
    FramesHead head = HeadOfRecording();
    head.SetText(frames_key::kSampleName, settings.sampleName);
    head.SetText(frames_key::kComment, settings.comment);
    head.SetText(frames_key::kSettings, RecorderSettingsText(settings));
    return head;
}

FramesHead WithPixels(FramesHead head, std::string_view pixels)
{
    head.SetText(frames_key::kPixels, pixels);
    return head;
}

std::string RawPath(const std::string& base, std::int64_t part)
{
    return (part > 1 ? Format("%s-%lld", base.c_str(), static_cast<long long>(part)) : base) + ".seq";
}

std::string CorrectedPath(const std::string& base, std::int64_t part)
{
    return (part > 1 ? Format("%s-%lld", base.c_str(), static_cast<long long>(part)) : base) + "_cal.seq";
}

bool IsTaken(const std::string& base, std::int64_t part)
{
    return std::ranges::any_of(std::array{RawPath(base, part), CorrectedPath(base, part)}, [](const std::string& path) {
        return FileExists(path) || FileExists(FramesPathOf(path));
    });
}

// A name that nothing bears: where the pattern counts the next number, otherwise "_2", "_3" behind it.
std::string FreeBase(RunFiles& run, std::int64_t utcNs)
{
    const RecorderSettings& settings = run.settings;
    const bool counts = PatternCounts(settings.namePattern);
    for (std::int64_t attempt = 1;; ++attempt) {
        const std::int64_t number = counts ? run.nextName++ : run.nextName;
        std::string name = EventName(settings.namePattern, number, utcNs, settings.sampleName);
        if (!counts && attempt > 1) name += Format("_%lld", static_cast<long long>(attempt));
        std::string base = MakePath({}, settings.directory, name, {});
        if (!IsTaken(base, 1)) return base;
    }
}

std::span<const std::int16_t> WithOffset(RunFiles& run, std::span<const std::int16_t> raw)
{
    if (run.offset.empty()) return raw;
    std::ranges::transform(raw, run.offset.begin(), [&run](std::int16_t value) {
        return static_cast<std::int16_t>(static_cast<std::uint32_t>(run.dataOffset) +
                                         static_cast<std::uint32_t>(std::int32_t{value}));
    });
    return run.offset;
}

}  // namespace

std::optional<RunFiles> PrepareRunFiles(const RecorderSettings& settings)
{
    RunFiles run;
    run.settings = settings;
    BuildImageHeader(&run.correctedHeader, 0, 0, 0, 0, ActiveConfig.Hroi - 1, ActiveConfig.Vroi - 1);
    run.correctedHeader.ImageHeaderDataOffset = sizeof(FrameHeaderRecord);
    run.rawHeader = MarkedUncalibrated(run.correctedHeader);
    run.head = HeadOfRun(settings);
    run.dataOffset = DataOffset;
    const std::size_t values = CameraFrameValues();
    if (DataOffset != 0 && !AllocateBlock(run.offset, values)) return std::nullopt;
    if (!run.WantsCorrected()) return run;
    if (DecomList.size() < values || !AllocateBlock(run.corrected, values)) return std::nullopt;
    run.plan = NewCorrectionPlan({CalType, DataOffset, DecomList, OffsetList, GainList},
                                 static_cast<std::size_t>(ActiveConfig.Hroi), values);
    return run.plan ? std::optional(std::move(run)) : std::nullopt;
}

std::optional<EventFiles> EventFiles::Begin(RunFiles& run, const FrameStamp& first)
{
    EventFiles files;
    files.base_ = FreeBase(run, first.utcNs);
    files.rawHeader_ = run.rawHeader;
    files.correctedHeader_ = run.correctedHeader;
    SetDate(files.rawHeader_, first.utcNs);
    SetDate(files.correctedHeader_, first.utcNs);
    return files.BeginPart(run) ? std::optional(std::move(files)) : std::nullopt;
}

bool EventFiles::BeginPart(const RunFiles& run)
{
    if (run.WantsRaw()) {
        raw_ = SequenceWriter::Create(RawPath(base_, part_), rawHeader_, WithPixels(run.head, kRawPixels));
        if (!raw_) return false;
    }
    if (run.WantsCorrected()) {
        corrected_ = SequenceWriter::Create(CorrectedPath(base_, part_), correctedHeader_,
                                            WithPixels(run.head, kCorrectedPixels));
        if (!corrected_) return false;
    }
    paths_.push_back(Leading().Path());
    return true;
}

bool EventFiles::NextPart(const RunFiles& run)
{
    bytesBefore_ = Bytes();
    const bool closed = Close(ClosingRecord(0, EndOfRecording::kNextPart));
    raw_.reset();
    corrected_.reset();
    do {
        ++part_;
    } while (IsTaken(base_, part_));
    return closed && BeginPart(run);
}

bool EventFiles::IsFull(const RunFiles& run, std::int64_t monotonicNs) const
{
    const SequenceWriter& leading = Leading();
    if (leading.Frames() == 0) return false;
    const auto longest = static_cast<std::int64_t>(run.settings.splitMinutes * kNsPerMinute);
    if (longest > 0 && monotonicNs - partBeganNs_ >= longest) return true;
    const auto most = static_cast<std::int64_t>(run.settings.splitGigabytes * kBytesPerGigabyte);
    return most > 0 && leading.Bytes() + leading.FrameBytes() > most;
}

bool EventFiles::Append(RunFiles& run, const FrameRecord& record, std::span<const std::int16_t> raw)
{
    FrameRecord told = record;
    if (IsFull(run, record.monotonicNs)) {
        if (!NextPart(run)) return false;
        told.flags |= kFirstOfPart;
    }
    if (Leading().Frames() == 0) partBeganNs_ = record.monotonicNs;
    if (raw_ && !raw_->Append(told, WithOffset(run, raw))) return false;
    if (!corrected_) return true;
    CorrectFrame(*run.plan, raw, run.corrected);
    if (corrected_->Append(told, run.corrected)) return true;
    if (raw_) raw_->DropLast();
    return false;
}

bool EventFiles::SyncData()
{
    const bool raw = !raw_ || raw_->SyncData();
    return (!corrected_ || corrected_->SyncData()) && raw;
}

// Each closing record counts the frames of its own file.
bool EventFiles::Close(const FrameRecord& closing)
{
    const auto closeOne = [&closing](std::optional<SequenceWriter>& file) {
        if (!file) return true;
        FrameRecord own = closing;
        own.number = file->Frames();
        return file->Close(own);
    };
    const bool raw = closeOne(raw_);
    return closeOne(corrected_) && raw;
}

std::int64_t EventFiles::Bytes() const
{
    return bytesBefore_ + (raw_ ? raw_->Bytes() : 0) + (corrected_ ? corrected_->Bytes() : 0);
}

bool EventFiles::AreNamed() const
{
    return (!raw_ || raw_->IsNamed()) && (!corrected_ || corrected_->IsNamed());
}

}  // namespace kelvo
