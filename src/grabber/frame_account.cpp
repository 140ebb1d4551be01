#include "grabber/frame_account.h"

#include "grabber/board_state.h"
#include "grabber/capture.h"
#include "grabber/copm2.h"
#include "platform/clock.h"
#include "state/state_registry.h"

#include <algorithm>
#include <utility>

namespace kelvo {

namespace {

const StateNames kStateNames{
    {"FramesDelivered", [] { return StateValue{CurrentFrameAccount().delivered}; }},
    {"FramesShown", [] { return StateValue{CurrentFrameAccount().shown}; }},
    {"FramesLost", [] { return StateValue{CurrentFrameAccount().lost}; }},
    {"FramesMissed", [] { return StateValue{CurrentFrameAccount().missed}; }},
    {"FramesLostByTransport", [] { return StateValue{CurrentFrameAccount().lostByTransport}; }},
    {"FramesUsed", [] { return StateValue{CurrentFrameAccount().used}; }},
};

constexpr std::int64_t kRateWindowUs = 1'000'000;

FrameAccount account;
std::int64_t lastCount = 0;            // the board's, when it was last asked
std::int64_t lastLostByTransport = 0;  // the same
bool heldUp = true;                    // what has passed since then counts as missed
int holdUps = 0;                       // that live
bool capturing = false;
CaptureCounts told;  // of the capture: what an account that was cleared meanwhile had told

// What a count of the board has grown by since it was last asked. One that fell back is that of a new grab.
std::int64_t GrownSince(std::int64_t& last, std::int64_t count)
{
    const std::int64_t before = std::exchange(last, count);
    return count < before ? count : count - before;
}

// What the board delivered since it was last asked. Frames that the transport lost are told at once: nobody could have
// read them, whether the live cycle ran or not.
std::int64_t TakeArrived()
{
    if (capturing) return 0;
    const std::int64_t count = icp_frame_count(IcpModule);
    account.lostIsKnown = count != kUncounted;
    if (!account.lostIsKnown) return 0;
    const std::int64_t sent = GrownSince(lastCount, count);
    const std::int64_t lost = std::min(GrownSince(lastLostByTransport, icp_lost_by_transport(IcpModule)), sent);
    account.delivered += sent;
    account.lost += lost;
    account.lostByTransport += lost;
    return sent - lost;
}

// Frames of which the newest is in hand. One that is read twice, once by the cursor, is no new one.
std::int64_t TakeArrivedBeforeNewest()
{
    const std::int64_t arrived = TakeArrived();
    if (!account.lostIsKnown && !capturing) {  // each read is a frame, as far as anyone knows
        ++account.delivered;
        return 1;
    }
    const std::int64_t newest = std::min<std::int64_t>(arrived, 1);
    (heldUp ? account.missed : account.lost) += arrived - newest;
    return newest;
}

// Of a capture that runs when the account is cleared; what waits then is delivered afterwards.
CaptureCounts ToldSoFar()
{
    CaptureCounts counts = CurrentCaptureCounts();
    counts.delivered -= counts.waiting;
    return counts;
}

// With what the capture that runs, or has just ended, counted so far.
FrameAccount WithCapture(FrameAccount sum)
{
    const CaptureCounts counts = CurrentCaptureCounts();
    sum.delivered += counts.delivered - told.delivered;
    sum.used += counts.recorded - told.recorded;
    sum.missed += counts.passedOver - told.passedOver;
    const std::int64_t byTransport = counts.lostByTransport - told.lostByTransport;
    sum.lostByTransport += byTransport;
    sum.lost += byTransport + counts.lostByBoard.value_or(0) - told.lostByBoard.value_or(0) + counts.lostByRing -
                told.lostByRing;
    sum.waiting += counts.waiting;
    sum.lostIsKnown = counts.lostByBoard.has_value();
    return sum;
}

FrameAccount AccountNow()
{
    return capturing ? WithCapture(account) : account;
}

// The rates are taken over a window that ends with the read that makes it a second long.
struct RateWindow {
    std::int64_t startUs = -1;
    std::int64_t delivered = 0;
    std::int64_t shown = 0;
};
RateWindow window;

void BeginRateWindow()
{
    window = {.startUs = TickUs(), .delivered = AccountNow().delivered, .shown = account.shown};
}

// Live video has stopped meanwhile, or was held up for long: the rates tell of the past.
bool RatesAreOld()
{
    return window.startUs >= 0 && TickUs() - window.startUs > 2 * kRateWindowUs;
}

void UpdateRates()
{
    if (window.startUs < 0 || RatesAreOld()) {
        BeginRateWindow();
        return;
    }
    const std::int64_t elapsedUs = TickUs() - window.startUs;
    if (elapsedUs < kRateWindowUs) return;
    const double seconds = static_cast<double>(elapsedUs) / 1e6;
    account.deliveredHz = static_cast<double>(AccountNow().delivered - window.delivered) / seconds;
    account.shownHz = static_cast<double>(account.shown - window.shown) / seconds;
    BeginRateWindow();
}

}  // namespace

FrameAccount CurrentFrameAccount()
{
    if (RatesAreOld()) account.deliveredHz = account.shownHz = 0;
    return AccountNow();
}

void ClearFrameAccount()
{
    TakeArrived();
    account = {};
    window = {};
    if (capturing) told = ToldSoFar();
}

void AccountCycleStops()
{
    (heldUp ? account.missed : account.lost) += TakeArrived();
    heldUp = true;
}

void AccountHeldUp()
{
    heldUp = true;
}

CycleHoldUp::CycleHoldUp()
{
    AccountCycleStops();
    ++holdUps;
}

CycleHoldUp::~CycleHoldUp()
{
    --holdUps;
    heldUp = true;
}

void AccountGrabStarted()
{
    lastCount = lastLostByTransport = 0;
    heldUp = true;  // until the first read the live cycle doesn't run
}

void AccountFrameRead(bool shown)
{
    TakeArrivedBeforeNewest();
    if (shown) ++account.shown;
    heldUp = holdUps > 0;
    UpdateRates();
}

void AccountFrameUsed()
{
    account.used += TakeArrivedBeforeNewest();
    heldUp = false;
    UpdateRates();
}

void AccountReadFailed()
{
    account.lost += TakeArrivedBeforeNewest();
    heldUp = true;
}

void AccountCaptureBegins()
{
    AccountCycleStops();
    told = {};
    capturing = true;
}

void AccountCaptureEnds()
{
    if (!capturing) return;
    account = WithCapture(account);
    lastCount = CurrentCaptureCounts().lastNumber;
    lastLostByTransport = CurrentCaptureCounts().lastLostByTransport;
    capturing = false;
    heldUp = true;
}

void ResetFrameAccount()
{
    capturing = false;
    account = {};
    lastCount = lastLostByTransport = 0;
    heldUp = true;
    holdUps = 0;
    window = {};
}

}  // namespace kelvo
