// The .cal file of a set: settings of any bytes.
#include "quiet_boxes.h"
#include "set_fuzz.h"

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    return kelvo::QuietBoxes();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static kelvo::FuzzSet set;
    set.Load("plain.cal", data, size);
    return 0;
}
