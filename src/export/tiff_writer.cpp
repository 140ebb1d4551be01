#include "export/tiff_writer.h"

#include "platform/json_text.h"

#include <tiffio.h>

#include <cstdio>
#include <memory>

namespace kelvo {

namespace {

using Stream = TiffWriter::Stream;

constexpr std::int64_t kBytesBesidePixels = 4096;  // of a page: directory and description, generously

Stream& StreamOf(thandle_t handle)
{
    return *static_cast<Stream*>(handle);
}

tmsize_t ReadSome(thandle_t handle, void* buffer, tmsize_t size)
{
    Stream& stream = StreamOf(handle);
    const std::span block(static_cast<std::byte*>(buffer), static_cast<std::size_t>(size));
    const std::size_t read = stream.file->ReadAt(static_cast<std::int64_t>(stream.position), block);
    stream.position += read;
    return static_cast<tmsize_t>(read);
}

tmsize_t WriteSome(thandle_t handle, void* buffer, tmsize_t size)
{
    Stream& stream = StreamOf(handle);
    const std::span block(static_cast<const std::byte*>(buffer), static_cast<std::size_t>(size));
    const bool isPlaced = !stream.hasFailed && stream.file->Seek(static_cast<std::int64_t>(stream.position));
    const std::size_t written = isPlaced ? stream.file->Write(block) : 0;
    stream.position += written;
    stream.hasFailed = stream.hasFailed || written < block.size();
    return static_cast<tmsize_t>(written);
}

toff_t SeekTo(thandle_t handle, toff_t offset, int whence)
{
    Stream& stream = StreamOf(handle);
    const auto length = static_cast<std::uint64_t>(stream.file->Length());
    stream.position = offset + (whence == SEEK_CUR ? stream.position : whence == SEEK_END ? length : 0);
    return stream.position;
}

int KeepOpen(thandle_t /*handle*/)
{
    return 0;  // its owner closes it
}

toff_t LengthOf(thandle_t handle)
{
    return static_cast<toff_t>(StreamOf(handle).file->Length());
}

// What went wrong is seen by what the calls return, and told by the writer.
int TellNothing(TIFF* /*tiff*/, void* /*data*/, const char* /*module*/, const char* /*format*/, va_list /*values*/)
{
    return 1;
}

TIFF* OpenStream(const std::string& path, const char* mode, Stream& stream)
{
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                   TIFFOpenOptionsFree);
    if (!options) return nullptr;
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), TellNothing, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), TellNothing, nullptr);
    return TIFFClientOpenExt(path.c_str(), mode, &stream, ReadSome, WriteSome, SeekTo, KeepOpen, LengthOf, nullptr,
                             nullptr, options.get());
}

bool DescribePage(TIFF* tiff, const ExportDescription& description, const std::string& text)
{
    const auto columns = static_cast<std::uint32_t>(description.columns);
    const auto rows = static_cast<std::uint32_t>(description.rows);
    // NOLINTBEGIN(cppcoreguidelines-pro-type-vararg): libtiff's interface
    return TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, columns) && TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, rows) &&
           TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, description.isFloat ? 32 : 16) &&
           TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, description.isFloat ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_INT) &&
           TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1) && TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rows) &&
           TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE) &&
           TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK) &&
           TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
           TIFFSetField(tiff, TIFFTAG_SOFTWARE, description.provenance.program.c_str()) &&
           TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, text.c_str());
    // NOLINTEND(cppcoreguidelines-pro-type-vararg)
}

}  // namespace

TiffWriter::~TiffWriter()
{
    Close();
}

void TiffWriter::Close()
{
    if (tiff_ != nullptr) TIFFClose(tiff_);
    tiff_ = nullptr;
}

std::string TiffWriter::DescriptionOf(const ExportedFrame& frame) const
{
    const Provenance& provenance = description_.provenance;
    JsonText json;
    if (isFirst_) {
        json = ProvenanceJson(provenance, description_.columns, description_.rows, {});
        json.Member("bad_detector_places", BadPlacesJson(description_))
            .Member("outside_of_region", OutsideRunsJson(description_));
    } else {
        json.Text("form", WordOf(provenance.form)).Text("unit", provenance.unit).Member("scale", ScaleJson(provenance));
    }
    return json.Member("time", TimingJson(frame.timing)).Json();
}

ExportFailure TiffWriter::Begin(const ExportDescription& description)
{
    description_ = description;
    if (ExportFailure failure = BeginFile()) return failure;
    const auto pixelBytes = static_cast<std::int64_t>(description_.Pixels() * (description_.isFloat ? 4 : 2));
    const auto places =
        static_cast<std::int64_t>(BadPlacesJson(description_).size() + OutsideRunsJson(description_).size());
    const bool isBig = description_.frames * (pixelBytes + kBytesBesidePixels) + places > bigTiffFrom_;
    stream_.file = &Contents();
    tiff_ = OpenStream(Path(), isBig ? "wl8" : "wl", stream_);
    return DoneOr(tiff_ != nullptr);
}

ExportFailure TiffWriter::Add(const ExportedFrame& frame)
{
    const std::span<const std::byte> bytes = frame.Bytes();
    const std::string text = DescriptionOf(frame);
    isFirst_ = false;
    // libtiff takes the pixels without const, and leaves them as they are where no bytes are exchanged.
    void* const pixels = const_cast<std::byte*>(bytes.data());  // NOLINT(cppcoreguidelines-pro-type-const-cast)
    const bool isWritten = DescribePage(tiff_, description_, text) &&
                           TIFFWriteRawStrip(tiff_, 0, pixels, static_cast<tmsize_t>(bytes.size())) >= 0 &&
                           TIFFWriteDirectory(tiff_) && !stream_.hasFailed;
    return DoneOr(isWritten);
}

ExportFailure TiffWriter::End()
{
    Close();
    return stream_.hasFailed ? DoneOr(false) : Keep();
}

}  // namespace kelvo
