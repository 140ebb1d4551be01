// The three parties of the ring at the same time.
#include "grabber/frame_ring.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

namespace kelvo {
namespace {

constexpr std::int16_t kFrames = 20'000;
constexpr std::size_t kValues = 64;

void PutFrames(FrameRing& ring, std::int64_t& left)
{
    for (std::int16_t n = 0; n < kFrames; ++n) {
        CapturedFrame& frame = ring.Claim();
        frame.stamp = {.number = n};
        for (std::int16_t& value : frame.values) value = n;
        if (!ring.Commit()) ++left;
    }
    ring.Close();
}

bool IsWhole(std::span<const std::int16_t> values, std::int64_t number)
{
    for (const std::int16_t value : values) {
        if (value != number) return false;
    }
    return true;
}

TEST(RingThreads, EachFrameIsTakenWholeAndInOrderOrLeftOut)
{
    FrameRing ring;
    ASSERT_TRUE(ring.Allocate(8, kValues));
    std::int64_t leftOut = 0;
    std::atomic<bool> ended = false;
    std::thread captures([&] {
        PutFrames(ring, leftOut);
        ended = true;
    });
    std::int64_t brokenLooks = 0;
    std::int64_t looks = 0;
    std::thread watches([&] {
        std::vector<std::int16_t> values(kValues);
        for (bool isLast = false; !isLast;) {  // the last look, behind the end, finds a frame if no other did
            isLast = ended;
            const std::optional<FrameStamp> stamp = ring.CopyNewest(values, 1);
            if (!stamp) continue;
            ++looks;
            if (!IsWhole(values, stamp->number)) ++brokenLooks;
        }
    });
    std::int64_t taken = 0;
    std::int64_t last = -1;
    bool goesOn = true;
    while (goesOn) {
        goesOn = !ended || ring.Waiting() > 0;
        if (ring.WaitForMore(0, 1) == 0) continue;
        const CapturedFrame& frame = ring.At(0);
        EXPECT_GT(frame.stamp.number, last);
        EXPECT_TRUE(IsWhole(frame.values, frame.stamp.number));
        last = frame.stamp.number;
        ring.Drop(1);
        ++taken;
    }
    captures.join();
    watches.join();
    EXPECT_EQ(taken + leftOut, kFrames);
    EXPECT_EQ(brokenLooks, 0);
    EXPECT_GT(looks, 0);
}

}  // namespace
}  // namespace kelvo
