// What the operator can take back, as one value: how the picture looks and lies, the unit, the regions on it, what is
// known of bad pixels, and the keys of the settings files that the commands on these write.
#pragma once

#include "badpixel/bad_pixel_state.h"
#include "platform/profile.h"
#include "regions/region.h"
#include "state/contrast_fit.h"
#include "video/zoom_pan.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

struct UndoSnapshot {
    struct Colors {
        std::int16_t map = 0;
        std::int16_t grayScale = 0;
        std::int32_t bar = 0;
        std::int32_t tempScale = 0;
        std::int32_t histogram = 0;
        friend bool operator==(const Colors&, const Colors&) = default;
    };

    ContrastPair levels;
    std::optional<OwnFit> ownFit;  // what was known of them
    bool keepsFitted = false;
    Colors colors;
    DisplayGeometry geometry;
    Point view;  // ViewPosition
    std::int32_t unit = 0;
    std::vector<Region> regions;
    std::shared_ptr<const BadPixelState> badPixels;  // null: of a gesture that can't change them
    std::vector<KeptProfileKey> keys;                // the same keys in each snapshot of one camera and calibration
};

// What is in force now; without badPixels, which reads the set's files.
UndoSnapshot TakeSnapshot();

// What differs, in words: "contrast", "brightness and colours"; empty where at most keys do. Bad pixels differ only
// where both snapshots hold them.
std::string DifferenceOf(const UndoSnapshot& before, const UndoSnapshot& after);
bool SameKeys(const UndoSnapshot& a, const UndoSnapshot& b);

// Puts back what differs between the two as target has it; all else stays as it is now. A unit that the frame on view
// can't be read in stays away. False where the bad pixels couldn't be put back (told in a box): then nothing is.
bool PutBackDifference(const UndoSnapshot& target, const UndoSnapshot& other);

}  // namespace kelvo
