// The main window where it was left, and what a file can say instead.
#include "shell/window_state.h"

#include "platform/files.h"
#include "platform/paint.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "platform/window_place.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/temp_directory.h"
#include "ui/window_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

namespace kelvo {
namespace {

struct Written {
    std::string x, y, width, height, maximised;
};

class WindowState : public testing::Test {
  protected:
    WindowState()
    {
        SetDefaultDir(directory.Path());
        RegisterWindowClass({"PLACED", DefWindowProc, {}});
    }
    ~WindowState() override { Close(); }

    static void Write(const Written& values)
    {
        WriteWindowFile("Window", "X", values.x);
        WriteWindowFile("Window", "Y", values.y);
        WriteWindowFile("Window", "Width", values.width);
        WriteWindowFile("Window", "Height", values.height);
        WriteWindowFile("Window", "Maximised", values.maximised);
    }
    // The window as it stands after a start.
    static WindowPlace Open()
    {
        Close();
        write::windows.hWndMain = CreateMainWindow("PLACED", "Placed");
        ShowMainWindow(hWndMain);
        return GetWindowPlace(hWndMain);
    }
    static void Close()
    {
        if (hWndMain) DestroyWindow(hWndMain);
        write::windows.hWndMain = nullptr;
    }
    static void ExpectFirstStart(const std::string& what)
    {
        const WindowPlace place = Open();
        EXPECT_TRUE(place.maximised) << what;
        const Rect screen = ScreenRect();
        EXPECT_EQ(GetClientRect(hWndMain), (Rect{0, 0, screen.Width(), screen.Height()})) << what;
    }

    TestOperator op;
    TempDirectory directory;
};

TEST_F(WindowState, TheFirstStartIsMaximised)
{
    ExpectFirstStart("no file");
    EXPECT_FALSE(FileExists(directory.Path() + "/window.ini")) << "nothing is written before the end";
}

TEST_F(WindowState, ThePlaceIsThatOfTheLastEnd)
{
    Write({"110", "70", "901", "703", "0"});
    const WindowPlace place = Open();
    EXPECT_FALSE(place.maximised);
    EXPECT_EQ(std::tie(place.x, place.y, place.width, place.height), std::make_tuple(110, 70, 901, 703));
    DestroyWindow(hWndMain);
    write::windows.hWndMain = CreateMainWindow("PLACED", "Placed");
    ShowWindowAt(hWndMain, {200, 90, 800, 600, false});
    KeepWindowPlace();
    EXPECT_EQ(WindowFileText("Window", "X"), "200");
    EXPECT_EQ(WindowFileText("Window", "Height"), "600");
    EXPECT_EQ(WindowFileText("Window", "Maximised"), "0");
}

TEST_F(WindowState, AMaximisedWindowKeepsWhatItGoesBackTo)
{
    Write({"110", "70", "901", "703", "1"});
    const WindowPlace place = Open();
    EXPECT_TRUE(place.maximised);
    EXPECT_EQ(std::tie(place.x, place.y, place.width, place.height), std::make_tuple(110, 70, 901, 703));
    KeepWindowPlace();
    EXPECT_EQ(WindowFileText("Window", "Width"), "901");
    EXPECT_EQ(WindowFileText("Window", "Maximised"), "1");
}

TEST_F(WindowState, APlaceThatNoScreenHasComesOntoOne)
{
    const Rect screen = ScreenRect();
    for (const auto& [x, y] : std::vector<std::pair<std::string, std::string>>{
             {"5000", "70"}, {"-3000", "70"}, {"100", "4000"}, {"100", "-700"}, {"1270", "70"}}) {
        Write({x, y, "900", "700", "0"});
        const WindowPlace place = Open();
        EXPECT_EQ(place.width, 900);
        EXPECT_GE(place.x, screen.left) << x << ", " << y;
        EXPECT_GE(place.y, screen.top) << x << ", " << y;
        EXPECT_LE(place.x + place.width, screen.right) << x << ", " << y;
        EXPECT_LE(place.y + place.height, screen.bottom) << x << ", " << y;
    }
    Write({"0", "0", "90000", "70000", "0"});
    const WindowPlace place = Open();
    EXPECT_EQ(place.width, screen.Width());
    EXPECT_EQ(place.height, screen.Height());
    Write({"1000", "70", "900", "700", "0"});
    EXPECT_EQ(Open().x, 1000) << "a window may hang over the edge";
}

TEST_F(WindowState, AbsurdValuesCountAsNone)
{
    for (const Written& values : {Written{"1", "1", "0", "700", "0"},
                                  {"1", "1", "900", "-700", "0"},
                                  {"1", "1", "wide", "700", "0"},
                                  {"1", "1", "900", "", "0"},
                                  {"-2147483648", "1", "900", "700", "0"},
                                  {"1", "1", "2147483647", "700", "0"},
                                  {"1", "1", "0x7FFFFFFF", "0x7FFFFFFF", "0"}}) {
        Write(values);
        ExpectFirstStart(values.x + " " + values.width + " " + values.height);
    }
}

TEST_F(WindowState, AFileThatCantBeReadCountsAsNone)
{
    std::filesystem::create_directory(directory.Path() + "/window.ini");
    ExpectFirstStart("a directory");
    std::filesystem::remove(directory.Path() + "/window.ini");
    ForgetProfiles();
    ASSERT_TRUE(ReplaceFile(directory.Path() + "/window.ini", std::string("\0\xFF[[[\n=\nX=", 10)));
    ExpectFirstStart("no settings at all");
}

}  // namespace
}  // namespace kelvo
