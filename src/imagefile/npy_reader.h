// The head of an array that NumPy stored (.npy, versions 1 to 3): strict, for what becomes frames.
//
// The layout: NumPy Enhancement Proposal 1, "A Simple File Format for NumPy Arrays", with its versions 2 and 3.
#pragma once

#include "imagefile/foreign_layout.h"
#include "platform/files.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

constexpr std::string_view kNpyMagic = "\x93NUMPY";

// Of an array of '<i2', '>i2', '<u2' or '>u2' in C order with two dimensions (rows, columns) or three (frames, rows,
// columns). nullopt with the reason in why: "isn't a NumPy file", "has a header that can't be read", "holds floats",
// "holds samples of 8 bits", "holds records", "holds what aren't numbers", "is stored in Fortran order", "has 4
// dimensions", and those of foreign_layout.h. At most 64 KB are read.
std::optional<ForeignLayout> ReadNpyHead(const File& file, std::string& why);

}  // namespace kelvo
