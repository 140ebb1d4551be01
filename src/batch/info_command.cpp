#include "batch/info_command.h"

#include "batch/batch_arguments.h"
#include "batch/batch_end.h"
#include "batch/batch_progress.h"
#include "batch/gap_report.h"
#include "batch/stream_file.h"
#include "platform/clock.h"
#include "platform/json_text.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr std::string_view kWord = "info";
constexpr int kFirstYearOfThisCentury = 70;  // a header's year below it is one of the years 2000 to 2069

// --- Facts ----------------------------------------------------------------------------------------------------------

std::string SizeText(const StoredFrames& frames)
{
    const bool floats = frames.Header().SampleBytes == sizeof(float);
    return Format("%zu columns x %zu rows, %s", frames.Columns(), frames.Rows(),
                  floats ? "32-bit floats" : "16-bit counts");
}

std::string HeaderTime(const ImageHeaderRecord& header)
{
    const int year = header.Year + (header.Year < kFirstYearOfThisCentury ? 2000 : 1900);
    return Format("%04d-%02d-%02dT%02d:%02d:%02d", year, header.Month, header.Day, header.Hour, header.Minute,
                  header.Second);
}

std::string SourceText(int counts, float degreesC)
{
    const bool known = degreesC > kUncalibratedTemperature;
    return Format("%d counts", counts) + (known ? " at " + ShortestText(degreesC) +
                                                      " \xC2\xB0"
                                                      "C"
                                                : std::string());
}

std::string SourcesText(const ImageHeaderRecord& header)
{
    if (!BearsCalibration(header)) return "none";
    std::string text = "low source " + SourceText(header.IntensityCold, header.TemperatureCold);
    if (header.IntensityHot != kUncalibratedIntensity) {
        text += ", high source " + SourceText(header.IntensityHot, header.TemperatureHot);
    }
    return text;
}

std::string_view EndText(const FramesFile& journal)
{
    if (!journal.closing) return "it wasn't closed";
    constexpr std::array<std::string_view, 7> kEnds = {
        "stopped", "complete", "goes on in another file", "disk full", "write failed", "file deleted", "recovered"};
    return journal.closing->mark < kEnds.size() ? kEnds.at(journal.closing->mark) : "closed";
}

std::int64_t MissingIn(std::span<const FrameGap> gaps)
{
    std::int64_t missing = 0;
    for (const FrameGap& gap : gaps) missing += gap.Missing();
    return missing;
}

struct Times {
    std::string first;  // UTC; empty: not known
    std::string last;
    std::optional<double> seconds;  // from the first frame to the last
};

Times TimesOf(const StoredFrames& frames)
{
    const FrameRecord* const first = frames.RecordOf(0);
    const FrameRecord* const last = frames.RecordOf(frames.Frames() - 1);
    return {.first = first ? UtcText(first->utcNs) : std::string(),
            .last = last ? UtcText(last->utcNs) : std::string(),
            .seconds = frames.SecondsOf(frames.Frames() - 1)};
}

// Head texts worth a line, in this order, with what they are called.
constexpr std::pair<std::string_view, std::string_view> kJournalTexts[] = {
    {"camera", frames_key::kCamera},   {"program", frames_key::kProgram},   {"pixels", frames_key::kPixels},
    {"set", frames_key::kCalibration}, {"checksum", frames_key::kChecksum}, {"sample", frames_key::kSampleName},
    {"comment", frames_key::kComment}, {"clock", frames_key::kClock},
};

// --- As text --------------------------------------------------------------------------------------------------------

void AddLine(std::string& text, std::string_view name, const std::string& value)
{
    constexpr std::size_t kWidth = 14;
    std::string left(name);
    left.resize(std::max(left.size() + 1, kWidth), ' ');
    text += "  " + left + value + '\n';
}

void AddJournal(std::string& text, const FramesFile& journal)
{
    const std::vector<FrameGap> gaps = GapsOf(journal.records);
    AddLine(text, "journal", Format("%zu records, ", journal.records.size()) + std::string(EndText(journal)));
    for (const auto& [name, key] : kJournalTexts) {
        const std::string value = journal.head.Text(key);
        if (!value.empty()) AddLine(text, name, Printable(ToUtf8(value)));
    }
    AddLine(text, "gaps",
            gaps.empty() ? "none"
                         : Format("%zu, %lld frames missing", gaps.size(), static_cast<long long>(MissingIn(gaps))));
    for (const FrameGap& gap : gaps) text += "    " + GapText(gap) + '\n';
}

// --- As JSON --------------------------------------------------------------------------------------------------------

