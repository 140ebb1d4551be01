// The frames of a file, one by one, as the counts that viewing it shows: for what measures, exports and calibrates what
// is stored. No window, no box, no state; any file gives frames or a reason.
#pragma once

#include "imagefile/foreign_frames.h"
#include "imagefile/frames_file.h"
#include "imagefile/header.h"
#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

class StoredFrames {
  public:
    // An image file or a sequence, with the journal beside it where that is its own, or a file of another program
    // (imagefile/foreign_frames.h). nullopt with the reason in why, a text that goes on behind the file's name: "can't
    // be opened", "isn't an image file", "holds no whole frame". All values of another program's file are looked
    // through first, and goesOn is asked meanwhile.
    static std::optional<StoredFrames> Open(std::string_view path, std::string& why,
                                            const ForeignFrames::GoesOn& goesOn = nullptr);

    const std::string& Path() const { return path_; }
    // In native order; FrameCount is the number of frames that the file's length holds.
    const ImageHeaderRecord& Header() const { return header_; }
    std::int64_t Frames() const { return frames_; }
    std::size_t Columns() const { return static_cast<std::size_t>(header_.ImageWidth); }
    std::size_t Rows() const { return static_cast<std::size_t>(header_.ImageHeight); }
    std::size_t Pixels() const { return Columns() * Rows(); }

    // The counts have been corrected, and lie as on the screen; otherwise they are the detectors' own in the order of
    // the readout. The journal says so, or else the header (BearsCalibration).
    bool AreCorrected() const;
    // The journal says that they are as the board delivered them. Only then is a count at the end of the converter's
    // range known to be saturated: what isn't corrected may still have been changed.
    bool AreToldRaw() const;

    // Of a file of another program, what was done to its samples (ForeignFrames::Changes); empty: nothing.
    std::string Changes() const { return foreign_ ? foreign_->Changes() : std::string(); }

    // ForeignFrames::IsLowered, CanBeLowered and Lower; a file of Kelvo's own isn't, and can't be.
    bool AreLowered() const { return foreign_ && foreign_->IsLowered(); }
    bool CanBeLowered() const { return foreign_ && foreign_->CanBeLowered(); }
    bool Lower() { return foreign_ && foreign_->Lower(); }

    // The journal; null where none lies beside the file, or one that isn't this file's. Its records may end before the
    // frames do.
    const FramesFile* Journal() const { return journal_ ? &*journal_ : nullptr; }
    // Why the one that lies beside it isn't: "is damaged", "is none", "is of a later version", "is of another
    // sequence", "can't be read", "needs more memory than is left". Empty: there is none, or it is.
    const std::string& JournalFault() const { return journalFault_; }
    // What the journal says of a frame, from 0; null: nothing.
    const FrameRecord* RecordOf(std::int64_t frame) const;
    // Seconds from the first frame to this one: by the journal's clock where it knows both, else by the number in the
    // file and the header's rate. nullopt where neither is known (a rate of 0).
    std::optional<double> SecondsOf(std::int64_t frame) const;

    // Frame number frame, from 0, to counts, which has Pixels() entries: floats are rounded, words of a byte-swapped
    // file exchanged, as on the screen (imagefile/frame_file.h). False with the reason in why where it can't be read.
    bool ReadCounts(std::int64_t frame, std::span<std::int16_t> counts, std::string& why);

  private:
    StoredFrames(std::string path, File file) : path_(std::move(path)), file_(std::move(file)) {}
    StoredFrames(std::string path, ForeignFrames foreign);
    // NOLINTNEXTLINE(bugprone-unchecked-optional-access): one of the two is there, see below
    File& ImageFile() { return *file_; }
    bool ReadHead(std::string& why);
    void ReadJournal();
    // Samples that are counts already, without a copy in between.
    bool ReadSamples(std::int64_t frame, std::span<std::int16_t> counts, std::string& why);

    std::string path_;
    std::optional<File> file_;              // one of the two is there
    std::optional<ForeignFrames> foreign_;  // of another program
    ImageHeaderRecord header_;
    std::int32_t headerBytes_ = 0;
    std::int64_t frames_ = 0;
    std::optional<FramesFile> journal_;
    std::string journalFault_;
    std::vector<std::uint8_t> block_;   // of one record
    std::vector<std::uint8_t> floats_;  // the same, before they are counts
};

}  // namespace kelvo
