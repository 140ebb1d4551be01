// The variables behind ui/status.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "ui/status.h"

namespace kelvo {

struct StatusVariables {
    std::string StatusText;
    std::int16_t StatusAlign = 0;
    std::string StatusField;
    std::string StatusMark;
    std::uint32_t StatusBackground = 0xFF0000;
    std::uint32_t StatusForeground = 0xFFFFFF;
};

namespace write {
extern StatusVariables status;
}

}  // namespace kelvo
