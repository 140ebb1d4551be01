// A GigE Vision camera on this machine's own network: Aravis's fake one with a feature list and a detector of ours.
// What it sends is what the simulated camera's detector sees, so that it can be calibrated, and each frame can be
// worked out beside it: it follows from its number and the registers alone.
//
// The camera answers and sends from threads of its own as long as the object lives. Nothing leaves the machine where
// the address is one of the loopback.
#pragma once

#include "simcam/sim_settings.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// What a format is called in the feature list, its number in the GigE Vision standard, and how counts of 14 bits come
// in it: the upper bits of them, in so many bits a pixel.
struct FakePixelFormat {
    std::string_view name;
    std::uint32_t code = 0;
    int bits = 0;       // of a count
    int pixelBits = 0;  // of a pixel on the wire
};
// Mono8, Mono10, Mono10p, Mono10Packed, Mono12, Mono12p, Mono12Packed, Mono14, Mono14p, Mono16.
std::span<const FakePixelFormat> FakePixelFormats();
// Null for a name without one.
const FakePixelFormat* FakePixelFormatOf(std::string_view name);

// Counts of 0 to 16383 as they go over the wire. Mono16 has them in its lower 14 bits.
std::vector<std::uint8_t> PackFakeCounts(std::span<const std::int16_t> counts, const FakePixelFormat& format);

enum class FakeFront { kLow, kHigh, kScene };

// What the camera's registers hold.
struct FakeRegisters {
    std::uint32_t exposureUs = 10000;
    std::uint32_t periodUs = 20000;
    std::uint32_t gain = 0;          // 0 to 15, row of the table of volts a count
    std::uint32_t blackLevel = 128;  // 0 to 255, steps of DAC 0
    bool reverseX = false;
    bool reverseY = false;
    bool testPattern = false;  // 16 counts more a row and a column, without noise
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;
    std::uint32_t left = 0;
    std::uint32_t top = 0;
    friend bool operator==(const FakeRegisters&, const FakeRegisters&) = default;
};

// The detectors behind it. One thread at a time.
class FakeDetector {
  public:
    explicit FakeDetector(const SimSettings& settings);
    ~FakeDetector();
    FakeDetector(const FakeDetector&) = delete;
    FakeDetector& operator=(const FakeDetector&) = delete;
    std::uint32_t Columns() const;
    std::uint32_t Rows() const;
    // Frame number n, rows x columns of the registers' window, row by row, 0 to 16383.
    std::vector<std::int16_t> Frame(const FakeRegisters& registers, FakeFront front, std::int64_t n);

  private:
    struct Array;
    std::unique_ptr<Array> array_;
};

struct FakeCameraSetup {
    std::string settingsFile;           // of the simulated camera (a .cnf file), the whole path
    std::string address = "127.0.0.1";  // of a network interface of this machine
    std::string serial = "KELVO1";
    std::string format = "Mono14";  // the one that it comes up with; it offers all
    double rateHz = 50;
    std::uint32_t exposureUs = 19400;  // the array that is shipped is within its limits there
    // Its word, "low", "high" or "scene", is what stands in front of the camera from the next frame on, whoever writes
    // it. Empty: Put alone says it.
    std::string frontFile;
};

class FakeCamera {
  public:
    // Comes up, when another one of these at that address is gone: it waits up to two minutes. Where it can't, Error
    // says why and nothing is there.
    explicit FakeCamera(const FakeCameraSetup& setup);
    ~FakeCamera();  // switched off: it neither answers nor sends any more
    FakeCamera(const FakeCamera&) = delete;
    FakeCamera& operator=(const FakeCamera&) = delete;

    const std::string& Error() const;  // empty: it runs
    void Put(FakeFront front);         // kScene at first
    FakeRegisters Registers() const;

  private:
    struct Inside;
    std::unique_ptr<Inside> inside_;
};

}  // namespace kelvo
