// A data directory with the cameras that are shipped, and the frames that program each head as its camera section says.
#pragma once

#include "simcam/sim_camera.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

using Counts = std::vector<std::int16_t>;

class SimCameraTest : public ::testing::Test {
  protected:
    void SetUp() override;

    // A shipped file under another name, with one line "KEY=..." replaced by line.
    void PutCopyWith(const std::string& from, const std::string& to, std::string_view line);
    // Opens and programs. camera stands for the camera from then on.
    void Open(const std::string& file);
    void Send(const std::vector<WireFrame>& frames);
    void Program320x256();
    void Program640x512();
    void Program64x64();

    Counts Frame(std::int64_t n, std::int64_t timeUs = 0);
    // Mean and standard deviation of each pixel over frames first to first + count - 1.
    struct Pixels {
        std::vector<double> mean;
        std::vector<double> deviation;
    };
    Pixels Gather(std::int64_t first, int count);
    // By image column and row: whether a detector is good, or what it is.
    std::vector<std::string> Kinds();

    TempDirectory directory;
    std::shared_ptr<SimCamera> camera;
    int width = 0;
    int height = 0;
};

double MeanOf(const std::vector<double>& values);
double RmsAbout(const std::vector<double>& values, double centre);

}  // namespace kelvo
