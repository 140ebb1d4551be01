#include "badpixel/bad_pixel_state.h"

#include "pixel/bad_pixels_write.h"
#include "pixel/coefficient_lists.h"
#include "pixel/decommutation.h"
#include "pixel/unsaved_set.h"
#include "platform/box.h"
#include "platform/files.h"
#include "state/cal_settings_write.h"
#include "state/cal_state.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/menu_state.h"
#include "video/video.h"

#include <cstring>
#include <span>
#include <string_view>
#include <tuple>
#include <vector>

namespace kelvo {

namespace {

constexpr std::size_t kLongestFile = std::size_t{1} << 26;

std::span<const std::uint8_t> BytesOf(const std::vector<std::uint32_t>& entries)
{
    return {reinterpret_cast<const std::uint8_t*>(entries.data()), entries.size() * sizeof(std::uint32_t)};
}

KeptFile KeepFile(const std::string& path)
{
    if (path.empty() || CalType == 0 || SetWithoutFiles()) return {};
    const std::optional<std::string> contents = ReadWholeFile(path, kLongestFile);
    if (!contents) return {path, std::nullopt};
    return {path, SharedBlocks({reinterpret_cast<const std::uint8_t*>(contents->data()), contents->size()})};
}

bool PutBackFile(const KeptFile& kept)
{
    if (kept.path.empty() || KeepFile(kept.path) == kept) return true;
    if (!kept.contents) return DeleteFileNamed(kept.path);
    const std::vector<std::uint8_t> bytes = kept.contents->Bytes();
    return ReplaceFile(kept.path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

// Both files, or none.
bool PutBackFiles(const BadPixelState& state)
{
    const KeptFile listNow = KeepFile(state.list.path);
    const bool listStands = PutBackFile(state.list);
    if (listStands && PutBackFile(state.setTable)) return true;
    if (listStands) PutBackFile(listNow);
    MessageBox(hWndMain, "Could not save file: " + (listStands ? state.setTable.path : state.list.path),
               kMessageCaption);
    return false;
}

void PutBackTable(const SharedBlocks& table)
{
    if (table.Size() == 0 || SharedBlocks(BytesOf(DecomList)) == table) return;
    const std::vector<std::uint8_t> bytes = table.Bytes();
    DownloadCoefficients(kDecomKind, bytes);
    SaveList(DecomTempPath(), bytes, DecomList.size());
    if (CameraOn && !LiveVideo && !ViewingFile) RefreshLiveFrame();
}

void PutBackReplaced(const std::vector<std::uint8_t>& bytes)
{
    std::vector<std::uint32_t>& replaced = write::badPixels.ReplacedPixels;
    replaced.resize(bytes.size() / sizeof(std::uint32_t));
    std::memcpy(replaced.data(), bytes.data(), bytes.size());
}

}  // namespace

bool SameBadPixels(const BadPixelState& a, const BadPixelState& b)
{
    const auto parts = [](const BadPixelState& s) {
        return std::tie(s.flags, s.badDetFile, s.decomTable, s.list, s.setTable);
    };
    return parts(a) == parts(b);
}

BadPixelState TakeBadPixelState()
{
    return {.flags = {MirrorVert, MirrorHoriz, RotateCCW, SubstBadPixels},
            .badDetFile = CalSettings.BadDetFile,
            .decomTable = SharedBlocks(BytesOf(DecomList)),
            .list = KeepFile(CalSettings.BadDetFile),
            .setTable = KeepFile(CalSettings.DecomFile),
            .count = BadDetCount,
            .replaced = SharedBlocks(BytesOf(ReplacedPixels))};
}

bool PutBackBadPixelState(const BadPixelState& state)
{
    if (!PutBackFiles(state)) return false;
    write::display.MirrorVert = state.flags[0];
    write::display.MirrorHoriz = state.flags[1];
    write::display.RotateCCW = state.flags[2];
    write::display.SubstBadPixels = state.flags[3];
    write::calSet.CalSettings.BadDetFile = state.badDetFile;
    write::calSet.BadDetCount = state.count;
    PutBackReplaced(state.replaced.Bytes());
    PutBackTable(state.decomTable);
    ShowReplacementInMenu(SubstBadPixels != 0);
    return true;
}

}  // namespace kelvo
