// Painting. Each window keeps a surface in device pixels that outlives painting and resizing. Coordinates are logical
// pixels of the client area; an image pixel becomes a block of whole device pixels and is never smoothed.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace kelvo {

using ColorRef = std::uint32_t;  // 0x00BBGGRR

// A picture of device pixels: row-major from the top, 0x00RRGGBB.
struct DeviceBitmap {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;
};

void FillSurface(HWND window, const Rect& area, ColorRef color);

enum class TextAlign : int { kLeft = 0, kRight = 2, kCentre = 6 };
// One line, its top at y, with its background filled behind the letters. False if there is no surface or the fault
// "text" is set.
bool DrawTextLine(HWND window, int x, int y, std::string_view text, TextAlign align, ColorRef color,
                  ColorRef background);

int TextWidth(HWND window, std::string_view text);  // of DrawTextLine's letters, logical pixels

// A line from point to point, both inclusive, a logical pixel wide, as far as it lies inside clip (right and bottom
// exclusive). A single point is a dot.
void DrawPolyline(HWND window, std::span<const Point> points, const Rect& clip, ColorRef color);
// The pixels of it where a logical pixel is one of the device's, in the order in which they are drawn: for a picture.
std::vector<Point> PolylinePixels(std::span<const Point> points, const Rect& clip);

// Height and width of a line of the program's text, and such a line into a picture, its top left at x, y, with its
// background filled behind the letters; what lies beyond the picture's edges is left out. False for an empty picture,
// or where the fault "text" is set.
int PictureTextHeight();
int PictureTextWidth(std::string_view text);
bool DrawPictureText(DeviceBitmap& picture, int x, int y, std::string_view text, ColorRef color, ColorRef background);

// The side of the block that one image pixel takes at an integer zoom: zoom x device ratio rounded to whole device
// pixels, at least 1; in device pixels.
int DeviceBlock(HWND window, int zoom);
// Where a picture of that many image pixels ends, in logical pixels, rounded up: count x zoom at whole device ratios.
int ScaledExtent(HWND window, int count, int zoom);

// Eight-bit pixels through a table of 256 colours (0x00RRGGBB). firstRow points at the top row; rowStride in bytes may
// be negative (a bottom-up bitmap).
struct IndexedPixels {
    const std::uint8_t* firstRow = nullptr;
    std::ptrdiff_t rowStride = 0;
    int width = 0;
    int height = 0;
    const std::uint32_t* colors = nullptr;
};
// Paints into destination. Where its size is a whole multiple of the picture's, each pixel becomes a block of
// DeviceBlock(zoom) device pixels, otherwise the nearest pixel is taken. What lies outside the surface is dropped.
// False if there is no surface.
bool StretchPixels(HWND window, const Rect& destination, const IndexedPixels& source);
bool StretchPixels(HWND window, const Rect& destination, const DeviceBitmap& source);
// The same blocks in the same places, but a pixel of value 0 leaves what stands there: marks over a picture.
bool StretchMarks(HWND window, const Rect& destination, const IndexedPixels& marks);

// The blocks that some pixels of a picture of that size take there, filled with one colour (0x00RRGGBB); rim: logical
// pixels on each side that are filled with them.
void FillBlocks(HWND window, const Rect& destination, Point size, const Rect& pixels, const Rect& rim,
                std::uint32_t color);

// The inverse of StretchPixels, for a picture of size pixels. PixelShownAt: column and row that a point of the client
// area shows, the device pixel at its upper left corner; beside the picture they go on below 0 and beyond its size.
// {0, 0} where nothing would be painted.
Point PixelShownAt(HWND window, const Rect& destination, Point size, Point at);
// The points that show some of its pixels, right and bottom exclusive as in pixels. Where a pixel is smaller than a
// logical one, none may show it: the point beside it is given then.
Rect PointsShowing(HWND window, const Rect& destination, Point size, const Rect& pixels);

// The window's own rendering (with its children), in device pixels. client: without frame and menu.
bool CaptureWindowPixels(HWND window, bool client, DeviceBitmap& result);
// What the screen shows there, logical screen coordinates; false where the system doesn't let a program see it: then
// what Kelvo's own windows show there is taken, and false only if none is there.
bool CaptureScreenPixels(const Rect& area, DeviceBitmap& result);
Rect ScreenRect();  // of the screen that the main window is on

// Copies a picture to the clipboard.
void CopyToClipboard(const DeviceBitmap& picture);

}  // namespace kelvo
