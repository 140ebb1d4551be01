#include "export/hdf5_writer.h"

#include "platform/text.h"

#include <hdf5.h>

#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <memory>

namespace kelvo {

namespace {

using Stream = Hdf5Writer::Stream;

constexpr int kFormat = 1;  // of our names and meanings

// --- The library's way to the file ----------------------------------------------------------------------------------

struct Driver {
    H5FD_t base;  // first: the library knows no more of it
    Stream* stream;
    haddr_t end;  // of what the library has given out
};

Driver& DriverOf(const H5FD_t* file)
{
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): the library's own way to hand it on
    return *reinterpret_cast<Driver*>(const_cast<H5FD_t*>(file));
}

H5FD_t* OpenDriver(const char* /*name*/, unsigned /*flags*/, hid_t access, haddr_t /*most*/)
{
    const auto* const stream = static_cast<Stream* const*>(H5Pget_driver_info(access));
    if (stream == nullptr) return nullptr;
    auto driver = std::make_unique<Driver>();
    driver->stream = *stream;
    return &driver.release()->base;
}

herr_t CloseDriver(H5FD_t* file)
{
    const std::unique_ptr<Driver> driver(&DriverOf(file));
    return 0;
}

int CompareDrivers(const H5FD_t* a, const H5FD_t* b)
{
    const Stream* const first = DriverOf(a).stream;
    const Stream* const second = DriverOf(b).stream;
    return first == second ? 0 : std::less<>()(first, second) ? -1 : 1;
}

herr_t TellFeatures(const H5FD_t* /*file*/, unsigned long* features)
{
    *features = H5FD_FEAT_AGGREGATE_METADATA | H5FD_FEAT_ACCUMULATE_METADATA | H5FD_FEAT_DATA_SIEVE |
                H5FD_FEAT_AGGREGATE_SMALLDATA;
    return 0;
}

haddr_t EndGivenOut(const H5FD_t* file, H5FD_mem_t /*type*/)
{
    return DriverOf(file).end;
}

herr_t SetEndGivenOut(H5FD_t* file, H5FD_mem_t /*type*/, haddr_t end)
{
    DriverOf(file).end = end;
    return 0;
}

haddr_t EndOfFile(const H5FD_t* file, H5FD_mem_t /*type*/)
{
    const Driver& driver = DriverOf(file);
    const auto length = static_cast<haddr_t>(driver.stream->file->Length());
    return driver.stream->hasFailed ? std::max(length, driver.end) : length;
}

// What was never written is zeros.
herr_t ReadBlock(H5FD_t* file, H5FD_mem_t /*type*/, hid_t /*transfer*/, haddr_t address, std::size_t size, void* buffer)
{
    const std::span block(static_cast<std::byte*>(buffer), size);
    const std::size_t read = DriverOf(file).stream->file->ReadAt(static_cast<std::int64_t>(address), block);
    std::ranges::fill(block.subspan(read), std::byte{0});
    return 0;
}

herr_t WriteBlock(H5FD_t* file, H5FD_mem_t /*type*/, hid_t /*transfer*/, haddr_t address, std::size_t size,
                  const void* buffer)
{
    Stream& stream = *DriverOf(file).stream;
    const std::span block(static_cast<const std::byte*>(buffer), size);
    const bool isWritten =
        !stream.hasFailed && stream.file->Seek(static_cast<std::int64_t>(address)) && stream.file->Write(block) == size;
    stream.hasFailed = !isWritten;
    return 0;
}

herr_t CutToEnd(H5FD_t* file, hid_t /*transfer*/, hbool_t /*closing*/)
{
    const Driver& driver = DriverOf(file);
    Stream& stream = *driver.stream;
    stream.hasFailed = stream.hasFailed || !stream.file->SetLength(static_cast<std::int64_t>(driver.end));
    return 0;
}

constexpr haddr_t kMostBytes = (haddr_t{1} << 63U) - 1;

hid_t RegisterDriver()
{
    // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): the library keeps its address
    static H5FD_class_t driver = [] {
        H5FD_class_t made{};
        made.name = "kelvo";
        made.maxaddr = kMostBytes;
        made.fc_degree = H5F_CLOSE_STRONG;
        made.fapl_size = sizeof(Stream*);
        made.open = OpenDriver;
        made.close = CloseDriver;
        made.cmp = CompareDrivers;
        made.query = TellFeatures;
        made.get_eoa = EndGivenOut;
        made.set_eoa = SetEndGivenOut;
        made.get_eof = EndOfFile;
        made.read = ReadBlock;
        made.write = WriteBlock;
        made.truncate = CutToEnd;
        constexpr std::array<H5FD_mem_t, H5FD_MEM_NTYPES> kMap = H5FD_FLMAP_DICHOTOMY;
        std::ranges::copy(kMap, std::begin(made.fl_map));
        return made;
    }();
    static const hid_t registered = H5FDregister(&driver);
    return registered;
}

// --- Its numbers, closed with their owner ---------------------------------------------------------------------------

class Handle {
  public:
    Handle(hid_t number, herr_t (*close)(hid_t)) : number_(number), close_(close) {}
    ~Handle()
    {
        if (number_ >= 0) close_(number_);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    operator hid_t() const { return number_; }  // NOLINT(google-explicit-constructor): it stands for the number

  private:
    hid_t number_;
    herr_t (*close_)(hid_t);
};

bool WriteText(hid_t owner, const char* name, const std::string& text)
{
    const Handle type(H5Tcopy(H5T_C_S1), H5Tclose);
    const Handle space(H5Screate(H5S_SCALAR), H5Sclose);
    if (H5Tset_size(type, H5T_VARIABLE) < 0 || H5Tset_cset(type, H5T_CSET_UTF8) < 0) return false;
    const Handle attribute(H5Acreate2(owner, name, type, space, H5P_DEFAULT, H5P_DEFAULT), H5Aclose);
    const char* const value = text.c_str();
    return H5Awrite(attribute, type, static_cast<const void*>(&value)) >= 0;
}

bool WriteWhole(hid_t owner, const char* name, int value)
{
    const Handle space(H5Screate(H5S_SCALAR), H5Sclose);
    const Handle attribute(H5Acreate2(owner, name, H5T_STD_I32LE, space, H5P_DEFAULT, H5P_DEFAULT), H5Aclose);
    return H5Awrite(attribute, H5T_NATIVE_INT, &value) >= 0;
}

bool WriteBlockOf(hid_t owner, const char* name, hid_t type, hid_t memoryType, std::span<const hsize_t> sides,
                  const void* values)
{
    const Handle space(H5Screate_simple(static_cast<int>(sides.size()), sides.data(), nullptr), H5Sclose);
    const Handle set(H5Dcreate2(owner, name, type, space, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT), H5Dclose);
    return H5Dwrite(set, memoryType, H5S_ALL, H5S_ALL, H5P_DEFAULT, values) >= 0;
}

}  // namespace

Hdf5Writer::~Hdf5Writer()
{
    Close();
}

void Hdf5Writer::Close()
{
    if (frames_ >= 0) H5Dclose(frames_);
    if (hdf_ >= 0) H5Fclose(hdf_);
    frames_ = -1;
    hdf_ = -1;
}

ExportFailure Hdf5Writer::Begin(const ExportDescription& description)
{
    description_ = description;
    if (ExportFailure failure = BeginFile()) return failure;
    // All is closed here, and what fails is told here.
    H5dont_atexit();
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
    stream_.file = &Contents();
    Stream* const stream = &stream_;
    const Handle access(H5Pcreate(H5P_FILE_ACCESS), H5Pclose);
    const bool isOpen = H5Pset_driver(access, RegisterDriver(), static_cast<const void*>(&stream)) >= 0 &&
                        (hdf_ = H5Fcreate(Path().c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, access)) >= 0 && MakeFrames() &&
                        WriteFacts() && !stream_.hasFailed;
    return DoneOr(isOpen);
}

bool Hdf5Writer::MakeFrames()
{
    const std::array<hsize_t, 3> sides{static_cast<hsize_t>(description_.frames), description_.rows,
                                       description_.columns};
    const std::array<hsize_t, 3> chunk{1, description_.rows, description_.columns};
    const Handle space(H5Screate_simple(3, sides.data(), nullptr), H5Sclose);
    const Handle layout(H5Pcreate(H5P_DATASET_CREATE), H5Pclose);
    if (H5Pset_chunk(layout, 3, chunk.data()) < 0 || H5Pset_fill_time(layout, H5D_FILL_TIME_NEVER) < 0) return false;
    frames_ = H5Dcreate2(hdf_, "frames", description_.isFloat ? H5T_IEEE_F32LE : H5T_STD_I16LE, space, H5P_DEFAULT,
                         layout, H5P_DEFAULT);
    return frames_ >= 0;
}

bool Hdf5Writer::WriteFacts()
{
    const Provenance& provenance = description_.provenance;
    const std::string unit = ToUtf8(provenance.unit);
    return WriteText(hdf_, "program", provenance.program) && WriteWhole(hdf_, "format", kFormat) &&
           WriteText(hdf_, "camera", ToUtf8(provenance.camera)) &&
           WriteText(hdf_, "form", std::string(WordOf(provenance.form))) &&
           WriteText(hdf_, "quantity", provenance.quantity) && WriteText(hdf_, "unit", unit) &&
           WriteText(hdf_, "pixels", provenance.pixels) && WriteText(hdf_, "calibration_set", ToUtf8(provenance.set)) &&
           WriteText(hdf_, "calibration_sha256", provenance.setSha256) && WriteText(frames_, "unit", unit);
}

ExportFailure Hdf5Writer::Add(const ExportedFrame& frame)
{
    const std::array<hsize_t, 3> place{timings_.size(), 0, 0};
    const std::span<const std::byte> bytes = frame.Bytes();
    timings_.push_back(frame.timing);
    const bool isWritten = H5Dwrite_chunk(frames_, H5P_DEFAULT, 0, place.data(), bytes.size(), bytes.data()) >= 0;
    return DoneOr(isWritten && !stream_.hasFailed);
}

bool Hdf5Writer::WriteTimings()
{
    const std::array<hsize_t, 1> sides{timings_.size()};
    const auto wholes = [&](const char* name, auto value) {
        std::vector<std::int64_t> values;
        values.reserve(timings_.size());
        for (const FrameTiming& timing : timings_) values.push_back(value(timing));
        return WriteBlockOf(hdf_, name, H5T_STD_I64LE, H5T_NATIVE_INT64, sides, values.data());
    };
    std::vector<double> seconds;
    std::vector<float> integrations;
    for (const FrameTiming& timing : timings_) {
        seconds.push_back(timing.seconds.value_or(std::numeric_limits<double>::quiet_NaN()));
        integrations.push_back(timing.integrationMs);
    }
    return wholes("index", [](const FrameTiming& timing) { return timing.index; }) &&
           wholes("number", [](const FrameTiming& timing) { return timing.number; }) &&
           wholes("utc_ns", [](const FrameTiming& timing) { return timing.utcNs; }) &&
           wholes("lost_by_board", [](const FrameTiming& timing) { return std::int64_t{timing.lostByBoard}; }) &&
           wholes("lost_by_ring", [](const FrameTiming& timing) { return std::int64_t{timing.lostByRing}; }) &&
           wholes("passed_over", [](const FrameTiming& timing) { return std::int64_t{timing.passedOver}; }) &&
           wholes("lost_by_transport",
                  [](const FrameTiming& timing) { return std::int64_t{timing.lostByTransport}; }) &&
           WriteBlockOf(hdf_, "seconds", H5T_IEEE_F64LE, H5T_NATIVE_DOUBLE, sides, seconds.data()) &&
           WriteBlockOf(hdf_, "integration_ms", H5T_IEEE_F32LE, H5T_NATIVE_FLOAT, sides, integrations.data());
}

bool Hdf5Writer::WriteMask(const char* name, const std::vector<std::uint8_t>& mask)
{
    if (mask.empty()) return true;
    const std::array<hsize_t, 2> sides{description_.rows, description_.columns};
    return WriteBlockOf(hdf_, name, H5T_STD_U8LE, H5T_NATIVE_UINT8, sides, mask.data());
}

ExportFailure Hdf5Writer::End()
{
    const std::array<hsize_t, 3> sides{timings_.size(), description_.rows, description_.columns};
    const std::string provenance =
        ProvenanceJson(description_.provenance, description_.columns, description_.rows, timings_).Json();
    const bool isWhole = H5Dset_extent(frames_, sides.data()) >= 0 && WriteText(hdf_, "provenance", provenance) &&
                         WriteTimings() && WriteMask("mask", description_.badDetectors) &&
                         WriteMask("outside", description_.outside);
    Close();
    return isWhole && !stream_.hasFailed ? Keep() : DoneOr(false);
}

}  // namespace kelvo
