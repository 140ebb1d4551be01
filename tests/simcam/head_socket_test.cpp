// The registers of a head in another process: their text, and the socket on which they come.
#include "simcam/head_socket.h"

#include "platform/machine.h"
#include "simcam/sim_settings.h"
#include "support/temp_directory.h"
#include "wirehead/head_registers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>

namespace kelvo {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Kind = HeadNews::Kind;

HeadRegisters Powered()
{
    SimSettings settings;
    settings.model = HeadModel::kInSb;
    settings.clockHz = 48e6;
    settings.columns = 320;
    settings.rows = 256;
    return PowerUpHead(settings);
}

// 8 MHz, 16 x 64 x 80 periods a frame, the clocks on, a DAC away from its middle.
HeadRegisters Running()
{
    HeadRegisters head = Powered();
    TakeHeadFrame(head, {0x50, 0, 0, 2});
    TakeHeadFrame(head, {0x50, 1, 64, 80});
    TakeHeadFrame(head, {0x90, 0x30, 0, 0});
    TakeHeadFrame(head, {0x70, 3, 200, 0});
    return head;
}

TEST(HeadRegisters, AreALineEach)
{
    const std::string text = HeadRegistersText(Running());
    EXPECT_THAT(text, StartsWith("clock_index 2\ntiming_rows "));
    EXPECT_THAT(text, HasSubstr("\nclocks_on 1\nbiases_on "));
    EXPECT_THAT(text, HasSubstr("\ncolumn_start 0\ncolumn_end 319\nrow_start 0\nrow_end 255\n"));
}

TEST(HeadRegisters, MakeAnotherHeadTheSame)
{
    const HeadRegisters head = Running();
    HeadRegisters other = Powered();
    ASSERT_TRUE(TakeHeadRegistersText(other, HeadRegistersText(head)));
    EXPECT_DOUBLE_EQ(FramePeriodSeconds(other), 0.01024);
    EXPECT_EQ(other.dac, head.dac);
    EXPECT_EQ(other.window, head.window);
    EXPECT_EQ(other.kept, head.kept);
    EXPECT_EQ(HeadRegistersText(other), HeadRegistersText(head));
}

TEST(HeadRegisters, ATextThatIsNoneChangesNothing)
{
    const std::string whole = HeadRegistersText(Running());
    const auto with = [&whole](const std::string& line, const std::string& other) {
        std::string text = whole;
        return text.replace(text.find(line), line.size(), other);
    };
    for (const std::string& text :
         {std::string(), whole.substr(0, whole.size() / 2), whole + "what\n", whole + "kept x\n",
          with("clock_index 2\n", "clock_index 256\n"), with("clock_index 2\n", "clock_index \n"),
          with("clocks_on 1\n", "clocks_on 2\n"), with("column_start 0\n", "column_start -8\n"),
          with("row_end 255\n", "row_end 99999999999\n"), with("row_end 255\n", "")}) {
        HeadRegisters head = Powered();
        EXPECT_FALSE(TakeHeadRegistersText(head, text)) << text;
        EXPECT_EQ(HeadRegistersText(head), HeadRegistersText(Powered()));
    }
}

class HeadSocket : public testing::Test {
  protected:
    std::unique_ptr<HeadOffer> Offer() const
    {
        auto offer = std::make_unique<HeadOffer>(HeadSocketPath(device));
        EXPECT_TRUE(offer->Ready());
        return offer;
    }

    TempDirectory directory;
    std::string device = directory / "terminal";
    HeadFollower follower;
};

// The head accepts in its own turn: here that is before the board asks for the first time.
TEST_F(HeadSocket, LiesInTheUsersRuntimeDirectoryForTheUserAlone)
{
    std::string name = "/kelvo-head" + std::filesystem::weakly_canonical(device).string();
    std::replace(name.begin() + 1, name.end(), '/', '-');
    EXPECT_EQ(HeadSocketPath(device), SocketDirectory() + name);
    const auto offer = Offer();
    struct stat status {};
    ASSERT_EQ(stat(offer->Path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(HeadSocket, GoesWithItsHead)
{
    auto offer = Offer();
    const std::string path = offer->Path();
    offer.reset();
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(HeadSocket, LiesInADirectoryThatNobodyElseMayEnter)
{
    const std::filesystem::path path = HeadSocketPath(device);
    struct stat status {};
    ASSERT_EQ(stat(path.parent_path().c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, geteuid());
    EXPECT_EQ(status.st_mode & 0777, 0700U);
}

TEST_F(HeadSocket, ALinkToTheTerminalLeadsToTheSamePlace)
{
    PutFile(device, "");
    std::filesystem::create_symlink(device, directory / "link");
    EXPECT_EQ(HeadSocketPath(directory / "link"), HeadSocketPath(device));
}

TEST_F(HeadSocket, APathTooLongIsNoSocket)
{
    const HeadOffer offer(directory / std::string(200, 'x'));
    EXPECT_FALSE(offer.Ready());
}

TEST_F(HeadSocket, WhatADeadHeadLeftIsReplaced)
{
    PutFile(HeadSocketPath(device), "left over");
    EXPECT_TRUE(Offer()->Ready());
}

TEST_F(HeadSocket, TheBoardHearsTheNewest)
{
    const auto offer = Offer();
    EXPECT_EQ(follower.Hear(device).kind, Kind::kNothing);  // found; it waits for a head that has no turn here
    offer->Accept("first");
    EXPECT_EQ(follower.Hear(device).registers, "first");
    EXPECT_EQ(follower.Hear(device).kind, Kind::kNothing);
    offer->Tell("second");
    offer->Tell("third");
    const HeadNews news = follower.Hear(device);
    EXPECT_EQ(news.kind, Kind::kRegisters);
    EXPECT_EQ(news.registers, "third");
}

TEST_F(HeadSocket, TheEndOfTheHeadIsHeardOnceAndANewOneIsFound)
{
    auto offer = Offer();
    follower.Hear(device);
    offer->Accept("first");
    offer.reset();
    EXPECT_EQ(follower.Hear(device).registers, "first");
    EXPECT_EQ(follower.Hear(device).kind, Kind::kGone);
    EXPECT_EQ(follower.Hear(device).kind, Kind::kNothing);
    offer = Offer();
    follower.Hear(device);
    offer->Accept("again");
    EXPECT_EQ(follower.Hear(device).registers, "again");
}

TEST_F(HeadSocket, AnotherPortIsAnotherHead)
{
    const auto offer = Offer();
    follower.Hear(device);
    offer->Accept("first");
    EXPECT_EQ(follower.Hear("/dev/pts/other").kind, Kind::kNothing);
    EXPECT_EQ(follower.Hear("").kind, Kind::kNothing);
    follower.Hear(device);
    offer->Accept("as it stands");
    EXPECT_EQ(follower.Hear(device).registers, "as it stands");
}

// A board that stands in a dialog for long reads nothing; the head doesn't wait for it.
TEST_F(HeadSocket, WhoDoesNotReadIsLetGoAndFindsBack)
{
    const auto offer = Offer();
    follower.Hear(device);
    offer->Accept("first");
    for (int i = 0; i < 5000; ++i) offer->Tell(std::string(1000, 'x'));
    EXPECT_EQ(follower.Hear(device).registers, std::string(1000, 'x'));
    EXPECT_EQ(follower.Hear(device).kind, Kind::kGone);
    follower.Hear(device);
    offer->Accept("the newest");
    EXPECT_EQ(follower.Hear(device).registers, "the newest");
}

}  // namespace
}  // namespace kelvo
