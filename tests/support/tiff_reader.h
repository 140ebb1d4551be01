// A reader of baseline TIFF files that knows nothing of the code under test: by the tags of TIFF 6.0, whatever their
// order and place, one gray image in strips.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace kelvo {

struct TiffField {
    std::uint32_t type = 0;
    std::vector<std::uint32_t> values;  // numbers; of a RATIONAL numerator and denominator
    std::string text;                   // of ASCII: all bytes, terminators too
};

struct TiffPicture {
    std::string error;  // empty: all that follows holds
    std::map<std::uint32_t, TiffField> fields;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t bits = 0;
    std::vector<std::uint32_t> samples;  // unsigned, as such files are read
    std::string description;             // up to its terminator
};

TiffPicture ReadTiff(const std::string& file);

}  // namespace kelvo
