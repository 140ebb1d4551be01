// What the live picture tells of the source in front of the camera before frames are gathered of it: where its signal
// lies, how uneven the array sees it, and whether it stands still.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>

namespace kelvo {

struct PictureFigures {
    double mean = 0;            // counts
    double deviation = 0;       // counts, of the detectors from their mean (n - 1); 0 of a single one
    double saturatedShare = 0;  // 0 to 1 (pixel/saturation.h)
};

// Of raw counts, bad detectors among them: a first calibration doesn't know yet which they are. nullopt of no counts.
std::optional<PictureFigures> FiguresOf(std::span<const std::int16_t> rawCounts);

// Watches a mean over the last second.
class MeanWatch {
  public:
    static constexpr std::int64_t kSpanMs = 1000;
    static constexpr double kSteadyCounts = 0.5;

    // ms never runs backward.
    void Add(std::int64_t ms, double mean);
    void Clear() { means_.clear(); }
    // True where no two means of the last second differ by kSteadyCounts or more; false too until a whole second has
    // been seen.
    bool IsSteady() const;

  private:
    struct Entry {
        std::int64_t ms;
        double mean;
    };
    std::deque<Entry> means_;  // those of the last second, and the newest one before it
};

}  // namespace kelvo
