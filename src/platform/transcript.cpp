#include "platform/transcript.h"

#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/text.h"

#include <optional>
#include <span>

namespace kelvo {

namespace {

// A workstation runs for weeks: beyond this many lines the older half is let go from memory (never from the file).
constexpr std::size_t kLinesKept = 200000;

std::vector<TranscriptLine> lines;
std::optional<File> file;

TranscriptValue InUtf8(TranscriptValue value)
{
    if (auto* text = std::get_if<std::string>(&value)) *text = ToUtf8(*text);
    if (auto* texts = std::get_if<std::vector<std::string>>(&value)) {
        for (std::string& text : *texts) text = ToUtf8(text);
    }
    return value;
}

std::string QuotedList(const std::vector<std::string>& texts)
{
    std::string json = "[";
    for (const std::string& text : texts) {
        if (json.size() > 1) json += ',';
        json += JsonString(text);
    }
    return json + ']';
}

struct Json {
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(bool flag) const { return flag ? "true" : "false"; }
    std::string operator()(const std::string& text) const { return JsonString(text); }
    std::string operator()(const std::vector<std::string>& texts) const { return QuotedList(texts); }
};

}  // namespace

bool OpenTranscript(std::string_view path)
{
    file = File::Open(path, FileMode::kCreate);
    return file.has_value();
}

void CloseTranscript()
{
    file.reset();
}

void Transcribe(std::string_view kind, std::vector<std::pair<std::string, TranscriptValue>> fields)
{
    TranscriptLine line{TickMs(), std::string(kind), std::move(fields)};
    for (auto& field : line.fields) field.second = InUtf8(std::move(field.second));
    if (file) {
        const std::string json = TranscriptJson(line) + '\n';
        const NoFaults watching;
        file->Write(std::as_bytes(std::span(json)));
    }
    if (lines.size() >= kLinesKept) lines.erase(lines.begin(), lines.begin() + kLinesKept / 2);
    lines.push_back(std::move(line));
}

const std::vector<TranscriptLine>& TranscriptLines()
{
    return lines;
}

std::string JsonString(std::string_view text)
{
    std::string json = "\"";
    for (const char c : text) {
        switch (c) {
            case '"':
                json += "\\\"";
                break;
            case '\\':
                json += "\\\\";
                break;
            case '\n':
                json += "\\n";
                break;
            case '\r':
                json += "\\r";
                break;
            case '\t':
                json += "\\t";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    json += Format("\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(c)));
                } else {
                    json += c;
                }
        }
    }
    return json + '"';
}

std::string TranscriptJson(const TranscriptLine& line)
{
    std::string json = Format("{\"t\":%lld,\"kind\":", static_cast<long long>(line.timeMs)) + JsonString(line.kind);
    for (const auto& [name, value] : line.fields) json += ',' + JsonString(name) + ':' + std::visit(Json{}, value);
    return json + '}';
}

void ResetTranscript()
{
    file.reset();
    lines.clear();
}

}  // namespace kelvo
