#include "export/export_formats.h"
#include "export/export_job.h"
#include "export/export_source.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace kelvo {
namespace {

// Three frames of 2 x 3 counts that count up.
std::string Recording()
{
    ImageHeaderRecord header;
    header.ByteSwap = 0xFFFF;
    header.ImageWidth = 3;
    header.ImageHeight = 2;
    header.SampleBytes = 2;
    header.HeaderVersion = 8;
    header.FrameCount = 3;
    header.IntensityCold = kUncalibratedIntensity;
    std::vector<std::int16_t> counts(18);
    for (std::size_t i = 0; i < counts.size(); ++i) counts[i] = static_cast<std::int16_t>(i);
    std::string bytes(sizeof header + counts.size() * 2, '\0');
    std::memcpy(bytes.data(), &header, sizeof header);
    std::memcpy(bytes.data() + sizeof header, counts.data(), counts.size() * 2);
    return bytes;
}

class FrameSinkTest : public testing::TestWithParam<ExportFormatNames> {
  protected:
    void SetUp() override { ASSERT_TRUE(ReplaceFile(In(), Recording())); }
    void TearDown() override { ClearFaults(); }

    std::string In() const { return directory_.Path() + "/in.seq"; }
    std::string Out() const { return directory_.Path() + "/out" + std::string(GetParam().extension); }

    ExportOutcome Export(std::int64_t stopAfter = 99)
    {
        std::string why;
        ExportRequest request;
        request.path = In();
        if (GetParam().format == ExportFormat::kCsv) request.end = 1;
        std::optional<ExportSource> source = ExportSource::Open(request, why);
        if (!source) {
            ADD_FAILURE() << why;
            return {};
        }
        const auto sink = MakeFrameSink(GetParam().format, Out(), true);
        return RunExport(*source, *sink, [stopAfter](std::int64_t done, std::int64_t) { return done < stopAfter; });
    }

    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(directory_.Path())) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

    TempDirectory directory_;
};

TEST_P(FrameSinkTest, AFaultAtAnyStepLeavesWhatStood)
{
    ASSERT_TRUE(ReplaceFile(Out(), "mine"));
    int faults = 0;
    for (int step = 1; step < 200; ++step) {
        SetFaultOnce("disk", step);
        const ExportOutcome outcome = Export();
        const bool hasCome = QuestionsUntilFault("disk") == 0;
        ClearFaults();
        if (!hasCome) {
            EXPECT_EQ(outcome.failure, "");
            break;
        }
        if (outcome.failure.empty()) continue;  // of what only tidies up
        ++faults;
        EXPECT_THAT(outcome.failure, testing::HasSubstr("can't be written: ")) << step;
        EXPECT_EQ(outcome.frames, 0);
        EXPECT_EQ(ReadWholeFile(Out(), 100), "mine") << step;
    }
    EXPECT_GT(faults, 2);
    EXPECT_NE(ReadWholeFile(Out(), 1 << 20), "mine");
}

TEST_P(FrameSinkTest, StoppedBeforeTheFirstFrameMakesNoFile)
{
    const ExportOutcome outcome = Export(0);
    EXPECT_TRUE(outcome.stopped);
    EXPECT_EQ(outcome.failure, "");
    EXPECT_THAT(Names(), testing::ElementsAre("in.seq"));
}

INSTANTIATE_TEST_SUITE_P(Formats, FrameSinkTest, testing::ValuesIn(ExportFormats()),
                         [](const auto& format) { return std::string(format.param.word); });

}  // namespace
}  // namespace kelvo
