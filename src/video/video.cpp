#include "video/video.h"

#include "display/difference_view.h"
#include "display/display_pipeline.h"
#include "display/unit_list.h"
#include "display/units.h"
#include "grabber/board_state.h"
#include "grabber/copm2.h"
#include "grabber/correction.h"
#include "grabber/frame_account.h"
#include "grabber/frame_read.h"
#include "grabber/frame_size.h"
#include "grabber/host_frames.h"
#include "grabber/recording.h"
#include "imagefile/header_write.h"
#include "pixel/decommutation.h"
#include "platform/box.h"
#include "platform/memory.h"
#include "platform/menu.h"
#include "platform/paint.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "ui/menu_state.h"
#include "ui/panel_readouts.h"
#include "ui/status.h"
#include "video/live_rate.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

namespace kelvo {

namespace {

// A change of geometry has restarted the grab, and no frame has come since.
bool restartedForGeometry = false;

// The stored frame; false where the buffer doesn't hold what the header says.
bool CopyStoredFrame(std::vector<std::int16_t>& frame)
{
    const Point size = FrameSizeOnView();
    if (size.x <= 0 || size.y <= 0) return false;
    const auto count = static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y);
    const std::span<const std::int16_t> pixels = ImageBufferPixels(ImageHeader.ImageHeaderDataOffset);
    if (pixels.size() < count) return false;
    if (frame.size() < count) frame.resize(count);
    std::copy_n(pixels.begin(), count, frame.begin());
    return true;
}

// The newest frame into RawFrame, to be drawn or not; frozen, RawFrame stands as it was read last.
bool RefreshRawFrame(bool draws)
{
    const std::size_t values = CameraFrameValues();
    if (values == 0) return false;
    // One that memory refused is asked for again: otherwise the picture would stay frozen.
    if (RawFrame.empty() && LiveVideo) AllocateBlock(write::frames.RawFrame, values);
    if (RawFrame.size() < values) return false;  // no set-up of this size yet
    if (!LiveVideo) return true;
    if (!ReadBoardFrame(std::span(write::frames.RawFrame).first(values))) return false;
    AccountFrameRead(draws);
    restartedForGeometry = false;
    return true;
}

// The count of the image cursor's pixel, unsigned 16 bits; 0 outside the frame.
void ReadCursor(std::span<const std::int16_t> frame)
{
    if (!ImageCursorOn) return;
    const Point size = FrameSizeOnView();
    const bool inFrame = CursorX >= 0 && CursorY >= 0 && CursorX < size.x && CursorY < size.y;
    const std::int64_t at = std::int64_t{CursorY} * size.x + CursorX;
    write::frames.CursorValue = inFrame ? static_cast<std::uint16_t>(frame[static_cast<std::size_t>(at)]) : 0;
}

int GetStoredFrame(std::vector<std::int16_t>& frame)
{
    if (!CopyStoredFrame(frame)) return 0;
    ReadCursor(frame);
    if (DisplayEnabled) DrawFrame(frame);
    return 1;
}

// The frame of a stored burst that replay shows, which stands in image order already.
int GetReplayedFrame(std::span<const std::int16_t> replayed, std::vector<std::int16_t>& frame)
{
    if (frame.size() != replayed.size() && !AllocateBlock(frame, replayed.size())) return 0;
    std::ranges::copy(replayed, frame.begin());
    ReadCursor(frame);
    if (DisplayEnabled) DrawFrame(frame);
    return 1;
}

// RawFrame in image order, with offset and calibration, and where it is drawn its gray values with it: each pixel is
// gathered once.
void CorrectRawFrame(std::span<std::int16_t> frame, bool draws)
{
    const GrayRows grays = draws ? BeginPicture() : GrayRows{};
    const bool lookedUp =
        CorrectLiveFrame(std::span(write::frames.RawFrame).first(frame.size()), frame, DataOffset, grays);
    ReadCursor(frame);
    if (lookedUp) {
        EndPicture();
    } else if (draws) {
        DrawFrame(frame);
    }
}

int GetCameraFrame(std::vector<std::int16_t>& frame)
{
    if (const auto replayed = ReplayedFrame(); !replayed.empty()) return GetReplayedFrame(replayed, frame);
    const bool draws = DisplayEnabled != 0;
    if (!RefreshRawFrame(draws) || !EnsureDecomList()) return 0;
    const std::size_t values = CameraFrameValues();
    if (frame.size() != values && !AllocateBlock(frame, values)) return 0;
    CorrectRawFrame(frame, draws);
    return 1;
}

void WriteCameraKey(const char* key, std::int32_t value)
{
    WritePrivateProfileString(ActiveCameraSection(), key, Format("%d", value), CameraFilePath);
}

// With a difference on view: what the pixel is compared with.
std::optional<std::int16_t> ReferenceUnder(std::int32_t x, std::int32_t y)
{
    const Point size = FrameSizeOnView();
    if (!DifferenceOnView() || x < 0 || y < 0 || x >= size.x || y >= size.y) return std::nullopt;
    return ReferenceCount(static_cast<std::size_t>(y) * static_cast<std::size_t>(size.x) + static_cast<std::size_t>(x));
}

std::string WithoutDegreeSign(std::string unit)
{
    const std::size_t at = unit.find('\xB0');
    if (at != std::string::npos) unit.erase(at, 1);
    return unit;
}

bool SomethingIsOnView()
{
    return LiveVideo || ViewingFile || CameraOn;
}

void StoreZoom(std::int32_t xzoom, std::int32_t yzoom, std::int32_t xoffset, std::int32_t yoffset)
{
    write::camera.ActiveConfig.Xzoom = xzoom;
    write::camera.ActiveConfig.Yzoom = yzoom;
    write::camera.ActiveConfig.Xoffset = xoffset;
    write::camera.ActiveConfig.Yoffset = yoffset;
}

void SetTitle(std::string_view title)
{
    if (hWndMain) SetWindowText(hWndMain, title);
}

// The analysis reads the frozen picture from ImageBuffer: the last frame on the screen.
void KeepLiveFrame()
{
    const std::size_t values = CameraFrameValues();
    if (LiveFrame.size() != values || values == 0 || ViewingFile) return;
    const std::int32_t prefix = std::max<std::int32_t>(ImageHeader.ImageHeaderDataOffset, 0);
    const std::size_t bytes = values * sizeof(std::int16_t) + static_cast<std::size_t>(prefix);
    if (ImageBuffer.size() < bytes && !AllocateBlock(write::frames.ImageBuffer, bytes)) return;
    const std::span<std::int16_t> pixels = write::ImageBufferPixels(prefix);
    std::copy_n(LiveFrame.begin(), std::min(values, pixels.size()), pixels.begin());
}

// While something records the grab goes on by itself: live and frozen are matters of the picture alone.
void StartGrab()
{
    if (CaptureIsUsed()) return;
    AccountCycleStops();
    if (icp_grab(IcpModule, FrameA) == 0) {
        AccountGrabStarted();
    } else {
        MessageBox(hWndMain, "Error starting grab to image processing board", "icp_grab");
    }
}

void StopGrab()
{
    if (CaptureIsUsed()) return;
    AccountCycleStops();
    icp_freeze(IcpModule, FrameA);
}

void Resume(std::int32_t& live)
{
    ShowFreezeInMenu(true);
    EndReplay();
    if (ViewingFile) LeaveStoredFile();
    write::file.ImageHeader.ImageHeaderDataOffset = 0;
    StartGrab();
    SetTitle("Kelvo");
    live = 1;
    if (DisplayEnabled && hWndMain) SetTimer(hWndMain, kLiveTimer, 0);
}

void Freeze(std::int32_t& live)
{
    ShowFreezeInMenu(false);
    KeepLiveFrame();
    if (DisplayEnabled) KillTimer(hWndMain, kLiveTimer);
    StopGrab();
    RestartLiveRate();
    SetTitle("Kelvo - frozen");
    live = 0;
}

}  // namespace

