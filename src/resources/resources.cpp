#include "resources/resources.h"

#include <QtGlobal>

// The macro declares a function of its own, which must stand outside every namespace.
static void InitKelvoResources()
{
    Q_INIT_RESOURCE(kelvo_resources);
}

namespace kelvo {

void RegisterResources()
{
    InitKelvoResources();
}

}  // namespace kelvo
