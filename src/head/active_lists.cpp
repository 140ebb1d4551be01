// The coefficient lists' way into the active calibration.
#include "calib/cal_state.h"
#include "config/camera_config.h"
#include "grabber/correction.h"
#include "head/camera_head.h"
#include "platform/box.h"
#include "platform/memory.h"
#include "shell/windows.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kelvo {

namespace {

// Division by a gain has to stay possible.
constexpr float kSmallestGain = 0.1F;

std::size_t PixelsOfFrame()
{
    const auto rows = static_cast<std::size_t>(std::max(ActiveConfig.Vroi, 0));
    return rows * static_cast<std::size_t>(std::max(ActiveConfig.Hroi, 0));
}

// A list that holds fewer entries is made anew, for a whole frame.
template <typename Entry>
bool MakeSure(std::vector<Entry>& list, std::size_t fewest)
{
    return list.size() >= fewest || AllocateBlock(list, PixelsOfFrame());
}

constexpr std::size_t kAtFirstUse = 1;

template <typename Entry>
std::int32_t Fill(std::vector<Entry>& list, std::int32_t first, std::int32_t last, Entry value)
{
    if (!MakeSure(list, kAtFirstUse)) return 0;
    const auto end = static_cast<std::size_t>(std::clamp<std::int64_t>(last, 0, std::ssize(list)));
    const auto begin = static_cast<std::size_t>(std::max(first, 0));
    for (std::size_t i = begin; i < end; ++i) list[i] = value;
    CalibrationListsChanged();
    return 1;
}

// The low 32 bits of a whole number; 0 where it has none.
std::int32_t LowBits(double value)
{
    const bool fits = std::isfinite(value) && std::fabs(value) < 9.0e18;
    return fits ? static_cast<std::int32_t>(static_cast<std::int64_t>(value)) : 0;
}

template <typename Entry>
std::int32_t Load(std::vector<Entry>& list, std::span<const std::uint8_t> source, std::size_t fewest = kAtFirstUse)
{
    const std::size_t count = PixelsOfFrame();
    if (source.size() / sizeof(Entry) < count) {
        MessageBox(hWndMain, "Global Memory would not lock", kMessageCaption);
        return 0;
    }
    if (!MakeSure(list, fewest)) return 0;
    std::memcpy(list.data(), source.data(), std::min(count, list.size()) * sizeof(Entry));
    CalibrationListsChanged();
    return 1;
}

std::int32_t LoadGains(std::span<const std::uint8_t> source)
{
    if (!Load(GainList, source)) return 0;
    std::ranges::replace(GainList, 0.0F, kSmallestGain);
    return 1;
}

// Decommutation is read for every pixel of every frame: a list made for a smaller frame is made anew.
std::int32_t LoadDecommutation(std::span<const std::uint8_t> source)
{
    return Load(DecomList, source, PixelsOfFrame());
}

}  // namespace

std::int32_t FillActiveList(std::int32_t type, std::int32_t first, std::int32_t last, double value)
{
    switch (type) {
        case kOffsetListType:
            return Fill(OffsetList, first, last, static_cast<std::int16_t>(LowBits(value)));
        case kGainListType:
            return Fill(GainList, first, last, value == 0 ? 0.0F : static_cast<float>(value));
        case kDecomListType:
            return Fill(DecomList, first, last, static_cast<std::uint32_t>(LowBits(value)));
        default:
            return 0;
    }
}

std::int32_t LoadActiveList(std::int32_t type, std::span<const std::uint8_t> source)
{
    switch (type) {
        case kOffsetListType:
            return Load(OffsetList, source);
        case kGainListType:
            return LoadGains(source);
        case kDecomListType:
            return LoadDecommutation(source);
        default:
            return 0;
    }
}

}  // namespace kelvo
