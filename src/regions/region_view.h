// The regions over the picture: a layer in the main window, which no frame, and nothing that is saved, copied or
// printed from one, holds any of.
#pragma once

#include "regions/region_picture.h"

#include <optional>

namespace kelvo {

// At start: the regions that were kept, and whether they are shown (key ShowRegions of section View of window.ini,
// 1 where it is missing).
void OpenRegions();

bool RegionsAreShown();
void ShowRegions(bool on);

// Whether presses on the picture and keys are the regions' (regions/region_editing.h): while they are edited and shown.
// The selected one has its grips then.
bool RegionsAreEdited();
void EditRegions(bool on);

// How the picture lies in the main window; nullopt: nothing is painted.
std::optional<PictureMap> MapOfPicture();

// The layer of the picture.
void PaintRegions(bool newFrame);

// Shown, not edited.
void ResetRegionView();

}  // namespace kelvo
