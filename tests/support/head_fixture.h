// A camera section, a wired port and a scripted head, for tests of what goes over the wire.
#pragma once

#include "support/picture_fixture.h"
#include "support/scripted_head.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

namespace kelvo {

class HeadTest : public PictureTest {
  protected:
    void SetUp() override;

    // The section of the active camera, Camera.2; read as at start-up.
    void PutSection(std::string_view lines);
    // kelvo.ini as it stands from here on.
    void PutSetup(std::string_view lines);
    // What stands behind COM2.
    void Wire(std::string_view device);
    void IdentifyAsInSb();
    void IdentifyAsHgCdTe();

    // Frames that reached the head while LoadCameraHead ran; result has what it returned.
    Frames Programming(std::int32_t& result);

    std::unique_ptr<ScriptedHead> head;
};

// The section of an InSb head at 320 x 256 whose settings can be told apart on the wire.
extern const std::string_view kInSbSection;
// The same of an HgCdTe head at 64 x 64.
extern const std::string_view kHgCdTeSection;

}  // namespace kelvo
