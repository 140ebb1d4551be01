// The viewer's own commands: opening any stored file, playing a file's frames, going to a frame, copying the picture.
#pragma once

#include <string_view>

namespace kelvo {

constexpr unsigned kPlayTimer = 20;  // of the main window

// Opens a file dropped, named on the command line, or chosen from the recent ones: its first frame; a file of several
// frames becomes the sequence on view, a single image doesn't. 1 if it is on view.
int OpenStoredFile(std::string_view path);

// Plays the file on view at its header's frame rate (10 Hz where it has none), from the frame on view on, around and
// around. Without a file of several frames it says so.
void StartPlaying();
void StopPlaying();
bool Playing();
void PlayNextFrame();  // at kPlayTimer

void GoToFrameDialog();
// What is on view, pixel for pixel without zoom, to the clipboard. Without a picture it says so.
void CopyPicture();

}  // namespace kelvo
