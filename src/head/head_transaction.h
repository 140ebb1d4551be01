// How the head protocol uses the link: opens it when it is needed, sends a frame and judges the answer.
#pragma once

#include "head/comm_link.h"
#include "platform/types.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace kelvo {

// Opens the link if it is closed. False if that fails, after the link's own boxes.
bool LinkIsReady();
// Closes the link unless key CommPortAlwaysOpen (section Setup of kelvo.ini, default 0) keeps it.
void CloseLinkAfterUse();

// Writes a frame. With CommEchoMode the answer counts; without, the result is always true.
bool SendFrame(CommFrame frame);
// Whether the head has answered to each frame that SendFrame wrote since the object was made: for those who send
// several and tell the operator once.
class HeadHearing {
  public:
    HeadHearing();
    bool MissedSomething() const;
    // Where the head missed something: "The camera head didn't answer to all that was sent.", and what follows from it.
    // What one has told another that stands around it doesn't tell again.
    void TellIfUnheard(HWND window, std::string_view consequence) const;

  private:
    std::int64_t unheardBefore_;
};

// Without CommEchoMode: writes a frame and reads the answer of four bytes; nullopt if fewer come within a second.
std::optional<CommFrame> AskHead(CommFrame frame);
// AskHead, and the answer begins with the byte sent first.
bool HeadRepeats(CommFrame frame);

}  // namespace kelvo
