// kelvo-wrap: puts a header before plain 16-bit frames, so that Kelvo shows recordings that other systems made.
#include "imagefile/header.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using kelvo::ImageHeaderRecord;

constexpr std::string_view kHelp =
    "usage: kelvo-wrap --width W --height H [options] INPUT OUTPUT\n"
    "\n"
    "INPUT is a plain array: 16-bit little-endian counts, row after row from the top,\n"
    "frame after frame, no header. OUTPUT is an image file: .img for one frame, .seq\n"
    "for any number.\n"
    "\n"
    "  --width W         pixels a row, 1 to 32767\n"
    "  --height H        rows a frame, 1 to 32767\n"
    "  --frames N        frames that INPUT must hold; otherwise its length tells\n"
    "  --first F         first frame to take, from 0 (default 0)\n"
    "  --count C         frames to take (default: all from the first)\n"
    "  --low L           lower count of the display range (default 0)\n"
    "  --high H          upper count of the display range (default 16383)\n"
    "  --rate HZ         frames a second (default 0: not known)\n"
    "  --date YYYY-MM-DDTHH:MM:SS\n"
    "                    time of the recording (default: not known, all zero)\n"
    "  --help            this text\n";

constexpr std::int64_t kLargestField = 32767;
constexpr std::streamsize kCopyBlock = 1 << 16;

struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Date {
    std::int16_t year = 0;  // two digits
    std::int16_t month = 0;
    std::int16_t day = 0;
    std::int16_t hour = 0;
    std::int16_t minute = 0;
    std::int16_t second = 0;
};

struct Options {
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::optional<std::int64_t> frames;
    std::int64_t first = 0;
    std::optional<std::int64_t> count;
    std::int64_t low = 0;
    std::int64_t high = 16383;
    float rate = 0;
    Date date;
    std::filesystem::path input;
    std::filesystem::path output;

    std::int64_t FrameBytes() const { return width * height * 2; }
};

// ---- command line

template <typename Number>
Number NumberOf(std::string_view name, std::string_view text, Number least, Number most)
{
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !(value >= least && value <= most)) {
        throw Failure(std::string(name) + ": \"" + std::string(text) + "\" is not a number from " +
                      std::to_string(least) + " to " + std::to_string(most));
    }
    return value;
}

Date DateOf(std::string_view text)
{
    constexpr std::string_view kForm = "dddd-dd-ddTdd:dd:dd";
    const auto fits = [](char c, char form) { return form == 'd' ? c >= '0' && c <= '9' : c == form; };
    if (!std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(), fits)) {
        throw Failure("--date: \"" + std::string(text) + "\" is not of the form YYYY-MM-DDTHH:MM:SS");
    }
    const auto part = [text](std::size_t at, std::int16_t least, std::int16_t most) {
        return NumberOf<std::int16_t>("--date", text.substr(at, 2), least, most);
    };
    return {.year = part(2, 0, 99),
            .month = part(5, 1, 12),
            .day = part(8, 1, 31),
            .hour = part(11, 0, 23),
            .minute = part(14, 0, 59),
            .second = part(17, 0, 59)};
}

void SetOption(Options& options, std::string_view name, std::string_view text)
{
    constexpr std::int64_t kMostFrames = std::int64_t{1} << 40;
    constexpr std::int64_t kLeastField = -32768;
    constexpr float kMostHertz = 1e6F;
    if (name == "--width") {
        options.width = NumberOf<std::int64_t>(name, text, 1, kLargestField);
    } else if (name == "--height") {
        options.height = NumberOf<std::int64_t>(name, text, 1, kLargestField);
    } else if (name == "--frames") {
        options.frames = NumberOf<std::int64_t>(name, text, 1, kMostFrames);
    } else if (name == "--first") {
        options.first = NumberOf<std::int64_t>(name, text, 0, kMostFrames);
    } else if (name == "--count") {
        options.count = NumberOf<std::int64_t>(name, text, 1, kMostFrames);
    } else if (name == "--low") {
        options.low = NumberOf<std::int64_t>(name, text, kLeastField, kLargestField);
    } else if (name == "--high") {
        options.high = NumberOf<std::int64_t>(name, text, kLeastField, kLargestField);
    } else if (name == "--rate") {
        options.rate = NumberOf<float>(name, text, 0, kMostHertz);
    } else if (name == "--date") {
        options.date = DateOf(text);
    } else {
        throw Failure("unknown option " + std::string(name));
    }
}

Options ParseArguments(std::span<const std::string_view> arguments)
{
    Options options;
    std::vector<std::string_view> names;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (!arguments[i].starts_with("--")) {
            names.push_back(arguments[i]);
        } else if (i + 1 == arguments.size()) {
            throw Failure(std::string(arguments[i]) + " wants a value");
        } else {
            SetOption(options, arguments[i], arguments[i + 1]);
            ++i;
        }
    }
    if (names.size() != 2) throw Failure("one INPUT and one OUTPUT are wanted");
    if (options.width == 0 || options.height == 0) throw Failure("--width and --height are wanted");
    if (options.low >= options.high) throw Failure("--low must lie below --high");
    options.input = names[0];
    options.output = names[1];
    return options;
}

