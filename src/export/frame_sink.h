// Where exported frames go: a file of one format in the making. Each format has a writer of this shape.
//
// Whatever happens, what stood under the name stays until the new file is whole: it is written beside the name, and
// takes it in End. A sink that is destroyed before leaves nothing.
#pragma once

#include "export/provenance.h"
#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

// The reason where something failed, a sentence that begins with the path.
using ExportFailure = std::optional<std::string>;

struct ExportDescription {
    std::size_t columns = 0;
    std::size_t rows = 0;
    std::int64_t frames = 0;  // as many as are meant to come
    std::int64_t first = 0;   // the number of the first one in its source, from 0
    bool isFloat = false;     // values of frames are floats, otherwise counts
    // One byte a pixel, rows x columns, 1 marks a bad detector; empty where none are known.
    std::vector<std::uint8_t> badDetectors;
    // Likewise, 1 marks a pixel outside of the region; empty where no region is exported.
    std::vector<std::uint8_t> outside;
    Provenance provenance;
    std::size_t Pixels() const { return columns * rows; }
};

// One frame, rows x columns, row by row from above; one of the two spans has it, as the description says. In floats a
// bad detector is NaN, and so is a pixel outside of the region.
struct ExportedFrame {
    std::span<const std::int16_t> counts;
    std::span<const float> values;
    FrameTiming timing;
    std::span<const std::byte> Bytes() const { return counts.empty() ? std::as_bytes(values) : std::as_bytes(counts); }
};

class FrameSink {
  public:
    // Unless replace is set a name that stands is refused, and a directory in any case.
    FrameSink(std::string path, bool replace) : path_(std::move(path)), replace_(replace) {}
    virtual ~FrameSink() = default;
    FrameSink(const FrameSink&) = delete;
    FrameSink& operator=(const FrameSink&) = delete;

    const std::string& Path() const { return path_; }
    // The files that such an export leaves, one a frame where there are several.
    virtual std::vector<std::string> Targets(const ExportDescription& /*description*/) const { return {path_}; }

    // Once, then Add for each frame, then End: the file has the frames that came, be they fewer than meant, and their
    // number is right in it. After a failure the sink is only good to be destroyed.
    virtual ExportFailure Begin(const ExportDescription& description) = 0;
    virtual ExportFailure Add(const ExportedFrame& frame) = 0;
    virtual ExportFailure End() = 0;
    // How many of the targets have taken their names, each of them whole: they stay when a later one fails.
    std::size_t Kept() const { return kept_; }

  protected:
    // That the name is a directory's, or stands already and may not be replaced.
    ExportFailure WhyRefused(const std::string& path) const;
    // A file beside the name. The reason where that is refused, or the directory takes none.
    ExportFailure BeginFile(std::optional<NewFile>& file, const std::string& path) const;
    ExportFailure BeginFile() { return BeginFile(file_, path_); }
    File& Contents();                                    // of what BeginFile has begun
    ExportFailure Keep() { return Keep(file_, path_); }  // it takes its name
    ExportFailure Keep(std::optional<NewFile>& file, const std::string& path);
    // Nothing where it is done, else that the disk refuses.
    ExportFailure DoneOr(bool isDone) const { return DoneOr(isDone, path_); }
    static ExportFailure DoneOr(bool isDone, const std::string& path);

  private:
    std::string path_;
    bool replace_;
    std::size_t kept_ = 0;
    std::optional<NewFile> file_;
};

// Row and column of each bad detector, row by row, as JSON: "[[0, 17], [3, 4]]"; "null" where none are known.
std::string BadPlacesJson(const ExportDescription& description);
// The pixels outside of the region, row by row, as JSON: "[[0, 0, 2], [0, 5, 7]]" are columns 0 to 2 and 5 to 7 of row
// 0, both included; "null" where no region is exported.
std::string OutsideRunsJson(const ExportDescription& description);

}  // namespace kelvo
