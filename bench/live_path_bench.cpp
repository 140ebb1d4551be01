// A frame of live video from the board to the painted pixel, beside a copy of the bytes that it must move, in one run
// on one thread.
//
//   build/bench/bench/live_path_bench [seconds]
//
// What runs is what the live view runs: the main window's procedure takes the live timer's message, and the toolkit
// shows the window's surface. Only the board is the bench's own: it is never late, and its read is a plain copy.
//
// The copy moves each byte that is taken in or given out once, half of them read and half written: the board's frame (2
// a pixel), offsets (2) and gains (4) in; RawFrame (2), LiveFrame (2) and the bitmap (1) out; and 4 for each device
// pixel on the surface. Showing the surface gives out 4 more for each. Rounds go in turn; each figure is the median of
// the rounds' ratios.
#include "display/difference_view.h"
#include "display/display_pipeline.h"
#include "grabber/copm2.h"
#include "median.h"
#include "platform/application.h"
#include "platform/dialog.h"
#include "platform/menu.h"
#include "platform/profile.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/menu.h"
#include "shell/main_window.h"
#include "shell/panel.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "ui/status.h"
#include "video/cursor_cross.h"
#include "video/video.h"

#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace kelvo;

constexpr int kWidth = 640;
constexpr int kHeight = 512;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;
constexpr std::size_t kListAndFrameBytes = 13;  // a pixel
constexpr std::size_t kDeviceBytes = 4;         // a device pixel

std::vector<std::int16_t> boardFrame(kPixels);

std::int32_t ReadArea(BoardModule, BoardFrame, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                      std::span<std::int16_t> buffer)
{
    std::memcpy(buffer.data(), boardFrame.data(), buffer.size_bytes());
    return 0;
}

// Every operation that live video asks for; the others are never met.
constexpr BoardTable MemoryBoard()
{
    BoardTable table{};
    table.name = "memory";
    table.load_cnf = [](const std::string&) { return 0; };
    table.grab = [](BoardModule, BoardFrame) { return 0; };
    table.freeze = [](BoardModule, BoardFrame) {};
    table.wait_vb = [](BoardModule, BoardFrame) { return 0; };
    table.read_area = ReadArea;
    table.os_set_realtime_priority = [](std::int32_t) {};
    table.frame_count = [](BoardModule) { return std::int64_t{0}; };
    return table;
}
constexpr BoardTable kMemoryBoard = MemoryBoard();

// Four channels, of which each reads a quarter of the line; 1 % of the detectors answer for a neighbour.
void MakeLists()
{
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0, 1);
    write::cal.DecomList.resize(kPixels);
    write::cal.OffsetList.resize(kPixels);
    write::cal.GainList.resize(kPixels);
    for (std::size_t i = 0; i < kPixels; ++i) {
        const std::size_t column = i % kWidth;
        write::cal.DecomList[i] =
            static_cast<std::uint32_t>(i - column + column % (kWidth / 4) * 4 + column / (kWidth / 4));
        const auto scene = static_cast<float>(column * 6000 / kWidth + i / kWidth * 3000 / kHeight);
        boardFrame[i] = static_cast<std::int16_t>(4000 + scene + 100 * noise(random));
        write::cal.OffsetList[i] = static_cast<std::int16_t>(300 + 95 * noise(random));
        write::cal.GainList[i] = 1 + 0.012F * noise(random);
    }
    for (std::size_t k = 0; k < kPixels / 100; ++k) {
        const std::size_t bad = random() % (kPixels - 1);
        write::cal.DecomList[bad] = DecomList[bad + 1];
    }
    write::cal.CalType = 2;
    CalibrationListsChanged();
}

bool OpenLiveVideo(const std::string& directory)
{
    SetDefaultDir(directory);
    std::ofstream(directory + "/platform.ini") << "[Board]\nBoard=memory\n";
    write::camera.ActiveCamera = 1;
    write::camera.ActiveConfig.Hroi = kWidth;
    write::camera.ActiveConfig.Vroi = kHeight;
    write::display.DisplayLow = 0;
    write::display.DisplayHigh = 16383;
    write::display.Contrast = 16;
    write::display.Brightness = 580;
    RegisterBoard(kMemoryBoard);
    if (itx_load_cnf("") != 0) return false;
    MakeLists();
    write::frames.RawFrame.assign(kPixels, 0);
    write::frames.LiveFrame.assign(kPixels, 0);

    CommandLine commandLine;
    commandLine.offscreen = true;
    StartApplication(commandLine);
    if (!RegisterWindowClass({"KELVO", MainWndProc, {}})) return false;
    write::windows.hWndMain = CreateMainWindow("KELVO", "Kelvo");
    if (!hWndMain) return false;
    SetMenu(hWndMain, MainMenu());
    ShowWindowMaximised(hWndMain);
    CreateDockedPanel("PANEL", hWndMain, PanelProc);
    RegisterWindowClass({"STATUS", StatusWndProc, {}});
    write::windows.hWndStatus =
        CreateChildWindow("STATUS", hWndMain, {0, ClientHeight - TextHeight, ClientWidth, ClientHeight});
    write::frames.CameraOn = 1;
    write::frames.LiveVideo = 1;
    HandlePendingEvents();
    return true;
}

