// A board that completes a frame each millisecond in real time, 32 x 4 values that all are the frame's number. Only the
// thread that captures may touch it while one does.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

namespace kelvo {

constexpr std::int32_t kPacedColumns = 32;
constexpr std::int32_t kPacedRows = 4;
constexpr std::size_t kPacedValues = std::size_t{kPacedColumns} * kPacedRows;

class PacedBoardTest : public testing::Test {
  protected:
    PacedBoardTest();  // the board is open, and grabs
    ~PacedBoardTest() override;

    static bool WasCalledByAnotherThread();
    static std::int32_t TriggerSetting();  // as amdig_trigen was last told
    static void NewOwner();                // the next thread that calls the board may do so
};

}  // namespace kelvo
