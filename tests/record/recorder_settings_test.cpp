#include "record/recorder_settings.h"

#include "platform/profile.h"
#include "state/windows_write.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>

#include <ctime>

namespace kelvo {
namespace {

using testing::HasSubstr;

class RecorderFile : public testing::Test {
  protected:
    RecorderFile() { SetDefaultDir(directory.Path()); }
    void Put(const std::string& lines) const { PutFile(directory / "recorder.ini", "[Recorder]\n" + lines); }
    TempDirectory directory;
};

TEST_F(RecorderFile, KeepsEverySetting)
{
    const RecorderSettings settings = {.directory = "/data/run 7",
                                       .namePattern = "{sample}_{n}",
                                       .pixels = RecordPixels::kBoth,
                                       .length = RecordLength::kSeconds,
                                       .frames = 12,
                                       .seconds = 0.125,
                                       .intervalSeconds = 1.5,
                                       .startTime = "14:30",
                                       .trigger = RecordTrigger::kMean,
                                       .preTriggerSeconds = 2.25,
                                       .preTriggerFrames = 30,
                                       .meanLeft = 1,
                                       .meanTop = 2,
                                       .meanRight = 3,
                                       .meanBottom = 4,
                                       .meanLow = -10.5,
                                       .meanHigh = 8000,
                                       .region = "Left, top",
                                       .regionLevel = 812.5,
                                       .regionPass = RegionPass::kFalling,
                                       .events = 5,
                                       .splitGigabytes = 4,
                                       .splitMinutes = 10,
                                       .syncSeconds = 1,
                                       .sampleName = "wafer 3",
                                       .comment = "cold start"};
    WriteRecorderSettings(settings);
    ASSERT_TRUE(FlushProfiles());
    ForgetProfiles();
    EXPECT_EQ(ReadRecorderSettings(), settings);
    EXPECT_THAT(FileContents(directory / "recorder.ini"), HasSubstr("Seconds=0.125\n"));
}

TEST_F(RecorderFile, WithoutAFileAllIsAsShipped)
{
    EXPECT_EQ(ReadRecorderSettings(), RecorderSettings());
}

TEST_F(RecorderFile, WhatMakesNoSenseIsAsShipped)
{
    Put("Frames=0\nSeconds=-1\nSyncSeconds=0\nEvents=x\nTrigger=9\nPixels=-1\nLength=\nMeanLeft=5000\nSplitMinutes="
        "nan\n"
        "SplitGigabytes=inf\n");
    EXPECT_EQ(ReadRecorderSettings(), RecorderSettings());
}

TEST_F(RecorderFile, AsTextHasALineForEachKey)
{
    const std::string text = RecorderSettingsText({});
    EXPECT_THAT(text, HasSubstr("NamePattern={date}_{time}_{n:03}\n"));
    EXPECT_THAT(text, HasSubstr("SyncSeconds=2\n"));
    EXPECT_THAT(text, HasSubstr("Trigger=0\n"));
}

std::int64_t LocalMoment(int hour, int minute, int second)
{
    std::tm local{};
    local.tm_year = 126;
    local.tm_mon = 10;
    local.tm_mday = 3;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    local.tm_isdst = -1;
    return std::mktime(&local);
}

TEST(EventNames, AreMadeFromThePattern)
{
    const std::int64_t ns = LocalMoment(4, 5, 6) * 1'000'000'000 + 999'999'999;
    EXPECT_EQ(EventName("{date}_{time}_{n:03}", 7, ns, ""), "20261103_040506_007");
    EXPECT_EQ(EventName("{n}-{n:01}-{n:05}", 1234, ns, ""), "1234-1234-01234");
    EXPECT_EQ(EventName("{sample}", 1, ns, "a/b\\c:d"), "a_b_c_d");
    EXPECT_EQ(EventName("plain", 1, ns, ""), "plain");
}

TEST(EventNames, APatternThatMakesNoFileNameIsRefused)
{
    for (const char* const pattern : {"{date}", "x{n}", "{n:09}", "a b", "{sample}"}) {
        EXPECT_TRUE(PatternIsUsable(pattern)) << pattern;
    }
    for (const char* const pattern :
         {"", ".", "..", "a/b", "{year}", "{n:3}", "{n:00}", "{n", "{n:003}", "a\\b", "c:x"}) {
        EXPECT_FALSE(PatternIsUsable(pattern)) << pattern;
    }
    EXPECT_TRUE(PatternCounts("a{n:02}"));
    EXPECT_FALSE(PatternCounts("{date}_{time}"));
}

TEST(StartTimes, AreTheNextSuchTimeOfDay)
{
    const std::int64_t now = LocalMoment(14, 30, 10);
    EXPECT_EQ(SecondsUntil("14:30:10", now), 0);
    EXPECT_EQ(SecondsUntil("14:30:15", now), 5);
    EXPECT_EQ(SecondsUntil("14:31", now), 50);
    EXPECT_EQ(SecondsUntil(" 9:05 ", now), 24 * 3600 - (5 * 3600 + 25 * 60 + 10));
    for (const char* const text :
         {"", "now", "24:00", "12:60", "12:00:60", "12", "12:", "12:00:", "12:00:00:00", "1x:00", "-1:00", "123:00"}) {
        EXPECT_LT(SecondsUntil(text, now), 0) << text;
    }
}

}  // namespace
}  // namespace kelvo
