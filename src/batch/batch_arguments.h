// What commands without a window have in common: their arguments, and how they end.
#pragma once

#include "regions/region.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

constexpr int kBatchDone = 0;
constexpr int kBatchFailed = 2;

// The arguments of a command, taken apart.
struct BatchArguments {
    std::vector<std::string> files;  // what isn't an option, in order; all that stands behind "--" too
    std::vector<std::string> flags;  // "--json"
    std::vector<std::pair<std::string, std::string>> values;  // "--frames" and "0:64", also from "--frames=0:64"
    std::string error;  // the first thing that is wrong with them; what stands behind it isn't taken

    bool Has(std::string_view flag) const;
    std::optional<std::string> Value(std::string_view option) const;  // never empty
};
// By the table of the word (batch/command_words.h), which is there. An error is: an option that the command doesn't
// know, all that begins with a dash being one; one without its value, or with an empty one, as of a script's variable
// that isn't set; one of two values; a file without a name. Commands that read and write many places of many files take
// no stream: "-" as a file of those is an error too, also behind "--" (CommandWord::takesStreams).
BatchArguments TakeApart(std::span<const std::string> arguments, std::string_view word);

// "-0.5:2" are two different numbers of volts. nullopt: it isn't that.
std::optional<std::pair<float, float>> TwoVolts(std::string_view text);
inline constexpr std::string_view kTwoVoltsForm =
    "--volts LOW:HIGH says what the two ends of the display range are in volts";  // what is told then

// "10,20,41,51" are left, top, right and bottom, pixels from 0, each in order. nullopt: it isn't that.
std::optional<RegionPlace> RectangleOf(std::string_view text);
inline constexpr std::string_view kRectangleForm =
    "--rectangle LEFT,TOP,RIGHT,BOTTOM says which columns and rows, counted from 0";

// The text with its control characters as "?": what a file's name or a journal holds may be meant for the terminal, or
// be another line.
std::string Printable(std::string_view text);

// Tells on the error stream, "kelvo WORD: text" on a line of its own (Printable), and gives
// kBatchFailed. Nothing is told of a command that was interrupted (batch/batch_end.h): how the process ends tells it.
int TellBatchFailure(std::string_view word, std::string_view text);

}  // namespace kelvo
