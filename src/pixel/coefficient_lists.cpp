#include "pixel/coefficient_lists.h"

#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/cal_state_write.h"
#include "state/camera_config.h"
#include "state/windows.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

namespace {

// Division by a gain has to stay possible.
constexpr float kSmallestGain = 0.1F;
constexpr std::size_t kWordBytes = 4;

template <typename Entry>
bool MakeAtFirstUse(std::vector<Entry>& list)
{
    return !list.empty() || AllocateBlock(list, PixelsOf(ActiveConfig));
}

template <typename Entry>
std::int32_t Fill(std::vector<Entry>& list, std::int32_t first, std::int32_t count, Entry value)
{
    if (!MakeAtFirstUse(list)) return 0;
    const auto end = static_cast<std::size_t>(std::clamp<std::int64_t>(count, 0, std::ssize(list)));
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
std::int32_t Load(std::vector<Entry>& list, std::span<const std::uint8_t> source)
{
    const std::size_t count = PixelsOf(ActiveConfig);
    if (source.size() / sizeof(Entry) < count) {
        MessageBox(hWndMain, "Global Memory would not lock", kMessageCaption);
        return 0;
    }
    if (!MakeAtFirstUse(list)) return 0;
    std::memcpy(list.data(), source.data(), std::min(count, list.size()) * sizeof(Entry));
    CalibrationListsChanged();
    return 1;
}

std::int32_t LoadGains(std::span<const std::uint8_t> source)
{
    if (!Load(write::cal.GainList, source)) return 0;
    std::ranges::replace(write::cal.GainList, 0.0F, kSmallestGain);
    return 1;
}

// Decommutation is read for every pixel of every frame: a list made for a smaller frame is made anew, once there is
// one to take its place.
std::int32_t LoadDecommutation(std::span<const std::uint8_t> source)
{
    const std::size_t count = PixelsOf(ActiveConfig);
    if (DecomList.size() < count && source.size() / kWordBytes >= count) write::cal.DecomList.clear();
    return Load(write::cal.DecomList, source);
}

// Why a file wasn't written: the disk took what it could, or there was no file to write to.
bool DiskRanFull()
{
    return errno == ENOSPC || errno == EDQUOT || errno == EFBIG || errno == EIO;
}

void Tell(const char* what, std::string_view path, std::string_view title = kMessageCaption)
{
    MessageBox(hWndMain, what + std::string(path), title);
}

}  // namespace

std::int32_t DownloadCoefficients(std::int32_t kind, std::span<const std::uint8_t> list)
{
    switch (kind) {
        case kOffsetKind:
            return Load(write::cal.OffsetList, list);
        case kGainKind:
            return LoadGains(list);
        case kDecomKind:
            return LoadDecommutation(list);
        default:
            return 0;
    }
}

std::int32_t FillCoefficients(std::int32_t kind, std::int32_t first, std::int32_t count, double value)
{
    switch (kind) {
        case kOffsetKind:
            return Fill(write::cal.OffsetList, first, count, static_cast<std::int16_t>(LowBits(value)));
        case kGainKind:
            return Fill(write::cal.GainList, first, count, static_cast<float>(value));
        case kDecomKind:
            return Fill(write::cal.DecomList, first, count, static_cast<std::uint32_t>(LowBits(value)));
        default:
            return 0;
    }
}

int SaveList(std::string_view path, std::span<const std::uint8_t> list, std::size_t count)
{
    const std::size_t held = list.size() / kWordBytes;
    if (held < count) {
        MessageBox(hWndMain, "Allocated memory is smaller than ROI Pixels", kMessageCaption);
        MessageBox(hWndMain, Format("lStatus=%zu,ROIPixels=%zu", held, count), kMessageCaption);
    }
    const std::size_t bytes = std::min(held, count) * kWordBytes;
    if (ReplaceFile(path, {reinterpret_cast<const char*>(list.data()), bytes})) return 1;
    if (DiskRanFull()) {
        Tell("Failed to save file: ", path);
    } else {
        Tell("Failed to open file: ", path, "Kelvo File Error!");
    }
    return 0;
}

ListRead ReadList(std::string_view path, std::span<std::uint8_t> list, std::size_t count)
{
    if (list.empty()) return ListRead::kNoList;
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (!file) return ListRead::kNotOpened;
    const auto wanted = std::as_writable_bytes(list).first(std::min(list.size() / kWordBytes, count) * kWordBytes);
    return file->Read(wanted) == wanted.size() ? ListRead::kComplete : ListRead::kNotRead;
}

void TellListRead(ListRead read, std::string_view path)
{
    switch (read) {
        case ListRead::kComplete:
            return;
        case ListRead::kNoList:
            MessageBox(hWndMain, "Failure to lock memory!", kMessageCaption);
            return;
        case ListRead::kNotOpened:
            Tell("Failed to open file: ", path);
            return;
        case ListRead::kNotRead:
            Tell("Failed to read file: ", path);
            return;
    }
}

int LoadList(std::string_view path, std::span<std::uint8_t> list, std::size_t count)
{
    if (!list.empty() && list.size() / kWordBytes < count) {
        MessageBox(hWndMain, "Allocated memory is smaller than ROI PIxels", kMessageCaption);
    }
    const ListRead read = ReadList(path, list, count);
    TellListRead(read, path);
    return read == ListRead::kComplete ? 1 : 0;
}

}  // namespace kelvo
