#include "export/bad_detectors.h"

#include "platform/faults.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace kelvo {
namespace {

template <typename Number>
std::string Bytes(const std::vector<Number>& numbers)
{
    std::string bytes(numbers.size() * sizeof(Number), '\0');
    std::memcpy(bytes.data(), numbers.data(), bytes.size());
    return bytes;
}

class BadDetectors : public testing::Test {
  protected:
    void SetUp() override
    {
        Put("x.cal", "[Calibration]\nCalType=2\nDecomFile=x.dcm\nGainFile=x.gai\nOffsetFile=x.off\nBadDetFile=x.bad\n");
        Put("x.dcm", Bytes<std::uint32_t>({5, 4, 3, 2, 1, 0}));
        Put("x.off", Bytes<std::int16_t>({0, 0, 0, 0, 0, 0}));
        Put("x.gai", Bytes<float>({1, 1, 1, 1, 1, 1}));
    }
    void Put(std::string_view name, std::string_view contents)
    {
        ASSERT_TRUE(ReplaceFile(directory_ / name, contents));
    }
    std::string Cal() const { return directory_ / "x.cal"; }

    TempDirectory directory_;
    std::string why;
};

TEST_F(BadDetectors, AreThoseOfTheListWhateverElseStandsThere)
{
    Put("x.bad", "   0,   2\nrow,col\n\n   1,   0\n9,9\n-1,0\n0,3\n");  // of two rows of three
    EXPECT_THAT(BadDetectorsOfSet(Cal(), 3, 2, why), testing::Optional(testing::ElementsAre(0, 0, 1, 1, 0, 0)));
}

TEST_F(BadDetectors, AreThoseWithoutAGainToo)
{
    Put("x.bad", "");
    Put("x.gai", Bytes<float>({0.0F, 1.0F, -0.001F, 0.0011F, 1.0F, 1.0F}));  // readout order, the image is turned
    EXPECT_THAT(BadDetectorsOfSet(Cal(), 3, 2, why), testing::Optional(testing::ElementsAre(0, 0, 0, 1, 0, 1)));
}

TEST_F(BadDetectors, AreUnknownWithoutTheSetOrItsList)
{
    EXPECT_EQ(BadDetectorsOfSet(Cal(), 3, 2, why), std::nullopt);  // it names a list that isn't there
    EXPECT_EQ(BadDetectorsOfSet(directory_ / "none.cal", 3, 2, why), std::nullopt);
    EXPECT_EQ(BadDetectorsInForce(3, 2, why), std::nullopt);  // no calibration is in force
    EXPECT_EQ(why, "");
}

TEST_F(BadDetectors, AreNotPassedOverWhereTheyCanNotBeFoundOutNow)
{
    Put("x.bad", "0,1\n");
    Put("x.gai", Bytes<float>({1, 1, 0, 1, 1, 1}));
    for (const int refused : {1, 2}) {
        FailAllocation(refused);
        EXPECT_EQ(BadDetectorsOfSet(Cal(), 3, 2, why), std::nullopt) << refused;
        EXPECT_EQ(why, "No memory is left.") << refused;
    }
    FailAllocation(0);
    EXPECT_THAT(BadDetectorsOfSet(Cal(), 3, 2, why), testing::Optional(testing::ElementsAre(0, 1, 0, 1, 0, 0)));
    EXPECT_EQ(why, "");

    Put("x.gai", Bytes<float>({1, 1, 0}));  // cut
    EXPECT_EQ(BadDetectorsOfSet(Cal(), 3, 2, why), std::nullopt);
    EXPECT_EQ(why, "The calibration set can't be read: " + Cal());
    Put("x.gai", Bytes<float>({1, 1, 0, 1, 1, 1}));

    constexpr std::uintmax_t kLongerThanAnyList = (std::uintmax_t{64} << 20) + 1;
    std::filesystem::resize_file(directory_ / "x.bad", kLongerThanAnyList);
    EXPECT_EQ(BadDetectorsOfSet(Cal(), 3, 2, why), std::nullopt);
    EXPECT_EQ(why, "The list of bad detectors can't be read: " + (directory_ / "x.bad"));

    SetFault("disk read", true);
    EXPECT_EQ(BadDetectorsOfSet(Cal(), 3, 2, why), std::nullopt);
    EXPECT_EQ(why, "The calibration set can't be read: " + Cal());
    ClearFaults();
}

}  // namespace
}  // namespace kelvo
