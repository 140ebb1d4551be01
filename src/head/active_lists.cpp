// The head's way to the active tables: its list types are the kinds that the tables have.
#include "head/camera_head.h"
#include "pixel/coefficient_lists.h"

namespace kelvo {

static_assert(kOffsetListType == kOffsetKind && kGainListType == kGainKind && kDecomListType == kDecomKind);

std::int32_t FillActiveList(std::int32_t type, std::int32_t first, std::int32_t last, double value)
{
    return FillCoefficients(type, first, last, value);
}

std::int32_t LoadActiveList(std::int32_t type, std::span<const std::uint8_t> source)
{
    return DownloadCoefficients(type, source);
}

}  // namespace kelvo
