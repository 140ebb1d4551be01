// The trigger input of the simulated board: pulses come one by one from the bench's button, or by themselves with a
// period, and are taken while the input is on. Times are on the TickUs scale and never fall back; pure arithmetic.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>

namespace kelvo {

struct TriggerInput {
    bool on = false;
    std::int64_t periodUs = 0;        // 0: no pulse by itself
    std::int64_t nextUs = 0;          // the next one of the period
    std::int64_t taken = 0;           // pulses, since the board came up
    std::deque<std::int64_t> lastUs;  // when the newest of them came, oldest first
};

// Pulses of the period up to untilUs have come. To be called before the input is changed or asked.
void HearPulses(TriggerInput& input, std::int64_t untilUs);
void TakePulse(TriggerInput& input, std::int64_t nowUs);  // one more, if the input is on
// From now on a pulse each periodUs, the first after a whole period; 0 or less: none.
void SetPulsePeriod(TriggerInput& input, std::int64_t nowUs, std::int64_t periodUs);

// Pulses taken up to a moment; exact for the newest 256 of them.
std::int64_t PulsesBy(const TriggerInput& input, std::int64_t timeUs);
// When pulse n was taken (from 1), of the newest 256; nullopt: it hasn't been, or that is too long ago.
std::optional<std::int64_t> PulseUs(const TriggerInput& input, std::int64_t n);
// When the next one will be taken by itself; nullopt: none will.
std::optional<std::int64_t> NextPulseUs(const TriggerInput& input);

}  // namespace kelvo
