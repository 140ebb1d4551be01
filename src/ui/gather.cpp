#include "ui/gather.h"

#include "platform/interrupt.h"
#include "ui/status.h"

namespace kelvo {

namespace {

bool canBeStopped = false;
bool wasStopped = false;

void Look()
{
    wasStopped = EscapeCame() || wasStopped;
}

}  // namespace

Gather::Gather(bool isLong)
{
    wasStopped = false;
    canBeStopped = isLong;
    if (!isLong) return;
    ShowStatusField("Esc stops");
    Look();  // what a dialog has just uncovered is painted before the first frame
}

Gather::~Gather()
{
    if (!canBeStopped) return;
    Look();
    canBeStopped = false;
    ShowStatusField({});
}

bool GatherGoesOn()
{
    if (!canBeStopped) return true;
    if (!wasStopped) Look();
    return !wasStopped;
}

bool GatherWasStopped()
{
    return wasStopped;
}

std::string_view WhyNothingWasGathered(std::string_view failure)
{
    return wasStopped ? std::string_view("Stopped by Esc. What was there before is as it was.") : failure;
}

void ResetGather()
{
    canBeStopped = false;
    wasStopped = false;
}

}  // namespace kelvo
