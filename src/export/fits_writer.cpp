#include "export/fits_writer.h"

#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/text.h"

#include <fitsio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace kelvo {

namespace {

constexpr std::size_t kBlock = 2880;  // of which all FITS files consist
constexpr std::size_t kCard = 80;
constexpr std::size_t kTextOfCard = 60;    // of HISTORY and the like, cautiously
constexpr std::size_t kCardsBeside = 120;  // keywords that are written later
constexpr double kMsPerSecond = 1000.0;

fitsfile* Of(void* fits)
{
    return static_cast<fitsfile*>(fits);
}

// Headers hold printable ASCII; of other characters a question mark stands for each byte.
std::string Ascii(std::string text)
{
    std::ranges::replace_if(
        text, [](char c) { return c < ' ' || c > '~'; }, '?');
    return text;
}

std::string Card(std::string text)
{
    text.resize(kCard, ' ');
    return text;
}

// The cube's own head with room for what comes into it, blank cards, so that no pixel has to move afterwards. cfitsio
// opens a file that begins like this, and has no way to begin one in a file that is open already.
std::string FirstHead(const ExportDescription& description, std::size_t linesToCome)
{
    const auto fixed = [](const char* key, long long value) { return Card(Format("%-8s= %20lld", key, value)); };
    std::string head = Card(Format("%-8s= %20s / FITS Standard 4.0", "SIMPLE", "T"));
    head += fixed("BITPIX", description.isFloat ? FLOAT_IMG : SHORT_IMG) + fixed("NAXIS", 3);
    head += fixed("NAXIS1", static_cast<long long>(description.columns));
    head += fixed("NAXIS2", static_cast<long long>(description.rows));
    head += fixed("NAXIS3", description.frames);
    head += Card(Format("%-8s= %20s", "EXTEND", "T"));
    const std::size_t bytes = head.size() + (linesToCome + kCardsBeside + 1) * kCard;
    head.resize((bytes + kBlock - 1) / kBlock * kBlock - kCard, ' ');
    return head + Card("END");
}

// cfitsio takes values by pointer, texts without const.
class Keys {
  public:
    Keys(fitsfile* fits, int& status) : fits_(fits), status_(status) {}
    Keys& Text(const char* key, const std::string& value, const char* comment)
    {
        const std::string ascii = Ascii(value);
        if (!value.empty()) fits_update_key_str(fits_, key, ascii.c_str(), comment, &status_);
        return *this;
    }
    Keys& Whole(const char* key, std::int64_t value, const char* comment)
    {
        fits_update_key_lng(fits_, key, value, comment, &status_);
        return *this;
    }
    // The shortest text that reads back to the same; none where it is no number.
    Keys& Number(const char* key, double value, const char* comment)
    {
        if (std::isfinite(value)) fits_update_key_dbl(fits_, key, value, -15, comment, &status_);
        return *this;
    }

  private:
    fitsfile* fits_;
    int& status_;
};

// Without its Z: the zone is TIMESYS's.
std::string WithoutZone(std::string utc)
{
    if (!utc.empty()) utc.pop_back();
    return utc;
}

}  // namespace

FitsWriter::~FitsWriter()
{
    Close();
}

void FitsWriter::Close()
{
    int status = 0;
    if (fits_ != nullptr) fits_close_file(Of(fits_), &status);
    fits_ = nullptr;
}

// A last write that the disk refuses isn't told by cfitsio, which leaves it to buffers: the file is short then.
bool FitsWriter::CloseWhole()
{
    LONGLONG end = 0;
    fits_get_hduaddrll(Of(fits_), nullptr, nullptr, &end, &status_);
    Close();
    return status_ == 0 && Contents().Length() == end;
}

ExportFailure FitsWriter::GoneWell(bool isDone) const
{
    // What cfitsio writes asks the machine here, as File does at each write.
    const bool isRefused = FaultIsSet("disk");
    return DoneOr(isDone && status_ == 0 && !isRefused);
}

ExportFailure FitsWriter::Begin(const ExportDescription& description)
{
    description_ = description;
    if (ExportFailure failure = BeginFile()) return failure;
    std::size_t lines = 0;
    for (const std::string& line : ProvenanceLines(description_.provenance, {})) lines += line.size() / kTextOfCard + 1;
    const std::string head = FirstHead(description_, lines);
    if (Contents().Write(std::as_bytes(std::span(head))) != head.size()) return DoneOr(false);
    fitsfile* fits = nullptr;
    fits_open_diskfile(&fits, NewFile::NameBeside(Path()).c_str(), READWRITE, &status_);
    fits_ = fits;
    return GoneWell(status_ == 0 && WriteHead());
}

