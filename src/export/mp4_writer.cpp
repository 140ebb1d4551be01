#include "export/mp4_writer.h"

#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"

#include <cmath>
#include <span>

namespace kelvo {

namespace {

constexpr double kUsualRateHz = 10;
constexpr std::size_t kColorBytes = 3;

double RateOf(const ImageHeaderRecord& header)
{
    const double rate = header.FrameRate;
    return std::isfinite(rate) && rate >= 0.01 && rate <= 10000 ? rate : kUsualRateHz;
}

std::vector<std::string> CommandOf(const ExportDescription& description, const DeviceBitmap& picture,
                                   const std::string& file)
{
    const std::string json = ProvenanceJson(description.provenance, description.columns, description.rows, {}).Json();
    return {"ffmpeg", "-hide_banner", "-loglevel", "error", "-y",
            // What comes.
            "-f", "rawvideo", "-pixel_format", "rgb24", "-video_size", Format("%dx%d", picture.width, picture.height),
            "-framerate", Format("%.6f", RateOf(description.provenance.header)), "-i", "pipe:0",
            // What is made of it: players know no other way to store colors, and it wants even sides.
            "-vf", "pad=ceil(iw/2)*2:ceil(ih/2)*2", "-pix_fmt", "yuv420p", "-metadata", "comment=" + json, "-f", "mp4",
            "file:" + file};
}

// Three bytes a pixel: red, green, blue.
void FillRgb(const DeviceBitmap& picture, std::vector<std::uint8_t>& bytes)
{
    auto out = bytes.begin();
    for (const std::uint32_t pixel : picture.pixels) {
        for (const int shift : {16, 8, 0}) *out++ = static_cast<std::uint8_t>(pixel >> shift);
    }
}

}  // namespace

ExportFailure Mp4Writer::Begin(const ExportDescription& description)
{
    if (description.isFloat) return Path() + " can't be made of values: a video shows counts";
    pixels_ = description.Pixels();
    picture_ = ExportedPicture::Make(description, std::move(options_));
    const bool isThere = picture_ && AllocateBlock(bytes_, kColorBytes * picture_->Picture().pixels.size());
    if (!isThere) return "No memory is left.";
    if (ExportFailure failure = BeginFile()) return failure;
    ffmpeg_ = ChildProcess::Start(CommandOf(description, picture_->Picture(), NewFile::NameBeside(Path())));
    if (!ffmpeg_) return "A video needs the program ffmpeg, which isn't installed";
    return std::nullopt;
}

// What ffmpeg says is the reason, where it says something.
std::string Mp4Writer::Complaint()
{
    const std::string last = ffmpeg_ ? ffmpeg_->LastError() : std::string();
    return Path() + " can't be made: ffmpeg " + (last.empty() ? "has ended" : "says \"" + last + '"');
}

ExportFailure Mp4Writer::Add(const ExportedFrame& frame)
{
    if (!picture_ || !ffmpeg_ || frame.counts.size() != pixels_) return DoneOr(false);
    if (!picture_->Show(frame)) return "No memory is left.";
    FillRgb(picture_->Picture(), bytes_);
    if (ffmpeg_->Write(std::as_bytes(std::span(bytes_)))) return std::nullopt;
    ffmpeg_->Finish();  // its last words
    return Complaint();
}

ExportFailure Mp4Writer::End()
{
    if (!ffmpeg_ || !ffmpeg_->Finish()) return Complaint();
    return Contents().Length() > 0 ? Keep() : DoneOr(false);
}

}  // namespace kelvo
