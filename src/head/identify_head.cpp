// Finding out which camera head is connected. The reply to the identify frame is the only one whose content selects
// anything: its first two bytes are the head's identity.
#include "head/identify_head.h"

#include "head/camera_head_write.h"
#include "head/comm_link_write.h"
#include "head/head_frames.h"
#include "head/head_transaction.h"
#include "platform/box.h"
#include "platform/serial.h"
#include "platform/text.h"
#include "state/windows.h"
#include "ui/status.h"

#include <algorithm>
#include <optional>

namespace kelvo {

namespace {

struct Identity {
    std::uint8_t first;
    std::uint8_t second;
};
constexpr Identity kInSbIdentity = {0x10, 0x66};
constexpr Identity kHgCdTeIdentity = {0x20, 0x00};
constexpr Identity kTwoChannelIdentity = {0x10, 0x64};
constexpr Identity kFourChannelIdentity = {0x10, 0x61};

bool Is(const CommFrame& reply, const Identity& identity)
{
    return reply[0] == identity.first && reply[1] == identity.second;
}

// A machine that views stored frames only has no head to ask for.
bool NoHeadIsWired()
{
    return SerialPortIsUnused(Format("COM%d", CommPortNumber()));
}

std::int32_t GiveUp()
{
    CloseCommLink();
    return 0;
}

// The identification is over: the link stays open only where CommPortAlwaysOpen asks for it.
std::int32_t Found()
{
    CloseLinkAfterUse();
    return 1;
}

std::int32_t RefuseHead(std::string_view text, std::string_view caption, BoxIcon icon)
{
    MessageBox(hWndMain, text, caption, icon);
    CloseLinkAfterUse();
    return 0;
}

std::int32_t GreetInSbHead()
{
    StatusMessage("1 Ch. 14-bit QVF119/125 InSb Camera Head found", kLeftAligned);
    write::registers.HeadTiming.HeadModel = kInSbHead;
    UpdateIntegrationInForce();
    const bool greeted = HeadRepeats(kClocksOffFrame) && AskHead(kInSbDacGreeting) && AskHead(kInSbGreeting);
    return greeted ? Found() : GiveUp();
}

std::int32_t GreetHgCdTeHead()
{
    StatusMessage("1 Ch. 14-bit 64x64 HgCdTe Camera Head found", kLeftAligned);
    write::registers.HeadTiming.HeadModel = kHgCdTeHead;
    UpdateIntegrationInForce();
    write::link.CommEchoMode = 1;
    return SendFrame(kHgCdTeGreeting) ? Found() : GiveUp();
}

// The frame is written, and its answer read, without the transaction's judgement: an identity may begin with any byte.
std::optional<CommFrame> AskIdentity()
{
    write::link.CommEchoMode = 0;
    if (!SendFrame(kIdentifyFrame)) {
        MessageBox(hWndMain, "Unable to send data to digital camera head!  Check RS232 port settings.",
                   "Computer RS232 Error");
        return std::nullopt;
    }
    CommFrame reply{};
    if (ReadCommFrame(reply) == reply.size()) return reply;
    CloseCommLink();
    MessageBox(hWndMain, "Unable to communicate with digital camera head! Check power & cable connections.",
               "Camera Head Error!");
    return std::nullopt;
}

}  // namespace

std::int32_t IdentifyCameraHead()
{
    if (NoHeadIsWired() || !LinkIsReady()) return 0;
    const std::optional<CommFrame> reply = AskIdentity();
    if (!reply) return GiveUp();
    if (Is(*reply, kInSbIdentity)) return GreetInSbHead();
    if (Is(*reply, kHgCdTeIdentity)) return GreetHgCdTeHead();
    if (Is(*reply, kTwoChannelIdentity)) {
        return RefuseHead("2 channel camera head doesn't match 1 channel software.", "Camera Head Error!",
                          BoxIcon::kInformation);
    }
    if (Is(*reply, kFourChannelIdentity)) {
        return RefuseHead("4 channel camera head doesn't match 1 channel software!", "Camera Head Error",
                          BoxIcon::kInformation);
    }
    return RefuseHead("Camera head is present, but software is unable to identify it.", "Warning!",
                      BoxIcon::kExclamation);
}

}  // namespace kelvo
