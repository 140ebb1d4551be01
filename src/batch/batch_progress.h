// How far a command is, on the error stream: on a terminal one line that is written over at each thousandth, elsewhere
// a line at each tenth.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

class BatchProgress {
  public:
    // doing: what the frames are of, "low source"; empty: nothing is said of it.
    explicit BatchProgress(std::string_view word, std::string_view doing = {});
    void Show(std::int64_t done, std::int64_t all);  // "kelvo apply: 4 of 4 frames"

  private:
    std::string front_;
    bool isTerminal_ = false;
    std::int64_t stepShown_ = -1;
};

// A line that is written over stays as it is, and what is told next has a line of its own.
void EndProgressLine();

}  // namespace kelvo
