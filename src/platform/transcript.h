// The transcript: what the operator would see, one JSON object a line, UTF-8, flushed as it happens. Lines are kept in
// memory too, for scripts and tests; beyond 200000 the older half is let go.
//
//   {"t":ms,"kind":"status","text":...,"align":n}      {"t":ms,"kind":"title","text":...}
//   {"t":ms,"kind":"box","text":...,"caption":...,"icon":...,"buttons":[...],"default":...}   "answer" button
//   "dialog" name, text   "close" name, result   "file" title, filters, directory, name   "chosen" paths
//   "beep" sound   "menu" id, text, checked, enabled   "help" context   "print" text
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace kelvo {

using TranscriptValue = std::variant<std::int64_t, bool, std::string, std::vector<std::string>>;
struct TranscriptLine {
    std::int64_t timeMs = 0;
    std::string kind;
    std::vector<std::pair<std::string, TranscriptValue>> fields;
};

// False if the file can't be made.
bool OpenTranscript(std::string_view path);
void CloseTranscript();

// Text values are given as the system's bytes and stored as UTF-8.
void Transcribe(std::string_view kind, std::vector<std::pair<std::string, TranscriptValue>> fields);

const std::vector<TranscriptLine>& TranscriptLines();
std::string TranscriptJson(const TranscriptLine& line);  // without the newline
// A text of valid UTF-8 as JSON has it, with its quotation marks.
std::string JsonString(std::string_view text);

// Closes the file and forgets the lines.
void ResetTranscript();

}  // namespace kelvo
