#include "genicam/aravis_camera.h"

#include "genicam/camera_list.h"
#include "genicam/glib_handles.h"
#include "genicam/network_check.h"
#include "platform/text.h"

#include <arv.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <utility>

namespace kelvo {

namespace {

bool HasFeature(ArvDevice* device, const std::string& name)
{
    Failure failure;
    return arv_device_get_feature(device, name.c_str()) != nullptr &&
           arv_device_is_feature_available(device, name.c_str(), failure.Place()) && !failure;
}

std::optional<double> ReadNumber(ArvDevice* device, const std::string& name, FeatureKind kind)
{
    Failure failure;
    double value = 0;
    if (kind == FeatureKind::kReal) {
        value = arv_device_get_float_feature_value(device, name.c_str(), failure.Place());
    } else if (kind == FeatureKind::kWhole) {
        value = static_cast<double>(arv_device_get_integer_feature_value(device, name.c_str(), failure.Place()));
    } else if (kind == FeatureKind::kSwitch) {
        value = arv_device_get_boolean_feature_value(device, name.c_str(), failure.Place()) ? 1 : 0;
    } else {
        return std::nullopt;
    }
    return failure ? std::nullopt : std::optional(value);
}

std::optional<FeatureRange> RangeOf(ArvDevice* device, const std::string& name, FeatureKind kind)
{
    Failure failure;
    FeatureRange range;
    if (kind == FeatureKind::kReal) {
        arv_device_get_float_feature_bounds(device, name.c_str(), &range.lowest, &range.highest, failure.Place());
    } else if (kind == FeatureKind::kWhole) {
        gint64 lowest = 0;
        gint64 highest = 0;
        arv_device_get_integer_feature_bounds(device, name.c_str(), &lowest, &highest, failure.Place());
        range = {.lowest = static_cast<double>(lowest), .highest = static_cast<double>(highest)};
    } else {
        return std::nullopt;
    }
    return failure ? std::nullopt : std::optional(range);
}

bool WriteNumber(ArvDevice* device, const std::string& name, FeatureKind kind, double value)
{
    Failure failure;
    if (kind == FeatureKind::kReal) {
        arv_device_set_float_feature_value(device, name.c_str(), value, failure.Place());
    } else if (kind == FeatureKind::kWhole) {
        arv_device_set_integer_feature_value(device, name.c_str(), std::llround(value), failure.Place());
    } else if (kind == FeatureKind::kSwitch) {
        arv_device_set_boolean_feature_value(device, name.c_str(), value != 0, failure.Place());
    } else {
        return false;
    }
    return !failure;
}

std::optional<std::string> ReadText(ArvDevice* device, const std::string& name)
{
    Failure failure;
    const char* const text = arv_device_get_string_feature_value(device, name.c_str(), failure.Place());
    if (failure || !text) return std::nullopt;
    return text;
}

bool WriteText(ArvDevice* device, const std::string& name, const std::string& value)
{
    Failure failure;
    arv_device_set_string_feature_value(device, name.c_str(), value.c_str(), failure.Place());
    return !failure;
}

std::vector<std::string> ChoicesOf(ArvDevice* device, const std::string& name)
{
    Failure failure;
    guint count = 0;
    const char** const names =
        arv_device_dup_available_enumeration_feature_values_as_strings(device, name.c_str(), &count, failure.Place());
    if (!names) return {};
    std::vector<std::string> choices(names, names + count);
    g_free(static_cast<void*>(names));
    return choices;
}

bool Execute(ArvDevice* device, const std::string& name)
{
    Failure failure;
    arv_device_execute_command(device, name.c_str(), failure.Place());
    return !failure;
}

FeatureAccess AccessTo(ArvDevice* device)
{
    return {.has = [device](const std::string& name) { return HasFeature(device, name); },
            .read = [device](const std::string& name, FeatureKind kind) { return ReadNumber(device, name, kind); },
            .range = [device](const std::string& name, FeatureKind kind) { return RangeOf(device, name, kind); },
            .write = [device](const std::string& name, FeatureKind kind,
                              double value) { return WriteNumber(device, name, kind, value); },
            .readText = [device](const std::string& name) { return ReadText(device, name); },
            .writeText = [device](const std::string& name,
                                  const std::string& value) { return WriteText(device, name, value); },
            .choices = [device](const std::string& name) { return ChoicesOf(device, name); },
            .execute = [device](const std::string& name) { return Execute(device, name); }};
}

class AravisCamera final : public CameraDevice {
  public:
    explicit AravisCamera(ObjectHold<ArvCamera> camera)
        : camera_(std::move(camera)), device_(arv_camera_get_device(camera_.get())), features_(AccessTo(device_))
    {
        control_ = g_signal_connect(device_, "control-lost", G_CALLBACK(NoteControlLost), &controlIsLost_);
    }
    ~AravisCamera() override
    {
        AravisCamera::EndStream();
        g_signal_handler_disconnect(device_, control_);
    }
    AravisCamera(const AravisCamera&) = delete;
    AravisCamera& operator=(const AravisCamera&) = delete;

