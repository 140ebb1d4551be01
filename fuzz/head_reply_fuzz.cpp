// What a camera head may answer while it is identified, programmed and turned off.
//
// The first byte chooses: 1 the section is an HgCdTe camera's, 2 the camera counts as on. Then for each frame that is
// sent: the number of bytes that come back (low 3 bits), and those bytes; 8 in the number echoes the frame instead.
// Where the input ends the head echoes all.
#include "head/camera_head.h"
#include "head/identify_head.h"
#include "head/program_head.h"
#include "platform/clock.h"
#include "platform/serial.h"
#include "reset/reset.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "state/head_state.h"
#include "state/windows_write.h"

#include <stdlib.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kFramesOfATurnOn = 19;
constexpr std::size_t kFramesOfATurnOff = 10;
constexpr std::size_t kFramesOfAGreeting = 4;

std::string directory;
Bytes answers;
std::vector<std::uint8_t> line;  // what has come and isn't read yet
std::size_t framesSent = 0;

void Check(bool holds)
{
    if (!holds) __builtin_trap();
}

Bytes Take(std::size_t count)
{
    const Bytes taken = answers.first(std::min(count, answers.size()));
    answers = answers.subspan(taken.size());
    return taken;
}

void Write(Bytes frame)
{
    ++framesSent;
    Check(frame.size() == 4);
    const Bytes control = Take(1);
    const bool echo = control.empty() || (control[0] & 8) != 0;
    const Bytes answer = echo ? frame : Take(control[0] & 7);
    line.assign(answer.begin(), answer.end());
}

std::size_t Read(std::span<std::uint8_t> bytes)
{
    const std::size_t count = std::min(bytes.size(), line.size());
    std::copy_n(line.begin(), count, bytes.begin());
    line.erase(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(count));
    return count;
}

void Put(const std::string& name, std::string_view contents)
{
    std::ofstream stream(directory + '/' + name, std::ios::binary);
    stream.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    Check(static_cast<bool>(stream.flush()));
}

// The result is 1 or 0, and no more frames were sent than the procedure has.
void CheckStep(std::int32_t result, std::size_t mostFrames)
{
    Check(result == 0 || result == 1);
    Check(framesSent <= mostFrames);
    framesSent = 0;
}

// As the program starts: nothing of the input before is left, neither in memory nor in the directory.
void Start()
{
    kelvo::ResetModules();
    std::filesystem::remove_all(directory);
    Check(std::filesystem::create_directory(directory));
    Put("platform.ini", "[Ports]\nCOM2=sim:fuzz\n");
    Put("camera.ini",
        "[Camera.2]\nDescription=InSb\nHactive=320\nVactive=256\n[Camera.3]\nDescription=J108\nHactive=64\nVactive="
        "64\n");
    kelvo::SetDefaultDir(directory);
    kelvo::UseVirtualClock(0);
    kelvo::SetHeadLines("sim", [](const std::string&, std::string&) {
        return kelvo::HeadLine{.write = Write, .read = Read, .purge = [] { line.clear(); }};
    });
    line.clear();
    framesSent = 0;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    const char* const base = getenv("TMPDIR");
    directory = std::string(base ? base : "/tmp") + "/kelvo-fuzz-XXXXXX";
    if (!mkdtemp(directory.data())) abort();
    atexit([] { std::filesystem::remove_all(directory); });
    // A program without windows tells its boxes on this stream, where they would drown all else.
    stderr = std::fopen("/dev/null", "w");
    return stderr ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    Start();
    answers = Bytes(data + 1, size - 1);
    kelvo::write::camera.ActiveCamera = (data[0] & 1) != 0 ? 3 : 2;
    kelvo::write::camera.nCommPort = 2;
    CheckStep(kelvo::IdentifyCameraHead(), kFramesOfAGreeting);
    Check(kelvo::HeadTiming.HeadModel == 0 || kelvo::HeadTiming.HeadModel == kelvo::kInSbHead ||
          kelvo::HeadTiming.HeadModel == kelvo::kHgCdTeHead);

    kelvo::write::frames.CameraOn = (data[0] & 2) != 0 ? 1 : 0;
    CheckStep(kelvo::LoadCameraHead(), kFramesOfATurnOn);
    Check(std::isfinite(kelvo::FrameRate) && kelvo::FrameRate >= 0);

    kelvo::TurnCameraHeadOff();
    CheckStep(1, kFramesOfATurnOff);
    Check(kelvo::CameraOn == 0);
    kelvo::CloseCommLink();
    return 0;
}