bool FitsWriter::WriteHistory(const std::string& line)
{
    fits_write_history(Of(fits_), Ascii(line).c_str(), &status_);
    return status_ == 0;
}

bool FitsWriter::WriteHead()
{
    const Provenance& provenance = description_.provenance;
    const ImageHeaderRecord& header = provenance.header;
    Keys keys(Of(fits_), status_);
    keys.Text("CREATOR", provenance.program, "that wrote this file")
        .Text("INSTRUME", provenance.camera, "camera")
        .Text("OBJECT", provenance.sample, "sample")
        .Text("BUNIT", AsciiUnit(provenance.form), "unit of the pixels")
        .Text("FORM", std::string(WordOf(provenance.form)), "what was done to the counts")
        .Text("ROWORDER", "TOP-DOWN", "the first row is the picture's upper one")
        .Text("PIXELS", provenance.pixels, "raw: in readout order")
        .Text("LOCTIME", LocalTimeText(header), "local time of the source's header")
        .Text("CALSHA", provenance.setSha256, "")
        .Number("EXPTIME", static_cast<double>(header.IntegrationMsec) / kMsPerSecond,
                "[s] integration time of a frame")
        .Number("FRATE", static_cast<double>(header.FrameRate), "[Hz] frame rate")
        .Whole("LEFT", provenance.left, "column of the source at NAXIS1 = 1, from 0")
        .Whole("TOP", provenance.top, "row of the source at NAXIS2 = 1, from 0")
        .Whole("NAVERAGE", header.FramesAveraged, "frames averaged")
        .Whole("VGAIN1", header.VideoGain1, "video gain")
        .Whole("VOFFSET1", header.VideoOffset1, "video offset")
        .Whole("VGAIN2", header.VideoGain2, "")
        .Whole("VOFFSET2", header.VideoOffset2, "");
    if (provenance.scale) {
        const ScalePoint& low = provenance.scale->front();
        const ScalePoint& high = provenance.scale->back();
        keys.Whole("COUNTLO", low.count, "counts that VALUELO stands for")
            .Number("VALUELO", static_cast<double>(low.value), "in BUNIT")
            .Whole("COUNTHI", high.count, "counts that VALUEHI stands for")
            .Number("VALUEHI", static_cast<double>(high.value), "in BUNIT");
    }
    for (const std::string& line : ProvenanceLines(provenance, {})) WriteHistory(line);
    fits_write_date(Of(fits_), &status_);
    return status_ == 0;
}

bool FitsWriter::WriteWhen(const FrameTiming& first)
{
    const std::optional<std::int64_t> start = first.StartUtcNs();
    if (!start) return true;
    Keys(Of(fits_), status_)
        .Text("TIMESYS", "UTC", "")
        .Text("DATE-OBS", WithoutZone(UtcText(*start)), "start of the first frame's exposure");
    return status_ == 0;
}

ExportFailure FitsWriter::Add(const ExportedFrame& frame)
{
    if (timings_.empty() && !WriteWhen(frame.timing)) return GoneWell(false);
    const auto pixels = static_cast<LONGLONG>(description_.Pixels());
    const LONGLONG first = std::ssize(timings_) * pixels + 1;
    timings_.push_back(frame.timing);
    // cfitsio takes the pixels without const, and leaves them as they are.
    void* const bytes = const_cast<std::byte*>(frame.Bytes().data());  // NOLINT(cppcoreguidelines-pro-type-const-cast)
    fits_write_img(Of(fits_), description_.isFloat ? TFLOAT : TSHORT, first, pixels, bytes, &status_);
    return GoneWell(true);
}

// Of an export that was stopped: the cube is the file's last part yet.
bool FitsWriter::CutToFrames()
{
    if (std::ssize(timings_) == description_.frames) return true;
    fits_update_key_lng(Of(fits_), "NAXIS3", std::ssize(timings_), nullptr, &status_);
    fits_set_hdustruc(Of(fits_), &status_);
    return status_ == 0;
}

