#include "export/export_formats.h"
#include "export/export_job.h"
#include "export/export_source.h"
#include "export/npy_writer.h"
#include "export/tiff_writer.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace kelvo {

// By its name, not by its addresses, which are others in each build.
static void PrintTo(const ExportFormatNames& names, std::ostream* out)
{
    *out << names.word;
}

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
    void SetUp() override
    {
        ASSERT_TRUE(ReplaceFile(In(), Recording()));
        // A video is made by the first ffmpeg on PATH: this one keeps what it is handed.
        const std::string program = tools_.Path() + "/ffmpeg";
        ASSERT_TRUE(ReplaceFile(program, "#!/bin/sh\nfor last; do :; done\ncat >\"${last#file:}\"\n"));
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        setenv("PATH", (tools_.Path() + ":" + path_).c_str(), 1);
    }
    void TearDown() override
    {
        ClearFaults();
        setenv("PATH", path_.c_str(), 1);
    }

    std::string In() const { return directory_.Path() + "/in.seq"; }
    std::string Out() const { return directory_.Path() + "/out" + std::string(GetParam().extension); }

    ExportOutcome Export(std::int64_t stopAfter = 99)
    {
        std::string why;
        ExportRequest request;
        request.path = In();
        // A file of one frame.
        if (GetParam().format == ExportFormat::kCsv || GetParam().format == ExportFormat::kPng) request.end = 1;
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
    TempDirectory tools_;
    std::string path_ = std::getenv("PATH");
};

class TiffWriterTest : public testing::Test {
  protected:
    TempDirectory directory_;
};

TEST_P(FrameSinkTest, AFaultAtAnyStepLeavesWhatStood)
{
    int faults = 0;
    for (int step = 1; step < 200; ++step) {
        ASSERT_TRUE(ReplaceFile(Out(), "mine"));
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

class NpyWriterTest : public FrameSinkTest {
  protected:
    std::string Json() const { return NpyJsonPathOf(Out()); }
    // What stands there, and nothing else but the recording.
    std::vector<std::string> Pair() const
    {
        EXPECT_EQ(Names().size(), 1U + FileExists(Out()) + FileExists(Json()));
        return {ReadWholeFile(Out(), 1 << 20).value_or("none"), ReadWholeFile(Json(), 1 << 20).value_or("none")};
    }
};

// With both there, with one of the two, and with none.
TEST_P(NpyWriterTest, ArrayAndDescriptionAreBothNewOrBothAsTheyWere)
{
    using Contents = std::vector<std::string>;
    for (const Contents& before :
         {Contents{"mine", "my own"}, {"mine", "none"}, {"none", "my own"}, {"none", "none"}}) {
        int faults = 0;
        for (int step = 1; step < 200; ++step) {
            DeleteFileNamed(Out());
            DeleteFileNamed(Json());
            DeleteFileNamed(Json() + ".before");
            if (before[0] != "none") {
                ASSERT_TRUE(ReplaceFile(Out(), before[0]));
            }
            if (before[1] != "none") {
                ASSERT_TRUE(ReplaceFile(Json(), before[1]));
            }
            SetFaultOnce("disk", step);
            const ExportOutcome outcome = Export();
            const bool hasCome = QuestionsUntilFault("disk") == 0;
            ClearFaults();
            if (!outcome.failure.empty()) {
                ++faults;
                EXPECT_EQ(Pair(), before) << step;
                continue;
            }
            const std::string array = ReadWholeFile(Out(), 1 << 20).value_or("");
            EXPECT_EQ(array.substr(1, 5), "NUMPY") << step;
            EXPECT_EQ(array.size(), 128U + 36U);
            EXPECT_THAT(ReadWholeFile(Json(), 1 << 20).value_or(""), testing::HasSubstr("\"frames\": 3")) << step;
            if (hasCome) continue;  // of what only tidies up
            EXPECT_EQ(Names().size(), 3U);
            break;
        }
        EXPECT_GT(faults, 6);
    }
}

TEST_P(NpyWriterTest, ADescriptionBehindALinkStaysBehindIt)
{
    ASSERT_TRUE(ReplaceFile(directory_ / "real", "my own"));
    std::filesystem::create_symlink("real", Json());
    EXPECT_EQ(Export().failure, "");
    EXPECT_TRUE(std::filesystem::is_symlink(Json()));
    EXPECT_THAT(ReadWholeFile(directory_ / "real", 1 << 20).value_or(""), testing::HasSubstr("\"frames\": 3"));
}

// 43 where offsets have 64 bits, 42 where they have 32; tiffinfo finds three pages in both.
TEST_F(TiffWriterTest, IsBigTiffWhereTheSizeNeedsIt)
{
    const std::string out = directory_ / "out.tif";
    const std::int64_t needed = 3 * (12 + 4096) + 2 * 4;  // neither bad detectors nor a region: "null" twice
    for (const auto& [threshold, version] : {std::pair(needed, 42), std::pair(needed - 1, 43)}) {
        std::string why;
        ExportRequest request;
        request.path = directory_ / "in.seq";
        ASSERT_TRUE(ReplaceFile(request.path, Recording()));
        std::optional<ExportSource> source = ExportSource::Open(request, why);
        ASSERT_TRUE(source) << why;
        TiffWriter sink(out, true, threshold);
        EXPECT_EQ(RunExport(*source, sink, {}).frames, 3);
        EXPECT_EQ(ReadWholeFile(out, 1 << 20).value_or("II..").at(2), version);
        const std::string listed = directory_ / "pages";
        EXPECT_EQ(std::system(("tiffinfo " + out + " | grep -c 'Image Width: 3 Image Length: 2' >" + listed).c_str()),
                  0);
        EXPECT_EQ(ReadWholeFile(listed, 10), "3\n");
    }
}

class PngWriterTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(ReplaceFile(In(), Recording())); }
    void TearDown() override { ClearFaults(); }

    std::string In() const { return directory_.Path() + "/in.seq"; }

    // Frames 1 and 2 of the three.
    ExportOutcome Export(bool replace, std::int64_t stopAfter = 99)
    {
        std::string why;
        ExportRequest request;
        request.path = In();
        request.first = 1;
        std::optional<ExportSource> source = ExportSource::Open(request, why);
        if (!source) {
            ADD_FAILURE() << why;
            return {};
        }
        const auto sink = MakeFrameSink(ExportFormat::kPng, directory_ / "out.png", replace);
        return RunExport(*source, *sink, [stopAfter](std::int64_t done, std::int64_t) { return done < stopAfter; });
    }

    std::string Contents(const std::string& name) { return ReadWholeFile(directory_ / name, 1 << 20).value_or("none"); }

    TempDirectory directory_;
};

