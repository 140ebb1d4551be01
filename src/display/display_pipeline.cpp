#include "display/display_pipeline.h"

#include "dibapi32/dibapi32.h"
#include "display/difference_view.h"
#include "display/display_pipeline_write.h"
#include "display/fit_contrast.h"
#include "display/lookup_table.h"
#include "display/units.h"
#include "imagefile/header.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/memory.h"
#include "platform/paint.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "state/camera_config.h"
#include "state/contrast_fit_write.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/state_registry.h"
#include "state/windows.h"
#include "ui/docking.h"
#include "ui/panel_readouts.h"
#include "ui/status.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

namespace write {
PictureVariables picture;
}

constinit const Dib& FrameBitmap = write::picture.FrameBitmap;
constinit const std::int32_t& PictureRightMargin = write::picture.PictureRightMargin;
constinit const std::int32_t& PictureBottomMargin = write::picture.PictureBottomMargin;

namespace {

// Right and bottom of the last painted rectangle, logical pixels of the client area.
std::int32_t LastPaintRight = 0;
std::int32_t LastPaintBottom = 0;

const StateNames kStateNames{
    Named("LastPaintRight", LastPaintRight),
    Named("LastPaintBottom", LastPaintBottom),
    {"ViewPosition",
     [] {
         const Point at = ViewPosition();
         return StateValue{std::vector<double>{static_cast<double>(at.x), static_cast<double>(at.y)}};
     }},
};

// The picture on the screen was made of the camera's frame that LiveFrame holds.
bool showsCameraFrame = false;

std::vector<PictureLayer> layers;

void PaintLayers(bool newFrame)
{
    for (const PictureLayer layer : layers) layer(newFrame);
}

CountRange LiveRange()
{
    return {DisplayLow, DisplayHigh};
}

CountRange RangeOnView()
{
    return LutRange(LiveRange(), ViewingFile ? &ImageHeader : nullptr);
}

// The table keeps its old entries where a new one doesn't reach: it is never made anew while it stands.
void FillDisplayLut(std::int32_t contrast, std::int32_t brightness)
{
    if (DisplayLut.empty() && !AllocateBlock(write::display.DisplayLut, kLutEntries)) return;
    FillLut(write::display.DisplayLut, WindowOf(RangeOnView().Span(), contrast, brightness), LiveRange());
}

// Of a picture that is all first count, for instance, no pair shows more.
bool ShowsMore(std::span<const std::int16_t> pixels, const ContrastFit& fit, std::span<const std::uint8_t> bad)
{
    std::vector<std::uint8_t> table(DisplayLut);
    FillLut(table, WindowOf(RangeOnView().Span(), fit.contrast, fit.brightness), LiveRange());
    return !HardlySeen(pixels, table, bad);
}

// A settings file can say any zoom; a picture's corner stays within the integers.
int PaintZoom(std::int32_t zoom)
{
    constexpr int kLargest = 1000;
    return std::clamp(zoom, 0, kLargest);
}

int Extent(HWND window, int count, int zoom)
{
    return zoom < 1 ? 0 : ScaledExtent(window, count, zoom);
}

void EraseStrip(HWND window, const Rect& strip)
{
    if (!strip.Empty()) InvalidateRect(window, &strip, true);
}

// Nothing of a larger picture stays beside a smaller one.
void EraseMargin(HWND window, int right, int bottom)
{
    if (right >= LastPaintRight && bottom >= LastPaintBottom) return;
    EraseStrip(window, {right, 0, LastPaintRight, LastPaintBottom});
    EraseStrip(window, {0, bottom, right, LastPaintBottom});
}

void FitScrolling(int right, int bottom)
{
    SetScrollExtent(hWndMain, {right, bottom, PanelHeight(), TextHeight + PictureBottomMargin, PictureRightMargin});
}

// The picture that stands, at a zoom that was not painted yet.
bool FitScrollingInForce()
{
    if (!FrameBitmap || !hWndMain) return false;
    FitScrolling(Extent(hWndMain, DibWidth(*FrameBitmap), PaintZoom(Xzoom)),
                 PanelHeight() + Extent(hWndMain, DibHeight(*FrameBitmap), PaintZoom(Yzoom)));
    return true;
}

void PaintNewPicture()
{
    ShowStatusMark(DifferenceOnView() ? "Difference" : "");
    PaintBitmap(FrameBitmap, hWndMain);
    PaintLayers(true);
}

bool HoldsCameraFrame()
{
    const std::int64_t pixels = std::int64_t{ActiveConfig.Hroi} * ActiveConfig.Vroi;
    return showsCameraFrame && pixels > 0 && std::ssize(LiveFrame) == pixels;
}

std::span<const std::int16_t> FramePixelsOnView()
{
    if (!ViewingFile) return CountsToShow(LiveFrame);
    const std::span<const std::int16_t> pixels = ImageBufferPixels(ImageHeader.ImageHeaderDataOffset);
    if (ImageHeader.ImageWidth <= 0 || ImageHeader.ImageHeight <= 0) return {};
    const std::size_t size =
        static_cast<std::size_t>(ImageHeader.ImageWidth) * static_cast<std::size_t>(ImageHeader.ImageHeight);
    return size <= pixels.size() ? pixels.first(size) : std::span<const std::int16_t>{};
}

// Where a frame that is drawn now is painted, and how many pixels of it.
struct PicturePlacing {
    FrameRect rect;
    Point size;
    Rect destination;
};

PicturePlacing PlacingInForce()
{
    const FrameRect rect = DefaultFrameRect();
    const auto side = [](std::int64_t length) {
        return static_cast<int>(std::clamp<std::int64_t>(length, 0, INT16_MAX));
    };
    const Point size{side(rect.Width()), side(rect.Height())};
    const int top = PanelHeight();
    return {rect, size, {0, top, size.x * PaintZoom(Xzoom), top + size.y * PaintZoom(Yzoom)}};
}

}  // namespace

