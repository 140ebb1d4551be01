// Traces over the frames of files made byte by byte.
#include "regions/trace_file.h"

#include "imagefile/frames_file.h"
#include "platform/memory.h"
#include "support/stored_files.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

constexpr std::int64_t kMs = 1'000'000;

class TraceFileTest : public testing::Test {
  protected:
    // Frame n, from 0, of 3 x 2 pixels: n n n / 10n 10n+2 10n+4
    TraceFileTest()
    {
        header_.FrameRate = 50;
        for (std::int16_t n = 0; n < 5; ++n) {
            const auto ten = static_cast<std::int16_t>(10 * n);
            frames_.push_back({n, n, n, ten, static_cast<std::int16_t>(ten + 2), static_cast<std::int16_t>(ten + 4)});
        }
    }
    std::string Path() const { return directory_.Path() + "/a.seq"; }
    StoredFrames Written()
    {
        WriteImageFile(Path(), header_, frames_);
        std::string why;
        std::optional<StoredFrames> file = StoredFrames::Open(Path(), why);
        EXPECT_TRUE(file) << why;
        return std::move(*file);
    }
    void WriteJournal(const std::vector<FrameRecord>& records) const
    {
        FramesHead head{.columns = 3, .rows = 2, .pixelBytes = 12, .texts = {}};
        head.SetText(frames_key::kCamera, "Bench");
        std::vector<FrameRecord> sealed;
        for (const FrameRecord& record : records) sealed.push_back(Sealed(record));
        ASSERT_TRUE(ReplaceFramesFile(FramesPathOf(Path()), head, sealed, {}));
    }
    static std::vector<Region> TwoRegions()
    {
        return {{.number = 1, .name = "row", .shape = RegionShape::kRectangle, .place = {0, 1, 2, 1}, .reflectedC = {}},
                {.number = 2, .name = "spot", .shape = RegionShape::kPoint, .place = {1, 0, 1, 0}, .reflectedC = {}}};
    }

    const TempDirectory directory_;
    ImageHeaderRecord header_ = PlainHeader(3, 2);
    std::vector<std::vector<std::int16_t>> frames_;
    std::string why_;
};

TEST_F(TraceFileTest, HasAPointForEachFrame)
{
    StoredFrames file = Written();
    const std::optional<Trace> trace = TraceOfFile(file, TwoRegions(), {}, {}, why_);
    ASSERT_TRUE(trace) << why_;
    ASSERT_THAT(trace->frames, SizeIs(5));
    ASSERT_THAT(trace->lines, SizeIs(2));
    EXPECT_EQ(trace->lines[0].name, "row");
    EXPECT_EQ(trace->lines[0].pixels, 3U);
    ASSERT_THAT(trace->lines[0].points, SizeIs(5));
    for (std::int16_t n = 0; n < 5; ++n) {
        const auto i = static_cast<std::size_t>(n);
        // 10n, 10n + 2, 10n + 4: the sample's deviation is 2.
        EXPECT_EQ(trace->lines[0].points[i], (TracePoint{.mean = 10.0 * n + 2,
                                                         .deviation = 2,
                                                         .minimum = static_cast<std::int16_t>(10 * n),
                                                         .maximum = static_cast<std::int16_t>(10 * n + 4)}));
        EXPECT_EQ(trace->lines[1].points[i].mean, n);
        EXPECT_EQ(trace->frames[i].number, n + 1);
    }
}

TEST_F(TraceFileTest, FollowsTheRateWithoutAJournal)
{
    StoredFrames file = Written();
    std::optional<Trace> trace = TraceOfFile(file, TwoRegions(), {.range = {.first = 1, .last = 3}}, {}, why_);
    ASSERT_TRUE(trace);
    EXPECT_TRUE(trace->hasTimes);
    EXPECT_THAT(trace->frames, ElementsAre(TraceFrame{.number = 2}, TraceFrame{.number = 3, .clockNs = 20 * kMs},
                                           TraceFrame{.number = 4, .clockNs = 40 * kMs}));
    EXPECT_EQ(trace->lines[1].points[0].mean, 1);

    header_.FrameRate = 0;
    StoredFrames timeless = Written();
    trace = TraceOfFile(timeless, TwoRegions(), {}, {}, why_);
    ASSERT_TRUE(trace);
    EXPECT_FALSE(trace->hasTimes);
    EXPECT_EQ(trace->frames.back(), (TraceFrame{.number = 5}));
}

