// "kelvo apply --set DIR/x.cal [--frames A:B] IN OUT": a raw recording corrected with a calibration set, without a
// window.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace kelvo {

struct ApplyRequest {
    std::string set;  // its .cal
    std::string in;
    std::string out;         // nothing bears the name yet
    std::int64_t first = 0;  // frames from 0
    std::int64_t end = -1;   // one behind the last; below 0: to the end
};

// Writes the frames of a range as the live picture would have shown them with the set: in image order, by the set's
// table, offsets and gains. FrameHeaders come along, FrameNum counts from 0 in the new file; the header is marked with
// the set's sources. Where in has a journal (imagefile/frames_file.h) out gets one: its records with the checksums of
// the new pixels, "corrected" and the set in its head; one that says "corrected" already is refused. progress is told
// how many frames of how many are done, now by one thread and now by another, but never by two at once. The reason
// where it fails: nothing stands under out's names then.
std::optional<std::string> ApplySet(const ApplyRequest& request,
                                    const std::function<void(std::int64_t done, std::int64_t all)>& progress);

// The arguments behind the word. 0, or 2 with the reason on the error stream, where the progress is shown too.
int ApplyCommand(std::span<const std::string> arguments);

}  // namespace kelvo
