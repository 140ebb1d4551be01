#include "head/head_transaction.h"

#include "head/comm_link_write.h"
#include "platform/box.h"
#include "platform/profile.h"
#include "state/windows.h"

#include <algorithm>
#include <string>

namespace kelvo {

namespace {

// Since the program began; only differences count.
std::int64_t framesUnheard = 0;
std::int64_t framesTold = 0;  // those that were unheard when the operator was last told

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

bool HeadHearing::MissedSomething() const
{
    return framesUnheard > unheardBefore_;
}

void HeadHearing::TellIfUnheard(HWND window, std::string_view consequence) const
{
    if (framesUnheard <= std::max(unheardBefore_, framesTold)) return;
    framesTold = framesUnheard;
    MessageBox(window, "The camera head didn't answer to all that was sent.\n" + std::string(consequence),
               "Camera Head Error!");
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
