#include "export/csv_writer.h"

#include "platform/clock.h"
#include "platform/json_text.h"
#include "platform/text.h"

#include <algorithm>
#include <array>

namespace kelvo {

namespace {

// On one line, whatever the words of the recording hold.
std::string CommentOf(const std::string& line)
{
    std::string comment = "# " + ToUtf8(line);
    std::ranges::replace(comment, '\n', ' ');
    std::ranges::replace(comment, '\r', ' ');
    return comment + '\n';
}

void AddTiming(std::string& text, const FrameTiming& timing)
{
    text += Format("# frame: %lld\n", static_cast<long long>(timing.index));
    if (timing.seconds) text += "# seconds: " + ShortestText(*timing.seconds) + '\n';
    if (timing.utcNs != 0) text += "# complete at (UTC): " + UtcText(timing.utcNs) + '\n';
    if (const auto start = timing.StartUtcNs()) text += "# start of exposure (UTC): " + UtcText(*start) + '\n';
}

}  // namespace

ExportFailure CsvWriter::Begin(const ExportDescription& description)
{
    description_ = description;
    if (description.frames > 1) return Path() + " can't be written: a CSV file holds one frame";
    return BeginFile();
}

ExportFailure CsvWriter::Add(const ExportedFrame& frame)
{
    std::string text;
    const std::array timings{frame.timing};
    for (const std::string& line : ProvenanceLines(description_.provenance, timings)) text += CommentOf(line);
    AddTiming(text, frame.timing);
    for (std::size_t i = 0; i < description_.Pixels(); ++i) {
        const bool isOutside = !description_.outside.empty() && description_.outside[i] != 0;
        if (!isOutside) text += description_.isFloat ? ShortestText(frame.values[i]) : std::to_string(frame.counts[i]);
        text += (i + 1) % description_.columns == 0 ? '\n' : ',';
    }
    return DoneOr(Contents().Write(std::as_bytes(std::span(text))) == text.size());
}

ExportFailure CsvWriter::End()
{
    return Keep();
}

}  // namespace kelvo
