// How a command ends, for the main window that runs it.
#pragma once

namespace kelvo {

enum class CommandEnd {
    kResetStatus,  // the status line shows kIdleHint, left-aligned
    kLeaveStatus,  // the command ended early, or has said what is to stand there
};

}  // namespace kelvo
