// Frames of other programs as counts: TIFF, FITS and NumPy's .npy, of 16 bits and one plane. No window, no box; any
// file gives frames or a reason that goes on behind its name.
//
// Counts have a sign. Of a file whose samples have none, values that reach above 32767 anywhere are all taken 32768
// lower, as FITS stores them; where none does, they stay as they are. Either way differences stay exact.
#pragma once

#include "imagefile/foreign_layout.h"
#include "imagefile/foreign_tiff.h"
#include "imagefile/header.h"
#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kelvo {

enum class ForeignKind { kTiff, kFits, kNpy };

// By the name: .tif and .tiff, .fits, .fit and .fts, .npy in any case. Where the file begins as another one of the
// three it is that one, and where it begins with the header of an image file it is none: those may bear any name.
std::optional<ForeignKind> ForeignKindOf(std::string_view path);

class ForeignFrames {
  public:
    // Asked between frames while all values are looked through, for the highest of them, and before that, with frame 0
    // of 1, between the pages of a TIFF file while they are counted: false stops.
    using GoesOn = std::function<bool(std::int64_t frame, std::int64_t frames)>;

    // nullopt with the reason in why: "can't be opened", "needs more memory than is left", "can't be read", "wasn't
    // looked through" (goesOn said no), and those of the readers.
    static std::optional<ForeignFrames> Open(std::string_view path, ForeignKind kind, std::string& why,
                                             const GoesOn& goesOn = nullptr);

    std::int64_t Frames() const { return layout_.frames; }
    std::size_t Columns() const { return static_cast<std::size_t>(layout_.columns); }
    std::size_t Rows() const { return static_cast<std::size_t>(layout_.rows); }
    std::size_t Pixels() const { return Columns() * Rows(); }

    // An image file's header for these frames: native order, all frames counted, not calibrated. The range is 0 to
    // 16383, or to 32767 where one of the counts is higher. Its time is that of the file.
    const ImageHeaderRecord& Header() const { return header_; }

    // All samples are taken 32768 lower.
    bool IsLowered() const { return isLowered_; }
    // The same from now on for samples without a sign that stay below 32768, beside a file that needs it. False, and
    // nothing changes, where they have one.
    bool Lower();
    bool CanBeLowered() const { return layout_.samples != ForeignSamples::kSigned; }

    // What was done to the samples, in the operator's words: "less 32768", "rows turned"; empty: nothing.
    std::string Changes() const;

    // Frame number frame, from 0, to counts, which has Pixels() entries; the uppermost row first. False with the reason
    // in why where it can't be read.
    bool ReadCounts(std::int64_t frame, std::span<std::int16_t> counts, std::string& why);

  private:
    ForeignFrames(std::variant<File, ForeignTiff> source, const ForeignLayout& layout)
        : source_(std::move(source)), layout_(layout)
    {
    }
    bool ReadWords(std::int64_t frame, std::string& why);
    std::optional<int> FindHighest(const GoesOn& goesOn, std::string& why);

    std::variant<File, ForeignTiff> source_;
    ForeignLayout layout_;
    ImageHeaderRecord header_;
    bool isLowered_ = false;            // by 32768
    std::vector<std::uint16_t> words_;  // of one frame, as values without sign are
};

}  // namespace kelvo