bool FitsWriter::WriteTable()
{
    struct Column {
        const char* name;
        const char* form;
        const char* unit;
    };
    constexpr std::array<Column, 10> kColumns = {{{"INDEX", "1K", ""},
                                                  {"NUMBER", "1K", ""},
                                                  {"SECONDS", "1D", "s"},
                                                  {"UTC", "30A", ""},
                                                  {"UTC_START", "30A", ""},
                                                  {"EXPOSURE", "1E", "ms"},
                                                  {"LOSTBYBOARD", "1K", ""},
                                                  {"LOSTBYRING", "1K", ""},
                                                  {"PASSEDOVER", "1K", ""},
                                                  {"LOSTBYTRANSPORT", "1K", ""}}};
    std::array<char*, kColumns.size()> names{};
    std::array<char*, kColumns.size()> forms{};
    std::array<char*, kColumns.size()> units{};
    for (std::size_t i = 0; i < kColumns.size(); ++i) {
        // NOLINTBEGIN(cppcoreguidelines-pro-type-const-cast): cfitsio reads them only
        names.at(i) = const_cast<char*>(kColumns.at(i).name);
        forms.at(i) = const_cast<char*>(kColumns.at(i).form);
        units.at(i) = const_cast<char*>(kColumns.at(i).unit);
        // NOLINTEND(cppcoreguidelines-pro-type-const-cast)
    }
    fitsfile* const fits = Of(fits_);
    fits_create_tbl(fits, BINARY_TBL, 0, static_cast<int>(kColumns.size()), names.data(), forms.data(), units.data(),
                    "FRAMES", &status_);
    fits_write_key_lng(fits, "TNULL2", -1, "not known", &status_);
    fits_set_hdustruc(fits, &status_);

    const auto rows = static_cast<LONGLONG>(timings_.size());
    const auto wholes = [&](int column, auto value) {
        std::vector<LONGLONG> values;
        values.reserve(timings_.size());
        for (const FrameTiming& timing : timings_) values.push_back(static_cast<LONGLONG>(value(timing)));
        fits_write_col(fits, TLONGLONG, column, 1, 1, rows, values.data(), &status_);
    };
    const auto texts = [&](int column, auto value) {
        std::vector<std::string> values;
        std::vector<char*> pointers;
        values.reserve(timings_.size());
        pointers.reserve(timings_.size());
        for (const FrameTiming& timing : timings_) values.push_back(value(timing));
        for (std::string& each : values) pointers.push_back(each.data());
        fits_write_col(fits, TSTRING, column, 1, 1, rows, pointers.data(), &status_);
    };
    std::vector<double> seconds;
    std::vector<float> exposures;
    for (const FrameTiming& timing : timings_) {
        seconds.push_back(timing.seconds.value_or(std::numeric_limits<double>::quiet_NaN()));
        exposures.push_back(timing.integrationMs);
    }
    wholes(1, [](const FrameTiming& timing) { return timing.index; });
    wholes(2, [](const FrameTiming& timing) { return timing.number; });
    fits_write_col(fits, TDOUBLE, 3, 1, 1, rows, seconds.data(), &status_);
    texts(4, [](const FrameTiming& timing) { return UtcText(timing.utcNs); });
    texts(5, [](const FrameTiming& timing) { return UtcText(timing.StartUtcNs().value_or(0)); });
    fits_write_col(fits, TFLOAT, 6, 1, 1, rows, exposures.data(), &status_);
    wholes(7, [](const FrameTiming& timing) { return timing.lostByBoard; });
    wholes(8, [](const FrameTiming& timing) { return timing.lostByRing; });
    wholes(9, [](const FrameTiming& timing) { return timing.passedOver; });
    wholes(10, [](const FrameTiming& timing) { return timing.lostByTransport; });
    fits_write_chksum(fits, &status_);
    return status_ == 0;
}

bool FitsWriter::WriteMask(const char* name, const char* comment, std::vector<std::uint8_t>& mask)
{
    if (mask.empty()) return true;
    std::array<LONGLONG, 2> sides{static_cast<LONGLONG>(description_.columns),
                                  static_cast<LONGLONG>(description_.rows)};
    fits_create_imgll(Of(fits_), BYTE_IMG, 2, sides.data(), &status_);
    Keys(Of(fits_), status_)
        .Text("EXTNAME", name, comment)
        .Text("ROWORDER", "TOP-DOWN", "the first row is the picture's upper one");
    fits_write_img(Of(fits_), TBYTE, 1, static_cast<LONGLONG>(description_.Pixels()), mask.data(), &status_);
    fits_write_chksum(Of(fits_), &status_);
    return status_ == 0;
}

ExportFailure FitsWriter::End()
{
    bool isWhole = CutToFrames();
    if (isWhole) {
        const std::vector<FrameGap> gaps = GapsOfTimings(timings_);
        std::int64_t missing = 0;
        for (const FrameGap& gap : gaps) missing += gap.Missing();
        Keys(Of(fits_), status_)
            .Whole("NGAPS", std::ssize(gaps), "places where frames are missing")
            .Whole("NMISSING", missing, "frames that are missing there");
        fits_write_chksum(Of(fits_), &status_);
        isWhole = status_ == 0 && WriteTable() && WriteMask("MASK", "1: a bad detector", description_.badDetectors) &&
                  WriteMask("OUTSIDE", "1: outside of the region", description_.outside);
    }
    if (ExportFailure failure = GoneWell(isWhole && CloseWhole())) return failure;
    return Keep();
}

}  // namespace kelvo
