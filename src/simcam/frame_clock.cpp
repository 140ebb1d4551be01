#include "simcam/frame_clock.h"

#include <algorithm>
#include <cmath>

namespace kelvo {

namespace {

double FramesBy(const FrameClock& clock, std::int64_t nowUs)
{
    if (clock.periodUs <= 0) return clock.anchorFrames;
    return clock.anchorFrames + static_cast<double>(nowUs - clock.anchorUs) / clock.periodUs;
}

}  // namespace

FrameClock StartFrameClock(std::int64_t nowUs, double periodUs)
{
    return {.anchorUs = nowUs, .anchorFrames = 0, .periodUs = std::max(periodUs, 0.0)};
}

void SetFramePeriod(FrameClock& clock, std::int64_t nowUs, double periodUs)
{
    if (periodUs == clock.periodUs) return;
    // A blank that has been told stays told, whatever the division rounds to.
    clock.anchorFrames = std::max(FramesBy(clock, nowUs), static_cast<double>(BlanksBy(clock, nowUs)));
    clock.anchorUs = nowUs;
    clock.periodUs = std::max(periodUs, 0.0);
}

std::int64_t BlanksBy(const FrameClock& clock, std::int64_t nowUs)
{
    auto k = static_cast<std::int64_t>(std::floor(FramesBy(clock, nowUs)));
    if (clock.periodUs <= 0) return k;
    // The division may round to either side of a blank; BlankUs decides.
    if (BlankUs(clock, k + 1) <= nowUs) ++k;
    if (static_cast<double>(k) > clock.anchorFrames && BlankUs(clock, k) > nowUs) --k;
    return k;
}

std::int64_t BlankUs(const FrameClock& clock, std::int64_t k)
{
    return clock.anchorUs +
           static_cast<std::int64_t>(std::ceil((static_cast<double>(k) - clock.anchorFrames) * clock.periodUs));
}

}  // namespace kelvo
