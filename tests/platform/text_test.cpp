#include "platform/text.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>

namespace kelvo {
namespace {

TEST(Text, FormatGivesTextsOfAnyLength)
{
    const std::string longText(100000, 'x');
    EXPECT_EQ(Format("<%s>", longText.c_str()), '<' + longText + '>');
    EXPECT_EQ(Format("%d %5.2f", -7, 3.14159), "-7  3.14");
    EXPECT_EQ(Format("%s", ""), "");
}

TEST(Text, CaseChangesTouchAsciiLettersOnly)
{
    EXPECT_EQ(UpperAscii("a\xE4z{5"), "A\xE4Z{5");
    EXPECT_EQ(LowerAscii("A\xC4Z[5"), "a\xC4z[5");
    EXPECT_TRUE(EqualIgnoringCase("KeLvO", "kElVo"));
    EXPECT_FALSE(EqualIgnoringCase("\xE4", "\xC4"));
    EXPECT_FALSE(EqualIgnoringCase("a", "ab"));
    EXPECT_FALSE(EqualIgnoringCase("[", "{"));
}

TEST(Text, TrimmedTakesWhiteSpaceOffBothEnds)
{
    EXPECT_EQ(Trimmed("\t a b\r\n"), "a b");
    EXPECT_EQ(Trimmed(" \t\r\n"), "");
    EXPECT_EQ(Trimmed(""), "");
}

TEST(Text, ToUtf8KeepsSequencesAndReadsOtherBytesAsLatin1)
{
    struct Case {
        std::string_view bytes;
        std::string_view utf8;
    };
    const std::array cases{
        Case{"20 \xB0"
             "C",
             "20 \xC2\xB0"
             "C"},
        Case{"\xB2\xB7", "\xC2\xB2\xC2\xB7"},
        Case{"\xFF", "\xC3\xBF"},
        Case{"\x80", "\xC2\x80"},
        Case{"\xC3\xA4.img", "\xC3\xA4.img"},                          // two bytes
        Case{"\xE2\x82\xAC", "\xE2\x82\xAC"},                          // three
        Case{"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},                  // four
        Case{"\xC3", "\xC3\x83"},                                      // cut
        Case{"\xE2\x82", "\xC3\xA2\xC2\x82"},                          // cut
        Case{"\xC0\x80", "\xC3\x80\xC2\x80"},                          // overlong
        Case{"\xE0\x9F\xBF", "\xC3\xA0\xC2\x9F\xC2\xBF"},              // overlong
        Case{"\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xC2\x80"},              // surrogate
        Case{"\xF4\x90\x80\x80", "\xC3\xB4\xC2\x90\xC2\x80\xC2\x80"},  // above U+10FFFF
        Case{"\xF0\x8F\xBF\xBF", "\xC3\xB0\xC2\x8F\xC2\xBF\xC2\xBF"},  // overlong
        Case{std::string_view("a\0b", 3), std::string_view("a\0b", 3)},
    };
    for (const Case& each : cases) EXPECT_EQ(ToUtf8(each.bytes), each.utf8);
}

TEST(Text, ScanDecimalReadsDigitsAtTheStart)
{
    EXPECT_EQ(ScanDecimal(" \t\n-12abc"), -12);
    EXPECT_EQ(ScanDecimal("+7"), 7);
    EXPECT_EQ(ScanDecimal("010"), 10);
    EXPECT_EQ(ScanDecimal("0x10"), 0);
    EXPECT_EQ(ScanDecimal("abc"), std::nullopt);
    EXPECT_EQ(ScanDecimal(""), std::nullopt);
    EXPECT_EQ(ScanDecimal("-"), std::nullopt);
    EXPECT_EQ(ScanDecimal("- 5"), std::nullopt);
    EXPECT_EQ(ScanDecimal("4294967297"), 1);  // 2^32 + 1
    EXPECT_EQ(ScanDecimal("2147483648"), -2147483647 - 1);
}

TEST(Text, ScanIntegerFollowsThePrefix)
{
    EXPECT_EQ(ScanInteger("0x1F"), 31);
    EXPECT_EQ(ScanInteger("-0X1f"), -31);
    EXPECT_EQ(ScanInteger("017"), 15);
    EXPECT_EQ(ScanInteger("08"), 0);
    EXPECT_EQ(ScanInteger("18"), 18);
    EXPECT_EQ(ScanInteger("0xg"), 0);
    EXPECT_EQ(ScanInteger("x1"), std::nullopt);
}

TEST(Text, ScanHexTakesAPrefixOrNone)
{
    EXPECT_EQ(ScanHex("0x0080"), 0x80U);
    EXPECT_EQ(ScanHex("ffFF"), 0xFFFFU);
    EXPECT_EQ(ScanHex("  80h"), 0x80U);
    EXPECT_EQ(ScanHex("123456789"), 0x23456789U);
    EXPECT_EQ(ScanHex("-1"), 0xFFFFFFFFU);
    EXPECT_EQ(ScanHex("ghi"), std::nullopt);
    EXPECT_EQ(ScanHex(""), std::nullopt);
}

TEST(Text, ScanFloatReadsANumberWhateverTheLocale)
{
    EXPECT_EQ(ScanFloat("50.0"), 50.0F);
    EXPECT_EQ(ScanFloat(" -0.000400,x"), -0.0004F);
    EXPECT_EQ(ScanFloat(".5"), 0.5F);
    EXPECT_EQ(ScanFloat("5."), 5.0F);
    EXPECT_EQ(ScanFloat("1e3"), 1000.0F);
    EXPECT_EQ(ScanFloat("1e"), 1.0F);
    EXPECT_EQ(ScanFloat("1E-2z"), 0.01F);
    EXPECT_EQ(ScanFloat("1,5"), 1.0F);
    for (const char* none : {"", " ", "-", ".", "-.", "e5", "abc", "nan", "inf", "+ 1"}) {
        EXPECT_EQ(ScanFloat(none), std::nullopt) << none;
    }
    EXPECT_TRUE(std::isinf(*ScanFloat("1e99")));
    EXPECT_EQ(ScanFloat("1e-99"), 0.0F);
}

TEST(Text, TakeFloatLeavesWhatFollows)
{
    std::string_view text = " 1.5,2";
    EXPECT_EQ(TakeFloat(text), 1.5F);
    EXPECT_EQ(text, ",2");
    EXPECT_EQ(TakeFloat(text), std::nullopt);
    EXPECT_EQ(text, ",2");
}

TEST(Text, SplitPathCutsAtTheLastSeparatorAndPoint)
{
    struct Case {
        std::string_view path, drive, directory, name, extension;
    };
    constexpr std::array cases{
        Case{"c:\\KELVO\\nearccw.prs", "c:", "\\KELVO\\", "nearccw", ".prs"},
        Case{"/home/a.b/c", "", "/home/a.b/", "c", ""},
        Case{"/home/a/c.tar.gz", "", "/home/a/", "c.tar", ".gz"},
        Case{"d:x.img", "d:", "", "x", ".img"},
        Case{"a/b\\c.d", "", "a/b\\", "c", ".d"},
        Case{"name", "", "", "name", ""},
        Case{"/a/.hidden", "", "/a/", "", ".hidden"},
        Case{"dir.x/", "", "dir.x/", "", ""},
        Case{"1:x", "", "", "1:x", ""},
        Case{"name.", "", "", "name", "."},
        Case{"", "", "", "", ""},
    };
    for (const Case& each : cases) {
        std::string drive, directory, name, extension;
        SplitPath(each.path, &drive, &directory, &name, &extension);
        EXPECT_EQ(drive, each.drive) << each.path;
        EXPECT_EQ(directory, each.directory) << each.path;
        EXPECT_EQ(name, each.name) << each.path;
        EXPECT_EQ(extension, each.extension) << each.path;
    }
}

TEST(Text, FormatThousandsPutsCommasBetweenDigits)
{
    struct Case {
        std::int32_t value;
        std::string_view text;
    };
    constexpr Case cases[] = {
        {0, "0"},
        {999, "999"},
        {1000, "1,000"},
        {1234567, "1,234,567"},
        {-123, "-123"},
        {-1234, "-1,234"},
        {-123456, "-123,456"},
        {2147483647, "2,147,483,647"},
        {-2147483647 - 1, "-2,147,483,648"},
    };
    for (const Case& each : cases) {
        std::string text = "before";
        FormatThousands(each.value, text);
        EXPECT_EQ(text, each.text);
    }
}

TEST(Text, SplitPathTakesNullForWhatIsNotWanted)
{
    std::string name;
    SplitPath("c:/a/b.img", nullptr, nullptr, &name, nullptr);
    EXPECT_EQ(name, "b");
}

TEST(Text, MakePathAddsSeparatorAndPointWhereTheyLack)
{
    EXPECT_EQ(MakePath("c:", "\\KELVO", "a", "img"), "c:\\KELVO/a.img");
    EXPECT_EQ(MakePath("c", "\\KELVO\\", "a", ".img"), "c:\\KELVO\\a.img");
    EXPECT_EQ(MakePath("", "", "a", ""), "a");
    EXPECT_EQ(MakePath("", "/", "", ""), "/");
}

TEST(Text, MakePathUndoesSplitPathForAnyPath)
{
    std::mt19937 random(1);
    constexpr std::string_view kAlphabet = "ab:./\\ c\xE4";
    for (int i = 0; i < 5000; ++i) {
        std::string path(random() % 12, ' ');
        for (char& c : path) c = kAlphabet[random() % kAlphabet.size()];
        std::string drive, directory, name, extension;
        SplitPath(path, &drive, &directory, &name, &extension);
        ASSERT_EQ(MakePath(drive, directory, name, extension), path);
    }
}

}  // namespace
}  // namespace kelvo
