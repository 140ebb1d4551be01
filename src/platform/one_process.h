// One process a data directory: the lock that a Kelvo holds for its life, and the line over which a later start hands
// its files to it. Settings and calibration sets are each replaced whole, but two processes that write them in turn
// would mix them, and a start that finishes a journal must know that nobody is writing.
//
// The lock is the file "kelvo.lock" in the directory; one whose owner has died is taken over. The line is a local
// socket in a directory that only this user can enter. Its name follows from the data directory, not from the
// environment, so that a start from a desktop and one from a terminal meet.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// What a start has to say to the process that holds its directory.
struct Handover {
    std::vector<std::string> files;  // whole paths; may be empty
    std::string activation;          // the desktop's permission to come to the front ("XDG_ACTIVATION_TOKEN"), or empty
};

enum class Claim {
    kHeld,        // it is this process's until ReleaseDataDirectory
    kUnlocked,    // no file can be made in the directory, so that nobody can hold or damage it: go on without a lock
    kHandedOver,  // another process holds it, and has taken the handover
    kRefused,     // another process holds it, and can't be reached
};

struct ClaimResult {
    Claim claim = Claim::kUnlocked;
    std::string owner;  // of a directory that is held: "process 4711", with the machine's name where it is another
};

// Takes the directory, or hands over. directory exists, or can't be made. After StartApplication. Blocks while the
// owner neither answers nor ends, at most waitMs of real time: a start that has just begun and one that is ending get
// through it. taker gets what later starts hand over, from inside any event handling, also in the midst of a command:
// it only notes it. It isn't called after ReleaseDataDirectory.
ClaimResult ClaimDataDirectory(std::string_view directory, const Handover& handover,
                               std::function<void(const Handover&)> taker, int waitMs = 10'000);

// After the last write. What waits on the line is told by its end, and may take the directory.
void ReleaseDataDirectory();

// The name of the line for a data directory: at most 107 bytes, the limit of the system. Empty where the user has no
// directory of their own for it; then there is no handing over.
std::string HandoverLine(std::string_view directory);

}  // namespace kelvo
