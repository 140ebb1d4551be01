// A machine with the simulated board and the cameras as they are shipped, in virtual time.
#pragma once

#include "simcam/sim_camera.h"
#include "support/operator.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace kelvo {

class SimBoardTest : public testing::Test {
  protected:
    SimBoardTest();

    // The InSb 320 x 256 camera as the active one, its head running at 100 Hz (the frame is 200 lines of 400 pixels,
    // the pixel clock 8 MHz), the board open.
    void OpenAt100Hz();
    static void Send(SimCamera& camera, std::initializer_list<WireFrame> frames);
    static void SendClockIndex(SimCamera& camera, int index);
    // The frame that the camera gives under that number and time.
    std::vector<std::int16_t> Expected(std::int64_t number, std::int64_t timeUs) const;

    TempDirectory directory;
    TestOperator op;
    std::shared_ptr<SimCamera> camera;
};

}  // namespace kelvo
