#include "wirehead/head_registers.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <limits>
#include <optional>

namespace kelvo {

namespace {

constexpr std::uint8_t kIdentifyReg = 0x20;
constexpr std::uint8_t kInSbTimingReg = 0x50;
constexpr std::uint8_t kSerialOrGainReg = 0x60;
constexpr std::uint8_t kDacReg = 0x70;
constexpr std::uint8_t kBiasEnableReg = 0x80;
constexpr std::uint8_t kClockReg = 0x90;  // the InSb head's clock switch, the HgCdTe head's timing

// The focal plane takes its fields least significant bit first.
std::int32_t Mirrored(std::int32_t field, int width)
{
    std::int32_t result = 0;
    for (int bit = 0; bit < width; ++bit) result = result * 2 + ((field >> bit) & 1);
    return result;
}

// Window limits are sent in units of 8 detectors: a start names the first of its eight, an end the last.
std::int32_t FirstOfEight(std::int32_t unit)
{
    return unit * 8;
}
std::int32_t LastOfEight(std::int32_t unit)
{
    return unit * 8 + 7;
}

void TakeBiasWord(HeadRegisters& head, const WireFrame& frame)
{
    head.detBias = static_cast<std::uint8_t>(Mirrored((frame[2] >> 3) & 0x0F, 4));
    head.pedBias = (frame[2] >> 1) & 0x03;
    head.colGain = static_cast<std::uint8_t>(Mirrored(((frame[2] & 1) << 2) | (frame[3] >> 6), 3));
    head.testMode = ((frame[3] >> 4) & 0x03) != 0;
    head.flipCols = (frame[3] & 0x08) != 0;
    head.flipRows = (frame[3] & 0x04) != 0;
}

void TakeColumnWord(HeadRegisters& head, const WireFrame& frame)
{
    head.window.colStart = FirstOfEight(Mirrored(frame[2] >> 1, 7));
    head.window.colEnd = LastOfEight(Mirrored(((frame[2] & 1) << 6) | (frame[3] >> 2), 7));
}

void TakeRowWord(HeadRegisters& head, const WireFrame& frame)
{
    head.window.rowStart = FirstOfEight(Mirrored(((frame[2] & 0x0F) << 2) | (frame[3] >> 6), 6));
    head.window.rowEnd = LastOfEight(Mirrored(frame[3] & 0x3F, 6));
}

// Gain and serial word share a register number. The row word always has its top bit set and the column word's selector
// is no multiple of 4, so only a bias word of all zeros could be taken for a gain.
void TakeSerialOrGain(HeadRegisters& head, const WireFrame& frame)
{
    constexpr std::uint8_t kBiasWord = 0;
    constexpr std::uint8_t kColumnWord = 2;
    constexpr std::uint8_t kRowWord = 4;
    if (frame[2] == 0 && frame[3] == 0 && frame[1] % 4 == 0) {
        head.gainCode = (frame[1] / 4) & 0x0F;
        return;
    }
    if (head.model != HeadModel::kInSb) return;
    if (frame[1] == kBiasWord) TakeBiasWord(head, frame);
    if (frame[1] == kColumnWord) TakeColumnWord(head, frame);
    if (frame[1] == kRowWord) TakeRowWord(head, frame);
}

void TakeInSbTiming(HeadRegisters& head, const WireFrame& frame)
{
    constexpr std::uint8_t kClockDivider = 0;
    constexpr std::uint8_t kFrameSize = 1;
    constexpr std::uint8_t kIntegration = 3;
    switch (frame[1]) {
        case kClockDivider:
            head.clockIndex = frame[3];
            break;
        case kFrameSize:
            head.timingRows = frame[2];
            head.timingCols = frame[3];
            break;
        case kIntegration:
            head.integrationLines = frame[2];
            head.integrationCols = frame[3];
            break;
        default:
            break;  // start delays: no effect on the picture
    }
}

void TakeClockFrame(HeadRegisters& head, const WireFrame& frame)
{
    constexpr std::uint8_t kClocksOn = 0x30;
    constexpr std::uint8_t kClocksOff = 0x10;
    if (head.model == HeadModel::kHgCdTe) head.clockIndex = frame[1];
    if (head.model == HeadModel::kInSb && frame[1] == kClocksOn) head.clocksOn = true;
    if (head.model == HeadModel::kInSb && frame[1] == kClocksOff) head.clocksOn = false;
}

void TakeDac(HeadRegisters& head, const WireFrame& frame)
{
    if (std::has_single_bit(frame[1])) head.dac[static_cast<std::size_t>(std::countr_zero(frame[1]))] = frame[2];
}

void TakeBiasEnable(HeadRegisters& head, const WireFrame& frame)
{
    constexpr std::uint8_t kOn = 3;
    if (frame[1] == kOn || frame[1] == 0) head.biasesOn = frame[1] == kOn;
}

}  // namespace

HeadRegisters PowerUpHead(HeadModel model, double clockHz, std::int32_t columns, std::int32_t rows)
{
    HeadRegisters head;
    head.model = model;
    head.clockHz = clockHz;
    head.array = {0, columns - 1, 0, rows - 1};
    head.window = head.array;
    if (head.model == HeadModel::kHgCdTe) {
        // A fixed frame that always runs.
        head.timingRows = static_cast<std::uint8_t>(std::min(head.array.Rows() / 4, 255));
        head.timingCols = static_cast<std::uint8_t>(std::min(head.array.Columns() / 4, 255));
        head.clocksOn = true;
    }
    return head;
}

void TakeHeadFrame(HeadRegisters& head, const WireFrame& frame)
{
    const auto address = static_cast<std::uint16_t>(frame[0] * 256 + frame[1]);
    head.kept[address] = {frame[2], frame[3]};
    switch (frame[0]) {
        case kInSbTimingReg:
            if (head.model == HeadModel::kInSb) TakeInSbTiming(head, frame);
            break;
        case kSerialOrGainReg:
            TakeSerialOrGain(head, frame);
            break;
        case kDacReg:
            TakeDac(head, frame);
            break;
        case kBiasEnableReg:
            TakeBiasEnable(head, frame);
            break;
        case kClockReg:
            TakeClockFrame(head, frame);
            break;
        default:
            break;
    }
}

WireFrame HeadAnswer(const HeadRegisters& head, const WireFrame& frame)
{
    constexpr WireFrame kInSbIdentity{0x10, 0x66, 0, 0};
    constexpr WireFrame kHgCdTeIdentity{0x20, 0, 0, 0};
    if (frame[0] != kIdentifyReg) return frame;
    return head.model == HeadModel::kInSb ? kInSbIdentity : kHgCdTeIdentity;
}

namespace {

// Each register by its name, in the order of the text.
template <typename Head, typename Visit>
void VisitRegisters(Head& head, Visit visit)
{
    visit("clock_index", head.clockIndex);
    visit("timing_rows", head.timingRows);
    visit("timing_columns", head.timingCols);
    visit("integration_lines", head.integrationLines);
    visit("integration_columns", head.integrationCols);
    visit("clocks_on", head.clocksOn);
    visit("biases_on", head.biasesOn);
    visit("gain_code", head.gainCode);
    for (auto& dac : head.dac) visit("dac", dac);
    visit("column_start", head.window.colStart);
    visit("column_end", head.window.colEnd);
    visit("row_start", head.window.rowStart);
    visit("row_end", head.window.rowEnd);
    visit("detector_bias", head.detBias);
    visit("pedestal_bias", head.pedBias);
    visit("column_gain", head.colGain);
    visit("test_mode", head.testMode);
    visit("flip_columns", head.flipCols);
    visit("flip_rows", head.flipRows);
}

constexpr std::string_view kKeptLine = "kept";

// The number behind the name at the text's front, which is taken off; nullopt where another name stands there, or none.
std::optional<std::int32_t> TakeLine(std::string_view& text, std::string_view name)
{
    if (!text.starts_with(name) || !text.substr(name.size()).starts_with(' ')) return std::nullopt;
    text.remove_prefix(name.size() + 1);
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end == text.data() + text.size() || *end != '\n') return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()) + 1);
    return value;
}

