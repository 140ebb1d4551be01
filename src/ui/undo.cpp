#include "ui/undo.h"

namespace kelvo {

namespace {

GestureHooks hooks;

}  // namespace

void BeginGesture(const GestureKind& kind)
{
    if (hooks.begun) hooks.begun(kind);
}

void EndGesture()
{
    if (hooks.ended) hooks.ended();
}

void SetGestureHooks(const GestureHooks& newHooks)
{
    hooks = newHooks;
}

}  // namespace kelvo
