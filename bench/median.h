// Interleaved measuring: what disturbs one disturbs the others.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

template <typename Work>
double MicrosecondsOnce(Work&& work)
{
    benchmark::ClobberMemory();
    const auto start = std::chrono::steady_clock::now();
    work();
    benchmark::ClobberMemory();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

// The second of two runs: what worked before has left the caches full of its own.
template <typename Work>
double Microseconds(Work&& work)
{
    work();
    return MicrosecondsOnce(work);
}

inline double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

// The median over the rounds of a[round] / b[round].
inline double MedianRatio(const std::vector<double>& a, const std::vector<double>& b)
{
    std::vector<double> ratios;
    for (std::size_t i = 0; i < a.size(); ++i) ratios.push_back(a[i] / b[i]);
    return Median(std::move(ratios));
}
