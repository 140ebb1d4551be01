// Counting a frame into 16384 bins beside OpenCV's calcHist, and what a tick of the histogram costs, in one run on one
// thread.
//
//   build/bench/bench/histogram_bench
//
// Frames of 640 x 512 counts over 14 bits. Both countings give the same bins, which is checked before anything is
// measured; OpenCV's counts are unsigned, as it has no bins for signed ones. Each timed run follows one of its own that
// isn't timed. Rounds go in turn; each figure is the median. A tick counts and measures the whole frame, marks it,
// draws picture and plot in the program's own dialog, offscreen; a frame of the board isn't read. It is told in time of
// the processor.
#include "analysis/histogram.h"
#include "analysis/histogram_dialog.h"
#include "analysis/histogram_drawing.h"
#include "analysis/histogram_settings_write.h"
#include "imagefile/header_write.h"
#include "median.h"
#include "platform/application.h"
#include "platform/dialog.h"
#include "platform/front.h"
#include "platform/window.h"
#include "rounds.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <random>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace kelvo;

constexpr int kWidth = 640;
constexpr int kHeight = 512;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;
constexpr int kBins = 16384;
int rounds = 300;  // or what the first argument says

std::vector<std::int16_t> Noise()
{
    std::mt19937 random(1);
    std::vector<std::int16_t> frame(kPixels);
    for (std::int16_t& count : frame) count = static_cast<std::int16_t>(random() % kBins);
    return frame;
}

std::vector<std::int16_t> Scene()
{
    std::mt19937 random(2);
    std::vector<std::int16_t> frame(kPixels);
    for (std::size_t i = 0; i < kPixels; ++i) {
        frame[i] = static_cast<std::int16_t>(6000 + i / kWidth * 4 + i % kWidth + random() % 40);
    }
    return frame;
}

std::vector<std::int16_t> Even()
{
    return std::vector<std::int16_t>(kPixels, 8000);
}

void CountByKelvo(std::span<const std::int16_t> frame, CountTable& table, std::vector<std::uint32_t>& bins)
{
    const FrameRect whole{.left = 0, .top = 0, .right = kWidth - 1, .bottom = kHeight - 1};
    CountSamples(RowsOf(frame, kWidth, whole), table);
    FillBins(table, 0, kBins - 1, bins);
}

void CountByOpenCv(const cv::Mat& frame, cv::Mat& bins)
{
    const int channel = 0;
    const int size = kBins;
    const float range[] = {0, kBins};
    const float* ranges = range;
    cv::calcHist(&frame, 1, &channel, cv::Mat(), bins, 1, &size, &ranges);
}

bool SameBins(const std::vector<std::uint32_t>& own, const cv::Mat& theirs)
{
    for (int i = 0; i < kBins; ++i) {
        if (static_cast<float>(own[static_cast<std::size_t>(i) + 1]) != theirs.at<float>(i)) return false;
    }
    return true;
}

bool MeasureCounting(const char* name, const std::vector<std::int16_t>& frame)
{
    const cv::Mat unsignedFrame(kHeight, kWidth, CV_16U, const_cast<std::int16_t*>(frame.data()));
    CountTable table;
    std::vector<std::uint32_t> bins(kBins + 2);
    cv::Mat theirs;
    CountByKelvo(frame, table, bins);
    CountByOpenCv(unsignedFrame, theirs);
    if (!SameBins(bins, theirs)) {
        std::printf("%s: the bins differ\n", name);
        return false;
    }
    std::vector<double> own;
    std::vector<double> opencv;
    for (int round = 0; round < rounds; ++round) {
        own.push_back(Microseconds([&] { CountByKelvo(frame, table, bins); }));
        opencv.push_back(Microseconds([&] { CountByOpenCv(unsignedFrame, theirs); }));
    }
    std::printf("%-6s counting into %d bins %7.1f us   calcHist %5.2f x\n", name, kBins, Median(own),
                MedianRatio(opencv, own));
    return true;
}

// --- The tick -------------------------------------------------------------------------------------------------------

std::vector<double> ticks;

// Of the processor: other work on it doesn't count.
double MillisecondsOfProcessor()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

void TakeTicks()
{
    const HWND dialog = DialogInFront();
    for (int round = 0; round < rounds; ++round) {
        const double before = MillisecondsOfProcessor();
        ForgetDrawnHistogram();
        DrawHistogram(dialog);
        HandlePendingEvents();  // paints what has changed
        ticks.push_back(MillisecondsOfProcessor() - before);
    }
    SendMessage(dialog, WM_COMMAND, kIdCancel, 0);
}

void PutOnView(const std::vector<std::int16_t>& frame)
{
    write::file.ImageHeader.ImageWidth = kWidth;
    write::file.ImageHeader.ImageHeight = kHeight;
    write::file.ImageHeader.HeaderVersion = 8;
    write::file.ImageHeader.DisplayHigh = kBins - 1;
    write::frames.ImageBuffer.resize(frame.size() * sizeof(std::int16_t));
    std::memcpy(write::frames.ImageBuffer.data(), frame.data(), ImageBuffer.size());
    write::frames.ViewingFile = 1;
    write::windows.ViewFilePath = "frame.img";
}

void MeasureTick(const char* name, const std::vector<std::int16_t>& frame)
{
    PutOnView(frame);
    ticks.clear();
    SetIdleHook([begun = false]() mutable {
        if (std::exchange(begun, true)) return;
        write::histogram.HistSettings.Xsize = kWidth;
        write::histogram.HistSettings.Ysize = kHeight;
        PostAction(TakeTicks);
    });
    HistogramDialog(hWndMain);
    SetIdleHook(nullptr);
    std::printf("%-6s a tick %5.2f ms of the processor\n", name, Median(ticks));
}

}  // namespace

int main(int argc, char** argv)
{
    rounds = RoundsOf(argc, argv, rounds);
    cv::setNumThreads(1);
    bool same = true;
    for (const auto& [name, frame] : {std::pair{"noise", Noise()}, {"scene", Scene()}, {"even", Even()}}) {
        same = MeasureCounting(name, frame) && same;
    }

    CommandLine commandLine;
    commandLine.offscreen = true;
    StartApplication(commandLine);
    const std::string directory = std::filesystem::temp_directory_path() / "kelvo-histogram-bench";
    std::filesystem::create_directories(directory);
    SetDefaultDir(directory);
    write::camera.ActiveConfig.Xzoom = 1;
    write::camera.ActiveConfig.Yzoom = 1;
    write::display.Contrast = 1;
    write::display.Brightness = 1000;
    RegisterWindowClass({"BENCH", DefWindowProc, {}, false, 0});
    write::windows.hWndMain = CreateMainWindow("BENCH", "Histogram");
    ShowWindowMaximised(hWndMain);
    for (const auto& [name, frame] : {std::pair{"noise", Noise()}, {"scene", Scene()}, {"even", Even()}}) {
        MeasureTick(name, frame);
    }
    DestroyWindow(hWndMain);
    std::filesystem::remove_all(directory);
    return same ? 0 : 1;
}
