#include "platform/archive.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

namespace kelvo {
namespace {

constexpr std::time_t kTime = 1'700'000'000;  // 14 November 2023
constexpr std::size_t kEndBytes = 22;         // of a zip archive's last record without a comment

unsigned Word(const std::string& bytes, std::size_t place)
{
    return static_cast<unsigned char>(bytes.at(place)) + 256U * static_cast<unsigned char>(bytes.at(place + 1));
}

// Entries by the last record, where the format has their number.
unsigned EntriesOf(const std::string& archive)
{
    const std::size_t end = archive.size() - kEndBytes;
    EXPECT_EQ(archive.substr(end, 4), "PK\x05\x06");
    return Word(archive, end + 10);
}

TEST(Archive, HasEachTextAndNothingBehindIt)
{
    const std::array<NamedText, 3> texts = {{{"a.txt", std::string(100'000, 'x')}, {"b.ini", ""}, {"c", "\r\n"}}};
    const std::string archive = ZipOf(texts, kTime).value_or("");
    ASSERT_TRUE(archive.starts_with("PK\x03\x04"));
    EXPECT_EQ(EntriesOf(archive), 3U);
    EXPECT_LT(archive.size(), 2000U) << "100000 equal letters are deflated";
    for (const NamedText& text : texts) EXPECT_NE(archive.find(text.name), std::string::npos) << text.name;
}

TEST(Archive, OfNothingIsOneToo)
{
    const std::string archive = ZipOf({}, kTime).value_or("");
    ASSERT_EQ(archive.size(), kEndBytes);
    EXPECT_EQ(EntriesOf(archive), 0U);
}

TEST(Archive, IsTheSameForTheSameTexts)
{
    const std::array<NamedText, 1> texts = {{{"a.txt", "one two three"}}};
    EXPECT_EQ(ZipOf(texts, kTime), ZipOf(texts, kTime));
    EXPECT_NE(ZipOf(texts, kTime), ZipOf(texts, kTime + 3600));
}

}  // namespace
}  // namespace kelvo
