// A camera that is on, with a scripted head and a board whose frames hold one count, for tests of the video set-up's
// dialogs.
#pragma once

#include "platform/dialog.h"
#include "platform/front.h"
#include "support/head_fixture.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace kelvo {

using Step = std::function<void(HWND)>;

class VideoSetUpTest : public HeadTest {
  protected:
    void SetUp() override;

    // A camera of the section, turned on; what went to head and board on the way is forgotten.
    void TurnOn(std::string_view section);
    void TurnOnHgCdTe(std::string_view section);

    // Opens the set-up and works what is in front, one step each time it waits; what is left open is cancelled.
    int Run(std::initializer_list<Step> steps);
    static Step Press(int id);
    static Step Tick();  // lets a tick pass

    // A key goes down on a control, and up again.
    static void Key(HWND dialog, int id, int key);
    std::vector<std::string> StatusTexts() const { return op->Texts("status", "text"); }
    static std::string SetupKey(const char* key);
};

// What goes over the wire for a gain index of 4 and an offset of 160.
inline constexpr CommFrame kGainFourFrame = {0x60, 0x30, 0x00, 0x00};
inline constexpr CommFrame kOffset160Frame = {0x70, 0x01, 0xA0, 0x00};
// Index 10 of the integration table at 320 x 256.
inline constexpr CommFrame kIntegrationTenFrame = {0x50, 0x03, 0xF4, 0x28};

}  // namespace kelvo
