#include "genicam/camera_list.h"

#include "genicam/glib_handles.h"
#include "genicam/pixel_format.h"
#include "platform/text.h"

#include <arv.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <span>
#include <tuple>

namespace kelvo {

namespace {

std::string TextOf(const char* text)
{
    return text ? text : "";
}

std::string TransportName(const std::string& protocol)
{
    if (protocol == "GigEVision") return "GigE Vision";
    if (protocol == "USB3Vision") return "USB3 Vision";
    return protocol;
}

FoundCamera CameraAt(unsigned index)
{
    return {.id = TextOf(arv_get_device_id(index)),
            .vendor = TextOf(arv_get_device_vendor(index)),
            .model = TextOf(arv_get_device_model(index)),
            .serial = TextOf(arv_get_device_serial_nbr(index)),
            .address = TextOf(arv_get_device_address(index)),
            .transport = TransportName(TextOf(arv_get_device_protocol(index)))};
}

// What the camera hasn't got stays unsaid.
std::optional<NumberRange> Bounds(ArvCamera* camera,
                                  void (*ask)(ArvCamera* camera, double* least, double* most, GError** error))
{
    Failure failure;
    NumberRange range;
    ask(camera, &range.least, &range.most, failure.Place());
    const bool sensible = !failure && range.least >= 0 && range.most > 0 && range.least <= range.most;
    return sensible ? std::optional(range) : std::nullopt;
}

std::optional<double> Number(ArvCamera* camera, double (*ask)(ArvCamera* camera, GError** error))
{
    Failure failure;
    const double number = ask(camera, failure.Place());
    return !failure && number > 0 ? std::optional(number) : std::nullopt;
}

// The largest frame, in its steps; where the bounds aren't told, the frame that is set.
void AskSize(ArvCamera* camera, CameraOffer& offer)
{
    Failure failure;
    gint least = 0;
    gint width = 0;
    gint height = 0;
    arv_camera_get_width_bounds(camera, &least, &width, failure.Place());
    const bool widthTold = !failure;
    arv_camera_get_height_bounds(camera, &least, &height, failure.Place());
    if (!widthTold || failure) {
        gint x = 0;
        gint y = 0;
        arv_camera_get_region(camera, &x, &y, &width, &height, failure.Place());
        if (failure) return;
    }
    offer.columns = width;
    offer.rows = height;
    const gint columnStep = arv_camera_get_width_increment(camera, failure.Place());
    if (!failure) offer.columnStep = std::max(columnStep, 1);
    const gint rowStep = arv_camera_get_height_increment(camera, failure.Place());
    if (!failure) offer.rowStep = std::max(rowStep, 1);
}

void AskFormats(ArvCamera* camera, CameraOffer& offer)
{
    Failure failure;
    offer.format = TextOf(arv_camera_get_pixel_format_as_string(camera, failure.Place()));
    guint count = 0;
    const std::unique_ptr<const char*, decltype(&g_free)> names(
        arv_camera_dup_available_pixel_formats_as_strings(camera, &count, failure.Place()), g_free);
    if (failure || !names) return;
    const std::span<const char* const> offered(names.get(), count);
    for (const PixelFormat& format : KnownPixelFormats()) {
        if (std::ranges::find(offered, format.name) != offered.end()) offer.formats.emplace_back(format.name);
    }
}

CameraOffer Ask(ArvCamera* camera)
{
    CameraOffer offer;
    AskSize(camera, offer);
    AskFormats(camera, offer);
    offer.ratesHz = Bounds(camera, arv_camera_get_frame_rate_bounds);
    offer.rateHz = Number(camera, arv_camera_get_frame_rate);
    offer.exposuresUs = Bounds(camera, arv_camera_get_exposure_time_bounds);
    offer.exposureUs = Number(camera, arv_camera_get_exposure_time);
    Failure failure;
    offer.frameBytes = arv_camera_get_payload(camera, failure.Place());
    if (failure) offer.frameBytes = 0;
    return offer;
}

// A GigE Vision camera obeys one program at a time and tells all others what it is. At USB it opens for one alone.
bool AnotherProgramHas(ArvCamera* camera)
{
    ArvDevice* const device = arv_camera_get_device(camera);
    return ARV_IS_GV_DEVICE(device) && arv_gv_device_is_controller(ARV_GV_DEVICE(device)) == 0;
}

// One frame, and the acquisition mode as it was.
std::optional<StillPicture> TakePicture(ArvCamera* camera, std::string& trouble)
{
    constexpr std::uint64_t kLongestWaitUs = 3000000;
    Failure failure;
    Failure ignored;
    const ArvAcquisitionMode mode = arv_camera_get_acquisition_mode(camera, ignored.Place());
    const bool modeTold = !ignored;
    const ObjectHold<ArvBuffer> buffer(arv_camera_acquisition(camera, kLongestWaitUs, failure.Place()));
    if (modeTold) arv_camera_set_acquisition_mode(camera, mode, ignored.Place());
    if (!buffer) {
        trouble = "No picture came: " +
                  (failure ? failure.Text() : std::string("the camera sent none; does it wait for a trigger?"));
        return std::nullopt;
    }
    if (arv_buffer_get_status(buffer.get()) != ARV_BUFFER_STATUS_SUCCESS) {
        trouble = "The picture didn't arrive whole: packets get lost.";
        return std::nullopt;
    }
    const auto code = static_cast<std::uint32_t>(arv_buffer_get_image_pixel_format(buffer.get()));
    const std::optional<PixelFormat> format = PixelFormatOf(code);
    if (!format) {
        trouble = Format("Kelvo doesn't take the format that the camera stands at (0x%08x).", code);
        return std::nullopt;
    }
    std::size_t size = 0;
    const auto* const data = static_cast<const std::uint8_t*>(arv_buffer_get_data(buffer.get(), &size));
    auto picture = MakeStillPicture({data, size}, *format, arv_buffer_get_image_width(buffer.get()),
                                    arv_buffer_get_image_height(buffer.get()));
    if (!picture) trouble = "The picture has fewer pixels than the camera says.";
    return picture;
}

}  // namespace

std::vector<FoundCamera> FindCameras()
{
    // A lost camera is looked for by a thread of its own, and the library's list is one.
    static std::mutex turn;
    const std::scoped_lock lock(turn);
    arv_update_device_list();
    std::vector<FoundCamera> cameras;
    for (unsigned i = 0; i < arv_get_n_devices(); ++i) cameras.push_back(CameraAt(i));
    std::ranges::sort(cameras, {}, [](const FoundCamera& camera) {
        return std::tie(camera.vendor, camera.model, camera.serial, camera.address);
    });
    return cameras;
}

CameraAnswer AskFoundCamera(const FoundCamera& found)
{
    CameraAnswer answer;
    Failure failure;
    const ObjectHold<ArvCamera> camera(arv_camera_new(found.id.c_str(), failure.Place()));
    if (!camera) {
        answer.trouble = "It can't be opened: " + failure.Text();
        return answer;
    }
    answer.offer = Ask(camera.get());
    if (AnotherProgramHas(camera.get())) {
        answer.trouble = "Another program has the camera: no picture can be had.";
        return answer;
    }
    answer.picture = TakePicture(camera.get(), answer.trouble);
    return answer;
}

std::string CameraLine(const FoundCamera& camera)
{
    std::string line = camera.vendor + " " + camera.model;
    for (const std::string& part : {camera.serial, camera.address}) {
        if (!part.empty()) line += ", " + part;
    }
    return line;
}

std::string HeadName(const FoundCamera& camera)
{
    return camera.serial.empty() ? camera.address : camera.serial;
}

}  // namespace kelvo
