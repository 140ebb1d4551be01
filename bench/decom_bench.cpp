// Building the table, turning it, and replacing bad pixels at 1024 x 1024 with 2 % bad, beside a copy of the table, in
// one run on one thread.
//
//   build/bench/bench/decom_bench
//
// Rounds go in turn; each figure is the median, and the ratio to the copy the median of the rounds' ratios.
#include "median.h"
#include "pixel/bad_pixels.h"
#include "pixel/decommutation.h"
#include "rounds.h"
#include "state/cal_settings_write.h"
#include "state/camera_config.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <random>
#include <vector>

namespace {

using namespace kelvo;

constexpr std::int32_t kSide = 1024;
constexpr std::size_t kPixels = std::size_t{kSide} * kSide;
int rounds = 40;  // or what the first argument says

CameraConfig FourChannels()
{
    CameraConfig config;
    config.DecomScheme = 7;
    config.Vroi = kSide;
    config.Hroi = kSide;
    return config;
}

BadDetMap TwoPercentBad()
{
    std::mt19937 random(1024);
    BadDetMap map(kPixels);
    for (auto& mark : map) mark = random() % 50 == 0 ? 1 : 0;
    return map;
}

struct Figures {
    std::vector<double> work;
    std::vector<double> copy;
    void Report(const char* name) const
    {
        std::printf("%-40s %9.0f us %7.1f copies\n", name, Median(work), MedianRatio(work, copy));
    }
};

}  // namespace

int main(int argc, char** argv)
{
    rounds = RoundsOf(argc, argv, rounds);
    const CameraConfig config = FourChannels();
    const BadDetMap bad = TwoPercentBad();
    write::calSet.CalSettings.PRSfile = KELVO_DEFAULTS "/nearccw.prs";
    Figures build;
    Figures turn;
    Figures replace;
    DecomTable target(kPixels);
    bool whole = true;
    for (int round = 0; round < rounds; ++round) {
        std::optional<DecomTable> table;
        build.work.push_back(Microseconds([&] { table = BuildDecomList(config, 0); }));
        whole = whole && table;
        if (!whole) break;
        const double copy =
            Microseconds([&] { std::memcpy(target.data(), table->data(), kPixels * sizeof(std::uint32_t)); });
        replace.work.push_back(Microseconds([&] { whole = ReplaceBadDet(*table, bad, config) && whole; }));
        turn.work.push_back(Microseconds([&] { whole = ReorderDecomList(*table, config, 1, 1, 1) && whole; }));
        for (Figures* figures : {&build, &turn, &replace}) figures->copy.push_back(copy);
    }
    if (!whole || BadDetCount == 0) {
        std::printf("the table wasn't made\n");
        return 1;
    }
    build.Report("BuildDecomList, four channels");
    turn.Report("ReorderDecomList, rows, columns, left");
    replace.Report("ReplaceBadDet, 2 % bad");
    return 0;
}
