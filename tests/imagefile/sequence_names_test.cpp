#include "imagefile/sequence_names.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

namespace kelvo {
namespace {

struct Step {
    std::string_view from;
    std::string_view to;  // empty: a beep, the name stays
};

std::string Shown(const std::optional<std::string>& name)
{
    return name.value_or("");
}

template <std::size_t N>
void ExpectNext(const Step (&steps)[N])
{
    for (const Step& step : steps) EXPECT_EQ(Shown(NextSequenceName(step.from)), step.to) << "after " << step.from;
}

template <std::size_t N>
void ExpectPrevious(const Step (&steps)[N])
{
    for (const Step& step : steps) {
        EXPECT_EQ(Shown(PreviousSequenceName(step.from)), step.to) << "before " << step.from;
    }
}

TEST(NextSequenceName, CountsTheLastDigitUp)
{
    ExpectNext({{"run7", "run8"}, {"a0", "a1"}, {"0", "1"}, {"8", "9"}, {"a18", "a19"}, {"abc998", "abc999"}});
}

TEST(NextSequenceName, TakesASlashForTheCharacterBeforeZero)
{
    ExpectNext({{"run/", "run0"}, {"/", "0"}});
}

TEST(NextSequenceName, WidensANineOfShortNames)
{
    ExpectNext({{"a9", "a10"}, {"99", "910"}, {"9", "10"}});
}

TEST(NextSequenceName, PutsTenBehindALetter)
{
    ExpectNext({{"ab9", "ab10"}, {"seq9", "seq10"}, {"a_9", "a_10"}, {"ab:", "ab10"}});
}

TEST(NextSequenceName, DropsALetterAtTheEnd)
{
    ExpectNext({{"abc", "ab10"}, {"x", "10"}, {"ab", "a10"}, {"image", "imag10"}});
}

TEST(NextSequenceName, CarriesIntoTheTens)
{
    ExpectNext({{"a19", "a20"}, {"abc89", "abc90"}, {"a1x", "a20"}, {"1x", "20"}, {"a109", "a110"}});
}

TEST(NextSequenceName, FallsBackFromNinetyNineToTenInsteadOfWidening)
{
    ExpectNext({{"a99", "a10"}, {"999", "910"}, {"9x", "10"}, {"abc99", "abc10"}, {"ab99", "ab10"}, {"ab9x", "ab10"}});
}

TEST(NextSequenceName, CarriesIntoTheHundreds)
{
    ExpectNext({{"a199", "a200"}, {"abc899", "abc900"}, {"a099", "a100"}, {"1099", "1100"}, {"a19x", "a200"}});
}

TEST(NextSequenceName, BeepsAtTheEndOfTheHundreds)
{
    ExpectNext({{"a999", ""}, {"abc999", ""}, {"1999", ""}, {"a99x", ""}, {"a199x", ""}});
}

TEST(NextSequenceName, LeavesAnEmptyNameAlone)
{
    ExpectNext({{"", ""}});
}

TEST(NextSequenceName, TakesLatinLettersForNoDigits)
{
    ExpectNext({{"\xB2", "10"}, {"a\xB2", "a10"}, {"\xFF", "10"}});
}

TEST(PreviousSequenceName, CountsTheLastDigitDown)
{
    ExpectPrevious({{"run8", "run7"}, {"a1", "a0"}, {"9", "8"}, {"a19", "a18"}, {"abc999", "abc998"}});
}

TEST(PreviousSequenceName, TakesAColonForTheCharacterAfterNine)
{
    ExpectPrevious({{"run:", "run9"}, {":", "9"}});
}

TEST(PreviousSequenceName, BeepsAtZeroOfShortNames)
{
    ExpectPrevious({{"a0", ""}, {"0", ""}, {"10", ""}, {"x", ""}, {"ab", ""}});
}

TEST(PreviousSequenceName, BorrowsFromTheTens)
{
    ExpectPrevious({{"a20", "a19"}, {"abc90", "abc89"}, {"a2x", "a19"}, {"210", "29"}, {"120", "119"}});
}

TEST(PreviousSequenceName, NarrowsFromTenToNine)
{
    ExpectPrevious({{"a10", "a9"}, {"seq10", "seq9"}, {"a1x", "a9"}, {"a110", "a19"}});
}

TEST(PreviousSequenceName, BeepsWhereThreeCharactersHoldNoTens)
{
    ExpectPrevious({{"a00", ""}, {"abc", ""}, {"200", ""}, {"ab0", ""}});
}

TEST(PreviousSequenceName, BorrowsFromTheHundreds)
{
    ExpectPrevious({{"a200", "a199"}, {"abc900", "abc899"}, {"a2bc", "a199"}});
}

TEST(PreviousSequenceName, NarrowsFromAHundredToNinetyNine)
{
    ExpectPrevious({{"a100", "a99"}, {"run100", "run99"}, {"a1bc", "a99"}});
}

TEST(PreviousSequenceName, BeepsWhereNoDigitIsLeft)
{
    ExpectPrevious({{"a000", ""}, {"abcd", ""}, {"seq0", ""}, {"", ""}});
}

TEST(SequencePath, KeepsDriveDirectoryAndExtension)
{
    EXPECT_EQ(NextSequencePath("/data/run 2/seq9.seq"), "/data/run 2/seq10.seq");
    EXPECT_EQ(PreviousSequencePath("/data/run 2/seq10.seq"), "/data/run 2/seq9.seq");
    EXPECT_EQ(NextSequencePath("c:\\images\\run7.img"), "c:\\images\\run8.img");
    EXPECT_EQ(NextSequencePath("a999.seq"), std::nullopt);
    EXPECT_EQ(NextSequencePath("/data/.seq"), std::nullopt);
}

}  // namespace
}  // namespace kelvo
