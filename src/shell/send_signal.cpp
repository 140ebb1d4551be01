#include "shell/send_signal.h"

#include "platform/files.h"
#include "platform/signal_socket.h"

#include <cstdio>

namespace kelvo {

int SendSignalTo(const std::string& dataDirectory)
{
    constexpr int kSent = 0;
    constexpr int kNobodyThere = 4;
    const std::string directory = ResolvePath(dataDirectory);
    if (SendSignal(SignalSocketPath(directory))) return kSent;
    std::fprintf(stderr, "kelvo: no Kelvo runs with the data directory %s\n", directory.c_str());
    return kNobodyThere;
}

}  // namespace kelvo
