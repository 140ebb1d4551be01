#include "acquire/frame_means.h"

#include <cmath>
#include <cstddef>

namespace kelvo {

namespace {

float DeviationOf(double squares, double meanSquare, double count)
{
    return static_cast<float>(std::sqrt(std::fabs(squares - meanSquare) / (count - 1)));
}

template <typename Sum>
void Deviations(std::span<const Sum> sums, std::span<const double> squares, std::int32_t count,
                std::span<float> deviations)
{
    for (std::size_t i = 0; i < squares.size() && i < deviations.size(); ++i) {
        const auto sum = static_cast<double>(sums[i]);
        deviations[i] = DeviationOf(squares[i], sum * sum / count, count);
    }
}

}  // namespace

void DeviationsOfSums(std::span<const std::int32_t> sums, std::span<const double> squares, std::int32_t count,
                      std::span<float> deviations)
{
    Deviations(sums, squares, count, deviations);
}

void DeviationsOfSums(std::span<const float> sums, std::span<const double> squares, std::int32_t count,
                      std::span<float> deviations)
{
    Deviations(sums, squares, count, deviations);
}

void MeansOfSums(std::span<const std::int32_t> sums, std::span<const double> squares, std::int32_t count,
                 std::span<std::int16_t> means, std::span<float> deviations)
{
    for (std::size_t i = 0; i < squares.size() && i < deviations.size(); ++i) {
        const double sum = sums[i];
        deviations[i] = DeviationOf(squares[i], sum / count * sum, count);
    }
    for (std::size_t i = 0; i < means.size(); ++i) means[i] = static_cast<std::int16_t>(sums[i] / count);
}

}  // namespace kelvo
