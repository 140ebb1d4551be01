// Settings files of a test's own, and a main window's size.
#pragma once

#include "support/temp_directory.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace kelvo {

class SettingsTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;  // no setting asks for a box

    // The file as it stands from here on.
    void PutKelvoIni(std::string_view contents);
    void PutCameraIni(std::string_view contents);

    // As start-up reads them.
    void ReadAll();

    TempDirectory directory;
};

}  // namespace kelvo
