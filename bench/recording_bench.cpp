// Frames on their way to memory and to the disk, with the threads that run when the operator records:
//
//   build/bench/bench/recording_bench [rounds [directory]]
//
// - From the board into the ring: the processor time of the thread that captures, beside a plain copy that it makes in
//   the middle between two frames. The board's read is such a copy too. A frame comes each 2 ms.
// - A burst: the same, and the processor time of the thread that stores, beside gathers of as many frames into the same
//   store, one each 2 ms too.
// - The recorder, and its writing path alone, beside `dd` with blocks as large as a frame of the file, into the same
//   directory (that of temporary files where none is given). Each ends with one fdatasync.
//
// Rounds go in turn; each figure is the median of the rounds' ratios. The frames are 640 x 512.
#include "grabber/capture.h"
#include "grabber/correction.h"
#include "grabber/host_frames_write.h"
#include "median.h"
#include "memory_board.h"
#include "platform/application.h"
#include "platform/clock.h"
#include "record/capture_sequence.h"
#include "record/event_files.h"
#include "record/recorder.h"
#include "rounds.h"
#include "state/camera_config_write.h"
#include "state/windows.h"

#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

using namespace kelvo;
using namespace bench;

// --- From the board into the ring

constexpr std::size_t kRingFrames = 64;

bool MeasureRing(int rounds)
{
    const std::int64_t frames = std::int64_t{rounds} * 50;
    GiveFrames(frames, Pace::kPaced);
    const auto drop = [] { DropFrames(1, FrameFate::kPassedOver); };
    if (!StartCapture({.columns = kWidth, .rows = kHeight, .ringFrames = kRingFrames, .consume = drop})) return false;
    while (CurrentCaptureCounts().passedOver < frames) DelayMs(1);
    StopCapture();
    const BoardWork& work = WorkOfBoard();
    if (CurrentCaptureCounts().lostByRing != 0 || work.frame.empty()) return false;
    std::printf("%-44s %7.1f us   %5.2f copies (at most 1.3)\n", "a frame from the board into the ring",
                Median(work.frame), MedianRatio(work.frame, work.copy));
    return true;
}

// --- A burst

constexpr std::int32_t kBurstFrames = 64;

// What this thread spends on a frame that it gathers into its slot of the store, and nothing else.
double GatherUs()
{
    double spent = 0;
    for (std::vector<std::int16_t>& slot : write::hostFrames.HostFrames) {
        DelayUntilUs(TickUs() + kPeriodUs);
        const double began = ThreadUs();
        CorrectLiveFrame(FrameOfBoard(), slot, 0);
        spent += ThreadUs() - began;
    }
    return spent / static_cast<double>(HostFrames.size());
}

double BurstUs()
{
    const std::array<SubSeqRecord, 1> list = {SubSeqRecord{.Name = "A", .Frames = kBurstFrames}};
    ResetHostFrameNext();
    const double began = ThreadUs();
    const int result = CaptureSequence(100, 100, "A", list);
    const double took = (ThreadUs() - began) / kBurstFrames;
    return result == 1 && LastBurst().frames == kBurstFrames ? took : 0;
}

bool MeasureBurst(int rounds, const char* storing)
{
    std::ofstream(IniFilePath) << "[Camera.1]\nMaxNumFramesToAllocate=" << kBurstFrames << "\n";
    write::camera.numBufFrames = kBurstFrames;
    if (AllocateHostFrames() <= 0 || HostFrames.size() < kBurstFrames) return false;
    std::vector<double> store;
    std::vector<double> gather;
    std::vector<double> frame;
    std::vector<double> copy;
    for (int round = 0; round < rounds; ++round) {
        GiveFrames(kBurstFrames, Pace::kPaced);
        store.push_back(BurstUs());
        if (store.back() == 0) return false;
        frame.insert(frame.end(), WorkOfBoard().frame.begin(), WorkOfBoard().frame.end());
        copy.insert(copy.end(), WorkOfBoard().copy.begin(), WorkOfBoard().copy.end());
        gather.push_back(GatherUs());
    }
    const bool stored = std::ranges::equal(HostFrames.front(), FrameOfBoard());
    FreeHostFrames();
    if (!stored || frame.empty()) return false;
    std::printf("%-44s %7.1f us   %5.2f copies\n", "a frame of a burst, the thread that captures", Median(frame),
                MedianRatio(frame, copy));
    std::printf("%-44s %7.1f us   %5.2f gathers\n", storing, Median(store), MedianRatio(store, gather));
    std::printf("%-44s %7.1f us   %5.2f of a copy and a gather\n", "both", Median(frame) + Median(store),
                (Median(frame) + Median(store)) / (Median(copy) + Median(gather)));
    return true;
}

// --- To the disk

constexpr std::size_t kBlockBytes = sizeof(FrameHeaderRecord) + kPixels * sizeof(std::int16_t);
constexpr std::int64_t kFramesToDisk = 600;
constexpr double kOnlyAtTheEnd = 60;  // seconds between two syncs, the most

