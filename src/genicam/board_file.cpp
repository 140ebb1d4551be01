#include "genicam/genicam_camera.h"
#include "genicam/pixel_format.h"
#include "platform/profile.h"
#include "platform/text.h"

#include <charconv>
#include <string_view>

namespace kelvo {

namespace {

constexpr std::string_view kSection = "GenICam";

struct WholeKey {
    std::string_view key;
    std::int32_t lowest = 0;
    std::int32_t highest = 0;
};

// A whole number within its range; the fallback where the key is missing, nullopt with why in error where it isn't one.
std::optional<std::int32_t> Whole(const WholeKey& key, std::int32_t fallback, const std::string& path,
                                  std::string& error)
{
    if (!HasProfileKey(kSection, key.key, path)) return fallback;
    const std::string text = GetPrivateProfileString(kSection, key.key, "", path);
    std::int32_t value = 0;
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = code == std::errc() && end == text.data() + text.size();
    if (isWhole && value >= key.lowest && value <= key.highest) return value;
    error = std::string(key.key) + "=" + text + " in " + path +
            Format(": it has to be a whole number from %d to %d.", key.lowest, key.highest);
    return std::nullopt;
}

}  // namespace

std::optional<BoardFile> ReadBoardFile(const std::string& path, std::string& error)
{
    constexpr WholeKey kPacketSize = {"PacketSize", 0, 65535};
    constexpr WholeKey kBuffers = {"Buffers", 24, 512};
    constexpr WholeKey kPedestal = {"Pedestal", 0, 65535};
    constexpr WholeKey kShift = {"Shift", 0, 8};
    BoardFile file;
    if (path.empty()) return file;
    const HeldProfile held(path);
    if (HasProfileKey(kSection, "Device", path)) {
        file.device = GetPrivateProfileString(kSection, "Device", "", path);
    }
    file.settings.format = GetPrivateProfileString(kSection, "Format", "", path);
    if (!file.settings.format.empty() && !PixelFormatNamed(file.settings.format)) {
        error =
            "Format=" + file.settings.format + " in " + path + ": it has to be a monochrome format of 8 to 16 bits.";
        return std::nullopt;
    }
    const auto packetSize = Whole(kPacketSize, file.settings.packetSize, path, error);
    const auto buffers = Whole(kBuffers, file.settings.buffers, path, error);
    const auto pedestal = Whole(kPedestal, 0, path, error);
    const auto shift = Whole(kShift, 0, path, error);
    if (!packetSize || !buffers || !pedestal || !shift) return std::nullopt;
    file.settings.packetSize = *packetSize;
    file.settings.buffers = *buffers;
    if (HasProfileKey(kSection, kPedestal.key, path) || HasProfileKey(kSection, kShift.key, path)) {
        file.settings.counts = CountRule{.pedestal = *pedestal, .shift = *shift};
    }
    return file;
}

}  // namespace kelvo
