#include "state/contrast_fit.h"

#include "state/contrast_fit_write.h"
#include "state/display_state.h"
#include "state/state_registry.h"

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
    const ContrastPair inForce = PairInForce();
    return LastOwnFit && LastOwnFit->found == inForce ? LastOwnFit->chosen : inForce;
}

namespace {

const StateNames kStateNames{
    {"OwnFitInForce", []() -> StateValue { return static_cast<std::int64_t>(OwnFitInForce()); }}};

}  // namespace

void ResetContrastFit()
{
    write::contrastFit = {};
}

}  // namespace kelvo
