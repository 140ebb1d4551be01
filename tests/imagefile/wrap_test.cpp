// kelvo-wrap, run as a program of its own.
#include "support/shipped_file.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace kelvo {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Outcome {
    int code = 0;
    std::string said;
};

Outcome Wrap(const std::string& arguments)
{
    Outcome outcome;
    FILE* const pipe = popen((KELVO_WRAP " " + arguments + " 2>&1").c_str(), "r");
    std::array<char, 256> part{};
    while (std::fgets(part.data(), part.size(), pipe)) outcome.said += part.data();
    const int status = pclose(pipe);
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

// Bytes written as hexadecimal, blanks between.
std::string Hex(std::string_view text)
{
    std::string bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 3) {
        bytes += static_cast<char>(std::stoi(std::string(text.substr(i, 2)), nullptr, 16));
    }
    return bytes;
}

class WrappingArrays : public ::testing::Test {
  protected:
    void SetUp() override
    {
        PutFile(raw,
                "aabbcc"
                "ddeeff"
                "gghhii");
    }

    TempDirectory directory;
    std::string raw = directory / "raw";  // three frames of 3 x 1
    std::string sides = "--width 3 --height 1 ";
};

TEST_F(WrappingArrays, PutsAHeaderBeforeTheFramesTaken)
{
    const std::string out = directory / "out.seq";
    const Outcome outcome = Wrap(sides + "--frames 3 --first 1 --count 2 --low 100 --high 16383 --rate 8.5 " +
                                 "--date 2019-02-03T04:05:06 " + raw + " " + out);
    ASSERT_EQ(outcome.code, 0) << outcome.said;

    std::string header(512, '\0');
    header.replace(0, 64,
                   Hex("FF FF 03 00 01 00 02 00 FF FF FF FF 13 00 02 00 "     // swap, 3 x 1, 2 bytes, fill, 19-02
                       "03 00 04 00 05 00 06 00 F0 D8 00 C0 79 C4 F0 D8 "     // day, time, -10000, -999.0, -10000
                       "00 C0 79 C4 00 00 80 3F 08 00 02 00 00 00 00 00 "     // -999.0, 1.0, version 8, 2 frames, top
                       "00 00 00 00 02 00 01 00 00 00 08 41 00 00 00 00 "));  // left, bottom, right, averaged, 8.5 Hz
    header.replace(112, 4, Hex("64 00 FF 3F "));
    header.replace(124, 2, Hex("01 00 "));  // integers
    header.replace(142, 2, Hex("01 00 "));  // one output
    EXPECT_EQ(FileContents(out), header + "ddeeffgghhii");
    EXPECT_FALSE(std::filesystem::exists(out + ".part"));
}

TEST_F(WrappingArrays, TakesAllFramesWithoutADateByDefault)
{
    const std::string out = directory / "out.seq";
    ASSERT_EQ(Wrap(sides + raw + " " + out).code, 0);
    const std::string bytes = FileContents(out);
    ASSERT_EQ(bytes.size(), 512U + 18U);
    EXPECT_EQ(bytes.substr(12, 12), std::string(12, '\0'));
    EXPECT_EQ(bytes.substr(42, 4), Hex("03 00 00 00 "));
    EXPECT_EQ(bytes.substr(112, 4), Hex("00 00 FF 3F "));
}

TEST_F(WrappingArrays, MakesASingleImageOfOneFrameOnly)
{
    EXPECT_EQ(Wrap(sides + "--count 1 " + raw + " " + (directory / "out.img")).code, 0);
    EXPECT_EQ(std::filesystem::file_size(directory / "out.img"), 512U + 6U);
    const Outcome outcome = Wrap(sides + raw + " " + (directory / "three.img"));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.said, HasSubstr("one frame"));
    EXPECT_FALSE(std::filesystem::exists(directory / "three.img"));
}

TEST_F(WrappingArrays, RefusesWhatDoesNotFitAndSaysWhy)
{
    const std::string out = " " + (directory / "out.seq");
    const std::array<std::pair<std::string, std::string>, 12> cases = {{
        {"--width 4 --height 1 " + raw + out, "no whole number"},
        {sides + "--frames 2 " + raw + out, "holds 3 frames, not 2"},
        {sides + "--first 3 " + raw + out, "only 3 frames"},
        {sides + "--first 1 --count 3 " + raw + out, "only 2 frames"},
        {"--width 0 --height 1 " + raw + out, "--width"},
        {"--width 3x --height 1 " + raw + out, "--width"},
        {"--width 32768 --height 1 " + raw + out, "--width"},
        {"--height 1 " + raw + out, "are wanted"},
        {sides + "--low 5 --high 5 " + raw + out, "below"},
        {sides + "--date 2019-13-03T04:05:06 " + raw + out, "--date"},
        {sides + raw, "OUTPUT"},
        {sides + (directory / "missing") + out, "can't read"},
    }};
    for (const auto& [arguments, reason] : cases) {
        const Outcome outcome = Wrap(arguments);
        EXPECT_EQ(outcome.code, 1) << arguments;
        EXPECT_THAT(outcome.said, HasSubstr(reason)) << arguments;
    }
    EXPECT_FALSE(std::filesystem::exists(directory / "out.seq"));
    EXPECT_EQ(Wrap(sides + raw + " " + (directory / "out.raw")).code, 1);
    EXPECT_EQ(Wrap(sides + "--loud 1 " + raw + out).code, 1);
    EXPECT_EQ(Wrap("--width").code, 1);
}

TEST_F(WrappingArrays, ExplainsItself)
{
    const Outcome outcome = Wrap("--help");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.said, StartsWith("usage: kelvo-wrap"));
}

TEST(SampleSequence, HoldsSeventyFiveFramesOfRawCounts)
{
    const std::string bytes = FileContents(ShippedFile("sample.seq"));
    ASSERT_EQ(bytes.size(), 512U + 75U * 160U * 120U * 2U);
    EXPECT_EQ(bytes.substr(0, 8), Hex("FF FF A0 00 78 00 02 00 "));
    EXPECT_EQ(bytes.substr(24, 12), Hex("F0 D8 00 C0 79 C4 F0 D8 00 C0 79 C4 "));
    EXPECT_EQ(bytes.substr(40, 6), Hex("08 00 4B 00 00 00 "));
    EXPECT_EQ(bytes.substr(56, 4), Hex("CD CC 0C 41 "));  // 8.8
    EXPECT_EQ(bytes.substr(112, 4), Hex("00 00 FF 3F "));
    int least = 32767;
    int most = -32768;
    for (std::size_t i = 512; i < bytes.size(); i += 2) {
        const int count = static_cast<unsigned char>(bytes[i]) | static_cast<signed char>(bytes[i + 1]) * 256;
        least = std::min(least, count);
        most = std::max(most, count);
    }
    EXPECT_EQ(least, 2648);  // as the recording's own description has it
    EXPECT_EQ(most, 3184);
}

}  // namespace
}  // namespace kelvo