TEST_F(TraceFileTest, TakesTimesAndGapsFromTheJournal)
{
    WriteJournal({{.number = 40, .monotonicNs = 700 * kMs, .utcNs = 9000, .lostByBoard = 8},
                  {.number = 41, .monotonicNs = 711 * kMs, .utcNs = 9011},
                  {.number = 44, .monotonicNs = 740 * kMs, .utcNs = 9040, .lostByBoard = 1, .lostByRing = 1},
                  {.number = 45, .monotonicNs = 750 * kMs, .utcNs = 9050},
                  {.number = 3, .monotonicNs = 800 * kMs, .utcNs = 9100, .flags = kFirstOfRun}});
    StoredFrames file = Written();
    const std::optional<Trace> trace = TraceOfFile(file, TwoRegions(), {}, {}, why_);
    ASSERT_TRUE(trace);
    EXPECT_THAT(trace->frames,
                ElementsAre(TraceFrame{.number = 40, .utcNs = 9000},
                            TraceFrame{.number = 41, .clockNs = 11 * kMs, .utcNs = 9011},
                            TraceFrame{.number = 44, .clockNs = 40 * kMs, .utcNs = 9040, .missing = 2},
                            TraceFrame{.number = 45, .clockNs = 50 * kMs, .utcNs = 9050},
                            TraceFrame{.number = 3, .clockNs = 100 * kMs, .utcNs = 9100, .startsAnew = true}));
    EXPECT_THAT(TraceGapsOf(trace->frames),
                ElementsAre(TraceGap{.before = 2, .missing = 2}, TraceGap{.before = 4, .missing = 0}));
    EXPECT_THAT(trace->origin, testing::Contains(testing::Pair("camera", "Bench")));
    EXPECT_THAT(trace->origin, testing::Contains(testing::Pair("source", Path())));
}

TEST_F(TraceFileTest, MixesNoClocksWhereTheJournalEndsBeforeTheFrames)
{
    WriteJournal({{.number = 40, .monotonicNs = 700 * kMs}, {.number = 45, .monotonicNs = 711 * kMs}});
    StoredFrames file = Written();
    std::optional<Trace> trace = TraceOfFile(file, TwoRegions(), {}, {}, why_);
    ASSERT_TRUE(trace);
    EXPECT_EQ(trace->frames[1], (TraceFrame{.number = 2, .clockNs = 20 * kMs}));
    trace = TraceOfFile(file, TwoRegions(), {.range = {.first = 0, .last = 1}}, {}, why_);
    ASSERT_TRUE(trace);
    EXPECT_EQ(trace->frames[1], (TraceFrame{.number = 45, .clockNs = 11 * kMs, .missing = 4}));
}

TEST_F(TraceFileTest, SaysWhyThereIsNone)
{
    StoredFrames file = Written();
    EXPECT_FALSE(TraceOfFile(file, TwoRegions(), {.range = {.first = 2, .last = 5}}, {}, why_));
    EXPECT_EQ(why_, "The file has the frames 0 to 4.");
    EXPECT_FALSE(TraceOfFile(file, {}, {}, {}, why_));
    EXPECT_EQ(why_, "There is no region to trace.");
    std::vector<Region> regions = TwoRegions();
    regions[1].place = {3, 0, 3, 0};
    EXPECT_FALSE(TraceOfFile(file, regions, {}, {}, why_));
    EXPECT_EQ(why_, "spot lies outside of the picture.");
    for (const int refused : {1, 2, 3, 4, 5}) {
        FailAllocation(refused);
        EXPECT_FALSE(TraceOfFile(file, TwoRegions(), {}, {}, why_)) << refused;
        EXPECT_THAT(why_, testing::StartsWith("There is not enough memory")) << refused;
    }
    FailAllocation(0);
    why_ = "before";
    EXPECT_TRUE(TraceOfFile(file, TwoRegions(), {}, {}, why_));
}

TEST_F(TraceFileTest, TellsTheFrameThatCannotBeRead)
{
    StoredFrames file = Written();
    std::filesystem::resize_file(Path(), std::filesystem::file_size(Path()) - 1);
    EXPECT_FALSE(TraceOfFile(file, TwoRegions(), {}, {}, why_));
    EXPECT_EQ(why_, "Frame 4 of the file can't be read.");
}

}  // namespace
}  // namespace kelvo
