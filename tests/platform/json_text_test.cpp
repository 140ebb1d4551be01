#include "platform/json_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kelvo {
namespace {

TEST(JsonText, IsAsciiWhateverTheTextHolds)
{
    JsonText json;
    json.Text("latin",
              "\xB0"
              "C")
        .Text("utf8", "\xE2\x82\xAC \xF0\x9D\x84\x9E")  // the euro, U+20AC, and the G clef, U+1D11E
        .Text("quoted", "a \"b\"\\\n");
    EXPECT_EQ(json.Json(), R"({"latin": "\u00b0C", "utf8": "\u20ac \ud834\udd1e", "quoted": "a \"b\"\\\n"})");
}

TEST(JsonText, NumbersReadBackToTheSameBits)
{
    JsonText json;
    json.Single("single", 0.1F).Number("double", 0.1).Number("third", 1.0 / 3).Whole("whole", -7).Truth("no", false);
    EXPECT_EQ(json.Json(), R"({"single": 0.1, "double": 0.1, "third": 0.3333333333333333, "whole": -7, "no": false})");
    EXPECT_EQ(ShortestText(17.476667F), "17.476667");
    EXPECT_EQ(ShortestText(std::nanf("")), "nan");
}

TEST(JsonText, WhatIsNoNumberIsNull)
{
    JsonText json;
    json.Number("nan", std::nan("")).Single("infinite", std::numeric_limits<float>::infinity()).Null("null");
    EXPECT_EQ(json.Json(), R"({"nan": null, "infinite": null, "null": null})");
    EXPECT_EQ(JsonList({}), "[]");
    EXPECT_EQ(JsonList({"1", "[2, 3]"}), "[1, [2, 3]]");
}

}  // namespace
}  // namespace kelvo
