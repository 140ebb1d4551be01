// Traces of live video: a point of each region for each frame that the capture takes, whether something records or not
// (grabber/recording.h: BeginObserving), the picture live, frozen or another. The counts are those of the live picture,
// corrected with the lists that are in force at the start, read in the units of that moment; only the regions' pixels
// are corrected.
//
//     std::string why;
//     if (!StartLiveTrace(Regions, why)) ...   // why: a sentence for the operator
//     LiveTrace().frames.size();               // grows from look to look
//     StopLiveTrace();                         // what was traced stands until the next start
//
// With the real clock frames are measured on the observer's thread; all calls here are the main thread's and return at
// once.
#pragma once

#include "regions/region.h"
#include "regions/trace.h"

#include <span>
#include <string>

namespace kelvo {

enum class BadPixels { kMeasured, kLeftOut };

// Live video begins where it doesn't run. False, and what was traced before stands, with why: no camera is on, live
// traces run already, there is no region, one lies outside of the picture or has but bad pixels, the list of bad
// detectors can't be read, memory is refused. Where there is no camera a box has told it too. kLeftOut: pixels that
// list and gains say to be bad now (pixel/bad_marks.h, BadDetectorsInForce) aren't measured.
bool StartLiveTrace(std::span<const Region> regions, std::string& why, BadPixels bad = BadPixels::kMeasured);
// What has come by now belongs to it. Nothing happens where none runs.
void StopLiveTrace();
bool LiveTraceRuns();

// With all frames that have come by now. Ends a trace for which there is no memory any more (kMostTraceBytes, or less
// where the machine has less); LiveTraceMessage tells it.
const Trace& LiveTrace();
// A sentence about an end that wasn't wished; else empty.
const std::string& LiveTraceMessage();
inline constexpr std::size_t kMostTraceBytes = std::size_t{1} << 29;

// As at start: none runs, nothing was traced.
void ResetLiveTrace();

}  // namespace kelvo
