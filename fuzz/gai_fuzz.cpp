// A gain list of any bytes and length.
#include "quiet_boxes.h"
#include "set_fuzz.h"

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    return kelvo::QuietBoxes();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static kelvo::FuzzSet set;
    set.Load("plain.gai", data, size);
    return 0;
}
