#include "batch/command_words.h"

#include <algorithm>

namespace kelvo {

namespace {

constexpr CommandOption kJson{.name = "--json", .does = "an object a line and file"};
constexpr std::string_view kFramesDo = "frames A to B - 1 alone, counted from 0; A: to the end, :B from the first";

constexpr std::string_view kVoltsDo = "what the two ends of the file's display range are in volts";

constexpr ExitCode kMakesOrNot[] = {
    {0, "it is done"},
    {2, "it couldn't be: the error stream tells why, and nothing stands under the name of the result"},
};
constexpr std::string_view kOutIsNew =
    "OUT must not stand before; its journal OUT.frames comes along where IN has one.\n";

constexpr CommandOption kStatsOptions[] = {
    {.name = "--region", .value = "FILE.regions[:NAME]", .does = "the regions of a file, or those of that name"},
    {.name = "--rectangle", .value = "L,T,R,B", .does = "columns L to R and rows T to B, counted from 0"},
    {.name = "--frames", .value = "A:B", .does = kFramesDo},
    {.name = "--unit",
     .value = "UNIT",
     .does = "counts, volts, celsius, kelvin or fahrenheit",
     .choices = "counts volts celsius kelvin fahrenheit"},
    {.name = "--volts", .value = "LOW:HIGH", .does = kVoltsDo},
    {.name = "--bad", .value = "X.cal", .does = "leave out what this set takes for bad"},
    {.name = "--json", .does = "an object a line, frame and region"},
};
constexpr std::string_view kStatsDetails =
    "Without --region and --rectangle the whole frame is measured. A line for each frame and region: pixels, mean,\n"
    "sample deviation, minimum and maximum with their places, saturated pixels, values outside the two sources;\n"
    "comma-separated, with a head of lines that begin with #. The progress stands on the error stream. FILE - is the\n"
    "standard input.\n";

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
    "tells: how it ended, camera and set, every gap. Times of frames are UTC; the header's is local time.\n"
    "FILE - is the standard input.\n";
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
     .does = "tiff, fits, hdf5, npy, csv (one frame), png (a file a frame), mp4; otherwise by OUT's extension",
     .choices = "tiff fits hdf5 npy csv png mp4"},
    {.name = "--as",
     .value = "FORM",
     .does = "counts (as they are stored), corrected, volts, celsius, kelvin, fahrenheit",
     .choices = "counts corrected volts celsius kelvin fahrenheit"},
    {.name = "--frames", .value = "A:B", .does = kFramesDo},
    {.name = "--set", .value = "X.cal", .does = "corrects raw frames with that set; its lists lie beside it"},
    {.name = "--volts", .value = "LOW:HIGH", .does = kVoltsDo},
    {.name = "--rectangle", .value = "L,T,R,B", .does = "columns L to R and rows T to B alone, counted from 0"},
    {.name = "--region",
     .value = "FILE.regions[:NAME]",
     .does = "the region of that name alone; without a name each of the file's, as OUT-NAME.ext"},
    {.name = "--traces", .does = "what regions measure frame by frame, all in one CSV file"},
    {.name = "--range",
     .value = "LOW:HIGH",
     .does = "of pictures: the counts that the colors are spread over; otherwise the file's display range"},
    {.name = "--colors",
     .value = "NAME",
     .does = "of pictures: gray, inverted, or color, MATROX.PAL of the data directory",
     .choices = "gray inverted color"},
    {.name = "--data", .value = "DIR", .does = "directory of the settings, as of the program, for --colors color"},
    {.name = "--scale", .does = "of pictures: a scale of the colors on the right"},
    {.name = "--unit",
     .value = "UNIT",
     .does = "of the scale: counts, celsius, kelvin or fahrenheit",
     .choices = "counts celsius kelvin fahrenheit"},
    {.name = "--time", .does = "of pictures: when the frame was taken, below it"},
    {.name = "--draw-regions", .value = "FILE", .does = "of pictures: the regions of a file, drawn over the frame"},
    {.name = "--force", .does = "OUT may stand and is replaced"},
    {.name = "--json", .does = "tell on the standard output what was made"},
};
constexpr std::string_view kExportDetails =
    "The progress stands on the error stream; Ctrl+C finishes the frame and closes the file. IN - is the standard\n"
    "input, OUT - the standard output: one file, without the JSON beside an array.\n";
