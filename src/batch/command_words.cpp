#include "batch/command_words.h"

#include "batch/apply_command.h"
#include "batch/cut_command.h"
#include "batch/export_command.h"
#include "batch/info_command.h"
#include "batch/join_command.h"
#include "batch/recover_command.h"

#include <algorithm>

namespace kelvo {

namespace {

constexpr CommandOption kJson{.name = "--json", .does = "an object a line and file"};
constexpr std::string_view kFramesDo = "frames A to B - 1 alone, counted from 0; A: to the end, :B from the first";

constexpr ExitCode kMakesOrNot[] = {
    {0, "it is done"},
    {2, "it couldn't be: the error stream tells why, and nothing stands under the name of the result"},
};
constexpr std::string_view kOutIsNew =
    "OUT must not stand before; its journal OUT.frames comes along where IN has one.\n";

constexpr CommandOption kRecoverOptions[] = {
    {.name = "--dry-run", .does = "tell what would be done, and do nothing"},
    kJson,
};
constexpr ExitCode kRecoverExits[] = {
    {0, "all were whole"},
    {1, "something was (or would be) repaired"},
    {2, "something can't be"},
};

constexpr CommandOption kInfoOptions[] = {kJson};
constexpr std::string_view kInfoDetails =
    "Size, frames, rate, integration time, times, the sources of the calibration, and what the journal FILE.frames\n"
    "tells: how it ended, camera and set, every gap. Times of frames are UTC; the header's is local time.\n";
constexpr ExitCode kTellsOrNot[] = {
    {0, "all is told"},
    {2, "a file couldn't be read: the error stream tells why"},
};

constexpr CommandOption kApplyOptions[] = {
    {.name = "--set", .value = "X.cal", .does = "the set; its lists lie beside it", .needed = true},
    {.name = "--frames", .value = "A:B", .does = kFramesDo},
};
constexpr std::string_view kApplyDetails =
    "The progress stands on the error stream. OUT must not stand before; its journal OUT.frames comes along where\n"
    "IN has one.\n";

constexpr CommandOption kExportOptions[] = {
    {.name = "--to",
     .value = "FORMAT",
     .does = "tiff, fits, hdf5, npy or csv (one frame); otherwise by OUT's extension",
     .choices = "tiff fits hdf5 npy csv"},
    {.name = "--as",
     .value = "FORM",
     .does = "counts (as they are stored), corrected, volts, celsius, kelvin, fahrenheit",
     .choices = "counts corrected volts celsius kelvin fahrenheit"},
    {.name = "--frames", .value = "A:B", .does = kFramesDo},
    {.name = "--set", .value = "X.cal", .does = "corrects raw frames with that set; its lists lie beside it"},
    {.name = "--volts", .value = "LOW:HIGH", .does = "what the two ends of the file's display range are in volts"},
    {.name = "--rectangle", .value = "L,T,R,B", .does = "columns L to R and rows T to B alone, counted from 0"},
    {.name = "--force", .does = "OUT may stand and is replaced"},
    {.name = "--json", .does = "tell on the standard output what was made"},
};
constexpr std::string_view kExportDetails =
    "The progress stands on the error stream; Ctrl+C finishes the frame and closes the file.\n";
constexpr ExitCode kExportExits[] = {
    {0, "it is done"},
    {1, "it was stopped, and OUT has the frames up to there"},
    {2, "it couldn't be: the error stream tells why, and what stood under the name of the result stands"},
};

constexpr CommandOption kCutOptions[] = {
    {.name = "--frames", .value = "A:B", .does = kFramesDo, .needed = true},
};

constexpr std::string_view kJoinDetails =
    "Pieces of a run that were cut, or corrected each for itself, are joined the run again byte for byte. OUT must\n"
    "not stand before; its journal OUT.frames comes along where IN has one.\n";

constexpr CommandWord kWords[] = {
    {.word = "info",
     .run = InfoCommand,
     .operands = "FILE...",
     .does = "tell what image files and recorded sequences are",
     .options = kInfoOptions,
     .details = kInfoDetails,
     .exits = kTellsOrNot},
    {.word = "recover",
     .run = RecoverCommand,
     .operands = "FILE...",
     .does = "make whole what a recording left that was cut short",
     .options = kRecoverOptions,
     .details = {},
     .exits = kRecoverExits},
    {.word = "apply",
     .run = ApplyCommand,
     .operands = "IN OUT",
     .does = "correct a raw sequence with a calibration set",
     .options = kApplyOptions,
     .details = kApplyDetails,
     .exits = kMakesOrNot},
    {.word = "export",
     .run = ExportCommand,
     .operands = "IN OUT",
     .does = "write frames for other programs",
     .options = kExportOptions,
     .details = kExportDetails,
     .exits = kExportExits},
    {.word = "cut",
     .run = CutCommand,
     .operands = "IN OUT",
     .does = "take a range out of a sequence",
     .options = kCutOptions,
     .details = kOutIsNew,
     .exits = kMakesOrNot},
    {.word = "join",
     .run = JoinCommand,
     .operands = "IN... OUT",
     .does = "put sequences together, in order",
     .options = {},
     .details = kJoinDetails,
     .exits = kMakesOrNot},
};

}  // namespace

std::span<const CommandWord> CommandWords()
{
    return kWords;
}

const CommandWord* CommandOf(std::string_view word)
{
    const auto* const found = std::ranges::find(kWords, word, &CommandWord::word);
    return found == std::end(kWords) ? nullptr : found;
}

std::string ArgumentsOf(const CommandWord& word)
{
    std::string arguments;
    for (const CommandOption& option : word.options) {
        std::string text(option.name);
        if (!option.value.empty()) text.append(" ").append(option.value);
        arguments += option.needed ? text + ' ' : '[' + text + "] ";
    }
    return arguments + std::string(word.operands);
}

}  // namespace kelvo