bool EnsureDecomList()
{
    if (DecomList.size() >= CameraFrameValues()) return true;
    std::vector<std::uint32_t>().swap(write::cal.DecomList);
    std::optional<std::vector<std::uint32_t>> list = LoadDecomList(ActiveConfig);
    if (list) write::cal.DecomList = std::move(*list);
    CalibrationListsChanged();
    return list.has_value();
}

void LeaveStoredFile()
{
    write::frames.ViewingFile = 0;
    write::frames.SteppingFrames = 0;
    RefreshPicture();
    KeepUnitAvailable();
    BuildDisplayLut(Contrast, Brightness);  // viewing has made it for the file's range
}

int GetVideoData(std::vector<std::int16_t>& frame)
{
    return ViewingFile ? GetStoredFrame(frame) : GetCameraFrame(frame);
}

int GetVideoData(std::span<std::int16_t> frame)
{
    const std::size_t values = CameraFrameValues();
    if (ViewingFile || frame.size() < values || !RefreshRawFrame(false) || !EnsureDecomList()) return 0;
    CorrectRawFrame(frame.first(values), false);
    return 1;
}

void ToggleFreeze(std::int32_t& flag)
{
    if (!CameraOn) return;
    if (flag) {
        Freeze(flag);
    } else {
        Resume(flag);
    }
    if (hWndMain) DrawMenuBar(hWndMain);
}

