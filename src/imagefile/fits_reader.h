// The head of a FITS file whose first part is an image or a cube of 16-bit integers: strict, for what becomes frames.
//
// The layout: FITS Standard 4.0, sections 3 and 4; keyword ROWORDER as programs for cameras use it.
#pragma once

#include "imagefile/foreign_layout.h"
#include "platform/files.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

constexpr std::string_view kFitsMagic = "SIMPLE  =";

// Of a primary array with BITPIX 16, NAXIS 2 or 3, BSCALE 1 and BZERO 0 or 32768 (samples without sign). Without
// ROWORDER the first row stored is the uppermost one; 'BOTTOM-UP' turns that round. EXPTIME is taken in seconds, up to
// 1e9; another one isn't taken. A blank pixel (BLANK) is the count that stands for it.
//
// nullopt with the reason in why: "isn't a FITS file", "has a header that can't be read", "holds no image in its first
// part", "holds floats", "holds samples of 8 bits", "has 4 dimensions", "holds values that aren't counts (BSCALE or
// BZERO)", and those of foreign_layout.h. At most a thousand blocks of header are read, one after the other.
std::optional<ForeignLayout> ReadFitsHead(const File& file, std::string& why);

}  // namespace kelvo
