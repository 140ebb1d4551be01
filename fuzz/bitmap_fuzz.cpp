// A bitmap file: read, looked at as a block, turned into a picture, and saved again.
#include "dibapi32/dibapi32.h"
#include "reset/reset.h"
#include "temp_file.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <optional>
#include <span>

namespace {

void LookAt(const kelvo::Dib& dib)
{
    const std::span<const std::uint8_t> bits = kelvo::DibBits(*dib);
    const std::span<const std::uint8_t> table = kelvo::DibPalette(*dib);
    static volatile unsigned int sum = 0;  // every byte is touched
    sum = sum + std::accumulate(bits.begin(), bits.end(), 0U) + std::accumulate(table.begin(), table.end(), 0U);
    kelvo::PaletteFromDib(dib);
    const std::optional<kelvo::DeviceBitmap> picture = kelvo::BitmapFromDib(dib);
    if (picture && !kelvo::DibFromBitmap(*picture)) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kelvo::ResetModules();
    static kelvo::FuzzFile input;
    static kelvo::FuzzFile output;
    std::optional<kelvo::File> file = kelvo::File::Open(input.Put(data, size), kelvo::FileMode::kRead);
    if (!file) __builtin_trap();
    if (const kelvo::Dib dib = kelvo::ReadDibFile(*file)) {
        if (dib->bytes.size() > 2 * size + 64) __builtin_trap();  // table and rows may overlap in the file, no more
        LookAt(dib);
    }
    // The same bytes as a block, as who gets one from elsewhere would hand it in.
    const auto block = std::make_shared<kelvo::DibBlock>(kelvo::DibBlock{{data, data + size}});
    LookAt(block);
    const std::uint8_t nothing = 0;
    kelvo::SaveDib(block, output.Put(&nothing, 0));
    return 0;
}