void RestartGrab()
{
    restartedForGeometry = false;
    write::frames.LiveVideo = 0;
    ToggleFreeze(write::frames.LiveVideo);
}

void ToggleLiveVideo()
{
    ToggleFreeze(write::frames.LiveVideo);
}

void RefreshPicture()
{
    SetDisplayGeometry(Xpan, Ypan, Xzoom, Yzoom, Xoffset, Yoffset);
}

int RefreshLiveFrame()
{
    return GetVideoData(write::frames.LiveFrame);
}

void SetDisplayGeometry(std::int32_t xpan, std::int32_t ypan, std::int32_t xzoom, std::int32_t yzoom,
                        std::int32_t xoffset, std::int32_t yoffset)
{
    WriteCameraKey("Xpan", xpan);
    WriteCameraKey("Ypan", ypan);
    if (!SomethingIsOnView()) return;

    const bool changes =
        std::tie(xpan, ypan, xzoom, yzoom, xoffset, yoffset) != std::tie(Xpan, Ypan, Xzoom, Yzoom, Xoffset, Yoffset);
    write::display.Xpan = xpan;
    write::display.Ypan = ypan;
    StoreZoom(xzoom, yzoom, xoffset, yoffset);
    // The steps of a wheel or a held key between two frames are one change: the next frame shows them all.
    if (LiveVideo && !(changes && restartedForGeometry)) {
        RestartGrab();
        restartedForGeometry = changes;
    }
    if (ViewingFile) {
        RefreshLiveFrame();
    } else if (changes && !LiveVideo) {
        RedrawPicture();
    }
    ShowGeometryInPanel();
}

bool SetViewZoom(const DisplayGeometry& geometry)
{
    if (!SomethingIsOnView()) return false;
    StoreZoom(geometry.xzoom, geometry.yzoom, geometry.xoffset, geometry.yoffset);
    ShowGeometryInPanel();
    return true;
}

void ShowCursorValue(std::int32_t x, std::int32_t y, std::int32_t on)
{
    if (!on) return;
    write::frames.CursorX = x;
    write::frames.CursorY = y;
    RefreshLiveFrame();
    if (Xzoom == 0 || Yzoom == 0) return;

    std::string name;
    std::string unit;
    GetUnitName(DisplayUnit, name, unit);
    std::string value;
    if (const std::optional<std::int16_t> reference = ReferenceUnder(x, y)) {
        name = "Difference in " + name;
        value = DifferenceText(static_cast<std::int16_t>(CursorValue), *reference, DisplayUnit);
    } else {
        CountsToUnit(CursorValue, DisplayUnit, &value);
    }
    StatusMessage(
        Format("x=%3d  y=%3d  %s=%s %s     ", x, y, name.c_str(), value.c_str(), WithoutDegreeSign(unit).c_str()),
        static_cast<int>(TextAlign::kCentre));
}

void ResetVideo()
{
    restartedForGeometry = false;
}

}  // namespace kelvo