// Register, selector and the two operands in one number, as the frame bore them.
std::uint32_t KeptNumber(std::uint16_t place, const std::array<std::uint8_t, 2>& operands)
{
    return std::uint32_t{place} << 16U | std::uint32_t{operands[0]} << 8U | operands[1];
}

template <typename Register>
bool Holds(std::int32_t value)
{
    return value >= std::int32_t{std::numeric_limits<Register>::min()} &&
           value <= std::int32_t{std::numeric_limits<Register>::max()};
}

bool IsOnAnArray(const FocalPlaneWindow& window)
{
    return window.colStart >= 0 && window.rowStart >= 0 && window.colEnd >= -1 && window.rowEnd >= -1;
}

}  // namespace

std::string HeadRegistersText(const HeadRegisters& head)
{
    std::string text;
    const auto line = [&text](std::string_view name, std::int32_t value) {
        text.append(name).append(" ").append(std::to_string(value)).append("\n");
    };
    VisitRegisters(head, line);
    for (const auto& [place, operands] : head.kept) {
        line(kKeptLine, std::bit_cast<std::int32_t>(KeptNumber(place, operands)));
    }
    return text;
}

bool TakeHeadRegistersText(HeadRegisters& head, std::string_view text)
{
    HeadRegisters taken = head;
    bool whole = true;
    VisitRegisters(taken, [&text, &whole]<typename Register>(std::string_view name, Register& value) {
        const auto number = TakeLine(text, name);
        whole = whole && number && Holds<Register>(*number);
        if (whole) value = static_cast<Register>(*number);
    });
    taken.kept.clear();
    while (whole && !text.empty()) {
        const auto number = TakeLine(text, kKeptLine);
        whole = number.has_value();
        if (!whole) break;
        const auto bits = std::bit_cast<std::uint32_t>(*number);
        taken.kept[static_cast<std::uint16_t>(bits >> 16U)] = {static_cast<std::uint8_t>(bits >> 8U),
                                                               static_cast<std::uint8_t>(bits)};
    }
    if (!whole || !IsOnAnArray(taken.window)) return false;
    head = taken;
    return true;
}

