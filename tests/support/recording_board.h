// A board that writes down what it is asked, in order, and fails where a test says so. Its picture is a counting frame:
// the value of column x, row y is picture + 100 y + x, cut to 16 bits.
#pragma once

#include "support/operator.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace kelvo {

struct RecordingBoard {
    std::vector<std::string> asked;
    std::map<std::string, std::int32_t> answers;  // of operations, by name, in place of success
    bool hasComputingModules = false;
    std::int32_t bits = 16;
    std::int32_t colour = 0;
    std::int32_t picture = 1000;
    std::int64_t frameCount = 0;               // goes up by one with each blank
    std::function<void(std::int32_t)> onRead;  // before the n-th read, from 1
    std::int32_t reads = 0;
};
extern RecordingBoard recordingBoard;

// An operator, a directory with the settings files, and the recording board wired as the machine's.
class BoardTest : public testing::Test {
  protected:
    BoardTest();
    ~BoardTest() override;

    // The camera's size, and the fresh start of everything that depends on it.
    static void SetSize(int columns, int rows);
    // A size with the board open and live video running; what was asked so far is forgotten.
    static void GoLive(int columns, int rows);
    static void ForgetAsked();

    TempDirectory directory;
    TestOperator op;
};

}  // namespace kelvo
