#include "platform/long_run.h"

#include "platform/clock.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>

namespace kelvo {

namespace {

struct Wording {
    const char* why;    // it keeps the machine awake
    const char* ended;  // of the note
};
constexpr std::array<Wording, kLongRuns> kWordings = {{
    {"A recording is running", "Kelvo: a recording has ended"},
    {"Live video is traced", "Kelvo: a trace has ended"},
    {"Frames are saved on triggers", "Kelvo: a triggered save has ended"},
}};

std::array<std::optional<std::int64_t>, kLongRuns> beganMs;  // of those that go on

std::size_t IndexOf(LongRun run)
{
    return static_cast<std::size_t>(run);
}

std::string Minutes(std::int64_t ms)
{
    constexpr std::int64_t kMsOfAMinute = 60'000;
    const auto minutes = static_cast<long long>(ms / kMsOfAMinute);
    return minutes < 60 ? Format("%lld min", minutes) : Format("%lld h %lld min", minutes / 60, minutes % 60);
}

}  // namespace

void BeginLongRun(LongRun run)
{
    std::optional<std::int64_t>& began = beganMs.at(IndexOf(run));
    if (began) return;
    began = TickMs();
    HoldSleepOff(kWordings.at(IndexOf(run)).why);
}

void EndLongRun(LongRun run)
{
    const std::optional<std::int64_t> began = std::exchange(beganMs.at(IndexOf(run)), std::nullopt);
    if (!began) return;
    if (std::ranges::none_of(beganMs, [](const auto& other) { return other.has_value(); })) LetSleep();
    if (std::optional<DesktopNote> note = NoteOfRun(run, TickMs() - *began)) ShowDesktopNote(std::move(*note));
}

std::optional<DesktopNote> NoteOfRun(LongRun run, std::int64_t ms)
{
    if (ms < kLongRunMs) return std::nullopt;
    return DesktopNote{.summary = kWordings.at(IndexOf(run)).ended, .text = "It took " + Minutes(ms) + "."};
}

void ResetLongRuns()
{
    beganMs = {};
    LetSleep();
}

}  // namespace kelvo