    // With the settings that hold for the camera itself; false, with why in error, where it can't be used.
    bool SetUp(const DeviceSettings& settings, std::string& error)
    {
        Failure failure;
        arv_camera_set_acquisition_mode(camera_.get(), ARV_ACQUISITION_MODE_CONTINUOUS, failure.Place());
        isGigE_ = arv_camera_is_gv_device(camera_.get()) != FALSE;
        if (isGigE_ && !IsController()) {
            error = "Another program holds the camera.";
            return false;
        }
        if (isGigE_) ChoosePacketSize(settings.packetSize);
        ChooseSize(settings.columns, settings.rows);
        buffers_ = std::clamp(settings.buffers, kLeastBuffers, kMostBuffers);
        return ChooseFormat(settings.format, error) && ReadShape(error);
    }

    const FeatureAccess& Features() override { return features_; }
    CameraShape Shape() const override { return shape_; }
    std::int32_t PacketSize() const override
    {
        if (!isGigE_) return 0;
        Failure failure;
        const auto bytes = static_cast<std::int32_t>(arv_camera_gv_get_packet_size(camera_.get(), failure.Place()));
        return failure ? 0 : bytes;
    }

    bool BeginStream(std::string& error) override
    {
        EndStream();
        if (!ReadShape(error)) return false;
        Failure failure;
        stream_.reset(arv_camera_create_stream(camera_.get(), nullptr, nullptr, failure.Place()));
        if (!stream_) {
            error = "The camera's stream can't be opened: " + failure.Text();
            return false;
        }
        const std::size_t payload = arv_camera_get_payload(camera_.get(), failure.Place());
        if (isGigE_) AskForReceiveBuffer(payload);
        for (int i = 0; i < buffers_ && !failure; ++i) {
            arv_stream_push_buffer(stream_.get(), arv_buffer_new_allocate(payload));
        }
        arv_camera_start_acquisition(camera_.get(), failure.Place());
        if (!failure) return true;
        error = "The camera's stream doesn't begin: " + failure.Text();
        EndStream();
        return false;
    }

    void EndStream() override
    {
        if (!stream_) return;
        Failure failure;
        if (!IsLost()) arv_camera_stop_acquisition(camera_.get(), failure.Place());
        stream_.reset();
    }

    std::optional<ReceiveBuffer> StreamBuffer() const override
    {
        if (!stream_ || !isGigE_) return std::nullopt;
        const std::int64_t granted = ReceiveBufferOfPort(arv_gv_stream_get_port(GigEStream()));
        return granted > 0 ? std::optional(ReceiveBuffer{.asked = askedBytes_, .granted = granted}) : std::nullopt;
    }

    std::optional<CameraBuffer> WaitForBuffer(std::int64_t limitUs) override
    {
        ArvBuffer* const buffer = limitUs > 0
                                      ? arv_stream_timeout_pop_buffer(stream_.get(), static_cast<guint64>(limitUs))
                                      : arv_stream_try_pop_buffer(stream_.get());
        if (!buffer) return std::nullopt;
        CameraBuffer taken;
        taken.keeper = std::shared_ptr<void>(buffer, ReleaseObject());
        std::size_t bytes = 0;
        const auto* const data = static_cast<const std::uint8_t*>(arv_buffer_get_data(buffer, &bytes));
        taken.bytes = {data, data ? bytes : 0};
        taken.number = arv_buffer_get_frame_id(buffer);
        taken.isWhole = IsWhole(buffer, bytes);
        taken.deviceNs = static_cast<std::int64_t>(arv_buffer_get_timestamp(buffer));
        taken.systemUtcNs = static_cast<std::int64_t>(arv_buffer_get_system_timestamp(buffer));
        return taken;
    }

