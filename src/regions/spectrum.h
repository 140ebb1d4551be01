// The temporal amplitude spectrum of a trace: how strongly a region's mean swings at which frequency. Pure arithmetic.
//
// The mean is taken off and the rest weighted by a Hann window, w(n) = 1/2 - 1/2 cos(2 pi n / N) (Harris, Proc. IEEE
// 66, 1978), whose sum N / 2 the amplitudes are divided by: a sine of amplitude A whose frequency is that of a line
// gives A there, and A / 2 on the lines beside. Amplitudes are single-sided and in the unit of the values.
#pragma once

#include "regions/trace.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

inline constexpr std::size_t kLeastSpectrumFrames = 8;

// Amplitudes at k / N of the sampling rate, k from 0 to N / 2. Line 0 is the rest that the window leaves of the mean;
// it and, of an even N, the last one have no mirror image and aren't doubled. Empty for fewer than 8 values.
std::vector<double> AmplitudesOf(std::span<const double> values);

// How many of so many values are taken: the largest number without a prime factor above 100. The transform of others
// would take hours of long traces.
std::size_t SpectrumLengthOf(std::size_t frames);

struct Spectrum {
    TraceRun run;                // the frames that it is of: the start of the trace's longest run without a gap
    double intervalSeconds = 0;  // between two of them, the mean; 0: not known
    std::vector<double> amplitudes{};
};
// At line k; per frame (0 to 1/2) where no time is known.
double FrequencyOf(const Spectrum& spectrum, std::size_t line);

// values: one a frame. nullopt where no run has 8 frames.
std::optional<Spectrum> SpectrumOf(std::span<const TraceFrame> frames, std::span<const double> values);

}  // namespace kelvo
