#include "shell/start_options.h"

#include "shell/start_options_write.h"

namespace kelvo {

namespace write {
StartOptionVariables options;
}

constinit const StartOptions& startOptions = write::options.startOptions;

}  // namespace kelvo
