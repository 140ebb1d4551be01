// What is asked of the services around the program: that the machine stays awake, and that a note comes up on the
// desktop. They are reached over the system's and the session's message bus (D-Bus) by a thread of their own, so that
// whoever asks goes on at once, whether there is a bus, none, or one that hangs. Where nothing can be asked nothing is
// told: a recording doesn't hang on a service.
//
// Sleep is held off by a descriptor that the login service gives. The system closes it with the process, so that the
// hold ends on each way out, a kill among them.
#pragma once

#include <string>
#include <string_view>

namespace kelvo {

// While one lives what is asked below reaches the buses; otherwise it goes nowhere, as in tests and in commands without
// a window. At most one, after StartApplication. It ends without waiting for a bus: sleep is let come, and a note that
// is still on its way may be lost. (Only the name of a host, where a bus is addressed by one, is looked up to the end.)
class DesktopServices {
  public:
    DesktopServices();
    ~DesktopServices();
    DesktopServices(const DesktopServices&) = delete;
    DesktopServices& operator=(const DesktopServices&) = delete;
};

// Until LetSleep neither the idle machine nor a program puts it to sleep (lock "sleep:idle", mode "block", of
// org.freedesktop.login1). why: UTF-8, for whoever asks what keeps the machine awake. One that holds already goes on.
void HoldSleepOff(std::string_view why);
void LetSleep();

// A note on the desktop (org.freedesktop.Notifications).
struct DesktopNote {
    std::string summary;  // a line, UTF-8
    std::string text;     // UTF-8 without markup
};
void ShowDesktopNote(DesktopNote note);

}  // namespace kelvo
