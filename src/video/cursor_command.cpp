#include "video/cursor_command.h"

#include "display/display_pipeline.h"
#include "platform/menu.h"
#include "platform/pointer.h"
#include "platform/timers.h"
#include "resources/ids.h"
#include "state/frame_state_write.h"
#include "state/state_registry.h"
#include "state/windows.h"
#include "ui/status.h"
#include "video/cursor_cross.h"
#include "video/image_cursor.h"
#include "video/video.h"

#include <optional>
#include <string>

namespace kelvo {

namespace {

Point ImagePosition;  // the image cursor's last position, image pixels

const StateNames kStateNames{
    {"ImagePosition",
     [] {
         return StateValue{
             std::vector<double>{static_cast<double>(ImagePosition.x), static_cast<double>(ImagePosition.y)}};
     }},
};

constexpr std::int64_t kCursorPeriodMs = 1000;

std::string SavedStatusText;
int SavedStatusAlign = 0;

void ShowCursorAt(Point position)
{
    ImagePosition = position;
    ShowCursorValue(position.x, position.y, 1);
}

}  // namespace

void FollowPointer()
{
    KillTimer(hWndMain, kCursorTimer);
    ShowCursorValue(ImagePosition.x, ImagePosition.y, 0);
    ShowCursorAt(ImageCursorPosition());
    SetTimer(hWndMain, kCursorTimer, kCursorPeriodMs);
}

void OnCursorTimer()
{
    if (!LiveVideo) return;
    ShowCursorValue(ImagePosition.x, ImagePosition.y, 0);
    if (!ImageCursorOn) return;
    ShowCursorAt(ImageCursorPosition());
    SetTimer(hWndMain, kCursorTimer, kCursorPeriodMs);
}

void ToggleImageCursor()
{
    const std::optional<MenuItemState> item = GetMenuItem(hWndMain, kCmdImageCursor);
    if (item && !item->checked) {
        SavedStatusAlign = GetStatusText(SavedStatusText);
        CheckMenuItem(hWndMain, kCmdImageCursor, true);
        write::frames.ImageCursorOn = 1;  // before the first read-out, which takes its count from the frame
        AddPictureLayer(DrawCursorCross);
        ShowCursorAt(ImageCursorPosition());
        SetPointer(Pointer::kCross);
        RefreshLiveFrame();
        SetTimer(hWndMain, kCursorTimer, kCursorPeriodMs);
        return;
    }
    CheckMenuItem(hWndMain, kCmdImageCursor, false);
    ShowCursorValue(ImagePosition.x, ImagePosition.y, 0);
    if (!TrackballMode) ReleasePointerClip();
    SetPointer(Pointer::kArrow);
    write::frames.ImageCursorOn = 0;
    RemovePictureLayer(DrawCursorCross);
    if (!RefreshLiveFrame() || !DisplayEnabled) RepaintPicture();  // without the cross
    StatusMessage(SavedStatusText, SavedStatusAlign);
}

void ResetCursorCommand()
{
    ImagePosition = {};
    SavedStatusText.clear();
    SavedStatusAlign = 0;
}

}  // namespace kelvo
