// Files for tests: made byte by byte from the published layout, not by the code under test.
#pragma once

#include "imagefile/header.h"
#include "support/temp_directory.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

// A header of version 8 for 16-bit frames of width x height, native order, range 0 to 16383, 21 November 2026 12:34:05,
// uncalibrated.
ImageHeaderRecord PlainHeader(int width, int height);

// The samples as the file holds them, little-endian.
std::string SampleBytes(const std::vector<std::int16_t>& samples);
std::string HeaderBytes(const ImageHeaderRecord& header);

// Header and frames; each frame a vector of width x height counts.
void WriteImageFile(const std::string& path, const ImageHeaderRecord& header,
                    const std::vector<std::vector<std::int16_t>>& frames);

}  // namespace kelvo
