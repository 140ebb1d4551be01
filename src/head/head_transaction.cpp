#include "head/head_transaction.h"

#include "head/comm_link_write.h"
#include "platform/profile.h"
#include "state/windows.h"

namespace kelvo {

namespace {

std::int64_t framesUnheard = 0;  // since the program began; only differences count

}  // namespace

bool LinkIsReady()
{
    if (!CommPortOpen) write::link.CommPortOpen = OpenCommLink();
    return CommPortOpen != 0;
}

void CloseLinkAfterUse()
{
    if (GetPrivateProfileInt("Setup", "CommPortAlwaysOpen", 0, IniFilePath) == 0) CloseCommLink();
}

bool SendFrame(CommFrame frame)
{
    const bool heard = WriteCommFrame(frame, frame.size()) != 0;
    if (!heard) ++framesUnheard;
    return heard;
}

HeadHearing::HeadHearing() : unheardBefore_(framesUnheard) {}

bool HeadHearing::HeardAll() const
{
    return framesUnheard == unheardBefore_;
}

std::optional<CommFrame> AskHead(CommFrame frame)
{
    if (!SendFrame(frame)) return std::nullopt;
    CommFrame reply{};
    if (ReadCommFrame(reply) != reply.size()) return std::nullopt;
    return reply;
}

bool HeadRepeats(CommFrame frame)
{
    const std::optional<CommFrame> reply = AskHead(frame);
    return reply && reply->front() == frame.front();
}

}  // namespace kelvo
