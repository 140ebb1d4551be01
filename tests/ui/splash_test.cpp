// The picture of the start: where it is painted, how long it stands, and what its absence costs.
#include "ui/splash.h"

#include "platform/clock.h"
#include "platform/window.h"
#include "state/windows.h"
#include "support/picture_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t kPicture = 0x00C83214;  // 0x00RRGGBB

void Put(std::string& bytes, std::uint32_t value, int size)
{
    for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
}

// An 8-bit bitmap of one colour.
std::string Bitmap(std::uint32_t width, std::uint32_t height)
{
    const std::uint32_t row = (width + 3) / 4 * 4;
    const std::uint32_t offset = 14 + 40 + 1024;
    std::string bytes = "BM";
    Put(bytes, offset + row * height, 4);
    Put(bytes, 0, 4);
    Put(bytes, offset, 4);
    Put(bytes, 40, 4);
    Put(bytes, width, 4);
    Put(bytes, height, 4);
    Put(bytes, 1, 2);
    Put(bytes, 8, 2);
    for (int i = 0; i < 6; ++i) Put(bytes, 0, 4);
    for (int i = 0; i < 256; ++i) Put(bytes, kPicture, 4);
    bytes.append(std::size_t{row} * height, '\x01');
    return bytes;
}

class Splash : public PictureTest {
  protected:
    // Shows a picture of that size; how many pixels of the client area's middle row and column bear its colour.
    void Show(int width, int height)
    {
        PutFile(directory / "kelvo220.bmp",
                Bitmap(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)));
        bitmap = ShowSplash(hWndMain);
        ASSERT_TRUE(bitmap);
    }
    static bool IsPicture(int x, int y) { return Shown(x, y) == kPicture; }

    Dib bitmap;
    Rect client = GetClientRect(hWndMain);
};

TEST_F(Splash, AMissingPictureCostsABeepAndNoPause)
{
    const std::int64_t before = TickMs();
    const Dib none = ShowSplash(hWndMain);
    EXPECT_FALSE(none);
    HideSplash(none, 1500);
    EXPECT_EQ(TickMs(), before);
    EXPECT_THAT(op->Texts("beep", "sound"), ElementsAre("exclamation"));
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(Splash, ADamagedPictureIsLikeAMissingOne)
{
    PutFile(directory / "kelvo220.bmp", Bitmap(16, 16).substr(0, 100));
    EXPECT_FALSE(ShowSplash(hWndMain));
    EXPECT_THAT(op->Texts("beep", "sound"), ElementsAre("exclamation"));
}

TEST_F(Splash, ThePictureStandsForItsTime)
{
    Show(100, 60);
    EXPECT_THAT(op->Texts("beep", "sound"), IsEmpty());
    const std::int64_t before = TickMs();
    HideSplash(bitmap, 1500);
    EXPECT_EQ(TickMs() - before, 1500);
}

TEST_F(Splash, ASmallPictureStandsThirtyPixelsAboveTheMiddle)
{
    Show(100, 60);
    const int left = (client.Width() - 100) / 2;
    const int top = (client.Height() - 60) / 2 - 30;
    EXPECT_TRUE(IsPicture(left, top));
    EXPECT_TRUE(IsPicture(left + 99, top + 59));
    EXPECT_FALSE(IsPicture(left - 1, top));
    EXPECT_FALSE(IsPicture(left, top - 1));
    EXPECT_FALSE(IsPicture(left + 100, top + 59));
    EXPECT_FALSE(IsPicture(left + 99, top + 60));
}

TEST_F(Splash, APictureAsWideAsTheWindowFillsIt)
{
    Show(client.Width(), 10);
    EXPECT_TRUE(IsPicture(0, 0));
    EXPECT_TRUE(IsPicture(client.Width() - 1, client.Height() - 1));
}

}  // namespace
}  // namespace kelvo
