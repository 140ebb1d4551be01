#include "regions/regions_file.h"

#include "regions/region_list.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace kelvo {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kPage = R"({
  "format": "Kelvo regions",
  "version": 1,
  "columns": 640,
  "rows": 512,
  "regions": [
    {"name": "hot plate", "shape": "rectangle", "x1": 10, "y1": 20, "x2": 73, "y2": 83},
    {"name": "lens \"A\"", "shape": "ellipse", "x1": 100, "y1": -9, "x2": 140, "y2": 150, "emissivity": 0.95, "reflected": 23.5},
    {"name": "spot", "shape": "point", "x1": 5, "y1": 6}
  ]
}
)";

RegionsFile Page()
{
    return {.columns = 640,
            .rows = 512,
            .regions = {{.name = "hot plate", .place = {10, 20, 73, 83}},
                        {.name = "lens \"A\"",
                         .shape = RegionShape::kEllipse,
                         .place = {100, -9, 140, 150},
                         .emissivity = 0.95,
                         .reflectedC = 23.5},
                        {.name = "spot", .shape = RegionShape::kPoint, .place = {5, 6, 5, 6}}}};
}

std::string WhyNot(const std::string& text)
{
    std::string why;
    EXPECT_FALSE(RegionsOfText(text, why)) << text;
    return why;
}

std::string Listing(const std::string& regions)
{
    return R"({"format": "Kelvo regions", "version": 1, "columns": 8, "rows": 8, "regions": [)" + regions + "]}";
}

TEST(RegionsFileText, StandsAsItsPageSays)
{
    std::string why;
    EXPECT_EQ(TextOfRegions(Page()), kPage);
    EXPECT_EQ(RegionsOfText(kPage, why), Page()) << why;
    EXPECT_EQ(RegionsOfText(TextOfRegions({}), why), RegionsFile{}) << why;
}

TEST(RegionsFileText, ANameOfAnyBytesIsUtf8InTheFile)
{
    RegionsFile file{.regions = {{.name = "20 \xB0"
                                          "C",
                                  .shape = RegionShape::kPoint}}};
    EXPECT_THAT(TextOfRegions(file), HasSubstr("20 \xC2\xB0"
                                               "C"));
}

TEST(RegionsFileText, SaysWhatIsWrongWithIt)
{
    EXPECT_THAT(WhyNot("{\n\"format\""), HasSubstr("line 2: "));
    EXPECT_EQ(WhyNot("[]"), "it isn't a file of regions");
    EXPECT_EQ(WhyNot("{\"format\": \"other\"}"), "it isn't a file of regions");
    EXPECT_THAT(WhyNot(R"({"format": "Kelvo regions"})"), HasSubstr("\"version\" is missing"));
    EXPECT_THAT(WhyNot(R"({"format": "Kelvo regions", "version": 2})"), HasSubstr("version 2, which a newer"));
    EXPECT_THAT(WhyNot(R"({"format": "Kelvo regions", "version": 1, "columns": 1, "rows": 1, "regions": {}})"),
                HasSubstr("\"regions\" isn't a list"));
    EXPECT_EQ(WhyNot(Listing("7")), "region 1: isn't an object");
    EXPECT_EQ(WhyNot(Listing(R"({"shape": "point", "x1": 1, "y1": 1})")), "region 1: \"name\" is missing");
    EXPECT_EQ(WhyNot(Listing(R"({"name": 5, "shape": "point", "x1": 1, "y1": 1})")), "region 1: \"name\" isn't a text");
    EXPECT_EQ(WhyNot(Listing(R"({"name": "a", "shape": "circle", "x1": 1, "y1": 1})")),
              "region 1: unknown shape \"circle\"");
    EXPECT_EQ(WhyNot(Listing(R"({"name": "a", "shape": "line", "x1": 1, "y1": 1})")), "region 1: \"x2\" is missing");
    EXPECT_EQ(WhyNot(Listing(R"({"name": "a", "shape": "point", "x1": 1.5, "y1": 1})")),
              "region 1: \"x1\" isn't a whole number from -32768 to 32767");
    EXPECT_EQ(WhyNot(Listing(R"({"name": "a", "shape": "point", "x1": 1, "y1": 32768})")),
              "region 1: \"y1\" isn't a whole number from -32768 to 32767");
    EXPECT_EQ(WhyNot(Listing(R"({"name": "a", "shape": "point", "x1": 1, "y1": 1, "colour": 3})")),
              "region 1: unknown key \"colour\"");
    EXPECT_EQ(WhyNot(Listing(R"({"name": "a", "shape": "point", "x1": 1, "y1": 1, "emissivity": 0.5})")),
              "region 1: An emissivity below 1 needs the temperature of what is reflected.");
    const std::string point = R"({"name": "a", "shape": "point", "x1": 1, "y1": 1})";
    EXPECT_EQ(WhyNot(Listing(point + "," + point)), "two regions are named \"a\"");
    std::string many = point;
    for (std::size_t i = 0; i < kMostRegions; ++i) many += "," + point;
    EXPECT_THAT(WhyNot(Listing(many)), HasSubstr("more than 256"));
}

