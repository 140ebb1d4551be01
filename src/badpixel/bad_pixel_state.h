// All that the image set-up and "Replace bad pixels" change, as a value: taken before, it can be put back as a whole.
#pragma once

#include "badpixel/shared_blocks.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace kelvo {

// A file of the set with what it holds; no contents: there is no such file, or it can't be read.
struct KeptFile {
    std::string path;
    std::optional<SharedBlocks> contents;
    friend bool operator==(const KeptFile&, const KeptFile&) = default;
};

struct BadPixelState {
    // MirrorVert, MirrorHoriz, RotateCCW, SubstBadPixels
    std::array<std::int32_t, 4> flags{};
    std::string badDetFile;   // CalSettings.BadDetFile
    SharedBlocks decomTable;  // the bytes of DecomList
    KeptFile list;            // the set's .bad
    KeptFile setTable;        // the set's .dcm
    // What the last rebuild counted, which is no state of its own: BadDetCount and the bytes of ReplacedPixels.
    std::int32_t count = 0;
    SharedBlocks replaced;
};

// The same but for what was counted: a table that is rebuilt to the same entries is no other state.
bool SameBadPixels(const BadPixelState& a, const BadPixelState& b);

// What is in force and what the set's files hold. A set that has no files yet has none here either.
BadPixelState TakeBadPixelState();

// Files first, then flags, list and table in force with DECOM.TMP; a frozen picture is shown anew, the menu follows.
// False after the box "Could not save file: %s": then all is as it was. What is the same already isn't touched.
bool PutBackBadPixelState(const BadPixelState& state);

}  // namespace kelvo
