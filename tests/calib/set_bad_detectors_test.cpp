#include "calib/set_bad_detectors.h"

#include "platform/faults.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

template <typename Entry>
std::string Bytes(const std::vector<Entry>& entries)
{
    std::string bytes(entries.size() * sizeof(Entry), '\0');
    std::memcpy(bytes.data(), entries.data(), bytes.size());
    return bytes;
}

const std::string kSet = "[Calibration]\nCalType=2\nDecomFile=a.dcm\nGainFile=a.gai\nOffsetFile=a.off\n";

// Frames of three columns and two rows, read out from the right.
class SetOfSix : public testing::Test {
  protected:
    SetOfSix()
    {
        PutFile(cal, kSet + "BadDetFile=c:\\KELVO\\a.bad\n");
        PutFile(directory / "a.dcm", Bytes<std::uint32_t>({2, 1, 0, 5, 4, 3}));
        PutFile(directory / "a.gai", Bytes<float>({1.0F, 1.0F, 0.0F, 1.0F, -0.0005F, 1.0F}));
        PutFile(directory / "a.off", Bytes<std::int16_t>({1, 2, 3, 4, 5, 6}));
        PutFile(directory / "a.bad", "   1,   2\n");
    }

    std::string Why(std::int32_t columns = 3, std::int32_t rows = 2) const
    {
        std::string why;
        EXPECT_FALSE(BadDetectorsOfSet(cal, columns, rows, why));
        return why;
    }

    TempDirectory directory;
    std::string cal = directory / "a.cal";
};

TEST_F(SetOfSix, GivesWhatItListsAndWhatHasNoGain)
{
    std::string why;
    // Detector 2 is pixel (0, 0), detector 4 pixel (1, 1); the list names (1, 2).
    EXPECT_THAT(BadDetectorsOfSet(cal, 3, 2, why).value(), ElementsAre(1, 0, 0, 0, 1, 1));
    PutFile(cal, kSet);
    EXPECT_THAT(BadDetectorsOfSet(cal, 3, 2, why).value(), ElementsAre(1, 0, 0, 0, 1, 0));
}

TEST_F(SetOfSix, WithoutGainsInForceListsThemAlone)
{
    std::string why;
    PutFile(cal, "[Calibration]\nCalType=1\nDecomFile=a.dcm\nGainFile=a.gai\nBadDetFile=a.bad\n");
    EXPECT_THAT(BadDetectorsOfSet(cal, 3, 2, why).value(), ElementsAre(0, 0, 0, 0, 0, 1));
    EXPECT_EQ(Why(4, 2), "a.dcm was made for frames of another size.");
}

TEST_F(SetOfSix, TellsWhetherItsFilesStand)
{
    EXPECT_TRUE(TellsBadDetectors(ReadSet(cal, 6)));
    PutFile(directory / "a.gai", "cut");
    EXPECT_TRUE(TellsBadDetectors(ReadSet(cal, 6)));
    std::filesystem::remove(directory / "a.bad");
    EXPECT_FALSE(TellsBadDetectors(ReadSet(cal, 6)));
    PutFile(cal, kSet);
    EXPECT_TRUE(TellsBadDetectors(ReadSet(cal, 6)));
    std::filesystem::remove(directory / "a.gai");
    EXPECT_FALSE(TellsBadDetectors(ReadSet(cal, 6)));
}

TEST_F(SetOfSix, ThatWasReadBeforeGivesTheSame)
{
    std::string why;
    EXPECT_EQ(BadDetectorsOfSet(ReadSet(cal, 6), 3, 2, why), BadDetectorsOfSet(cal, 3, 2, why));
    CalibrationSet refused;
    refused.calPath = cal;
    refused.memoryRefused = true;
    EXPECT_FALSE(BadDetectorsOfSet(refused, 3, 2, why));
    EXPECT_EQ(why, "There is no memory for the set a.cal.");
}

TEST_F(SetOfSix, IsRefusedForFramesOfAnotherSize)
{
    EXPECT_EQ(Why(4, 2), "a.gai was made for frames of another size.");
    EXPECT_EQ(Why(2, 2), "a.gai was made for frames of another size.");
    EXPECT_EQ(Why(0, 2), "There is no frame.");
    EXPECT_EQ(Why(-3, -2), "There is no frame.");
    PutFile(directory / "a.bad", "2,0\n");
    EXPECT_EQ(Why(), "a.bad lists row 2, column 0, which lies outside of a frame of 3 x 2.");
    PutFile(directory / "a.bad", "0,-1\n");
    EXPECT_THAT(Why(), HasSubstr("column -1"));
}

TEST_F(SetOfSix, SaysWhichFileCantBeRead)
{
    PutFile(directory / "a.bad", "0,1\nwords\n");
    EXPECT_EQ(Why(), "a.bad isn't a list of bad detectors: \"words\".");
    std::filesystem::remove(directory / "a.bad");
    EXPECT_EQ(Why(), "a.bad can't be read.");
    PutFile(directory / "a.dcm", Bytes<std::uint32_t>({2, 1, 0, 5, 4, 6}));
    EXPECT_EQ(Why(), "a.dcm can't be read.");
    std::filesystem::remove(directory / "a.gai");
    EXPECT_EQ(Why(), "a.gai can't be read.");
    SetFault("disk read", true);
    EXPECT_EQ(Why(), "a.cal can't be read.");
    ClearFaults();
    std::filesystem::remove(cal);
    EXPECT_EQ(Why(), "a.cal can't be opened.");
}

}  // namespace
}  // namespace kelvo