constexpr ExitCode kExportExits[] = {
    {0, "it is done"},
    {1, "it was stopped, and OUT has the frames up to there"},
    {2, "it couldn't be: the error stream tells why, and what stood under the name of the result stands"},
};

constexpr CommandOption kCutOptions[] = {
    {.name = "--frames", .value = "A:B", .does = kFramesDo, .needed = true},
};

constexpr CommandOption kCalibrateOptions[] = {
    {.name = "--low", .value = "FILE", .does = "raw frames of the low source", .needed = true},
    {.name = "--high", .value = "FILE", .does = "of the high source: two points, otherwise one"},
    {.name = "--tlow", .value = "T", .does = "temperature of the low source, degrees Celsius"},
    {.name = "--thigh", .value = "T", .does = "of the high source; without both the set doesn't read in degrees"},
    {.name = "--elow", .value = "E", .does = "emissivity of the low source, above 0 to 1, kept with the set"},
    {.name = "--ehigh", .value = "E", .does = "of the high source"},
    {.name = "--camera", .value = "N", .does = "section Camera.N of camera.ini; otherwise the active camera"},
    {.name = "--data", .value = "DIR", .does = "directory of the settings, as of the program"},
    {.name = "--frames", .value = "A:B", .does = kFramesDo},
    {.name = "--bad-list", .value = "FILE", .does = "bad whatever their gain: a .bad of this camera"},
    {.name = "--keep-bad", .does = "replace no bad detector"},
    {.name = "--keep-noisy", .does = "don't ask about noise"},
    {.name = "--json", .does = "the result as an object"},
    {.name = "--out", .value = "X.cal", .does = "the set's name; none of its files must stand", .needed = true},
};
constexpr std::string_view kCalibrateDetails =
    "Camera and limits are those of camera.ini and kelvo.ini in the data directory, and frames are raw, in readout\n"
    "order, as many of one source as of the other. The lists .gai .off .noi .dcm .bad are those that the window makes\n"
    "of the same frames, byte for byte. The result goes to the standard output, the progress to the error stream.\n";
constexpr ExitCode kCalibrateExits[] = {
    {0, "the set stands"},
    {2, "it couldn't be made: the error stream tells why, and no file of it stands"},
};

constexpr std::string_view kJoinDetails =
    "Pieces of a run that were cut, or corrected each for itself, are joined the run again byte for byte. OUT must\n"
    "not stand before; its journal OUT.frames comes along where IN has one.\n";

constexpr CommandWord kWords[] = {
    {.word = "info",
     .operands = "FILE...",
     .does = "tell what image files and recorded sequences are",
     .options = kInfoOptions,
     .details = kInfoDetails,
     .exits = kTellsOrNot,
     .takesStreams = true},
    {.word = "stats",
     .operands = "FILE",
     .does = "measure regions in each frame of a file",
     .options = kStatsOptions,
     .details = kStatsDetails,
     .exits = kTellsOrNot,
     .takesStreams = true},
    {.word = "recover",
     .operands = "FILE...",
     .does = "make whole what a recording left that was cut short",
     .options = kRecoverOptions,
     .details = {},
     .exits = kRecoverExits},
    {.word = "apply",
     .operands = "IN OUT",
     .does = "correct a raw sequence with a calibration set",
     .options = kApplyOptions,
     .details = kApplyDetails,
     .exits = kMakesOrNot},
    {.word = "export",
     .operands = "IN OUT",
     .does = "write frames for other programs",
     .options = kExportOptions,
     .details = kExportDetails,
     .exits = kExportExits,
     .takesStreams = true},
    {.word = "calibrate",
     .operands = {},
     .does = "make a calibration set of stored raw frames",
     .options = kCalibrateOptions,
     .details = kCalibrateDetails,
     .exits = kCalibrateExits},
    {.word = "cut",
     .operands = "IN OUT",
     .does = "take a range out of a sequence",
     .options = kCutOptions,
     .details = kOutIsNew,
     .exits = kMakesOrNot},
    {.word = "join",
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
    arguments += word.operands;
    if (arguments.ends_with(' ')) arguments.pop_back();
    return arguments;
}

}  // namespace kelvo
