// Undo: what a gesture (ui/undo.h) changed becomes a step that the operator can take back and do again. The steps
// belong to the camera and the calibration that were in force: with others they are forgotten.
#pragma once

#include "ui/command_end.h"

namespace kelvo {

// At start, once the menu stands: gestures are kept from now on.
void OpenUndo();

// The gesture that a menu command is: for those that can be taken back; of others it only follows what they did.
class CommandGesture {
  public:
    explicit CommandGesture(int id);
    ~CommandGesture();
    CommandGesture(const CommandGesture&) = delete;
    CommandGesture& operator=(const CommandGesture&) = delete;

  private:
    bool canBeTakenBack_;
};

// Takes the last step back, or does it again: "Undone: contrast" on the status line. A trackball run ends first, and is
// the step. Nothing happens without a step, or in the middle of a drag.
CommandEnd Undo();
CommandEnd Redo();

// No steps, no gesture under way, no hooks.
void ResetUndo();

}  // namespace kelvo
