// Lists into the active tables, and on disk.
#include "pixel/coefficient_lists.h"

#include "platform/memory.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "support/full_disk.h"
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
    write::camera.ActiveConfig.Vroi = 1;
    write::camera.ActiveConfig.Hroi = 4;
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
    write::camera.ActiveConfig.Vroi = 1;
    write::camera.ActiveConfig.Hroi = 4;
    EXPECT_EQ(FillCoefficients(kOffsetKind, 1, 3, 16384.0 * 4 + 5), 1);  // the low 16 bits
    EXPECT_THAT(OffsetList, ElementsAre(0, 5, 5, 0));
    EXPECT_EQ(FillCoefficients(kDecomKind, 0, 2, 3), 1);
    EXPECT_THAT(DecomList, ElementsAre(3U, 3U, 0U, 0U));
    EXPECT_EQ(FillCoefficients(4, 0, 2, 3), 0);
    EXPECT_EQ(DownloadCoefficients(3, {}), 0);
}

TEST(ActiveTables, TheReadoutOrderIsMadeAnewForALargerFrameAndTheCoefficientsAreNot)
{
    write::camera.ActiveConfig.Vroi = 1;
    write::camera.ActiveConfig.Hroi = 2;
    EXPECT_EQ(DownloadCoefficients(kDecomKind, Bytes(std::vector<std::uint32_t>{1, 0})), 1);
    EXPECT_EQ(DownloadCoefficients(kOffsetKind, Bytes(std::vector<std::int16_t>{-3, 4, 5, 6})), 1);
    EXPECT_EQ(DownloadCoefficients(kGainKind, Bytes(std::vector<float>{1.5F, 2})), 1);
    EXPECT_THAT(OffsetList, ElementsAre(-3, 4));  // a list may be longer than the frame
    write::camera.ActiveConfig.Hroi = 4;
    EXPECT_EQ(DownloadCoefficients(kDecomKind, Bytes(std::vector<std::uint32_t>{3, 2, 1, 0})), 1);
    EXPECT_EQ(DownloadCoefficients(kOffsetKind, Bytes(std::vector<std::int16_t>{7, 8, 9, 10})), 1);
    EXPECT_EQ(DownloadCoefficients(kGainKind, Bytes(std::vector<float>{3, 4, 5, 6})), 1);
    EXPECT_THAT(DecomList, ElementsAre(3U, 2U, 1U, 0U));
    EXPECT_THAT(OffsetList, ElementsAre(7, 8));
    EXPECT_THAT(GainList, ElementsAre(3.0F, 4.0F));
    write::camera.ActiveConfig.Hroi = 1;
    EXPECT_EQ(DownloadCoefficients(kDecomKind, Bytes(std::vector<std::uint32_t>{0})), 1);
    EXPECT_THAT(DecomList, ElementsAre(0U, 2U, 1U, 0U));  // large enough: it stays, and so does what lies behind
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST(ActiveTables, AListShorterThanTheFrameIsRefusedAndTheTableStays)
{
    write::camera.ActiveConfig.Vroi = 2;
    write::camera.ActiveConfig.Hroi = 2;
    write::cal.DecomList = {3, 2, 1, 0};
    write::cal.OffsetList = {1, 2, 3, 4};
    write::cal.GainList = {1, 2, 3, 4};
    EXPECT_EQ(DownloadCoefficients(kDecomKind, Bytes(std::vector<std::uint32_t>{0, 0, 0})), 0);
    EXPECT_EQ(DownloadCoefficients(kOffsetKind, Bytes(std::vector<std::int16_t>{0, 0, 0})), 0);
    EXPECT_EQ(DownloadCoefficients(kGainKind, {}), 0);
    EXPECT_THAT(DecomList, ElementsAre(3U, 2U, 1U, 0U));
    EXPECT_THAT(OffsetList, ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(GainList, ElementsAre(1.0F, 2.0F, 3.0F, 4.0F));
    const ShownBox refused = Message("Global Memory would not lock");
    EXPECT_THAT(BoxesShown(), ElementsAre(refused, refused, refused));
}

TEST(ActiveTables, WithoutMemoryForATableNothingIsInstalled)
{
    write::camera.ActiveConfig.Vroi = 1;
    write::camera.ActiveConfig.Hroi = 2;
    FailAllocation(1);
    EXPECT_EQ(DownloadCoefficients(kGainKind, Bytes(std::vector<float>{1, 2})), 0);
    EXPECT_THAT(GainList, IsEmpty());
    FailAllocation(1);
    EXPECT_EQ(FillCoefficients(kOffsetKind, 0, 2, 5), 0);
    EXPECT_THAT(OffsetList, IsEmpty());
    EXPECT_EQ(FillCoefficients(kGainKind, 0, 2, 0.25), 1);
    EXPECT_THAT(GainList, ElementsAre(0.25F, 0.25F));
    EXPECT_EQ(FillCoefficients(kGainKind, -5, 100, -2), 1);  // entries outside the table are left out
    EXPECT_THAT(GainList, ElementsAre(-2.0F, -2.0F));
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

TEST_F(ListOnDisk, ThatTheDiskDoesntTakeIsToldAndTheFormerOneStays)
{
    PutFile(path, "former");
    {
        const FullDisk disk(8);
        EXPECT_EQ(SaveList(path, Bytes(list), 3), 0);
    }
    EXPECT_EQ(FileContents(path), "former");
    EXPECT_THAT(BoxesShown(), ElementsAre(Message("Failed to save file: " + path)));
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
