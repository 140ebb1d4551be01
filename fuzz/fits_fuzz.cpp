// A FITS file as frames.
#include "foreign_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return kelvo::FuzzForeign(kelvo::ForeignKind::kFits, data, size);
}
