#include "export/bad_detectors.h"

#include "platform/files.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
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
};

TEST_F(BadDetectors, AreThoseOfTheListWhateverElseStandsThere)
{
    Put("x.bad", "   0,   2\nrow,col\n\n   1,   0\n9,9\n-1,0\n0,3\n");  // of two rows of three
    EXPECT_THAT(BadDetectorsOfSet(Cal(), 3, 2), testing::Optional(testing::ElementsAre(0, 0, 1, 1, 0, 0)));
}

TEST_F(BadDetectors, AreThoseWithoutAGainToo)
{
    Put("x.bad", "");
    Put("x.gai", Bytes<float>({0.0F, 1.0F, -0.001F, 0.0011F, 1.0F, 1.0F}));  // readout order, the image is turned
    EXPECT_THAT(BadDetectorsOfSet(Cal(), 3, 2), testing::Optional(testing::ElementsAre(0, 0, 0, 1, 0, 1)));
}

TEST_F(BadDetectors, AreUnknownWithoutTheSetOrItsList)
{
    EXPECT_EQ(BadDetectorsOfSet(Cal(), 3, 2), std::nullopt);  // it names a list that isn't there
    EXPECT_EQ(BadDetectorsOfSet(directory_ / "none.cal", 3, 2), std::nullopt);
    EXPECT_EQ(BadDetectorsInForce(3, 2), std::nullopt);  // no calibration is in force
}

}  // namespace
}  // namespace kelvo
