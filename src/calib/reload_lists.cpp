#include "calib/reload_lists.h"

#include "calib/run_steps.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "state/windows.h"

#include <algorithm>
#include <string>

namespace kelvo {

namespace {

struct Words {
    const char* noMemory;
    const char* noList;
};
constexpr Words kOfGains = {"Failure to allocate or lock File list memory for gain reload.",
                            "Failure to lock Gain list memory for reload"};
constexpr Words kOfOffsets = {"Failure to allocate or lock File list memory for gain reload",
                              "Failure to lock Gain list memory for reload of offsets."};

int RefuseReload(const char* text)
{
    MessageBox(hWndMain, text, kMessageCaption);
    return 0;
}

template <typename Entry>
int Reload(std::span<Entry> list, const std::string& path, const CameraConfig& config, const Words& words)
{
    std::vector<Entry> read;
    if (!AllocateBlock(read, PixelsOf(config))) return RefuseReload(words.noMemory);
    auto file = File::Open(path, FileMode::kRead);
    if (!file) return RefuseReload("Failure to open offset file!");
    const std::span<std::byte> bytes = std::as_writable_bytes(std::span(read));
    if (file->Read(bytes) != bytes.size())
        return RefuseReload("Failure to read Gain list memory for reload of offsets.");
    if (list.size() < read.size()) return RefuseReload(words.noList);
    std::ranges::copy(read, list.begin());
    return 1;
}

}  // namespace

int ReloadGains(std::span<float> list, const CameraConfig& config, const CalSettingsRecord& settings)
{
    return Reload(list, settings.GainFile, config, kOfGains);
}

int ReloadOffsets(std::span<std::int16_t> list, const CameraConfig& config, const CalSettingsRecord& settings)
{
    return Reload(list, settings.OffsetFile, config, kOfOffsets);
}

}  // namespace kelvo