std::vector<std::pair<std::string, double>> NamedRegisters(const HeadRegisters& head)
{
    constexpr std::uint16_t kStartDelays = 0x5005;  // the picture doesn't depend on them
    const auto delays = head.kept.find(kStartDelays);
    return {
        {"clock", head.clockIndex},
        {"rows", RowsOfTiming(head)},
        {"columns", ColumnsOfTiming(head)},
        {"integration_rows", head.integrationLines},
        {"integration_columns", head.integrationCols},
        {"delays", delays == head.kept.end() ? 0 : delays->second[1]},
        {"gain", head.gainCode},
        {"offset", head.dac[0]},
        {"left", head.window.colStart},
        {"top", head.window.rowStart},
        {"right", head.window.colEnd},
        {"bottom", head.window.rowEnd},
        {"detector_bias", head.detBias},
        {"pedestal_bias", head.pedBias},
        {"column_gain", head.colGain},
        {"test_mode", head.testMode},
        {"flip_columns", head.flipCols},
        {"flip_rows", head.flipRows},
        {"clocks_on", head.clocksOn},
        {"biases_on", head.biasesOn},
    };
}

std::int32_t RowsOfTiming(const HeadRegisters& head)
{
    return 4 * head.timingRows + head.rowsBeyondByte;
}

std::int32_t ColumnsOfTiming(const HeadRegisters& head)
{
    return 4 * head.timingCols + head.colsBeyondByte;
}

double PixelClockHz(const HeadRegisters& head)
{
    const double divided = head.clockHz / (2.0 * head.clockIndex + 2.0);
    return head.model == HeadModel::kHgCdTe ? divided / 4.0 : divided;
}

double FramePeriodSeconds(const HeadRegisters& head)
{
    if (!head.clocksOn) return 0;
    return static_cast<double>(RowsOfTiming(head)) * ColumnsOfTiming(head) / PixelClockHz(head);
}

double IntegrationSeconds(const HeadRegisters& head)
{
    constexpr double kHgCdTePartOfPeriod = 32.0;
    constexpr std::uint8_t kLineBias = 2;  // the counter runs two lines ahead
    const double period = FramePeriodSeconds(head);
    if (head.model == HeadModel::kHgCdTe) return period / kHgCdTePartOfPeriod;
    const auto lines = static_cast<std::uint8_t>(head.integrationLines - kLineBias);
    const double pixels = static_cast<double>(lines) * ColumnsOfTiming(head) + 4.0 * head.integrationCols;
    return std::min(pixels / PixelClockHz(head), period);
}

std::int32_t GainIndexOfCode(std::uint8_t code)
{
    constexpr std::array<std::uint8_t, 16> kCodeOfIndex{0, 8, 4, 2, 12, 10, 6, 1, 14, 9, 5, 3, 13, 11, 7, 15};
    const auto* const found = std::ranges::find(kCodeOfIndex, code & 0x0F);
    return static_cast<std::int32_t>(found - kCodeOfIndex.begin());
}

}  // namespace kelvo