TEST_F(PngWriterTest, MakesAFileAFrameNumberedAsInItsSource)
{
    const ExportOutcome outcome = Export(false);
    EXPECT_EQ(outcome.failure, "");
    EXPECT_THAT(outcome.files, testing::ElementsAre(directory_ / "out-000001.png", directory_ / "out-000002.png"));
    for (const std::string& file : outcome.files) {
        EXPECT_EQ(std::system(("identify -format '%m %w %h' " + file + " | grep -qx 'PNG 3 2'").c_str()), 0) << file;
    }
    EXPECT_EQ(Contents("out.png"), "none");
    EXPECT_EQ(Contents("out-000000.png"), "none");
}

TEST_F(PngWriterTest, WritesNoneWhereOneOfThemStands)
{
    ASSERT_TRUE(ReplaceFile(directory_ / "out-000002.png", "mine"));
    EXPECT_EQ(Export(false).failure, (directory_ / "out-000002.png") + " stands already");
    EXPECT_EQ(Contents("out-000001.png"), "none");
    EXPECT_EQ(Contents("out-000002.png"), "mine");
    EXPECT_EQ(Export(true).failure, "");
    EXPECT_NE(Contents("out-000002.png"), "mine");
}

TEST_F(PngWriterTest, LeavesWholeFilesAndWhatStoodWhenALaterOneFails)
{
    const ExportOutcome whole = Export(true);
    const std::string first = Contents("out-000001.png");
    int between = 0;
    for (int step = 1; step < 200; ++step) {
        ASSERT_TRUE(ReplaceFile(directory_ / "out-000001.png", "mine 1"));
        ASSERT_TRUE(ReplaceFile(directory_ / "out-000002.png", "mine 2"));
        SetFaultOnce("disk", step);
        const ExportOutcome outcome = Export(true);
        const bool hasCome = QuestionsUntilFault("disk") == 0;
        ClearFaults();
        if (!hasCome) break;
        if (outcome.failure.empty()) continue;
        EXPECT_EQ(Contents("out-000002.png"), "mine 2") << step;
        if (outcome.files.empty()) {
            EXPECT_EQ(Contents("out-000001.png"), "mine 1") << step;
            continue;
        }
        ++between;
        EXPECT_THAT(outcome.files, testing::ElementsAre(directory_ / "out-000001.png"));
        EXPECT_THAT(outcome.failure,
                    testing::EndsWith("; " + (directory_ / "out-000001.png") + " before it stands whole"));
        EXPECT_EQ(Contents("out-000001.png").substr(0, 8), first.substr(0, 8));  // a PNG
    }
    EXPECT_GT(between, 2);
    EXPECT_EQ(whole.files.size(), 2U);
}

TEST_F(PngWriterTest, StoppedHasTheFramesUpToThere)
{
    const ExportOutcome outcome = Export(false, 1);
    EXPECT_TRUE(outcome.stopped);
    EXPECT_EQ(outcome.frames, 1);
    EXPECT_THAT(outcome.files, testing::ElementsAre(directory_ / "out-000001.png"));
    EXPECT_EQ(Contents("out-000002.png"), "none");
}

TEST_F(PngWriterTest, NeverWritesOverTheFileThatItComesFrom)
{
    std::filesystem::create_symlink(In(), directory_ / "out-000002.png");
    EXPECT_EQ(Export(true).failure, (directory_ / "out-000002.png") + " is the file that is exported");
    EXPECT_EQ(Contents("in.seq"), Recording());
    EXPECT_EQ(Contents("out-000001.png"), "none");
}

INSTANTIATE_TEST_SUITE_P(OfArrays, NpyWriterTest, testing::Values(ExportFormats()[3]),
                         [](const auto& format) { return std::string(format.param.word); });
INSTANTIATE_TEST_SUITE_P(Formats, FrameSinkTest, testing::ValuesIn(ExportFormats()),
                         [](const auto& format) { return std::string(format.param.word); });

}  // namespace
}  // namespace kelvo