void BuildDisplayLut(std::int32_t contrast, std::int32_t brightness)
{
    FillDisplayLut(contrast, brightness);
    write::display.Contrast = contrast;
    write::display.Brightness = brightness;
    ShowLevelsInPanel();
    if (!LiveVideo || !DisplayEnabled) RedrawPicture();  // running video takes the table with its next frame
}

void EnsureDisplayLut()
{
    if (DisplayLut.empty()) FillDisplayLut(Contrast, Brightness);
}

void DrawFrame(std::span<const std::int16_t> frame)
{
    EnsureDisplayLut();
    if (!FillFrameBitmap(write::picture.FrameBitmap, CountsToShow(frame), nullptr)) return;
    showsCameraFrame = !ViewingFile;
    PaintNewPicture();
}

GrayRows BeginPicture()
{
    if (DifferenceOnView()) return {};
    EnsureDisplayLut();
    return ReadyCameraBitmap(write::picture.FrameBitmap);
}

void EndPicture()
{
    showsCameraFrame = true;
    PaintNewPicture();
}

std::int32_t MiddleCountShown()
{
    const LutWindow window = WindowOf(RangeOnView().Span(), Contrast, Brightness);
    const std::int64_t middle = LiveRange().low + (std::int64_t{window.start} + window.end) / 2;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(middle, 0, INT16_MAX));
}

void AddPictureLayer(PictureLayer layer)
{
    if (std::ranges::find(layers, layer) == layers.end()) layers.push_back(layer);
}

void RemovePictureLayer(PictureLayer layer)
{
    std::erase(layers, layer);
}

Point PictureSize()
{
    return FrameBitmap ? Point{DibWidth(*FrameBitmap), DibHeight(*FrameBitmap)} : Point{};
}

Rect PicturePlace()
{
    if (!FrameBitmap || !hWndMain) return {};
    const int top = PanelHeight();
    return {0, top, DibWidth(*FrameBitmap) * PaintZoom(Xzoom), top + DibHeight(*FrameBitmap) * PaintZoom(Yzoom)};
}

Point ViewPosition()
{
    return GetScrollOrigin(hWndMain);
}

void SetViewPosition(Point position)
{
    if (FitScrollingInForce()) ScrollPictureTo(hWndMain, position);
}

void CentreView()
{
    if (FitScrollingInForce()) CentrePicture(hWndMain);
}

Point PixelUnder(Point client)
{
    const PicturePlacing placing = PlacingInForce();
    return FramePixelOf(PixelShownAt(hWndMain, placing.destination, placing.size, client), placing.rect);
}

Point PlaceOver(Point pixel)
{
    const PicturePlacing placing = PlacingInForce();
    const Point at = BitmapPixelOf(pixel, placing.rect);
    const Rect shown = PointsShowing(hWndMain, placing.destination, placing.size, {at.x, at.y, at.x + 1, at.y + 1});
    return {shown.left + (shown.Width() - 1) / 2, shown.top + (shown.Height() - 1) / 2};
}

Rect PicturePoints()
{
    if (!FrameBitmap) return {};
    const PicturePlacing placing = PlacingInForce();
    return PointsShowing(hWndMain, placing.destination, placing.size, {0, 0, placing.size.x, placing.size.y});
}

