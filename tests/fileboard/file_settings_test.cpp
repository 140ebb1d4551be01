#include "fileboard/file_settings.h"

#include "support/temp_directory.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using testing::HasSubstr;

class FileSettingsFile : public testing::Test {
  protected:
    std::optional<FileSettings> Read(const std::string& text)
    {
        // Each text under a name of its own: what is read of one isn't another's.
        const std::string path = directory / ("camera" + std::to_string(++number_) + ".cnf");
        PutFile(path, text);
        error.clear();
        return ReadFileSettings(path, error);
    }
    FileSettings ReadRight(const std::string& text)
    {
        const std::optional<FileSettings> settings = Read(text);
        EXPECT_TRUE(settings) << error;
        return settings.value_or(FileSettings());
    }

    TempDirectory directory;
    std::string error;

  private:
    int number_ = 0;
};

TEST_F(FileSettingsFile, TellsHeadFilesAndPlaying)
{
    const FileSettings settings = ReadRight(
        "[Head]\nModel=hgcdte\nClock=40000000\n[Frames]\nLow=low.seq\nHigh=/data/high.npy\nScene=run_*.seq\nRate=12.5\n"
        "End=once\n[Bench]\nSource=high\n");
    EXPECT_EQ(settings.model, HeadModel::kHgCdTe);
    EXPECT_EQ(settings.clockHz, 40e6);
    EXPECT_EQ(settings.files, (std::array<std::string, 3>{"low.seq", "/data/high.npy", "run_*.seq"}));
    EXPECT_EQ(settings.rateHz, 12.5);
    EXPECT_EQ(settings.end, EndOfFile::kOnce);
    EXPECT_EQ(settings.source, FileSource::kHigh);
}

TEST_F(FileSettingsFile, OneFileIsEnough)
{
    const FileSettings settings = ReadRight("[Frames]\nHigh=high.seq\n");
    EXPECT_EQ(settings.model, HeadModel::kInSb);
    EXPECT_EQ(settings.clockHz, 48e6);
    EXPECT_EQ(settings.rateHz, 0);
    EXPECT_EQ(settings.end, EndOfFile::kLoop);
    EXPECT_EQ(settings.source, FileSource::kHigh) << "the one that has a file";
    EXPECT_EQ(ReadRight("[Frames]\nLow=a\nHigh=b\n").source, FileSource::kLow);
    EXPECT_EQ(ReadRight("[Frames]\nLow=a\nHigh=b\nScene=c\n").source, FileSource::kScene);
}

TEST_F(FileSettingsFile, WhatIsWrongIsNamed)
{
    struct Wrong {
        const char* text;
        const char* told;
    };
    constexpr const char* kRate = "It has to be 0 or a number from 0.01 to 1e+06.";
    for (const Wrong& wrong : {
             Wrong{"", "[Frames] names no file"},
             Wrong{"[Frames]\nLow=\n", "[Frames] names no file"},
             Wrong{"[Head]\nModel=CCD\n[Frames]\nLow=a\n",
                   "Model of [Head] is \"CCD\". It has to be one of: InSb, HgCdTe."},
             Wrong{"[Head]\nClock=0\n[Frames]\nLow=a\n", "Clock of [Head] is \"0\""},
             Wrong{"[Head]\nClock=nan\n[Frames]\nLow=a\n", "Clock of [Head] is \"nan\""},
             Wrong{"[Frames]\nLow=a\nRate=-1\n", kRate},
             Wrong{"[Frames]\nLow=a\nRate=inf\n", kRate},
             Wrong{"[Frames]\nLow=a\nRate=50 Hz\n", kRate},
             Wrong{"[Frames]\nLow=a\nRate=1e7\n", kRate},
             Wrong{"[Frames]\nLow=a\nRate=0.001\n", kRate},
             Wrong{"[Frames]\nLow=a\nEnd=stop\n", "It has to be one of: loop, once."},
             Wrong{"[Frames]\nLow=a\n[Bench]\nSource=high\n", "It has to be a source that has a file in [Frames]."},
             Wrong{"[Frames]\nLow=a\n[Bench]\nSource=volts\n", "It has to be one of: low, high, scene."},
         }) {
        EXPECT_FALSE(Read(wrong.text)) << wrong.text;
        EXPECT_THAT(error, HasSubstr(wrong.told));
        EXPECT_THAT(error, HasSubstr(directory.Path()));
    }
    EXPECT_FALSE(ReadFileSettings(directory / "none.cnf", error));
    EXPECT_THAT(error, HasSubstr("can't be read"));
    EXPECT_FALSE(Read(std::string(2 << 20, ';'))) << "longer than any such file";
}

}  // namespace
}  // namespace kelvo
