#include "support/camera_fixture.h"

#include "state/windows_write.h"
#include "support/shipped_file.h"

#include <cmath>
#include <numeric>

namespace kelvo {

void SimCameraTest::SetUp()
{
    SetDefaultDir(directory.Path());
    for (const char* name : {"insb320.cnf", "insb640.cnf", "hgcdte64.cnf"}) {
        ASSERT_TRUE(std::filesystem::copy_file(ShippedFile(name), directory / name)) << name;
    }
}

void SimCameraTest::PutCopyWith(const std::string& from, const std::string& to, std::string_view line)
{
    const std::string key(line.substr(0, line.find('=') + 1));
    std::string text = FileContents(directory / from);
    const std::size_t start = text.find('\n' + key) + 1;
    ASSERT_NE(start, 0U) << key;
    text.replace(start, text.find('\n', start) - start, line);
    PutFile(directory / to, text);
}

void SimCameraTest::Open(const std::string& file)
{
    std::string error;
    camera = OpenSimCamera(file, error);
    ASSERT_TRUE(camera) << error;
}

void SimCameraTest::Send(const std::vector<WireFrame>& frames)
{
    for (const WireFrame& frame : frames) ASSERT_EQ(AnswerSimFrame(*camera, frame).size(), 4U);
}

// Worked by hand. Biases 15, 3 and 4 (mirrored in 3 bits: 1): 15 * 8 + 3 * 2 = 0x7E, 1 * 64 + 2 = 0x42.
// Last column 319 is unit 39 = 0100111, mirrored 1110010 = 114: 114 >> 6 = 1, 2 + 114 * 4 = 458 = 0x1CA.
// Last row 255 is unit 31 = 011111, mirrored 111110 = 62.
// Integration row 10: 242 lines and 159 columns; 244 and (159 + 3) / 4 = 40 are sent.
void SimCameraTest::Program320x256()
{
    width = 320;
    height = 256;
    Send({{0x50, 0, 0, 5},
          {0x50, 1, 64, 80},
          {0x50, 3, 244, 40},
          {0x50, 5, 0, 0xFF},
          {0x80, 3, 0, 0},
          {0x90, 0x30, 0, 0},
          {0x60, 0, 0x7E, 0x42},
          {0x60, 2, 0x01, 0xCA},
          {0x60, 4, 0x80, 62},
          {0x60, 0, 0, 0},
          {0x70, 1, 128, 0}});
}

// Last column 639 is unit 79 = 1001111, mirrored 1111001 = 121: 2 + 121 * 4 = 486 = 0x1E6. Last row: unit 63.
// Integration row 195: 250 lines and 638 columns; 252 and (638 + 3) / 4 = 160 are sent.
void SimCameraTest::Program640x512()
{
    width = 640;
    height = 512;
    Send({{0x50, 0, 0, 2},
          {0x50, 1, 128, 160},
          {0x50, 3, 252, 160},
          {0x80, 3, 0, 0},
          {0x90, 0x30, 0, 0},
          {0x60, 0, 0x7E, 0x42},
          {0x60, 2, 0x01, 0xE6},
          {0x60, 4, 0x80, 63},
          {0x60, 0, 0, 0},
          {0x70, 1, 128, 0}});
}

void SimCameraTest::Program64x64()
{
    width = 64;
    height = 64;
    Send({{0x90, 5, 11, 0xF0}, {0x80, 3, 0, 0}, {0x60, 0, 0, 0}, {0x70, 1, 128, 0}});
}

Counts SimCameraTest::Frame(std::int64_t n, std::int64_t timeUs)
{
    Counts counts(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), -1);
    ReadSimFrame(*camera, n, timeUs, width, height, counts);
    return counts;
}

SimCameraTest::Pixels SimCameraTest::Gather(std::int64_t first, int count)
{
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::vector<std::int64_t> sum(pixels);
    std::vector<std::int64_t> squares(pixels);
    for (std::int64_t n = first; n < first + count; ++n) {
        const Counts frame = Frame(n);
        for (std::size_t i = 0; i < pixels; ++i) {
            sum[i] += frame[i];
            squares[i] += std::int64_t{frame[i]} * frame[i];
        }
    }
    Pixels result;
    for (std::size_t i = 0; i < pixels; ++i) {
        const double mean = static_cast<double>(sum[i]) / count;
        const double square = static_cast<double>(squares[i]) - mean * static_cast<double>(sum[i]);
        result.mean.push_back(mean);
        result.deviation.push_back(count > 1 ? std::sqrt(std::max(0.0, square / (count - 1))) : 0.0);
    }
    return result;
}

std::vector<std::string> SimCameraTest::Kinds()
{
    std::vector<std::string> kinds;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto truth = SimTruth(*camera, x, y);
            kinds.push_back(truth.back().first == "deviation" ? "good" : truth.back().first);
        }
    }
    return kinds;
}

double MeanOf(const std::vector<double>& values)
{
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

double RmsAbout(const std::vector<double>& values, double centre)
{
    double squares = 0;
    for (const double value : values) squares += (value - centre) * (value - centre);
    return std::sqrt(squares / static_cast<double>(values.size()));
}

}  // namespace kelvo
