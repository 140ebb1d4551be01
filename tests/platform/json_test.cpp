#include "platform/json.h"

#include <gtest/gtest.h>

#include <limits>

namespace kelvo {
namespace {

TEST(Json, GivesEachKindOfValueAsItStands)
{
    std::string why;
    const auto json = ReadJson(R"({"a": [1, -2.5e3, true, null, "x\u00b0\n"], "b": {"c": "d"}})", why);
    ASSERT_TRUE(json) << why;
    const JsonArray& a = *json->Member("a")->Array();
    ASSERT_EQ(a.size(), 5U);
    EXPECT_EQ(*a[0].Number(), 1.0);
    EXPECT_EQ(*a[1].Number(), -2500.0);
    EXPECT_TRUE(*a[2].Bool());
    EXPECT_TRUE(std::holds_alternative<std::monostate>(a[3].value));
    EXPECT_EQ(*a[4].Text(), "x\xC2\xB0\n");
    EXPECT_EQ(*json->Member("b")->Member("c")->Text(), "d");
    EXPECT_EQ(json->Member("z"), nullptr);
    EXPECT_EQ(a[0].Member("z"), nullptr);
    EXPECT_EQ(a[0].Text(), nullptr);
}

TEST(Json, TellsTheLineOfWhatIsNone)
{
    for (const char* text : {"", "7", "{\"a\": 1} x", "[1,", "{\"a\" 1}", "[NaN]", "\xFF"}) {
        std::string why;
        EXPECT_FALSE(ReadJson(text, why)) << text;
        EXPECT_TRUE(why.starts_with("line 1: ")) << text << ": " << why;
    }
    std::string why;
    EXPECT_FALSE(ReadJson("{\n\"a\": 1,\n\"b\" }", why));
    EXPECT_TRUE(why.starts_with("line 3: ")) << why;
    EXPECT_FALSE(ReadJson(std::string(5000, '['), why));
}

TEST(Json, WritesTheShortestNumberThatIsTheSame)
{
    EXPECT_EQ(JsonNumber(0.1), "0.1");
    EXPECT_EQ(JsonNumber(640), "640");
    EXPECT_EQ(JsonNumber(-1.0 / 3), "-0.3333333333333333");
    EXPECT_EQ(JsonNumber(std::numeric_limits<double>::infinity()), "null");
}

}  // namespace
}  // namespace kelvo
