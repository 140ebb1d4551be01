// Traces as files for other programs.
#include "analysis/trace_csv.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <sstream>

namespace kelvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::StartsWith;

std::vector<std::string> LinesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}
std::vector<std::string> RowsOf(const std::string& text)
{
    std::vector<std::string> rows = LinesOf(text);
    std::erase_if(rows, [](const std::string& line) { return line.starts_with('#'); });
    return rows;
}

Trace ThreeFrames()
{
    return {.frames = {{.number = 7, .utcNs = 1'795'357'800'123'456'789},
                       {.number = 8, .clockNs = 20'000'000, .utcNs = 1'795'357'800'143'456'789},
                       {.number = 12, .clockNs = 1'100'000'003, .missing = 3}},
            .lines = {{.name = "R1", .pixels = 4, .points = {{1.5, 0.25, -3, 9}, {2, 0, 2, 2}, {1.0 / 3, 0, 0, 1}}},
                      {.name = "a, \"b\"", .pixels = 1, .points = {{5, 0, 5, 5}, {6, 0, 6, 6}, {7, 0, 7, 7}}}},
            .origin = {{"source", "live video"}, {"comment", "two\nlines"}}};
}

TEST(TraceCsv, HasARowAFrame)
{
    // 22 November 2026 is day 20779 from 1 January 1970: 1,795,305,600 s, and 14:30 is 52,200 s later.
    static_assert(20779LL * 86400 + 52200 == 1'795'357'800);
    EXPECT_THAT(
        RowsOf(TraceCsv(ThreeFrames())),
        ElementsAre(
            "frame,number,seconds,utc,missing,R1 mean,R1 deviation,R1 minimum,R1 maximum,"
            "\"a, \"\"b\"\" mean\",\"a, \"\"b\"\" deviation\",\"a, \"\"b\"\" minimum\",\"a, \"\"b\"\" maximum\"",
            "1,7,0.000000000,2026-11-22T14:30:00.123456789Z,0,1.5,0.25,-3,9,5,0,5,5",
            "2,8,0.020000000,2026-11-22T14:30:00.143456789Z,0,2,0,2,2,6,0,6,6",
            "3,12,1.100000003,,3,0.3333333333333333,0,0,1,7,0,7,7"));
}

TEST(TraceCsv, TellsWhereItComesFromAndWhatIsMissing)
{
    const std::vector<std::string> lines = LinesOf(TraceCsv(ThreeFrames()));
    EXPECT_THAT(lines[0], StartsWith("# program: Kelvo "));
    for (const char* const line : {"# source: live video", "# comment: two lines", "# unit: counts", "# R1: 4 pixels",
                                   "# frames traced: 3", "# gaps: 1", "# gap: before frame 3: 3 missing"}) {
        EXPECT_THAT(lines, Contains(line));
    }
}

TEST(TraceCsv, LeavesTimesEmptyThatAreNotKnown)
{
    Trace trace = ThreeFrames();
    trace.hasTimes = false;
    EXPECT_THAT(RowsOf(TraceCsv(trace))[3], StartsWith("3,12,,,3,"));
}

TEST(TraceCsv, HasTheSpectrumOfEachLine)
{
    // 16 frames at 8 Hz; two counts of swing at 2 Hz, line 4 of 0 to 8.
    Trace trace;
    trace.lines = {{.name = "R1"}};
    for (int i = 0; i < 16; ++i) {
        trace.frames.push_back({.number = i + 1, .clockNs = i * 125'000'000LL});
        trace.lines[0].points.push_back({.mean = 50 + 2 * std::sin(std::numbers::pi / 2 * i)});
    }
    const std::string text = SpectrumCsv(trace);
    EXPECT_THAT(LinesOf(text), Contains("# spectrum of: 1 to 16 of 16 frames"));
    const std::vector<std::string> rows = RowsOf(text);
    ASSERT_EQ(rows.size(), 1U + 9U);
    EXPECT_EQ(rows[0], "hertz,R1 amplitude");
    double hertz = 0;
    double amplitude = 0;
    ASSERT_EQ(std::sscanf(rows[5].c_str(), "%lf,%lf", &hertz, &amplitude), 2);
    EXPECT_DOUBLE_EQ(hertz, 2);
    EXPECT_NEAR(amplitude, 2, 1e-12);
    EXPECT_THAT(RowsOf(SpectrumCsv(ThreeFrames())), testing::SizeIs(1)) << "too short";
}

}  // namespace
}  // namespace kelvo
