// A contrast and brightness that Kelvo found by itself: for a stored picture of which next to nothing was seen with the
// operator's, or because it keeps the picture fitted. They are never stored: what the operator chose before is, until
// he takes either of them in hand.
#pragma once

#include <cstdint>
#include <optional>

namespace kelvo {

struct ContrastPair {
    std::int32_t contrast = 0;    // 1 to 100
    std::int32_t brightness = 0;  // 1 to 1000
    friend bool operator==(const ContrastPair&, const ContrastPair&) = default;
};

// The pair that was found last, and what it took the place of; display_pipeline's ShowOwnFit writes it.
struct OwnFit {
    ContrastPair found;
    ContrastPair chosen;
    friend bool operator==(const OwnFit&, const OwnFit&) = default;
};
extern const std::optional<OwnFit>& LastOwnFit;

// Contrast and Brightness are still those that were found.
bool OwnFitInForce();

// What is to be stored of Contrast and Brightness.
ContrastPair ContrastToStore();

}  // namespace kelvo
