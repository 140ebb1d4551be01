// Palette texts of any bytes: reading ends, entries are written from the first on without a gap, and the rest of the
// map stays.
#include "display/color_map.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace kelvo;

void Require(bool holds)
{
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::vector<std::uint8_t> dark(kColorMapBytes, 0);
    std::vector<std::uint8_t> bright(kColorMapBytes, 255);
    const int badLines = ReadPalette(text, dark);
    Require(badLines >= 0 && badLines <= 256);
    Require(ReadPalette(text, bright) == badLines);

    // Entries are written from the first on without a gap, whatever was there before; the rest is untouched.
    std::size_t written = 0;
    while (written < kColorMapEntries && dark[written] == bright[written]) ++written;
    for (std::size_t entry = 0; entry < kColorMapEntries; ++entry) {
        for (const std::size_t plane : {kBluePlane, kGreenPlane, kRedPlane}) {
            if (entry < written) Require(dark[plane + entry] == bright[plane + entry]);
            if (entry >= written) Require(dark[plane + entry] == 0 && bright[plane + entry] == 255);
        }
    }
    return 0;
}