std::size_t DevicePixelsSeen()
{
    const Rect seen = GetPictureArea(hWndMain);
    const Rect picture = PicturePlace();
    const int width = std::min(seen.right, picture.right) - std::max(seen.left, picture.left);
    const int height = std::min(seen.bottom, picture.bottom) - std::max(seen.top, picture.top);
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

// A copy that moves so many bytes: half of them read, half written.
class Copy {
  public:
    explicit Copy(std::size_t bytesMoved) : source_(bytesMoved / 2, 1), target_(bytesMoved / 2) {}
    void operator()()
    {
        std::memcpy(target_.data(), source_.data(), source_.size());
        benchmark::DoNotOptimize(target_.data());
    }

  private:
    std::vector<char> source_;
    std::vector<char> target_;
};

// What one way to run took, round by round, in microseconds.
struct Figures {
    std::vector<double> painted, shown, paintedCopy, shownCopy;
};

void MeasureOnce(Figures& figures, Copy& copyPainted, Copy& copyShown)
{
    const auto paint = [] { SendMessage(hWndMain, WM_TIMER, kLiveTimer, 0); };
    const auto show = [] { HandlePendingEvents(); };
    paint(), show();
    const double toSurface = MicrosecondsOnce(paint);
    figures.painted.push_back(toSurface);
    figures.shown.push_back(toSurface + MicrosecondsOnce(show));
    figures.paintedCopy.push_back(Microseconds(copyPainted));
    figures.shownCopy.push_back(Microseconds(copyShown));
}

void Print(int zoom, const char* what, const Figures& figures)
{
    std::printf("zoom %d, cursor %-3s  %4zu rounds   painted %7.1f us, %5.2f copies   shown %7.1f us, %5.2f copies\n",
                zoom, what, figures.painted.size(), Median(figures.painted),
                MedianRatio(figures.painted, figures.paintedCopy), Median(figures.shown),
                MedianRatio(figures.shown, figures.shownCopy));
}

// The cursor off and on in turn, and the cross that it draws alone.
void Measure(int zoom, double seconds)
{
    write::camera.ActiveConfig.Xzoom = write::camera.ActiveConfig.Yzoom = zoom;
    AddPictureLayer(DrawCursorCross);
    write::frames.CursorX = kWidth / 3;
    write::frames.CursorY = kHeight / 3;
    // Scroll bars and plan have settled then.
    for (int i = 0; i < 3; ++i) SendMessage(hWndMain, WM_TIMER, kLiveTimer, 0), HandlePendingEvents();

    const std::size_t devicePixels = DevicePixelsSeen();
    Copy copyPainted(kListAndFrameBytes * kPixels + kDeviceBytes * devicePixels);
    Copy copyShown(kListAndFrameBytes * kPixels + 2 * kDeviceBytes * devicePixels);
    Figures off, on;
    std::vector<double> cross;
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    do {
        write::frames.ImageCursorOn = 0;
        MeasureOnce(off, copyPainted, copyShown);
        write::frames.ImageCursorOn = 1;
        MeasureOnce(on, copyPainted, copyShown);
        cross.push_back(Microseconds([] { DrawCursorCross(true); }));
    } while (std::chrono::steady_clock::now() < end);
    Print(zoom, "off", off);
    Print(zoom, "on", on);
    std::printf("zoom %d, its cross    %4zu rounds   drawn   %7.2f us, %5.4f copies   on / off: painted %5.3f\n", zoom,
                cross.size(), Median(cross), MedianRatio(cross, on.paintedCopy), MedianRatio(on.painted, off.painted));
}

// The picture itself and its difference to one in turn (display/difference_view.h).
void MeasureDifference(int zoom, double seconds)
{
    write::camera.ActiveConfig.Xzoom = write::camera.ActiveConfig.Yzoom = zoom;
    write::frames.ImageCursorOn = 0;
    for (int i = 0; i < 3; ++i) SendMessage(hWndMain, WM_TIMER, kLiveTimer, 0), HandlePendingEvents();
    const std::size_t devicePixels = DevicePixelsSeen();
    Copy copyPainted(kListAndFrameBytes * kPixels + kDeviceBytes * devicePixels);
    Copy copyShown(kListAndFrameBytes * kPixels + 2 * kDeviceBytes * devicePixels);
    Figures frame, difference;
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    do {
        EndDifference();
        MeasureOnce(frame, copyPainted, copyShown);
        if (!BeginDifference(LiveFrame, "the bench", MiddleCountShown())) return;
        MeasureOnce(difference, copyPainted, copyShown);
    } while (std::chrono::steady_clock::now() < end);
    EndDifference();
    std::printf("zoom %d, difference   %4zu rounds   painted %7.1f us   on / off: painted %5.3f, shown %5.3f\n", zoom,
                difference.painted.size(), Median(difference.painted), MedianRatio(difference.painted, frame.painted),
                MedianRatio(difference.shown, frame.shown));
}

}  // namespace

int main(int argc, char** argv)
{
    const double seconds = argc > 1 ? std::atof(argv[1]) : 12;
    std::string directory = (std::filesystem::temp_directory_path() / "kelvo-bench-XXXXXX").string();
    if (!mkdtemp(directory.data())) return 1;
    const bool open = OpenLiveVideo(directory);
    for (int zoom = 1; open && zoom <= 3; ++zoom) {
        Measure(zoom, seconds / 6);
        MeasureDifference(zoom, seconds / 6);
    }
    std::filesystem::remove_all(directory);
    return open ? 0 : 1;
}
