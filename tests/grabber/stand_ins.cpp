// Until the fast correction and averaging stand: the plain definition, and the buffer's state.
#include "acquire/buffer_state.h"
#include "calib/cal_state.h"
#include "grabber/correction.h"

namespace kelvo {

std::uint32_t AveragingCapacity = 0;
std::int32_t PeriodicUpdates = 1;

void CorrectLiveFrame(std::span<const std::int16_t> raw, std::span<std::int16_t> frame, std::int32_t dataOffset)
{
    for (std::size_t i = 0; i < frame.size(); ++i) {
        const std::uint32_t d = DecomList[i];
        const std::int32_t count = dataOffset + raw[d] - (CalType == 1 || CalType == 2 ? OffsetList[d] : 0);
        if (CalType == 2) {
            frame[i] = static_cast<std::int16_t>(static_cast<std::int32_t>(count / static_cast<double>(GainList[d])));
        } else {
            frame[i] = static_cast<std::int16_t>(CalType == 1 || count > 0 ? count : 0);
        }
    }
}

void CalibrationListsChanged() {}

}  // namespace kelvo
