// What a camera's transport is for the link that keeps it (genicam/shared_camera.h): features to set, and a stream of
// buffers. Each camera is one object from its opening to its loss; a camera that comes back is another one.
#pragma once

#include "genicam/feature_table.h"
#include "genicam/frame_order.h"
#include "genicam/pixel_format.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

// What the operator chose for one camera; the defaults leave the choice to camera and transport.
struct DeviceSettings {
    std::string format{};               // name of a pixel format; empty: the one that the camera has
    std::int32_t packetSize = 0;        // bytes with all heads (GigE Vision); 0: the largest that comes through
    std::int32_t columns = 0;           // of a frame, from the upper left corner; one of that size stays where it is
    std::int32_t rows = 0;              // 0 of either: as the camera stands
    std::int32_t buffers = 32;          // of a frame each, for the stream and for what waits
    std::optional<CountRule> counts{};  // nullopt: DefaultCountRule of the format
    friend bool operator==(const DeviceSettings&, const DeviceSettings&) = default;
};

// A frame as the camera sends it.
struct CameraShape {
    std::int32_t columns = 0;
    std::int32_t rows = 0;
    PixelFormat format;
    FrameNumbering numbering = FrameNumbering::k16Bits;
};

// Where the system keeps a stream's packets until they are read, in bytes.
struct ReceiveBuffer {
    std::int64_t asked = 0;
    std::int64_t granted = 0;
    friend bool operator==(const ReceiveBuffer&, const ReceiveBuffer&) = default;
};

// A buffer of the stream. Its bytes stay as they are as long as the keeper lives, also when the stream has ended.
struct CameraBuffer {
    std::shared_ptr<void> keeper;
    std::span<const std::uint8_t> bytes;
    std::uint64_t number = 0;      // as the camera gave it
    bool isWhole = false;          // no packet is missing, and it has the shape that was promised
    std::int64_t deviceNs = 0;     // of the camera's clock; 0: it has none
    std::int64_t systemUtcNs = 0;  // this machine's time at the first packet; 0: not known
};

// Features may be used by one thread at a time; WaitForBuffer and GiveBack by one thread beside it.
class CameraDevice {
  public:
    virtual ~CameraDevice() = default;

    virtual const FeatureAccess& Features() = 0;
    virtual CameraShape Shape() const = 0;
    // Bytes of a packet with its heads, read back; 0: the transport has none, or it isn't known.
    virtual std::int32_t PacketSize() const = 0;

    // False, with why in error, where no stream comes up.
    virtual bool BeginStream(std::string& error) = 0;
    virtual void EndStream() = 0;
    // Of the stream that runs, read back; it is known when the first buffer has come. nullopt: the transport has none,
    // or it isn't known.
    virtual std::optional<ReceiveBuffer> StreamBuffer() const = 0;
    virtual std::optional<CameraBuffer> WaitForBuffer(std::int64_t limitUs) = 0;
    // It can be filled again.
    virtual void GiveBack(CameraBuffer buffer) = 0;

    // Control over the camera was lost, as far as is known without asking it.
    virtual bool IsLost() const = 0;
    // Asks it now; may take seconds where it doesn't.
    virtual bool Answers() = 0;
};

// Opens a camera by serial number, name of the transport or address. Null, with a sentence in error, where there is
// none, or another program holds it, or it has no monochrome format.
using CameraOpener = std::function<std::unique_ptr<CameraDevice>(const std::string& device,
                                                                 const DeviceSettings& settings, std::string& error)>;

}  // namespace kelvo
