#include "platform/qt_window.h"

namespace kelvo {

QIcon IconNamed(std::string_view /*name*/)
{
    return {};
}

void LinkResources() {}

}  // namespace kelvo