void FillPicturePixels(const Rect& pixels, const Rect& rim, std::uint32_t color)
{
    const PicturePlacing placing = PlacingInForce();
    // Columns begin with the pan's, rows stay where they are.
    const Rect shown{std::max(pixels.left - placing.rect.left, 0), std::max(pixels.top, 0),
                     std::min(pixels.right - placing.rect.left, placing.size.x),
                     std::min(pixels.bottom, placing.size.y)};
    FillBlocks(hWndMain, placing.destination, placing.size, shown, rim, color);
}

void RedrawPicture()
{
    if (ViewingFile) {
        DrawFrame(ImageBufferPixels(ImageHeader.ImageHeaderDataOffset));
    } else if (HoldsCameraFrame()) {
        DrawFrame(LiveFrame);
    }
}

void ForgetCameraFrame()
{
    showsCameraFrame = false;
}

void PaintBitmap(const Dib& bitmap, HWND window)
{
    if (!bitmap || !window) return;
    const bool isMain = window == hWndMain;
    const int width = DibWidth(*bitmap);
    const int height = DibHeight(*bitmap);
    const Rect client = GetClientRect(window);
    const int left = client.left;
    const int top = client.top + (isMain ? PanelHeight() : 0);
    // What the picture covers: at a fractional device ratio its blocks are whole device pixels, not zoom x ratio.
    const int xzoom = PaintZoom(Xzoom);
    const int yzoom = PaintZoom(Yzoom);
    const int right = left + Extent(window, width, xzoom);
    const int bottom = top + Extent(window, height, yzoom);

    EraseMargin(window, right, bottom);
    LastPaintRight = right;
    LastPaintBottom = bottom;
    if (isMain) FitScrolling(right, bottom);

    PaintDib(window, {left, top, left + width * xzoom, top + height * yzoom}, bitmap, {0, 0, width, height});
}

void RepaintPicture()
{
    PaintBitmap(FrameBitmap, hWndMain);
    PaintLayers(false);
}

void ImageToScreen(std::int32_t& x, std::int32_t& y)
{
    if (Xzoom == 0 || Yzoom == 0) return;
    x = (x + Xoffset / Xzoom / 4 * 4 - Xpan) * Xzoom;
    y = (y + Yoffset / Yzoom - Ypan) * Yzoom;
}

ContrastFit FitOfPicture(std::span<const std::uint8_t> bad)
{
    return FitContrast(FramePixelsOnView(), RangeOnView(), LiveRange(), bad);
}

void FitContrastToPicture(std::span<const std::uint8_t> bad)
{
    const ContrastFit fit = FitOfPicture(bad);
    if (!fit.reason.empty()) {
        MessageBox(hWndMain, fit.reason, kMessageCaption, BoxIcon::kInformation);
        return;
    }
    BuildDisplayLut(fit.contrast, fit.brightness);
    write::contrastFit.LastOwnFit.reset();  // the operator has asked for them
}

void ShowOwnFit(const ContrastFit& fit)
{
    const ContrastPair chosen = ContrastToStore();
    write::contrastFit.LastOwnFit = {.found = {fit.contrast, fit.brightness}, .chosen = chosen};
    if (fit.contrast != Contrast || fit.brightness != Brightness) BuildDisplayLut(fit.contrast, fit.brightness);
}

void PutBackContrast(const ContrastPair& pair, const std::optional<OwnFit>& ownFit)
{
    write::contrastFit.LastOwnFit = ownFit;
    if (pair.contrast != Contrast || pair.brightness != Brightness) BuildDisplayLut(pair.contrast, pair.brightness);
}

int FitUnseenPicture(std::span<const std::uint8_t> bad)
{
    const std::span<const std::int16_t> pixels = FramePixelsOnView();
    if (!ViewingFile || pixels.empty() || DisplayLut.empty() || !HardlySeen(pixels, DisplayLut, bad)) return 0;
    const ContrastFit fit = FitOfPicture(bad);
    if (!fit.reason.empty() || !ShowsMore(pixels, fit, bad)) return 0;
    ShowOwnFit(fit);
    return 1;
}

void DrawColorBar() {}

void DrawTempScale(std::int32_t /*on*/) {}

void SetGrayScale(std::int32_t /*id*/) {}

void ResetDisplayPipeline()
{
    write::picture.FrameBitmap = nullptr;
    LastPaintRight = 0;
    LastPaintBottom = 0;
    showsCameraFrame = false;
    write::picture.PictureRightMargin = 0;
    write::picture.PictureBottomMargin = 0;
    layers.clear();
}

}  // namespace kelvo