    void GiveBack(CameraBuffer buffer) override
    {
        if (!stream_ || !buffer.keeper) return;
        arv_stream_push_buffer(stream_.get(), static_cast<ArvBuffer*>(g_object_ref(buffer.keeper.get())));
    }

    bool IsLost() const override { return controlIsLost_; }

    bool Answers() override
    {
        Failure failure;
        std::int32_t columns = 0;
        arv_camera_get_region(camera_.get(), nullptr, nullptr, &columns, nullptr, failure.Place());
        if (failure || !(isGigE_ ? IsController() : true)) controlIsLost_ = true;
        return !controlIsLost_;
    }

  private:
    static constexpr std::int32_t kLeastBuffers = 24;  // what waits to be read, and a few to be filled
    static constexpr std::int32_t kMostBuffers = 512;

    static void NoteControlLost(ArvDevice* /*device*/, std::atomic<bool>* isLost) { *isLost = true; }

    bool IsController() const { return arv_gv_device_is_controller(reinterpret_cast<ArvGvDevice*>(device_)) != FALSE; }

    ArvGvStream* GigEStream() const { return reinterpret_cast<ArvGvStream*>(stream_.get()); }

    // A frame of that size stays where it is. Another is set as far as the camera goes, in its steps.
    void ChooseSize(std::int32_t columns, std::int32_t rows)
    {
        Failure failure;
        gint x = 0;
        gint y = 0;
        gint width = 0;
        gint height = 0;
        arv_camera_get_region(camera_.get(), &x, &y, &width, &height, failure.Place());
        if (columns <= 0 || rows <= 0 || failure || (columns == width && rows == height)) return;
        // The bounds are those beside the offset: it goes first.
        constexpr gint kAsItIs = -1;
        arv_camera_set_region(camera_.get(), 0, 0, kAsItIs, kAsItIs, failure.Place());
        const auto within = [&](std::int32_t wanted, auto bounds, auto increment) {
            gint least = 0;
            gint most = 0;
            bounds(camera_.get(), &least, &most, failure.Place());
            if (failure || most < least) return kAsItIs;
            const gint side = std::clamp(wanted, least, most);
            const gint step = increment(camera_.get(), failure.Place());
            return failure || step < 1 ? side : side - (side - least) % step;
        };
        width = within(columns, arv_camera_get_width_bounds, arv_camera_get_width_increment);
        height = within(rows, arv_camera_get_height_bounds, arv_camera_get_height_increment);
        arv_camera_set_region(camera_.get(), kAsItIs, kAsItIs, width, height, failure.Place());
    }

    // 0: the largest that the way lets through, tried before the stream begins; a camera that can't be tried keeps its
    // own. The library tries others than a given one where that one doesn't come through: the operator's stays.
    void ChoosePacketSize(std::int32_t bytes)
    {
        Failure failure;
        arv_camera_gv_set_packet_size_adjustment(
            camera_.get(), bytes > 0 ? ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER : ARV_GV_PACKET_SIZE_ADJUSTMENT_ONCE);
        if (bytes > 0) arv_camera_gv_set_packet_size(camera_.get(), bytes, failure.Place());
    }

    // Left alone, the library has the system's least one, whatever the system would grant.
    void AskForReceiveBuffer(std::size_t frameBytes)
    {
        constexpr std::int64_t kMostBytes = std::int64_t{1} << 30;
        askedBytes_ = std::min(kFramesOfReceiveBuffer * static_cast<std::int64_t>(frameBytes), kMostBytes);
        g_object_set(stream_.get(), "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size",
                     static_cast<gint>(askedBytes_), nullptr);
    }

