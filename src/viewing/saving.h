// Saving what is on the screen: single images, numbered sequences, frames of one file.
//
// What is saved: with a file on view, its frame as ImageBuffer holds it; otherwise new frames of the camera (frozen:
// the frozen one, or the stored burst's that replay shows) as AverageFrames gives them, which is the picture on the
// screen, without the image cursor. Only without a calibration in force the counts stay in readout order, as they came
// from the detector.
//
// Without a camera and a file on view there is no picture: nothing is saved, and the operator is told as of a failed
// acquisition.
//
// A file of a single image is written beside its name and takes it when it is whole; what stood there before stays
// until then. A multi-frame file is worked in place: a new frame lies behind the whole ones that are there by the
// file's length, and is counted when it is on the disk. Where something fails the frames that were there stay, and
// ImageHeader is as it was.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace kelvo {

// As the SAVE dialog took them last.
extern const std::int32_t& FramesToAverageImage;  // 1 to 1000
extern const std::int32_t& FramesToAverageSeq;
extern const std::int32_t& SeqNumber;       // the next number; counted up by SaveSequence
extern const std::int32_t& SeqNumberStart;  // as entered

// What the last SaveImage or SaveSequence wrote whole; nullopt where it wrote nothing, or only a part.
struct SavedFile {
    std::string path;
    std::uint32_t frames = 0;  // that the file now holds
};
const std::optional<SavedFile>& LastSave();

// Writes one image: the header of what is on view or of the camera, without room for a FrameHeader, and the counts. 1
// when the file was written, also after "Error writing data to file!" (the disk filled up among the
// pixels): a new file then stays as far as it came, and a file that was to be replaced stays as it was. 0 when it was
// not: the operator keeps the file that stands there, or, each told in a box: "%s\nOpen file failure on Save Image"
// (followed by the header's failure), "Failure to allocate or lock video memory!", "Video Data Acquisition Failed,
// Hardware error", "Failure writing header for image file". Blocks while frames are gathered.
int SaveImage(const std::string& path, std::uint32_t framesToAverage);

// Writes the next image of a sequence: to basePath with sequenceNumber behind its stem, or (MultiFrame) as one more
// frame of the file of that name. A negative number becomes 0; it goes up by 1 with each file written, and where the
// operator keeps the file that stands there. Frames are averaged only from live video.
//
// 1; -1 when nothing was written or the operator declined; 0 on a header failure; the bytes written on a short write.
// The boxes, under "Kelvo SaveSequence Error": "Failure to allocate memory!", "Unable to get image data!"; under "Kelvo
// message": "%s\nSequence number, %d, too large for given base filename" (stem and number may have 8 characters),
// "%s\nSaveSequence: Open file failure", "%s\nSaveSequence: Unable to read existing image header!" (too short, or it
// describes no frames, or none could stand where it says), "Failure writing header for image file\nDisk Full ??",
// "Failure writing header for image update file\nDisk full ??"; a short write else: "Error writing data to file!" under
// "File Write Error".
//
// With a file on view a numbered file takes its header, with one frame more, and the frame lies behind as many places
// as that says, all zeros; the record on view counts it too. A multi-frame file begins with the header on view and one
// frame; one that has frames keeps its own header, whatever is on view.
std::int32_t SaveSequence(const std::string& basePath, std::int32_t& sequenceNumber, std::uint32_t framesToAverage);

// The path that the image of that number gets: 0 and below are one digit.
std::string SequenceFilePath(const std::string& basePath, std::int32_t number);

// The numbers of the start.
void ResetSaving();

}  // namespace kelvo
