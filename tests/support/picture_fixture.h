// A main window with the picture in it, for tests of what the display does on the screen.
#pragma once

#include "platform/types.h"
#include "support/operator.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kelvo {

class PictureTest : public testing::Test {
  protected:
    PictureTest() : PictureTest(1.0) {}
    explicit PictureTest(double scale);
    ~PictureTest() override;

    // Puts a stored frame on view: version 8, range 0 to 16383, uncalibrated. Nothing is drawn.
    static void View(int width, int height, const std::vector<std::int16_t>& counts);
    // The panel, as start-up docks it.
    static void DockPanel();
    // The colour of a logical pixel, 0x00RRGGBB, after what is due has been painted.
    static std::uint32_t Shown(int x, int y);
    static std::string IniKey(const char* section, const char* key);
    static std::string CameraKey(const char* key);

    // Commands that reached the main window.
    static const std::vector<int>& Commands();

    std::unique_ptr<TestOperator> op;
    TempDirectory directory;
};

}  // namespace kelvo