TEST(RegionsFileOnDisk, IsReadBackAndNamedWhereItCant)
{
    const TempDirectory directory;
    std::string why;
    ASSERT_TRUE(WriteRegionsFile(directory / "a.regions", Page(), why));
    EXPECT_EQ(FileContents(directory / "a.regions"), kPage);
    EXPECT_EQ(ReadRegionsFile(directory / "a.regions", why), Page());
    EXPECT_FALSE(ReadRegionsFile(directory / "b.regions", why));
    EXPECT_EQ(why, directory / "b.regions" + "\nthere is no such file");
    EXPECT_FALSE(WriteRegionsFile(directory / "none/a.regions", Page(), why));
    EXPECT_THAT(why, HasSubstr("Could not save file: "));
    PutFile(directory / "long.regions", std::string((1U << 20) + 1, ' '));
    EXPECT_FALSE(ReadRegionsFile(directory / "long.regions", why));
}

class KeptRegions : public testing::Test {
  protected:
    KeptRegions() { write::windows.DefaultDir = directory.Path(); }

    TempDirectory directory;
    TestOperator op;
};

TEST_F(KeptRegions, ComeBackWithTheNextStart)
{
    LoadKeptRegions();
    KeepRegions();
    EXPECT_FALSE(std::filesystem::exists(KeptRegionsPath()));  // there was nothing to keep
    std::string why;
    AddRegion(Page().regions[1], why);
    KeepRegions();
    ResetRegions();
    ResetKeptRegions();
    LoadKeptRegions();
    ASSERT_THAT(Regions, SizeIs(1));
    EXPECT_EQ(Regions[0].name, "lens \"A\"");
    EXPECT_EQ(Regions[0].reflectedC, 23.5);
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(KeptRegions, AFileThatCantBeReadIsSetAside)
{
    PutFile(KeptRegionsPath(), "torn");
    LoadKeptRegions();
    EXPECT_THAT(Regions, IsEmpty());
    ASSERT_THAT(op.Boxes(), SizeIs(1));
    EXPECT_THAT(op.Boxes()[0].text, HasSubstr("view.regions.bad"));
    EXPECT_EQ(FileContents(KeptRegionsPath() + ".bad"), "torn");
    std::string why;
    AddRegion(Page().regions[0], why);
    KeepRegions();
    EXPECT_TRUE(std::filesystem::exists(KeptRegionsPath()));
}

TEST_F(KeptRegions, AreNotWrittenBeforeTheyWereRead)
{
    std::string why;
    AddRegion(Page().regions[0], why);
    KeepRegions();
    EXPECT_FALSE(std::filesystem::exists(KeptRegionsPath()));
}

TEST_F(KeptRegions, AFailureIsToldOnceAndTriedAgain)
{
    LoadKeptRegions();
    std::string why;
    AddRegion(Page().regions[0], why);
    std::filesystem::create_directory(KeptRegionsPath());
    KeepRegions();
    KeepRegions();
    EXPECT_THAT(op.Boxes(), SizeIs(1));
    std::filesystem::remove(KeptRegionsPath());
    KeepRegions();
    EXPECT_TRUE(std::filesystem::is_regular_file(KeptRegionsPath()));
}

}  // namespace
}  // namespace kelvo
