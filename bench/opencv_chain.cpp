#include "opencv_chain.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>

namespace {

// Rounding x - kToTruncate to the nearest whole number truncates x, for x from 0 to 2^15 that is whole or at least
// 2^-24 away from the next whole number, as quotients by single precision gains are. It costs no call of its own where
// the offset has it already: (v - k gain) / gain.
constexpr double kToTruncate = 0.5 - 0x1p-30;

bool IsIdentity(std::span<const std::uint32_t> decom)
{
    for (std::size_t i = 0; i < decom.size(); ++i) {
        if (decom[i] != i) return false;
    }
    return true;
}

}  // namespace

OpenCvChain::OpenCvChain(std::span<const std::uint32_t> decom, std::span<const std::int16_t> offset,
                         std::span<const float> gain, const std::array<std::uint8_t, 65536>& table, std::size_t width,
                         std::size_t stripRows)
    : width_(static_cast<int>(width)),
      height_(static_cast<int>(decom.size() / width)),
      stripRows_(static_cast<int>(stripRows)),
      identity_(IsIdentity(decom)),
      map_(height_, width_, CV_16SC2),
      offset_(height_, width_, CV_64F),
      gain_(height_, width_, CV_64F),
      table_(256, 256, CV_8U)
{
    cv::setNumThreads(1);
    for (std::size_t i = 0; i < decom.size(); ++i) {
        const auto row = static_cast<int>(i / width);
        const auto column = static_cast<int>(i % width);
        map_.at<cv::Vec2s>(row, column) = {static_cast<short>(decom[i] % width), static_cast<short>(decom[i] / width)};
        const double divisor = gain[decom[i]];
        offset_.at<double>(row, column) = offset[decom[i]] + kToTruncate * divisor;
        gain_.at<double>(row, column) = divisor;
    }
    std::ranges::copy(table, table_.ptr<std::uint8_t>());
}

void OpenCvChain::Run(std::span<const std::int16_t> raw, std::span<std::int16_t> frame, std::span<std::uint8_t> pixels)
{
    const cv::Mat source(height_, width_, CV_16S, const_cast<std::int16_t*>(raw.data()));
    cv::Mat counts(height_, width_, CV_16S, frame.data());
    cv::Mat grays(height_, width_, CV_8U, pixels.data());
    for (int first = 0; first < height_; first += stripRows_) {
        const cv::Range rows(first, std::min(first + stripRows_, height_));
        cv::Mat strip = counts.rowRange(rows);
        if (identity_) {
            gathered_ = source.rowRange(rows);
        } else {
            cv::remap(source, gathered_, map_.rowRange(rows), cv::noArray(), cv::INTER_NEAREST);
        }
        cv::subtract(gathered_, offset_.rowRange(rows), difference_, cv::noArray(), CV_64F);
        cv::divide(difference_, gain_.rowRange(rows), quotient_);
        quotient_.convertTo(strip, CV_16S);
        // A count's two bytes are its column and row in the table.
        const cv::Mat bytes(strip.rows, strip.cols, CV_8UC2, strip.data, strip.step);
        bytes.convertTo(place_, CV_16S);
        cv::remap(table_, grays.rowRange(rows), place_, cv::noArray(), cv::INTER_NEAREST);
    }
}
