// What is exported, as a value: frames of a file, the frame on view, or the frames of a burst in host memory, in the
// form that was asked for. Values are those on the screen to the last bit: counts as the picture has them, units as
// CountsToUnit (display/units.h) makes them of those counts.
#pragma once

#include "calib/stored_correction.h"
#include "display/units.h"
#include "export/frame_sink.h"
#include "imagefile/stored_frames.h"
#include "pixel/bad_pixels.h"
#include "regions/region.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

enum class ExportWhat {
    kFile,        // frames of an image file or sequence
    kOnView,      // the picture on view: stored, frozen, replayed, or the camera's newest
    kHostFrames,  // of the last burst, as replay shows them
};

struct ExportRequest {
    ExportWhat what = ExportWhat::kFile;
    std::string path{};      // of kFile
    std::int64_t first = 0;  // frames from 0; of the picture on view there is one
    std::int64_t end = -1;   // one behind the last; below 0: to the end
    ExportForm form = ExportForm::kCounts;
    // Corrects raw frames of a file: a .cal, or the lists in force. With neither they stay as they are.
    std::string set{};
    bool listsInForce = false;
    // Volts at the two ends of the header's display range (DisplayLow, DisplayHigh). nullopt: as the camera in force
    // has them.
    std::optional<std::pair<float, float>> volts{};
    // A rectangle, cut to the frame. nullopt: the whole picture; of the camera what it reads, Hactive x Vactive.
    std::optional<RegionPlace> place{};
    // In place of that: of each region the least rectangle that holds all its pixels in the picture.
    std::vector<Region> regions{};
    // Of the camera's picture the difference where one is on view (display/difference_view.h): for pictures alone.
    bool asShown = false;
};

class ExportSource {
  public:
    // nullopt with why, a sentence: the file can't be opened, has no frames of that range, isn't raw or is it, has no
    // two sources for a temperature, the set doesn't fit or its list of bad detectors can't be read; no picture is on
    // view; nothing is in host memory; a region lies outside of the frame; no volts are known. Nothing is told in a
    // box.
    static std::optional<ExportSource> Open(const ExportRequest& request, std::string& why);

    // The regions that are exported, in their order, each for itself and all of the same frames; one part otherwise.
    std::size_t Parts() const { return parts_.size(); }
    // Frames, size, form, bad detectors and provenance of a part. Bad detectors are known where a calibration that can
    // be read made the picture; frames in readout order have none, since a list is of the picture.
    const ExportDescription& Description(std::size_t part = 0) const { return parts_[part].description; }

    // Reads frame number i of the export, from 0. False with the reason in why.
    bool Read(std::int64_t i, std::string& why);
    // A part of the frame that was read last; its spans hold until the next call for this part, or of Read.
    ExportedFrame Frame(std::size_t part = 0);

  private:
    struct Rectangle {
        std::size_t left = 0;
        std::size_t top = 0;
        std::size_t columns = 0;
        std::size_t rows = 0;
    };
    struct Part {
        Rectangle rectangle;
        ExportDescription description;
        std::vector<std::int16_t> counts;
        std::vector<float> values;
    };

    bool OpenFile(const ExportRequest& request, std::string& why);
    bool TakePictureOnView(const ExportRequest& request, std::string& why);
    bool TakeHostFrames(const ExportRequest& request, std::string& why);
    void TakeCameraFacts();
    void DescribeFile(const StoredFrames& frames);
    bool TakeRange(const ExportRequest& request, std::int64_t frames, std::string& why);
    bool TakeParts(const ExportRequest& request, std::string& why);
    bool TakePart(const Rectangle& rectangle, std::string& why);
    bool TakeRegion(const Region& region, const Rectangle& picture, std::string& why);
    void DescribeParts(const std::optional<BadDetMap>& bad);
    bool TakeCorrection(const ExportRequest& request, std::string& why);
    bool CorrectWithListsInForce(std::string& why);
    bool TakeUnit(const ExportRequest& request, std::string& why);
    bool ReadBadDetectors(const ExportRequest& request, std::optional<BadDetMap>& bad, std::string& why) const;
    std::unique_ptr<UnitScope> ScopeOf(const ExportRequest& request) const;
    void MakeTable(const ExportRequest& request);
    bool IsRaw() const;
    bool ReadWhole(std::int64_t index, std::string& why);
    FrameTiming TimingOf(std::int64_t index) const;

    ExportWhat what_ = ExportWhat::kFile;
    ExportDescription description_;  // what all parts have in common
    std::vector<Part> parts_;
    std::size_t columns_ = 0;  // of the whole frame
    std::size_t rows_ = 0;
    std::int64_t first_ = 0;
    std::optional<StoredFrames> file_;
    std::int64_t onViewIndex_ = 0;  // of the picture on view in its file
    std::optional<StoredCorrection> correction_;
    bool correctedInForce_ = false;
    bool asShown_ = false;
    std::vector<float> table_;         // the value of each count from -32768 on; empty for counts
    std::vector<std::int16_t> whole_;  // of the picture on view its frame
    std::vector<std::int16_t> corrected_;
    std::span<const std::int16_t> picture_;  // that was read last
    FrameTiming timing_;
};

}  // namespace kelvo
