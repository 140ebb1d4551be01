// All that a laboratory's own source includes to join the menu: what it defines and what it can call. The headers of
// the other folders are there too: the frame on view, the settings, the calibration.
#pragma once

#include "usermodule/user_calls.h"      // IWYU pragma: export
#include "usermodule/user_functions.h"  // IWYU pragma: export
#include "usermodule/user_menu.h"       // IWYU pragma: export
