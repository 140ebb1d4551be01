// The figures beside a plot, as the operator reads them.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kelvo {

struct PlotReport {
    std::string mean;
    std::string deviation;
    std::string minimum;
    std::string minimumPlace;
    std::string maximum;
    std::string maximumPlace;
};

// Controls 321 (mean), 322 (deviation), 325 and 324 (minimum and its place), 328 and 327 (maximum and its place).
void ShowPlotReport(HWND dialog, const PlotReport& report);

// Three decimals, five for volts of noise.
std::string MeanText(double mean, std::int32_t unit);
std::string DeviationText(double deviation, std::int32_t unit);  // behind a plus-minus sign

// "(12,34)", column and row; empty without a place.
std::string PlaceText(const std::optional<Point>& place);

// The extremes of samples and where they stand. Seeded so that any sample between -0x7FFE and 0x7FFD takes its place;
// the first of equal ones keeps it. Beyond the seeds a sample changes nothing, and has no place.
struct Extremes {
    std::int32_t minimum = 0x7FFE;
    std::int32_t maximum = -0x7FFF;
    std::optional<Point> minimumAt;
    std::optional<Point> maximumAt;

    void Take(std::int32_t sample, Point at)
    {
        if (sample < minimum) {
            minimum = sample;
            minimumAt = at;
        }
        if (sample > maximum) {
            maximum = sample;
            maximumAt = at;
        }
    }
};
// Minimum and maximum of the report in a unit, each empty without a place. In a unit that falls as counts rise the two
// change their names.
void ReportExtremes(PlotReport& report, const Extremes& extremes, std::int32_t unit);

// Samples in a unit as they come: the sum, and after it a second pass of the squares about the mean.
class UnitSums {
  public:
    void Add(float value)
    {
        sum_ += static_cast<double>(value);
        ++count_;
    }
    std::int64_t Count() const { return count_; }
    double Sum() const { return sum_; }
    // The quotient of the two singles; 0 of nothing.
    float Mean() const { return count_ == 0 ? 0.0F : static_cast<float>(sum_) / static_cast<float>(count_); }
    // Of the second pass: one of the two equal factors is rounded to single.
    void AddSquare(float mean, float value)
    {
        const double difference = static_cast<double>(mean) - static_cast<double>(value);
        squares_ += difference * static_cast<double>(static_cast<float>(difference));
    }
    double Squares() const { return squares_; }

  private:
    double sum_ = 0;
    double squares_ = 0;
    std::int64_t count_ = 0;
};

}  // namespace kelvo
