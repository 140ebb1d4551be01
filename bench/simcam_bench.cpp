// The simulated camera must not be the brake: what a frame takes, beside a memory copy of its bytes, in one run.
//
//   build/bench/bench/simcam_bench
//
// 640 x 512 detectors as shipped. A camera of 100 Hz leaves 10 ms a frame. Rounds go in turn; each figure is the
// median.
#include "rounds.h"
#include "simcam/sim_camera.h"
#include "state/windows.h"

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace {

using namespace kelvo;

constexpr int kColumns = 640;
constexpr int kRows = 512;
constexpr std::size_t kPixels = std::size_t{kColumns} * kRows;
int rounds = 200;  // or what the first argument says

// As its camera section programs it: 100 Hz, integration row 195.
std::shared_ptr<SimCamera> OpenProgrammed(const std::string& path)
{
    std::string error;
    std::shared_ptr<SimCamera> camera = OpenSimCamera(path, error);
    if (!camera) {
        std::printf("%s\n", error.c_str());
        return nullptr;
    }
    for (const WireFrame& frame : {WireFrame{0x50, 0, 0, 2},
                                   {0x50, 1, 128, 160},
                                   {0x50, 3, 252, 160},
                                   {0x80, 3, 0, 0},
                                   {0x90, 0x30, 0, 0},
                                   {0x60, 2, 0x01, 0xE6},
                                   {0x60, 4, 0x80, 63}}) {
        AnswerSimFrame(*camera, frame);
    }
    return camera;
}

// Processor time: a frame lasts long enough for other work to come between.
double ProcessorMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

double MillisecondsOf(const std::function<void()>& work)
{
    const double start = ProcessorMilliseconds();
    work();
    return ProcessorMilliseconds() - start;
}

struct Contender {
    const char* name;
    std::function<void(int round)> work;
    std::vector<double> milliseconds;
};

// The shipped file with another readout order.
void PutCopyWithScheme(const std::filesystem::path& from, const std::filesystem::path& to)
{
    std::ifstream source(from);
    std::string text{std::istreambuf_iterator<char>(source), std::istreambuf_iterator<char>()};
    const std::string plain = "Scheme=2";
    text.replace(text.find(plain), plain.size(), "Scheme=7");
    std::ofstream(to) << text;
}

}  // namespace

int main(int argc, char** argv)
{
    rounds = RoundsOf(argc, argv, rounds);
    const std::filesystem::path defaults = KELVO_DEFAULTS;
    const std::filesystem::path quartersFile = std::filesystem::temp_directory_path() / "kelvo-bench-quarters.cnf";
    PutCopyWithScheme(defaults / "insb640.cnf", quartersFile);
    const auto camera = OpenProgrammed((defaults / "insb640.cnf").string());
    const auto quarters = OpenProgrammed(quartersFile.string());
    if (!camera || !quarters) return 1;
    PutSimSource(*quarters, SimSource::kLow);

    std::vector<std::int16_t> frame(kPixels);
    std::vector<std::int16_t> copy(kPixels);
    const auto read = [&](SimCamera& from, int round) {
        ReadSimFrame(from, round, std::int64_t{10000} * round, kColumns, kRows, frame);
        benchmark::DoNotOptimize(frame.data());
    };
    // Two cameras: a still source is exposed once, and a change of source would expose it again.
    Contender contenders[] = {
        {"still source, four channels", [&](int round) { read(*quarters, round); }, {}},
        {"moving scene", [&](int round) { read(*camera, round); }, {}},
        {"memory copy",
         [&](int) {
             std::memcpy(copy.data(), frame.data(), kPixels * sizeof(std::int16_t));
             benchmark::DoNotOptimize(copy.data());
         },
         {}},
    };
    for (int round = 0; round < rounds; ++round) {
        for (Contender& each : contenders) {
            each.milliseconds.push_back(MillisecondsOf([&] { each.work(round); }));
        }
    }
    for (Contender& each : contenders) {
        std::ranges::sort(each.milliseconds);
        const double median = each.milliseconds[each.milliseconds.size() / 2];
        std::printf("%-28s %7.3f ms a frame, %5.1f %% of 10 ms\n", each.name, median, median * 10);
    }
    std::filesystem::remove(quartersFile);
    return 0;
}
