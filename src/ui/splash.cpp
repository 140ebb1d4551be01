#include "ui/splash.h"

#include "platform/box.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/window.h"
#include "state/windows.h"

namespace kelvo {

namespace {

constexpr int kSplashLift = 30;  // logical pixels above the vertical centre

Rect SplashPlace(const Dib& bitmap, HWND window)
{
    const Rect client = GetClientRect(window);
    const int width = DibWidth(*bitmap);
    const int height = DibHeight(*bitmap);
    if (width >= client.Width() || height >= client.Height()) return client;
    const int left = (client.Width() - width) / 2;
    const int top = (client.Height() - height) / 2 - kSplashLift;
    return {left, top, left + width, top + height};
}

}  // namespace

Dib ShowSplash(HWND window)
{
    Dib bitmap = FileExists(DefaultDir + "/kelvo220.bmp") ? LoadDib(DefaultDir + "/kelvo220.bmp") : Dib();
    if (!bitmap) {
        MessageBeep(Sound::kExclamation);
        return {};
    }
    const Rect source{0, 0, DibWidth(*bitmap), DibHeight(*bitmap)};
    PaintDib(window, SplashPlace(bitmap, window), bitmap, source);
    return bitmap;
}

void HideSplash(const Dib& bitmap, std::int64_t milliseconds)
{
    if (!bitmap) return;
    DelayMs(milliseconds);
    InvalidateRect(hWndMain, nullptr, true);
}

}  // namespace kelvo
