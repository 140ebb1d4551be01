// The platform as it was before anything ran, for programs that go through several starts in one process.
#pragma once

namespace kelvo {

// No application object and no window, no timer or posted message; the real clock; no fault, no simulated head; nothing
// kept of settings files, not even writes that wait, no transcript and no run that goes on. No message is sent, and
// nothing reaches the disk. Not while a dialog or box is open. StartApplication may follow, with another screen or
// theme.
void ResetPlatform();

}  // namespace kelvo