    // The format that is wished, or the camera's own; where that isn't monochrome, the first one that is.
    bool ChooseFormat(const std::string& wished, std::string& error)
    {
        const std::vector<std::string> choices = ChoicesOf(device_, "PixelFormat");
        const auto offers = [&choices](std::string_view name) {
            return std::ranges::find(choices, name) != choices.end();
        };
        if (!wished.empty() && offers(wished) && WriteText(device_, "PixelFormat", wished)) return true;
        if (CurrentFormat()) return true;
        for (const PixelFormat& format : KnownPixelFormats()) {
            if (offers(format.name) && WriteText(device_, "PixelFormat", std::string(format.name))) return true;
        }
        error = "The camera has no monochrome format of 8 to 16 bits.";
        return false;
    }

    std::optional<PixelFormat> CurrentFormat() const
    {
        Failure failure;
        const ArvPixelFormat code = arv_camera_get_pixel_format(camera_.get(), failure.Place());
        return failure ? std::nullopt : PixelFormatOf(static_cast<std::uint32_t>(code));
    }

    bool ReadShape(std::string& error)
    {
        Failure failure;
        const std::optional<PixelFormat> format = CurrentFormat();
        std::int32_t left = 0;
        std::int32_t top = 0;
        arv_camera_get_region(camera_.get(), &left, &top, &shape_.columns, &shape_.rows, failure.Place());
        if (!format || failure || shape_.columns <= 0 || shape_.rows <= 0) {
            error = "The camera doesn't tell the size and format of its frames: " + failure.Text();
            return false;
        }
        shape_.format = *format;
        const bool longNumbers = ReadText(device_, "GevGVSPExtendedIDMode") == "On";
        shape_.numbering = !isGigE_ || longNumbers ? FrameNumbering::k64Bits : FrameNumbering::k16Bits;
        return true;
    }

    bool IsWhole(ArvBuffer* buffer, std::size_t bytes) const
    {
        if (arv_buffer_get_status(buffer) != ARV_BUFFER_STATUS_SUCCESS) return false;
        if (arv_buffer_get_payload_type(buffer) != ARV_BUFFER_PAYLOAD_TYPE_IMAGE) return false;
        const auto pixels = static_cast<std::size_t>(shape_.columns) * static_cast<std::size_t>(shape_.rows);
        return arv_buffer_get_image_width(buffer) == shape_.columns &&
               arv_buffer_get_image_height(buffer) == shape_.rows &&
               static_cast<std::uint32_t>(arv_buffer_get_image_pixel_format(buffer)) == shape_.format.code &&
               bytes >= BytesOfPixels(shape_.format, pixels);
    }

    std::atomic<bool> controlIsLost_ = false;
    ObjectHold<ArvCamera> camera_;
    ArvDevice* device_;  // the camera's
    gulong control_ = 0;
    FeatureAccess features_;
    bool isGigE_ = false;
    std::int32_t buffers_ = 0;
    std::int64_t askedBytes_ = 0;  // for the receive buffer
    CameraShape shape_;
    ObjectHold<ArvStream> stream_;
};

// The library opens by its own names and by addresses, which it knows without a search. A serial number has to be
// looked up among the cameras that are there.
std::string NameOfSerial(const std::string& device)
{
    const bool isAddress = !device.empty() && device.find_first_not_of("0123456789.") == std::string::npos &&
                           std::ranges::count(device, '.') == 3;
    if (device.empty() || isAddress) return device;
    const std::vector<FoundCamera> found = FindCameras();
    const auto camera = std::ranges::find(found, device, &FoundCamera::serial);
    return camera == found.end() ? device : camera->id;
}

}  // namespace

std::unique_ptr<CameraDevice> OpenAravisCamera(const std::string& device, const DeviceSettings& settings,
                                               std::string& error)
{
    Failure failure;
    const std::string name = NameOfSerial(device);
    ObjectHold<ArvCamera> camera(arv_camera_new(name.empty() ? nullptr : name.c_str(), failure.Place()));
    if (!camera) {
        error = device.empty() ? "No camera was found." : "No camera " + device + " was found.";
        if (failure) error += ' ' + failure.Text();
        return nullptr;
    }
    auto opened = std::make_unique<AravisCamera>(std::move(camera));
    if (!opened->SetUp(settings, error)) return nullptr;
    return opened;
}

}  // namespace kelvo
