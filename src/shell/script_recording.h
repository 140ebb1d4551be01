// Analysis, Scripts, Record...: what the operator does from one choice of the command to the next, as a script in a
// file.
#pragma once

namespace kelvo {

// Asks for a name (DefaultDir/scripts/NAME.lua) and begins; the item is checked while it records. Chosen again it
// writes the file, whole or not at all. Where it can't be written a box says so and another name can be chosen; Cancel
// then gives the recording up. Nothing begins while a script of the menu runs, which a box tells.
void ToggleScriptRecording();

// The program ends: what is recorded so far is written.
void KeepScriptRecording();

// Nothing is recorded.
void ResetScriptRecording();

}  // namespace kelvo
