#include "platform/user_words.h"

#include "support/environment_variable.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace kelvo {
namespace {

const std::vector<UserWord> kWords = {
    {"/home/anna.berg", "~"}, {"anna.berg", "USER"}, {"M\xc3\xbcller", "NAME"},
    {"M\xfcller", "NAME"},    {"labpc7", "HOST"},    {"Anna", "NAME"},
    {"ab", "USER"},
};

std::string Without(std::string_view text)
{
    return WithoutUserWords(text, kWords);
}

std::string WordFor(const std::vector<UserWord>& words, const std::string& word)
{
    const auto found = std::ranges::find(words, word, &UserWord::word);
    return found == words.end() ? "" : found->instead;
}

TEST(UserWords, GoWhereverTheyStand)
{
    EXPECT_EQ(Without("file=/home/anna.berg/a.seq"), "file=~/a.seq");
    EXPECT_EQ(Without("by anna.berg on labpc7.lab"), "by USER on HOST.lab");
    EXPECT_EQ(Without("run-of-annas.seq"), "run-of-NAMEs.seq");
    EXPECT_EQ(Without(""), "");
    EXPECT_EQ(Without("Contrast=30\r\n\t\xff"), "Contrast=30\r\n\t\xff");
}

TEST(UserWords, GoInEachCaseAndBothEncodings)
{
    EXPECT_EQ(Without("C:/HOME/ANNA.BERG/X, LABPC7"), "C:~/X, HOST");
    EXPECT_EQ(Without("M\xc3\xbcLLER m\xfcller"), "NAME NAME");
}

TEST(UserWords, ShortOnesGoWhereTheyStandAlone)
{
    EXPECT_EQ(Without("ab, AB_1 cab abc ab2 \xc3\xa4"
                      "ab ab"),
              "USER, USER_1 cab abc ab2 \xc3\xa4"
              "ab USER");
}

TEST(UserWords, OwnersOfOtherDirectoriesGo)
{
    EXPECT_EQ(WithoutUserWords("x=/home/otto/y;/home/", {}), "x=/home/USER/y;/home/");
    EXPECT_EQ(WithoutUserWords("\"/run/media/otto/DISK\"", {}), "\"/run/media/USER/DISK\"");
    EXPECT_EQ(WithoutUserWords("C:\\Users\\otto\\a C:\\\\USERS\\\\otto\\\\a", {}),
              "C:\\Users\\USER\\a C:\\\\USERS\\\\USER\\\\a");
    EXPECT_EQ(WithoutUserWords("/home/otto", {}), "/home/USER");
    EXPECT_EQ(WithoutUserWords("/homes/otto/x home/otto", {}), "/homes/otto/x home/otto");
}

TEST(UserWords, AreThoseOfEnvironmentAndMachine)
{
    const TempDirectory directory;
    const std::string home = directory / "home of otto";
    std::filesystem::create_directory(home);
    std::filesystem::create_directory_symlink(home, directory / "link");
    const EnvironmentVariable homeVariable("HOME", directory / "link/");
    const EnvironmentVariable user("USER", "otto.lang");
    const EnvironmentVariable login("LOGNAME", "kelvo");
    const std::vector<UserWord> words = UserWords();
    EXPECT_EQ(WordFor(words, directory / "link"), "~");
    EXPECT_EQ(WordFor(words, std::filesystem::canonical(home).string()), "~") << "where the link leads";
    EXPECT_EQ(WordFor(words, "otto.lang"), "USER");
    EXPECT_EQ(WordFor(words, "kelvo"), "") << "the texts are made of it";
    std::string host;
    std::ifstream("/proc/sys/kernel/hostname") >> host;
    EXPECT_EQ(WordFor(words, host), "HOST");
    EXPECT_TRUE(std::ranges::is_sorted(words, std::ranges::greater(), [](const UserWord& w) { return w.word.size(); }));
    EXPECT_EQ(std::ranges::count(words, "", &UserWord::word), 0);
}

TEST(UserWords, GoInCapitalsToo)
{
    const EnvironmentVariable user("USER", "j\xc3\xb6rg.lang");
    EXPECT_EQ(WithoutUserWords("J\xc3\x96rg.LANG j\xd6RG.lang j\xf6rg.lang", UserWords()), "USER USER USER");
}

TEST(UserWords, TheRootIsNobodysHome)
{
    const EnvironmentVariable home("HOME", "/");
    for (const UserWord& word : UserWords()) EXPECT_NE(word.word, "/");
}

}  // namespace
}  // namespace kelvo
