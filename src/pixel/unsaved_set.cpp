#include "pixel/unsaved_set.h"

#include <optional>
#include <utility>

namespace kelvo {

namespace {

std::optional<UnsavedSet> unsaved;

}  // namespace

const UnsavedSet* SetWithoutFiles()
{
    return unsaved ? &*unsaved : nullptr;
}

void KeepUnsavedSet(UnsavedSet set)
{
    unsaved = std::move(set);
}

void ForgetUnsavedSet()
{
    unsaved.reset();
}

}  // namespace kelvo
