// Wiring a GenICam camera to this machine: which section of camera.ini and which serial port become its own, and the
// writing of both with the board, its file and the active camera, all or nothing.
#pragma once

#include "genicam/camera_section.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

// A key of a settings file.
struct WiringKey {
    std::string file;  // the whole path
    std::string section;
    std::string key;
    std::string value;
};

struct WiringPlan {
    std::int32_t section = 0;    // 1 to 40: Camera.<section>
    std::int32_t port = 0;       // COM<port>
    bool standsAlready = false;  // the section is this camera's, and is written anew
    std::vector<WiringKey> keys;
};

// A camera that is wired already keeps its port and section; another one gets the first section without a Description
// and the first port that neither platform.ini nor a camera's section names. nullopt: all 40 sections are taken. Reads
// the files and writes nothing.
std::optional<WiringPlan> PlanWiring(const FoundCamera& camera, const CameraOffer& offer, const PixelFormat& format);

// Writes camera.ini, platform.ini, the board's file camera<section>.cnf (section GenICam, keys Device and Format) and
// the active camera of kelvo.ini to the disk. False where a file can't be written, which the operator was told: all
// files are then as they were.
bool WriteWiring(const WiringPlan& plan);

}  // namespace kelvo
