// The parts of live video that these tests don't look at, until they are part of the tree.
#include "acquire/buffer_state.h"
#include "grabber/correction.h"

namespace kelvo {

[[gnu::weak]] std::uint32_t AveragingCapacity = 0;
[[gnu::weak]] std::int32_t PeriodicUpdates = 1;
[[gnu::weak]] void CalibrationListsChanged() {}
[[gnu::weak]] void CorrectLiveFrame(std::span<const std::int16_t>, std::span<std::int16_t>, std::int32_t) {}

}  // namespace kelvo
