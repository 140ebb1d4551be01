// Image math: a weighted sum of two images or sequences, frame by frame, into a new file. It is pure calculation and
// files: what went wrong is returned, and image_math_dialog.h tells the operator. (Taking the camera's frame tells its
// own failures.)
//
// A source is a file, or the image on the screen: the frame on view with a file on view, else a new frame of the camera
// (frozen: the frozen one), Hactive x Vactive of it. Files are read as ReadImageHeader describes them: any number of
// frames by their length, their FrameHeaders passed over, 32-bit floats as the counts that the viewer makes of them
// (CountOfFloat). Neither sources nor result are byte-swapped, whatever ByteSwap says.
//
// The result is written beside its name and takes it when it is whole; what stood there stays until then, and the
// journal of a recorded sequence goes with it.
#pragma once

#include "analysis/weighted_sum.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

// The captions of what went wrong.
constexpr std::string_view kMemoryCaption = "Global Memory Error!";
constexpr std::string_view kOpenCaption = "File Error!";
constexpr std::string_view kReadCaption = "File Read Error!";
constexpr std::string_view kScreenCaption = "Data Read Error!";
constexpr std::string_view kResultCaption = "File Error";

// What the operator asked for. A source whose constant is 0 isn't looked at; one without a name is the image on the
// screen.
struct ImageMath {
    Weights weights;
    std::string frame1;
    std::string frame2;
    std::string result;
};

// Whether the result would take the place of a file that it is made of, by whatever name or link; also of the part that
// a former run left beside it.
bool ResultIsSource(const ImageMath& math);
// Whether a file can be written under that name; nothing is changed.
bool ResultCanBeWritten(const std::string& path);

struct ImageMathFailure {
    std::string text;  // and, where a part of the result was written, where that is
    std::string_view caption;
    bool namesResult = false;  // the result's name is what is wrong
    bool isStop = false;       // the operator pressed Escape
};

struct ImageMathOutcome {
    std::optional<ImageMathFailure> failure;
    std::uint32_t frames = 0;  // written
    std::int64_t wrapped = 0;  // samples that left 16 bits, of which the low ones are stored
};

// Writes the result: a header with the range that spans those of the source files, and as many frames as the longer
// source has; the shorter one repeats its last. It has the smaller height and the smaller width of the sources. Where
// these differ, samples are combined in memory order, not place by place, and where source 1 has several frames its
// second one fails. FrameCount of the header is 1, whatever the number of frames.
//
// Blocks; a run of several frames shows its progress and can be stopped by Escape. On failure ImageHeader is as before,
// and from the header on what was written stays beside the result's name. Without one, and without a file on view,
// ImageHeader is the result's.
ImageMathOutcome RunImageMath(const ImageMath& math);

}  // namespace kelvo
