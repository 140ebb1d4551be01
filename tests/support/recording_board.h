// A board that writes down what it is asked, in order, and fails where a test says so. Its picture is a counting frame,
// where a test gives no others: the value of column x, row y is picture + 100 y + x, cut to 16 bits.
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
    bool writesDown = true;                       // false: asked stays empty, and no memory is taken for it
    std::map<std::string, std::int32_t> answers;  // of operations, by name, in place of success
    bool hasComputingModules = false;
    std::int32_t bits = 16;
    std::int32_t colour = 0;
    std::int32_t picture = 1000;
    std::vector<std::vector<std::int16_t>>
        frames;                                // whole readouts, over and over; one count stands for all of a frame
    bool grabTurnsDisplayOff = false;          // so that nobody asks for a frame
    std::int64_t frameCount = 0;               // goes up by one with each blank; a grab begins at 0
    std::int64_t lostByTransport = 0;          // of them
    bool counts = true;                        // false: it knows no number of frames
    std::function<void(std::int32_t)> onRead;  // before the n-th read, from 1
    std::int32_t reads = 0;
};
extern RecordingBoard recordingBoard;

// Makes the board known as "recording", with the defaults above.
void RegisterRecordingBoard();

// The same where only what is started counts: the display stays off, and each wait for a frame runs out until
// SetBoardFrames has given some.
void RegisterQuietBoard();
// From here on the frames are these; without any the board times out again.
void SetBoardFrames(std::vector<std::vector<std::int16_t>> frames);
// "init", "grab" and "freeze" since the last call, in order. All that was asked is forgotten.
std::vector<std::string> TakeBoardCalls();

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
