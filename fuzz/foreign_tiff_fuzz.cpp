// A TIFF file of any program as frames.
#include "foreign_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return kelvo::FuzzForeign(kelvo::ForeignKind::kTiff, data, size);
}
