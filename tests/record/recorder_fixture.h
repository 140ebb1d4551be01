// The recorder on the simulated camera: 320 x 256 at 100 Hz, in virtual time, every moment of it exact.
#pragma once

#include "imagefile/frames_file.h"
#include "imagefile/header.h"
#include "record/recorder.h"
#include "simcam/sim_board_fixture.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

// What a file has, at the pace of the disk; empty where there is none.
std::string LongFile(const std::string& path);
// A recorded sequence taken apart by its layout alone: 512 bytes, then 80 bytes and the pixels of each frame.
struct TakenApart {
    ImageHeaderRecord header;
    std::vector<FrameHeaderRecord> frameHeaders;
    std::vector<std::vector<std::int16_t>> frames;
    std::size_t bytesBehind = 0;
};
TakenApart TakeApart(const std::string& path, std::size_t pixels);
std::vector<std::int64_t> NumbersOf(const std::string& path);        // by the journal
std::vector<std::int64_t> HeaderNumbersOf(const std::string& path);  // by the frame headers

class RecorderTest : public SimBoardTest {
  protected:
    static constexpr std::size_t kPixels = 320UL * 256UL;
    static constexpr std::int64_t kFrameBytes = 80 + 2 * 320 * 256;

    void SetUp() override;
    // Into the directory "out", named event001, event002...
    RecorderSettings Settings() const;
    void Start(const RecorderSettings& settings);
    void ExpectRefused(const RecorderSettings& settings, const std::string& why);
    // Until the frame of that number is complete, and the recorder has had its turn.
    void GoToFrame(std::int64_t number) const;
    std::string Out(const std::string& name) const { return out + '/' + name; }
    std::vector<std::string> FilesOut() const;  // all names in it, sorted
    static void ExpectBalance(const CaptureCounts& counts);

    std::string out;
    std::int64_t grabUs = 0;
};

}  // namespace kelvo
