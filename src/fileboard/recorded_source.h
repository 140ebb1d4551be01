// One source of a recorded camera: the raw frames of a file, or of several one behind the other, with the times at
// which they come again.
#pragma once

#include "fileboard/play_times.h"
#include "imagefile/stored_frames.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

// Files that a rule may name, each of which is open as long as its source is.
constexpr std::size_t kMostFilesOfASource = 256;

// The files of a rule, a path whose name may hold * and ?: in the order of their names, in which numbers count as such
// (run_9 before run_10). A path without them is itself. Empty: none fits.
std::vector<std::string> FilesOfRule(const std::string& rule);

class RecordedSource {
  public:
    // rateHz: 0 for the recorded times. nullopt with the reason in error, a whole sentence that names the file: it
    // can't be read or is none, its frames are corrected (a camera's are raw), the files have frames of several sizes,
    // there are too many of them.
    static std::optional<RecordedSource> Open(const std::string& rule, double rateHz, bool loops, std::string& error);

    // "low.seq", or of several "low_1.seq and 3 more".
    const std::string& Name() const { return name_; }
    std::size_t Columns() const { return files_.front().Columns(); }
    std::size_t Rows() const { return files_.front().Rows(); }
    const PlayTimes& Times() const { return times_; }
    std::int64_t Frames() const { return std::ssize(times_.frames); }
    std::int64_t Lost() const { return Times().frames.back().number + 1 - Frames(); }  // in its gaps

    double RateHz() const { return times_.rateHz; }                         // of the playing
    std::optional<double> IntegrationMs() const { return integrationMs_; }  // of the first frame, where it is told
    // What was done to the samples, in the operator's words; empty: nothing.
    std::string Changes() const { return files_.front().Changes(); }
    // As StoredFrames has them; of all files.
    bool AreLowered() const;
    bool CanBeLowered() const;
    bool Lower();  // one that can't be stays as it is

    // Frame number frame, from 0 through all files, to counts of Columns x Rows, as the file has them. False where it
    // can't be read.
    bool Read(std::int64_t frame, std::span<std::int16_t> counts);

  private:
    RecordedSource() = default;
    bool OpenFiles(const std::vector<std::string>& paths, std::string& error);
    bool AreAlike(std::string& error);
    std::vector<RecordedTime> RecordedTimes() const;
    void FindIntegration();

    std::string name_;
    std::vector<StoredFrames> files_;
    std::vector<std::int64_t> firstOf_;  // by file, its first frame
    PlayTimes times_;
    std::optional<double> integrationMs_;
};

}  // namespace kelvo
