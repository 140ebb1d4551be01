// The live cycle: a frame is fetched, corrected and shown; live video freezes and resumes; the geometry of the picture
// changes; the value under the image cursor is read.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace kelvo {

// The main window's timer of the live refresh, 0 ms: it only yields to the operator between two frames.
inline constexpr std::uint32_t kLiveTimer = 3;

// Fetches the newest frame, corrected and in image order, into frame, reads the image cursor's count from it, and draws
// it where DisplayEnabled is set. With a file on view it is the stored frame, while frozen the one that replay shows
// (ReplayedFrame). 1, or 0 on failure (told in a box where
// the board failed).
int GetVideoData(std::vector<std::int16_t>& frame);
// The camera's frame in the same way into a block of Hroi x Vroi values, and nothing is drawn: for who records. 0 too
// with a file on view, or where the block is too small.
int GetVideoData(std::span<std::int16_t> frame);
// GetVideoData into LiveFrame; its result.
int RefreshLiveFrame();

// The table of the readout is there: loaded where it was missing. False where it can't be.
bool EnsureDecomList();
// Back from a stored file to the camera's frame; live video is left as it is.
void LeaveStoredFile();

// Freezes or resumes live video: flag is LiveVideo. Without CameraOn it does nothing. Resuming leaves a stored file
// and ends replay, and the display table is that of the live range again.
void ToggleFreeze(std::int32_t& flag);
void ToggleLiveVideo();  // ToggleFreeze(LiveVideo)
// Live video begins anew with what is in force, frozen or not. Without a camera that is on nothing is live after it.
void RestartGrab();

// The one way in which pan (image pixels), zoom (1 to 16) and offset (screen units) change. The pan is written to the
// camera's section in any case; without live video, file and camera nothing else happens. Live video is restarted, once
// for all changes between two frames; a file or a frozen frame on view is drawn again, the panel follows.
void SetDisplayGeometry(std::int32_t xpan, std::int32_t ypan, std::int32_t xzoom, std::int32_t yzoom,
                        std::int32_t xoffset, std::int32_t yoffset);

// The six values that place the picture: pan in image pixels, zoom 1 to 16, offset in screen units.
struct DisplayGeometry {
    std::int32_t xpan = 0;
    std::int32_t ypan = 0;
    std::int32_t xzoom = 1;
    std::int32_t yzoom = 1;
    std::int32_t xoffset = 0;
    std::int32_t yoffset = 0;
    friend bool operator==(const DisplayGeometry&, const DisplayGeometry&) = default;
};

// Zoom and offset of a geometry, for a view that moves over the picture: the pan stays, nothing is restarted, written
// or painted, and the panel follows. False, and nothing changes, without live video, file and camera.
bool SetViewZoom(const DisplayGeometry& geometry);

// The picture anew with the geometry in force.
void RefreshPicture();

// The read-out of image pixel (x, y) on the status line: position, name, value and unit; with a difference on view
// (display/difference_view.h) "Difference in", and how far the value lies above the reference's. With on 0 the line
// keeps its text.
void ShowCursorValue(std::int32_t x, std::int32_t y, std::int32_t on);

// No change of geometry waits for its frame.
void ResetVideo();

}  // namespace kelvo
