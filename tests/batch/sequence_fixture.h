// Small recorded sequences: 4 x 2 pixels, frame n holds the values 10 n + place.
#pragma once

#include "imagefile/frames_file.h"
#include "imagefile/recorded_sequence.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

constexpr std::int64_t kSmallFrameBytes = 80 + 16;

std::vector<std::int16_t> SmallPixels(std::int64_t number);
FrameRecord SmallRecord(std::int64_t number);
ImageHeaderRecord SmallHeader();
FramesHead SmallHead();

class SequenceTest : public testing::Test {
  protected:
    std::string In(std::string_view name) const { return directory / name; }
    // One of frames with these numbers, closed or left as a kill leaves it; a gap in them is the board's.
    void Record(const std::string& path, const std::vector<std::int64_t>& numbers, bool closed = true) const;
    // What a word gives: its exit code, what it said and what went wrong.
    struct Said {
        int code = -1;
        std::string out;
        std::string error;
    };
    static Said Run(std::vector<std::string> arguments);
    // All files of the directory and what is in them.
    std::vector<std::pair<std::string, std::string>> Everything() const;

    TempDirectory directory;
};

}  // namespace kelvo
