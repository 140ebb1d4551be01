// The frame path as a user of OpenCV would chain it from calls, exact to the count: nearest-neighbour remapping for the
// gather, subtract, divide in double, convert, and a second remapping for a table of more than 8 bits.
#pragma once

#include <opencv2/core.hpp>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

class OpenCvChain {
  public:
    // The image is worked through in strips of so many rows: the whole height at once, or few to stay in the cache.
    OpenCvChain(std::span<const std::uint32_t> decom, std::span<const std::int16_t> offset, std::span<const float> gain,
                const std::array<std::uint8_t, 65536>& table, std::size_t width, std::size_t stripRows);

    void Run(std::span<const std::int16_t> raw, std::span<std::int16_t> frame, std::span<std::uint8_t> pixels);

  private:
    int width_;
    int height_;
    int stripRows_;
    bool identity_;
    cv::Mat map_;
    cv::Mat offset_;
    cv::Mat gain_;
    cv::Mat table_;
    cv::Mat gathered_;
    cv::Mat difference_;
    cv::Mat quotient_;
    cv::Mat place_;
};
