// Camera files that make no camera, and what the operator is told.
#include "simcam/sim_settings.h"
#include "support/camera_fixture.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using testing::HasSubstr;

class SimCameraFile : public SimCameraTest {
  protected:
    std::string ErrorOf(const std::string& file)
    {
        std::string error;
        EXPECT_EQ(OpenSimCamera(file, error), nullptr) << file;
        return error;
    }
    // The error of the shipped file with one line changed.
    std::string ErrorWith(std::string_view line)
    {
        PutCopyWith("insb320.cnf", "bad.cnf", line);
        return ErrorOf("bad.cnf");
    }
};

TEST_F(SimCameraFile, AMissingFileMakesNoCamera)
{
    const std::shared_ptr<SimCamera> before = CurrentSimCamera();
    EXPECT_THAT(ErrorOf("nothing.cnf"), HasSubstr("can't be read"));
    EXPECT_THAT(ErrorOf(""), HasSubstr("can't be read"));  // the directory
    EXPECT_EQ(CurrentSimCamera(), before);
}

TEST_F(SimCameraFile, AFileThatIsNoCameraSaysWhatIsMissing)
{
    PutFile(directory / "empty.cnf", "");
    EXPECT_THAT(ErrorOf("empty.cnf"), HasSubstr("Model of [Head] is \"\""));
    PutFile(directory / "binary.cnf", std::string_view("\0\xFF[Head\nModel=\x01", 15));
    EXPECT_THAT(ErrorOf("binary.cnf"), HasSubstr("Model of [Head]"));
    PutFile(directory / "long.cnf", "[Head]\nModel=InSb\n" + std::string(2 << 20, ';'));
    EXPECT_THAT(ErrorOf("long.cnf"), HasSubstr("can't be read"));
}

TEST_F(SimCameraFile, EveryNumberHasARange)
{
    for (const char* line : {"Columns=0",
                             "Columns=-8",
                             "Columns=1000000000",
                             "Columns=12",
                             "Columns=wide",
                             "Columns=",
                             "Columns=320.5",
                             "Columns=320 256",
                             "Rows=0",
                             "Rows=4294967296",
                             "Rows=1e300",
                             "Rows=nan",
                             "Clock=0",
                             "Clock=inf",
                             "Clock=nan",
                             "Clock=-48000000",
                             "FNumber=0",
                             "Transmission=nan",
                             "Transmission=2",
                             "FullWellElectrons=0",
                             "MicrovoltsPerElectron=0",
                             "Seed=-1",
                             "BadFraction=1.5",
                             "Scheme=13",
                             "LowDegrees=-41",
                             "HighDegrees=151",
                             "Emissivity=nan",
                             "WorkingIntegrationMs=0",
                             "ShadingAcross=0.03",
                             "GainSpread=1",
                             "RawCountsPerDegree=0",
                             "BandFromUm=5",
                             "BandToUm=40"}) {
        const std::string key = std::string(line).substr(0, std::string_view(line).find('='));
        EXPECT_THAT(ErrorWith(line), HasSubstr(key)) << line;
    }
    EXPECT_THAT(ErrorWith("Columns=wide"), HasSubstr("It has to be a whole number from 8 to 1024."));
}

TEST_F(SimCameraFile, ChoicesAndListsAreChecked)
{
    EXPECT_THAT(ErrorWith("Model=CCD"), HasSubstr("It has to be one of: InSb, HgCdTe."));
    EXPECT_THAT(ErrorWith("Answer=maybe"), HasSubstr("one of: normal, silent, refuses, short, noise."));
    EXPECT_THAT(ErrorWith("Source=sun"), HasSubstr("one of: low, high, scene, raw."));
    EXPECT_THAT(ErrorWith("Source=raw"), HasSubstr("names no frames"));
    for (const char* line : {"VoltsPerCountVsGain=1,2", "VoltsPerCountVsGain=0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0",
                             "VoltsPerCountVsGain=1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1",
                             "VoltsPerCountVsGain=1,1,1,x,1,1,1,1,1,1,1,1,1,1,1,1"}) {
        EXPECT_THAT(ErrorWith(line), HasSubstr("16 numbers")) << line;
    }
    EXPECT_THAT(ErrorWith("RawFile=missing_160x120.raw"), HasSubstr("can't be read"));
}

TEST_F(SimCameraFile, KeysThatAreMissingHaveDefaults)
{
    PutFile(directory / "short.cnf", "[Head]\nModel=hgcdte\n");
    std::string error;
    SimSettings nothing;
    nothing.clockHz = 0;
    const SimSettings settings = ReadSimSettings(directory / "short.cnf", error).value_or(nothing);
    EXPECT_EQ(error, "");
    EXPECT_EQ(settings.model, HeadModel::kHgCdTe);
    EXPECT_EQ(settings.clockHz, 48000000);
    EXPECT_EQ(settings.badFraction, 0.02);
}

TEST_F(SimCameraFile, AFileThatWasRepairedOpens)
{
    PutFile(directory / "head.cnf", "[Head]\nModel=none\n");
    ErrorOf("head.cnf");
    PutFile(directory / "head.cnf", "[Head]\nModel=InSb\n[Array]\nColumns=64\nRows=64\n");
    Open("head.cnf");
    EXPECT_EQ(CurrentSimCamera(), camera);
}

TEST_F(SimCameraFile, WhoeverOpensTheSameFileGetsTheSameCamera)
{
    Open("insb320.cnf");
    const auto first = camera;
    Open("hgcdte64.cnf");
    EXPECT_NE(camera, first);
    EXPECT_EQ(CurrentSimCamera(), camera);
    Open(directory / "insb320.cnf");
    EXPECT_EQ(camera, first);
    Open("INSB320.CNF");
    EXPECT_EQ(camera, first);
    EXPECT_EQ(CurrentSimCamera(), first);
}

}  // namespace
}  // namespace kelvo
