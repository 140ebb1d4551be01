// What every way of showing stored data does: keep the header true to the buffer, make room, take the cursor off and
// put it back.
#pragma once

#include "imagefile/header.h"

#include <cstdint>

namespace kelvo {

// While it lives ImageHeader may be filled for a new load; unless KeepNew is called it is put back, so that it always
// describes ImageBuffer.
class HeaderKeeper {
  public:
    HeaderKeeper() : before_(ImageHeader) {}
    ~HeaderKeeper();
    HeaderKeeper(const HeaderKeeper&) = delete;
    HeaderKeeper& operator=(const HeaderKeeper&) = delete;
    void KeepNew() { kept_ = true; }

  private:
    ImageHeaderRecord before_;
    bool kept_ = false;
};

void FreeImageBuffer();
// "Failure to allocate or lock memory!" under "ViewImage Memory Error!"
void TellNoViewMemory();

void FreezeLiveVideo();  // the first stored frame freezes the video, and ends replay

// The image cursor is off while a frame is loaded, and goes back on inside the new image.
void TakeCursorOff();
void PutCursorBack();

}  // namespace kelvo
