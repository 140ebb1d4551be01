// What operator scripts may read of the program: module state by its name, and the counts of the frame on view.
#pragma once

namespace kelvo {

// Once, before the script's first line.
void RegisterProgramState();

}  // namespace kelvo
