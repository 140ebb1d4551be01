#include "platform/transcript.h"

#include "platform/clock.h"
#include "platform/faults.h"
#include "support/temp_directory.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using Texts = std::vector<std::string>;

TEST(Transcript, LinesAreJsonObjectsInTheOrderGiven)
{
    UseVirtualClock(0);
    DelayMs(1500);
    Transcribe("status", {{"text", std::string("Wait")}, {"align", std::int64_t{6}}});
    ASSERT_EQ(TranscriptLines().size(), 1U);
    EXPECT_EQ(TranscriptJson(TranscriptLines()[0]), R"({"t":1500,"kind":"status","text":"Wait","align":6})");
}

TEST(Transcript, EveryKindOfValueHasItsJson)
{
    const TranscriptLine line{
        7, "box", {{"buttons", Texts{"yes", "no"}}, {"none", Texts{}}, {"checked", true}, {"enabled", false}}};
    EXPECT_EQ(TranscriptJson(line),
              R"({"t":7,"kind":"box","buttons":["yes","no"],"none":[],"checked":true,"enabled":false})");
}

TEST(Transcript, SystemBytesBecomeUtf8)
{
    Transcribe("status", {{"text", std::string("20\xB0")}, {"paths", Texts{"\xC3\xA4", "\xE4"}}});
    const auto& fields = TranscriptLines()[0].fields;
    EXPECT_EQ(std::get<std::string>(fields[0].second), "20\xC2\xB0");
    EXPECT_EQ(std::get<Texts>(fields[1].second), (Texts{"\xC3\xA4", "\xC3\xA4"}));
}

// Another reader of JSON gets back what was written, whatever the bytes are.
TEST(Transcript, EveryByteSurvivesAForeignJsonReader)
{
    std::string every;
    for (int byte = 0; byte < 256; ++byte) every += static_cast<char>(byte);
    Transcribe("box", {{"text", every}, {"quotes", std::string("a\"b\\c/\n")}});
    QJsonParseError error;
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray::fromStdString(TranscriptJson(TranscriptLines()[0])), &error);
    ASSERT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    const QString text = document.object()["text"].toString();
    ASSERT_EQ(text.size(), 256);
    for (int byte = 0; byte < 256; ++byte) EXPECT_EQ(text[byte].unicode(), byte);
    EXPECT_EQ(document.object()["quotes"].toString(), QStringLiteral("a\"b\\c/\n"));
}

TEST(Transcript, FileHoldsEachLineAsSoonAsItHappens)
{
    UseVirtualClock(0);
    const TempDirectory directory;
    const std::string path = directory / "run.json";
    PutFile(path, "an older run");
    ASSERT_TRUE(OpenTranscript(path));
    Transcribe("beep", {{"sound", std::string("exclamation")}});
    EXPECT_EQ(FileContents(path), "{\"t\":0,\"kind\":\"beep\",\"sound\":\"exclamation\"}\n");
    Transcribe("beep", {});
    EXPECT_THAT(FileContents(path), ::testing::EndsWith("}\n{\"t\":0,\"kind\":\"beep\"}\n"));
    CloseTranscript();
    const std::string closed = FileContents(path);
    Transcribe("beep", {});
    EXPECT_EQ(TranscriptLines().size(), 3U);
    EXPECT_EQ(FileContents(path), closed);
}

TEST(Transcript, AFileThatCannotBeMadeIsTold)
{
    const TempDirectory directory;
    EXPECT_FALSE(OpenTranscript(directory / "missing/run.json"));
    EXPECT_FALSE(OpenTranscript(directory.Path()));
}

TEST(Transcript, MemoryOfLongRunsIsBounded)
{
    for (int i = 0; i < 200001; ++i) Transcribe("status", {{"n", std::int64_t{i}}});
    EXPECT_EQ(TranscriptLines().size(), 100001U);
    EXPECT_EQ(std::get<std::int64_t>(TranscriptLines().back().fields[0].second), 200000);
    EXPECT_EQ(std::get<std::int64_t>(TranscriptLines().front().fields[0].second), 100000);
}

TEST(Faults, StayUntilTheyAreTakenOff)
{
    EXPECT_FALSE(FaultIsSet("no mouse"));
    SetFault("no mouse", true);
    SetFault("no mouse", true);
    EXPECT_TRUE(FaultIsSet("no mouse"));
    EXPECT_FALSE(FaultIsSet("load dialog DISPLAY"));
    SetFault("no mouse", false);
    SetFault("no mouse", false);
    EXPECT_FALSE(FaultIsSet("no mouse"));
}

}  // namespace
}  // namespace kelvo