// ---- what is taken

std::int64_t FramesHeld(const Options& options)
{
    std::error_code error;
    const std::uintmax_t length = std::filesystem::file_size(options.input, error);
    if (error) throw Failure("can't read " + options.input.string() + ": " + error.message());
    const std::int64_t held = static_cast<std::int64_t>(length) / options.FrameBytes();
    if (static_cast<std::int64_t>(length) % options.FrameBytes() != 0 || held == 0) {
        throw Failure(options.input.string() + " holds " + std::to_string(length) +
                      " bytes, which is no whole number of " + std::to_string(options.FrameBytes()) + "-byte frames");
    }
    if (options.frames && *options.frames != held) {
        throw Failure(options.input.string() + " holds " + std::to_string(held) + " frames, not " +
                      std::to_string(*options.frames));
    }
    return held;
}

std::int64_t FramesTaken(const Options& options, std::int64_t held)
{
    if (options.first >= held) throw Failure("--first: there are only " + std::to_string(held) + " frames");
    const std::int64_t taken = options.count.value_or(held - options.first);
    if (taken > held - options.first) {
        throw Failure("--count: only " + std::to_string(held - options.first) + " frames from the first on");
    }
    return taken;
}

void CheckExtension(const Options& options, std::int64_t taken)
{
    const std::string extension = options.output.extension().string();
    if (extension != ".img" && extension != ".seq") throw Failure("OUTPUT must end in .img or .seq");
    if (extension == ".img" && taken != 1) throw Failure("an .img file holds one frame: --count 1, or a .seq file");
}

// ---- what is written

std::int16_t Field(std::int64_t value)
{
    return static_cast<std::int16_t>(value);
}

ImageHeaderRecord HeaderFor(const Options& options, std::int64_t taken)
{
    ImageHeaderRecord header;
    header.ByteSwap = 0xFFFF;
    header.ImageWidth = Field(options.width);
    header.ImageHeight = Field(options.height);
    header.SampleBytes = 2;
    header.HeaderFill1 = 0xFFFF;
    header.HeaderFill2 = 0xFFFF;
    header.Year = options.date.year;
    header.Month = options.date.month;
    header.Day = options.date.day;
    header.Hour = options.date.hour;
    header.Minute = options.date.minute;
    header.Second = options.date.second;
    header.IntensityCold = kelvo::kUncalibratedIntensity;
    header.TemperatureCold = kelvo::kUncalibratedTemperature;
    header.IntensityHot = kelvo::kUncalibratedIntensity;
    header.TemperatureHot = kelvo::kUncalibratedTemperature;
    header.UnitScale = 1.0F;
    header.HeaderVersion = 8;
    header.FrameCount = static_cast<std::uint32_t>(taken);
    header.TopRow = 0;
    header.LeftColumn = 0;
    header.BottomRow = Field(options.height - 1);
    header.RightColumn = Field(options.width - 1);
    header.FramesAveraged = 1;
    header.FrameRate = options.rate;
    header.DisplayLow = Field(options.low);
    header.DisplayHigh = Field(options.high);
    header.DataType = 1;
    header.NumOutputs = 1;
    return header;
}

void CopyFrames(std::ifstream& input, std::ofstream& output, std::int64_t bytes)
{
    std::vector<char> block(kCopyBlock);
    while (bytes > 0) {
        const std::streamsize part = std::min<std::int64_t>(bytes, kCopyBlock);
        if (!input.read(block.data(), part)) throw Failure("the input ended early");
        if (!output.write(block.data(), part)) throw Failure("can't write: is the disk full?");
        bytes -= part;
    }
}

// Written beside its place and renamed, so that no half file ever stands under the name.
void WriteFile(const Options& options, const ImageHeaderRecord& header, std::int64_t taken)
{
    std::filesystem::path beside = options.output;
    beside += ".part";
    try {
        std::ifstream input(options.input, std::ios::binary);
        std::ofstream output(beside, std::ios::binary | std::ios::trunc);
        if (!output) throw Failure("can't write " + beside.string());
        input.seekg(options.first * options.FrameBytes());
        output.write(reinterpret_cast<const char*>(&header), sizeof header);
        CopyFrames(input, output, taken * options.FrameBytes());
        output.close();
        if (!output) throw Failure("can't write: is the disk full?");
        std::filesystem::rename(beside, options.output);
    } catch (...) {
        std::error_code ignored;
        std::filesystem::remove(beside, ignored);
        throw;
    }
}

int Run(std::span<const std::string_view> arguments)
{
    if (std::find(arguments.begin(), arguments.end(), "--help") != arguments.end()) {
        std::cout << kHelp;
        return EXIT_SUCCESS;
    }
    const Options options = ParseArguments(arguments);
    const std::int64_t taken = FramesTaken(options, FramesHeld(options));
    CheckExtension(options, taken);
    WriteFile(options, HeaderFor(options, taken), taken);
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        const std::vector<std::string_view> arguments(argv + 1, argv + argc);
        return Run(arguments);
    } catch (const std::exception& failure) {
        std::cerr << "kelvo-wrap: " << failure.what() << "\n";
        return EXIT_FAILURE;
    }
}
