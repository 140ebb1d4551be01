// Gestures: what the operator means as one thing and can take back as one, a command, a dialog, a drag, a run of the
// trackball. Whoever moves the picture or changes how it looks says where a gesture begins and ends; what changed
// between, the shell finds out and keeps (shell/undo.h).
#pragma once

#include <string_view>

namespace kelvo {

struct GestureKind {
    std::string_view name = {};  // what the menu calls it: "display setup"; empty: what changed, "contrast"
    // A turn of the wheel, a key that is held: it goes on with the step before where that was one of the same name and
    // not longer than a second ago.
    bool repeats = false;
    bool badPixels = false;  // it may change the orientation, the list of bad pixels or their replacement
};

// Gestures may stand in one another: the outermost is the step. Each beginning has one end.
void BeginGesture(const GestureKind& kind);
void EndGesture();

// A gesture as long as a block.
class Gesture {
  public:
    explicit Gesture(const GestureKind& kind = {}) { BeginGesture(kind); }
    ~Gesture() { EndGesture(); }
    Gesture(const Gesture&) = delete;
    Gesture& operator=(const Gesture&) = delete;
};

struct GestureHooks {
    void (*begun)(const GestureKind& kind) = nullptr;
    void (*ended)() = nullptr;
};
// Without hooks, as at the start, a gesture is nothing.
void SetGestureHooks(const GestureHooks& hooks);

}  // namespace kelvo
