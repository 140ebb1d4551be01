// Lists into the active tables, and on disk.
#include "pixel/coefficient_lists.h"

#include "calib/cal_state.h"
#include "config/camera_config.h"
#include "support/shown.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

template <typename Entry>
std::span<const std::uint8_t> Bytes(const std::vector<Entry>& list)
{
    return {reinterpret_cast<const std::uint8_t*>(list.data()), list.size() * sizeof(Entry)};
}

std::span<std::uint8_t> Room(std::vector<std::uint32_t>& list)
{
    return {reinterpret_cast<std::uint8_t*>(list.data()), list.size() * sizeof(std::uint32_t)};
}

ShownBox Message(const std::string& text)
{
    return {.caption = "Kelvo message", .text = text};
}

TEST(ActiveTables, AGainOfZeroReadsBackAsATenthAndTheCallersListKeepsIt)
{
    ActiveConfig.Vroi = 1;
    ActiveConfig.Hroi = 4;
    const std::vector<float> gains = {0.0F, 1.5F, 0.0001F, -1.0F};
    EXPECT_EQ(DownloadCoefficients(kGainKind, Bytes(gains)), 1);
    EXPECT_THAT(GainList, ElementsAre(0.1F, 1.5F, 0.0001F, -1.0F));
    std::uint32_t bits = 0;
    std::memcpy(&bits, GainList.data(), sizeof bits);
    EXPECT_EQ(bits, 0x3DCCCCCDU);
    EXPECT_EQ(gains[0], 0.0F);
}

TEST(ActiveTables, AreFilledWithOneValue)
{
    ActiveConfig.Vroi = 1;
    ActiveConfig.Hroi = 4;
    EXPECT_EQ(FillCoefficients(kOffsetKind, 1, 3, 16384.0 * 4 + 5), 1);  // the low 16 bits
    EXPECT_THAT(OffsetList, ElementsAre(0, 5, 5, 0));
    EXPECT_EQ(FillCoefficients(kDecomKind, 0, 2, 3), 1);
    EXPECT_THAT(DecomList, ElementsAre(3U, 3U, 0U, 0U));
    EXPECT_EQ(FillCoefficients(4, 0, 2, 3), 0);
    EXPECT_EQ(DownloadCoefficients(3, {}), 0);
}

class ListOnDisk : public testing::Test {
  protected:
    TempDirectory directory;
    std::string path = directory / "table.dcm";
    std::vector<std::uint32_t> list = {1, 2, 0xA1B2C3D4};
};

TEST_F(ListOnDisk, IsItsWordsInOrder)
{
    EXPECT_EQ(SaveList(path, Bytes(list), 3), 1);
    EXPECT_EQ(FileContents(path), std::string("\1\0\0\0\2\0\0\0\xD4\xC3\xB2\xA1", 12));
    std::vector<std::uint32_t> read(2);
    EXPECT_EQ(LoadList(path, Room(read), 2), 1);
    EXPECT_THAT(read, ElementsAre(1U, 2U));
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(ListOnDisk, ThatIsSmallerThanTheCountIsToldAndCut)
{
    EXPECT_EQ(SaveList(path, Bytes(list), 5), 1);
    EXPECT_EQ(FileContents(path).size(), 12U);
    std::vector<std::uint32_t> read(2);
    EXPECT_EQ(LoadList(path, Room(read), 3), 1);
    EXPECT_THAT(read, ElementsAre(1U, 2U));
    EXPECT_THAT(BoxesShown(),
                ElementsAre(Message("Allocated memory is smaller than ROI Pixels"), Message("lStatus=3,ROIPixels=5"),
                            Message("Allocated memory is smaller than ROI PIxels")));
}

TEST_F(ListOnDisk, WithoutAPlaceIsTold)
{
    const std::string nowhere = directory / "none/table.dcm";
    EXPECT_EQ(SaveList(nowhere, Bytes(list), 3), 0);
    std::vector<std::uint32_t> read(3, 9);
    EXPECT_EQ(LoadList(nowhere, Room(read), 3), 0);
    EXPECT_THAT(read, ElementsAre(9U, 9U, 9U));
    EXPECT_THAT(BoxesShown(),
                ElementsAre(ShownBox{.caption = "Kelvo File Error!", .text = "Failed to open file: " + nowhere},
                            Message("Failed to open file: " + nowhere)));
}

TEST_F(ListOnDisk, ThatIsShortIsTold)
{
    PutFile(path, "12345678901");
    std::vector<std::uint32_t> read(3);
    EXPECT_EQ(LoadList(path, Room(read), 3), 0);
    EXPECT_THAT(BoxesShown(), ElementsAre(Message("Failed to read file: " + path)));
}

TEST_F(ListOnDisk, NeedsAListToBeReadInto)
{
    EXPECT_EQ(LoadList(path, {}, 3), 0);
    EXPECT_THAT(BoxesShown(), ElementsAre(Message("Failure to lock memory!")));
}

}  // namespace
}  // namespace kelvo
