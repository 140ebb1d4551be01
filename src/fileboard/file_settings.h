// The file of a camera that is made of recorded frames: whose head it has, which files stand for its sources, and how
// they are played. docs/recorded-camera.md describes each key.
#pragma once

#include "wirehead/head_registers.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

// What stands in front of the camera: the recordings of two references, and one of anything else.
enum class FileSource { kLow, kHigh, kScene };
constexpr std::size_t kFileSources = 3;
constexpr std::array<std::string_view, kFileSources> kFileSourceNames{"low", "high", "scene"};

enum class EndOfFile { kLoop, kOnce };

struct FileSettings {
    // [Head]
    HeadModel model = HeadModel::kInSb;
    double clockHz = 48000000;

    // [Frames]: by source a file, or with * and ? in its name several of them; empty: there is none. Beside this file,
    // or whole paths.
    std::array<std::string, kFileSources> files;
    double rateHz = 0;  // 0: at the recorded times
    EndOfFile end = EndOfFile::kLoop;

    // [Bench]
    FileSource source = FileSource::kScene;  // in front at the start; one that has a file
};

// A rate that frames can be played at, Hz.
constexpr double kSlowestPlayHz = 0.01;
constexpr double kFastestPlayHz = 1e6;

// The settings of a file by its whole path; nullopt, with what is wrong in error.
std::optional<FileSettings> ReadFileSettings(const std::string& path, std::string& error);

}  // namespace kelvo
