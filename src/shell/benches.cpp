#include "shell/benches.h"

#include "fileboard/file_bench.h"
#include "platform/machine.h"
#include "simcam/bench_window.h"

#include <algorithm>
#include <iterator>

namespace kelvo {

namespace {

using Values = std::vector<std::pair<std::string, double>>;

struct Bench {
    std::string_view board;  // by its name in platform.ini
    bool (*isThere)();
    void (*open)(HWND owner);
    std::string (*source)(std::string_view source, std::optional<double> value);
    Values (*truth)(int x, int y);
    Values (*registers)();
    std::string (*trigger)(std::optional<double> periodMs);
    Values (*lines)();
};

std::string NoTrigger(std::optional<double> /*periodMs*/)
{
    return "a recorded camera has no trigger input";
}

// The first one stands for a machine without a bench too: it tells so.
constexpr Bench kBenches[] = {
    {"sim", SimBenchIsThere, OpenBenchWindow, PutBenchSource, BenchTruth, BenchHeadRegisters, PulseBenchTrigger,
     BenchLines},
    {"file", FileBenchIsThere, OpenFileBench, PutFileBenchSource, [](int, int) { return Values(); }, FileBenchRegisters,
     NoTrigger, [] { return Values(); }},
};

const Bench& BenchAtHand()
{
    const std::string board = MachineSetting("Board", "Board", "none");
    const auto* const named = std::ranges::find(kBenches, board, &Bench::board);
    return named != std::end(kBenches) && named->isThere() ? *named : kBenches[0];
}

}  // namespace

bool BenchIsThere()
{
    return BenchAtHand().isThere();
}

void OpenBench(HWND owner)
{
    BenchAtHand().open(owner);
}

void CloseBenches()
{
    CloseBenchWindow();
    CloseFileBench();
}

std::string PutSource(std::string_view source, std::optional<double> value)
{
    return BenchAtHand().source(source, value);
}

std::vector<std::pair<std::string, double>> TruthOf(int x, int y)
{
    return BenchAtHand().truth(x, y);
}

std::vector<std::pair<std::string, double>> RegistersOfHead()
{
    return BenchAtHand().registers();
}

std::string PulseTrigger(std::optional<double> periodMs)
{
    return BenchAtHand().trigger(periodMs);
}

std::vector<std::pair<std::string, double>> LinesOfBoard()
{
    return BenchAtHand().lines();
}

}  // namespace kelvo
