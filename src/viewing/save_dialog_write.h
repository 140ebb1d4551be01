// The variables behind viewing/save_dialog.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "viewing/save_dialog.h"

namespace kelvo {

struct SaveDialogVariables {
    std::int32_t SaveDialogMode = kSaveImages;
    std::int32_t SaveAverage = 0;
    std::int32_t SaveStdDev = 0;
};

namespace write {
extern SaveDialogVariables saveDialog;
}

}  // namespace kelvo
