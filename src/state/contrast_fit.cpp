#include "state/contrast_fit.h"

#include "state/contrast_fit_write.h"
#include "state/display_state.h"

namespace kelvo {

namespace write {
ContrastFitVariables contrastFit;
}

constinit const std::optional<OwnFit>& LastOwnFit = write::contrastFit.LastOwnFit;

namespace {

ContrastPair PairInForce()
{
    return {Contrast, Brightness};
}

}  // namespace

bool OwnFitInForce()
{
    return LastOwnFit && LastOwnFit->found == PairInForce();
}

ContrastPair ContrastToStore()
{
    ContrastPair stored = PairInForce();
    if (!LastOwnFit) return stored;
    if (stored.contrast == LastOwnFit->found.contrast) stored.contrast = LastOwnFit->chosen.contrast;
    if (stored.brightness == LastOwnFit->found.brightness) stored.brightness = LastOwnFit->chosen.brightness;
    return stored;
}

void ResetContrastFit()
{
    write::contrastFit = {};
}

}  // namespace kelvo
