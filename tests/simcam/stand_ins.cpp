// The buffer's state, until averaging defines it.
#include "acquire/buffer_state.h"

namespace kelvo {

std::uint32_t AveragingCapacity = 0;
std::int32_t PeriodicUpdates = 1;

}  // namespace kelvo