std::string HeaderJson(const ImageHeaderRecord& header)
{
    JsonText json;
    const auto whole = [&json](const char* key, std::int64_t value) { json.Whole(key, value); };
    whole("ByteSwap", header.ByteSwap);
    whole("ImageWidth", header.ImageWidth);
    whole("ImageHeight", header.ImageHeight);
    whole("SampleBytes", header.SampleBytes);
    whole("Year", header.Year);
    whole("Month", header.Month);
    whole("Day", header.Day);
    whole("Hour", header.Hour);
    whole("Minute", header.Minute);
    whole("Second", header.Second);
    whole("IntensityCold", header.IntensityCold);
    json.Single("TemperatureCold", header.TemperatureCold);
    whole("IntensityHot", header.IntensityHot);
    json.Single("TemperatureHot", header.TemperatureHot);
    json.Single("UnitScale", header.UnitScale);
    whole("HeaderVersion", header.HeaderVersion);
    whole("FrameCount", header.FrameCount);
    whole("TopRow", header.TopRow);
    whole("LeftColumn", header.LeftColumn);
    whole("BottomRow", header.BottomRow);
    whole("RightColumn", header.RightColumn);
    whole("FramesAveraged", header.FramesAveraged);
    json.Single("FrameRate", header.FrameRate);
    json.Single("IntegrationMsec", header.IntegrationMsec);
    whole("DisplayLow", header.DisplayLow);
    whole("DisplayHigh", header.DisplayHigh);
    whole("VideoGain1", header.VideoGain1);
    whole("VideoOffset1", header.VideoOffset1);
    whole("VideoGain2", header.VideoGain2);
    whole("VideoOffset2", header.VideoOffset2);
    whole("DataType", header.DataType);
    whole("NumOutputs", header.NumOutputs);
    whole("ImageHeaderDataOffset", header.ImageHeaderDataOffset);
    return json.Json();
}

std::string JournalJson(const FramesFile& journal)
{
    const std::vector<FrameGap> gaps = GapsOf(journal.records);
    JsonText json;
    json.Whole("records", std::ssize(journal.records))
        .Truth("closed", journal.closing.has_value())
        .Text("end", EndText(journal));
    for (const auto& [name, key] : kJournalTexts) json.Text(name, journal.head.Text(key));
    return json.Whole("missing", MissingIn(gaps)).Member("gaps", GapsJson(gaps)).Json();
}

}  // namespace

std::string InfoText(const StoredFrames& frames)
{
    const ImageHeaderRecord& header = frames.Header();
    const Times times = TimesOf(frames);
    std::string text;
    AddLine(text, "size", SizeText(frames));
    AddLine(text, "frames", std::to_string(frames.Frames()));
    AddLine(text, "averaged", std::to_string(header.FramesAveraged));
    AddLine(text, "rate", ShortestText(header.FrameRate) + " Hz");
    AddLine(text, "integration", ShortestText(header.IntegrationMsec) + " ms");
    AddLine(text, "header time", HeaderTime(header) + ", local");
    if (!times.first.empty()) AddLine(text, "first frame", times.first);
    if (!times.last.empty()) AddLine(text, "last frame", times.last);
    if (times.seconds) AddLine(text, "duration", Format("%.6f s", *times.seconds));
    AddLine(text, "calibration", SourcesText(header));
    AddLine(text, "video",
            Format("gain %d, offset %d; shown from %d to %d counts", header.VideoGain1, header.VideoOffset1,
                   header.DisplayLow, header.DisplayHigh));
    AddLine(text, "rectangle",
            Format("columns %d to %d, rows %d to %d", header.LeftColumn, header.RightColumn, header.TopRow,
                   header.BottomRow));
    if (const FramesFile* const journal = frames.Journal()) {
        AddJournal(text, *journal);
    } else {
        const std::string& fault = frames.JournalFault();
        AddLine(text, "journal", fault.empty() ? "none" : "what lies beside the file " + fault);
    }
    return text;
}

std::string InfoJson(const StoredFrames& frames)
{
    const ImageHeaderRecord& header = frames.Header();
    const Times times = TimesOf(frames);
    JsonText json;
    json.Text("file", frames.Path())
        .Whole("columns", header.ImageWidth)
        .Whole("rows", header.ImageHeight)
        .Whole("frames", frames.Frames())
        .Single("rate_hz", header.FrameRate)
        .Single("integration_ms", header.IntegrationMsec)
        .Text("header_time", HeaderTime(header));
    json.Member("first_utc", times.first.empty() ? "null" : '"' + times.first + '"');
    json.Member("last_utc", times.last.empty() ? "null" : '"' + times.last + '"');
    json.Member("duration_s", times.seconds ? ShortestText(*times.seconds) : "null");
    json.Truth("calibrated", BearsCalibration(header)).Member("header", HeaderJson(header));
    const FramesFile* const journal = frames.Journal();
    json.Member("journal", journal ? JournalJson(*journal) : "null");
    if (!frames.JournalFault().empty()) json.Text("journal_fault", frames.JournalFault());
    return json.Json();
}

int InfoCommand(std::span<const std::string> arguments)
{
    const BatchArguments taken = TakeApart(arguments, kWord);
    if (!taken.error.empty()) return TellBatchFailure(kWord, taken.error);
    if (taken.files.empty()) return TellBatchFailure(kWord, "no file was named");
    int code = kBatchDone;
    for (std::string path : taken.files) {
        std::string why;
        std::optional<StreamFile> input;
        if (!StreamFile::TakeInput(path, input, why)) return TellBatchFailure(kWord, why);
        BatchProgress progress(kWord, "looking through " + Printable(path));
        const auto goesOn = [&progress](std::int64_t done, std::int64_t all) {
            if (done > 0) progress.Show(done, all);
            return !Interrupted();
        };
        const std::optional<StoredFrames> frames = StoredFrames::Open(path, why, goesOn);
        EndProgressLine();
        if (Interrupted()) return TellBatchFailure(kWord, kInterrupted);
        if (!frames) {
            code = TellBatchFailure(kWord, why.insert(0, path + ' '));
            continue;
        }
        std::string told = taken.Has("--json") ? InfoJson(*frames) : Printable(path);
        told += '\n';
        if (!taken.Has("--json")) told += InfoText(*frames);
        std::fputs(told.c_str(), stdout);
    }
    return code;
}

}  // namespace kelvo
