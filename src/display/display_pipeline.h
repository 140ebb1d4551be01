// The display pipeline: a frame of counts becomes the picture in the main window. The lookup table reduces counts to
// 8 bits, the bitmap takes them with the map's colours, and it is painted below the panel at the zoom in force.
//
// The table and the bitmap here are made anew whenever contrast, brightness, range or frame change. All functions work
// without a main window or a panel: then only the state changes.
#pragma once

#include "dibapi32/dibutil.h"
#include "display/fit_contrast.h"
#include "display/frame_bitmap.h"
#include "platform/types.h"
#include "state/contrast_fit.h"

#include <cstdint>
#include <optional>
#include <span>

namespace kelvo {

// The picture on the screen; null before the first frame.
extern const Dib& FrameBitmap;

// Rebuilds DisplayLut for contrast (1 to 100), brightness (1 to 1000) and the range on view, stores both, shows them in
// the panel, and draws a stored or frozen picture again (RedrawPicture); a running one takes the table with its next
// frame. Where memory is refused there is no table and the picture is black; nothing is told.
void BuildDisplayLut(std::int32_t contrast, std::int32_t brightness);

// Makes DisplayLut from the stored contrast and brightness if there is none yet. Nothing is drawn.
void EnsureDisplayLut();

// What stands over the picture: called each time after FrameBitmap has been painted in the main window, with newFrame
// true when it was made just now. A layer paints into the window and never touches FrameBitmap.
using PictureLayer = void (*)(bool newFrame);
void AddPictureLayer(PictureLayer layer);  // once is enough
void RemovePictureLayer(PictureLayer layer);
// Logical pixels at the right and at the bottom of the picture's area that something covers: the picture scrolls that
// much further.
extern const std::int32_t& PictureRightMargin;
extern const std::int32_t& PictureBottomMargin;

Point PictureSize();  // of FrameBitmap: columns and rows; {0, 0} without one
// Where FrameBitmap is painted: logical pixels of the main window. Empty without a picture.
Rect PicturePlace();

// The view's own place over the picture, which no setting keeps: the logical pixels of it, at the zoom in force, that
// lie beyond the left and upper edge of its area; below 0 where ground stands there. {0, 0} at the start. Drag, wheel
// and scroll bars move it. Setting it moves the picture as far as some of it stays in sight, and paints it there;
// before anything is painted nothing happens.
Point ViewPosition();
void SetViewPosition(Point position);
void CentreView();
// The ground around the picture, one neutral gray in all themes: gray values are judged against it. 0x00BBGGRR.
inline constexpr std::uint32_t kPictureGround = 0x00383838;

// The painting the other way round, for the frame on view with the pan and the zoom in force: the pixel of the frame
// that a point of the main window shows, the nearest one where it shows none; the point in the middle of where a pixel
// is shown; and the points that show the picture at all (empty while nothing has been painted). Offsets don't count.
Point PixelUnder(Point client);
Point PlaceOver(Point pixel);
Rect PicturePoints();

// Makes the bitmap of a frame and paints it in the main window. With a file on view and fewer counts than its header
// says nothing is drawn, and the picture on the screen stays.
void DrawFrame(std::span<const std::int16_t> frame);

// The camera's frame in two steps, so that its gray values are made in the pass that makes its counts: BeginPicture
// readies FrameBitmap and says where they go, EndPicture paints it. The picture is the one of DrawFrame. Without a
// table in the result the frame isn't one for this way (ReadyCameraBitmap, or a difference is on view): DrawFrame draws
// it.
GrayRows BeginPicture();
void EndPicture();

// Draws what is on view again, with the table, the colours and the geometry in force: the stored frame, or the camera's
// last one, live or frozen. Nothing happens where neither is on the screen.
void RedrawPicture();
// Fills pixels of the frame on view, where they are seen, with a colour (0x00RRGGBB), and rim, logical pixels on each
// side, with them: for a layer.
void FillPicturePixels(const Rect& pixels, const Rect& rim, std::uint32_t color);
// LiveFrame was made anew: the camera's picture that stands on the screen can't be drawn again.
void ForgetCameraFrame();

// Paints a bitmap at Xzoom x Yzoom from the top left of a window's client area, in the main window below the panel, and
// has what a larger picture left beside it erased. The main window scrolls over a picture that is larger than it.
void PaintBitmap(const Dib& bitmap, HWND window);

// For WM_PAINT of the main window: paints the picture again, if there is one. The last one stands when the camera is
// off.
void RepaintPicture();

// Image pixel to screen units below the panel, in place; integer divisions. Nothing happens while a zoom is 0.
void ImageToScreen(std::int32_t& x, std::int32_t& y);

// The count in the middle of those that contrast and brightness spread over the shades of the picture.
std::int32_t MiddleCountShown();

// Contrast and brightness that fit the frame on view or, live, LiveFrame (display/fit_contrast.h); of a difference on
// view (display/difference_view.h) what it shows. bad: non-zero for
// each of its pixels that doesn't count; empty: all do.
ContrastFit FitOfPicture(std::span<const std::uint8_t> bad);
// Puts them in force; or a box with the reason why not, under "Kelvo message".
void FitContrastToPicture(std::span<const std::uint8_t> bad);

// Puts a fit in force that nobody asked for: found, not chosen, and never stored (state/contrast_fit.h).
void ShowOwnFit(const ContrastFit& fit);
// A pair that was in force before, and what was known of it then (LastOwnFit).
void PutBackContrast(const ContrastPair& pair, const std::optional<OwnFit>& ownFit);
// For a stored picture that has just come on view: where over 95 % of its good pixels show as the first or the last
// shade, an own fit is shown, if that shows more of it. 1 where it was; nothing is told. bad as above.
int FitUnseenPicture(std::span<const std::uint8_t> bad);

// Called at the right moments; this display has no bars beside the picture, and its gray scale is linear.
void DrawColorBar();
void DrawTempScale(std::int32_t on);
void SetGrayScale(std::int32_t id);

// No picture, nothing painted, no layers.
void ResetDisplayPipeline();

}  // namespace kelvo
