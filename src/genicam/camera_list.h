// The GenICam cameras in reach, on the network and at USB, and what each says of itself: values, which a list shows and
// a camera section is made of. Nothing is kept and no camera stays open.
#pragma once

#include "genicam/still_picture.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

struct NumberRange {
    double least = 0;
    double most = 0;
    friend bool operator==(const NumberRange&, const NumberRange&) = default;
};

// What a camera tells to anybody.
struct FoundCamera {
    std::string id;         // by which it is opened
    std::string vendor;     // "Kelvo"
    std::string model;      // "Loopback"
    std::string serial;     // empty: it has none, and is told by its address
    std::string address;    // "192.168.1.20"; at USB what the bus calls it
    std::string transport;  // "GigE Vision", "USB3 Vision"
    friend bool operator==(const FoundCamera&, const FoundCamera&) = default;
};

// What it says when it is opened.
struct CameraOffer {
    std::int32_t columns = 0;  // of its largest frame
    std::int32_t rows = 0;
    std::int32_t columnStep = 1;
    std::int32_t rowStep = 1;
    std::vector<std::string>
        formats;         // pixel formats by their standard names, those that Kelvo unpacks, the deepest first
    std::string format;  // the one that it stands at, whichever it is
    std::optional<NumberRange> ratesHz;
    std::optional<double> rateHz;
    std::optional<NumberRange> exposuresUs;
    std::optional<double> exposureUs;
    std::int64_t frameBytes = 0;  // as it goes over the wire in that format
};

// Looks for cameras on all networks of this machine and at USB; takes about a second. Blocks. In the order of vendor,
// model, serial number.
std::vector<FoundCamera> FindCameras();

// Opens the camera, asks it, takes one frame and lets it go as it was. Blocks, at most some seconds.
struct CameraAnswer {
    std::optional<CameraOffer> offer;     // nullopt: it couldn't be opened, trouble says why
    std::optional<StillPicture> picture;  // nullopt: no frame came, trouble says why
    std::string trouble;                  // a sentence; empty: none
};
CameraAnswer AskFoundCamera(const FoundCamera& camera);

// "Kelvo Loopback, KELVO1, 127.0.0.1"
std::string CameraLine(const FoundCamera& camera);
// What follows "genicam:" in platform.ini: the serial number; the address of a camera that has none.
std::string HeadName(const FoundCamera& camera);

}  // namespace kelvo