double Seconds(std::chrono::steady_clock::time_point since)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

// 0: it failed.
double DdSeconds(const std::string& directory)
{
    const std::string of = "of=" + directory + "/dd";
    const std::string size = "bs=" + std::to_string(kBlockBytes);
    const std::string count = "count=" + std::to_string(kFramesToDisk);
    std::vector<std::string> words = {"dd", "if=/dev/zero", of, size, count, "conv=fdatasync", "status=none"};
    std::vector<char*> arguments(words.size() + 1);
    std::ranges::transform(words, arguments.begin(), [](std::string& word) { return word.data(); });
    const auto began = std::chrono::steady_clock::now();
    pid_t process = 0;
    if (posix_spawnp(&process, "dd", nullptr, nullptr, arguments.data(), environ) != 0) return 0;
    int status = 0;
    waitpid(process, &status, 0);
    const double took = Seconds(began);
    std::filesystem::remove(directory + "/dd");
    return status == 0 ? took : 0;
}

RecorderSettings SettingsFor(const std::string& directory)
{
    RecorderSettings settings;
    settings.directory = directory;
    settings.namePattern = "run";
    settings.length = RecordLength::kFrames;
    settings.frames = kFramesToDisk;
    settings.syncSeconds = kOnlyAtTheEnd;
    return settings;
}

void RemoveRun(const std::string& directory)
{
    std::filesystem::remove(directory + "/run.seq");
    std::filesystem::remove(directory + "/run.seq.frames");
}

// Board, ring and both threads too.
double RecorderSeconds(const std::string& directory)
{
    GiveFrames(kFramesToDisk, Pace::kAtOnce);
    const auto began = std::chrono::steady_clock::now();
    std::string why;
    if (!StartRecorder(SettingsFor(directory), why)) return 0;
    while (RecorderRuns()) DelayMs(1);
    const double took = Seconds(began);
    StopRecorder();
    RemoveRun(directory);
    const RecorderStatus status = CurrentRecorderStatus();
    return status.frames == kFramesToDisk && status.exitCode == 0 ? took : 0;
}

double WriterSeconds(const std::string& directory)
{
    const auto began = std::chrono::steady_clock::now();
    std::optional<RunFiles> run = PrepareRunFiles(SettingsFor(directory));
    if (!run) return 0;
    std::optional<EventFiles> files = EventFiles::Begin(*run, {.number = 1, .monotonicNs = 1, .utcNs = 1});
    if (!files) return 0;
    for (std::int64_t n = 1; n <= kFramesToDisk; ++n) {
        if (!files->Append(*run, {.number = n, .monotonicNs = n, .utcNs = n}, FrameOfBoard())) return 0;
    }
    if (!files->Close(ClosingRecord(kFramesToDisk, EndOfRecording::kStopped))) return 0;
    const double took = Seconds(began);
    RemoveRun(directory);
    return took;
}

bool MeasureDisk(int rounds, const std::string& directory)
{
    std::vector<double> dd;
    std::vector<double> recorder;
    std::vector<double> writer;
    for (int round = 0; round < rounds; ++round) {
        dd.push_back(DdSeconds(directory));
        recorder.push_back(RecorderSeconds(directory));
        writer.push_back(WriterSeconds(directory));
        if (dd.back() == 0 || recorder.back() == 0 || writer.back() == 0) return false;
    }
    constexpr double kMegabytes = static_cast<double>(kBlockBytes * kFramesToDisk) / 1e6;
    std::printf("%-44s %7.0f MB/s\n", "dd to the disk", kMegabytes / Median(dd));
    std::printf("%-44s %7.0f MB/s %5.2f of dd (at least 0.85)\n", "the recorder", kMegabytes / Median(recorder),
                MedianRatio(dd, recorder));
    std::printf("%-44s %7.0f MB/s %5.2f of dd (at least 0.85)\n", "its writer alone", kMegabytes / Median(writer),
                MedianRatio(dd, writer));
    return true;
}

std::string TemporaryDirectory(const std::string& where)
{
    std::string directory = where + "/kelvo-bench-XXXXXX";
    return mkdtemp(directory.data()) ? directory : std::string();
}

}  // namespace

int main(int argc, char** argv)
{
    const int rounds = RoundsOf(argc, argv, 15);
    const std::string directory = TemporaryDirectory(argc > 2 ? argv[2] : std::filesystem::temp_directory_path());
    CommandLine commandLine;
    commandLine.offscreen = true;
    // Without the toolkit nobody looks for Escape or paints between the frames of a burst.
    bool done = !directory.empty() && OpenMemoryBoard(directory) && MeasureRing(rounds) &&
                MeasureBurst(rounds, "a frame of a burst, the thread that stores");
    StartApplication(commandLine);
    done = done && MeasureBurst(rounds, "the same where it looks for Escape") && MeasureDisk(rounds, directory);
    if (!done) std::printf("the rest couldn't be measured\n");
    ResetRecorder();
    std::filesystem::remove_all(directory);
    return done ? 0 : 1;
}
