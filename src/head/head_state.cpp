#include "head/head_state.h"

namespace kelvo {

float FrameRate = 0;
std::array<std::int16_t, 4> VideoGain{};
std::array<std::int16_t, 4> VideoOffset{};
float VoltsLow = 0;
float VoltsHigh = 0;
std::int32_t IntegrationSetting = 0;

// The head's timing table is not built in a program without a head, and then no frame rate is ever set.
double IntegrationTimeMsec(float /*frameRate*/, std::int32_t /*setting*/)
{
    return 0;
}

}  // namespace kelvo
