#include "shell/start_options.h"

namespace kelvo {

StartOptions startOptions;

}  // namespace kelvo
