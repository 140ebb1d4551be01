// The way of the Tab key through the dialogs of the viewer, and the letters that their texts underline.
#include "platform/dialog.h"
#include "platform/front.h"
#include "platform/window.h"
#include "state/windows.h"
#include "support/picture_fixture.h"

#include <QFile>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;

// Checks one radio of each group: the group is one stop, at the checked one.
LRESULT PlainProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM /*lParam*/)
{
    if (message == WM_INITDIALOG) {
        CheckRadioButton(dialog, 1238, 1239, 1238);
        CheckRadioButton(dialog, 1230, 1232, 1230);
        return 1;
    }
    if (message == WM_COMMAND && LowWord(wParam) == kIdCancel) EndDialog(dialog, 0);
    return 0;
}

class DialogOrder : public PictureTest {
  protected:
    // The controls that the Tab key visits, from the first until it is back there.
    std::vector<int> StopsOf(const char* name)
    {
        std::vector<int> stops;
        op->Do([&] { stops.push_back(FocusedDlgItem(DialogInFront())); });
        for (int i = 0; i < 20; ++i) {
            op->Do([&] {
                if (stops.size() > 1 && stops.front() == stops.back()) return;
                OperateKey("Tab");
                stops.push_back(FocusedDlgItem(DialogInFront()));
            });
        }
        op->Do([] { OperateKey("Esc"); });
        EXPECT_EQ(DialogBox(name, hWndMain, PlainProc), 0);
        EXPECT_EQ(stops.front(), stops.back());
        stops.pop_back();
        return stops;
    }
    // The texts with an underlined letter, in the file's order, & before the letter.
    static std::vector<std::string> MnemonicsOf(const std::string& name)
    {
        QFile file(QString::fromStdString(":/dialogs/" + name + ".ui"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        const std::string text = file.readAll().toStdString();
        const std::regex marked("<string>([^<]*)&amp;([^<]*)</string>");
        std::vector<std::string> texts;
        for (std::sregex_iterator it(text.begin(), text.end(), marked), end; it != end; ++it) {
            texts.push_back((*it)[1].str() + "&" + (*it)[2].str());
        }
        return texts;
    }
};

TEST_F(DialogOrder, DisplayFollowsItsControls)
{
    // 1239, 1250, 1252 and 1254 stand disabled.
    EXPECT_THAT(StopsOf("DISPLAY"), ElementsAre(1242, 1246, 1238, 1230, 1256, 1248, 1, 2, 9));
}

TEST_F(DialogOrder, FramesGoesFromTheRectangleToTheRange)
{
    EXPECT_THAT(StopsOf("FRAMES"), ElementsAre(1001, 1002, 1003, 1004, 1005, 1006, 1, 2, 9));
}

TEST_F(DialogOrder, GoToFrameStartsAtTheNumber)
{
    EXPECT_THAT(StopsOf("GOTOFRAME"), ElementsAre(1001, 1, 2));
}

// From the name through the lists to the numbers; what goes with other files comes behind.
TEST_F(DialogOrder, SaveGoesFromTheNameToTheNumbers)
{
    EXPECT_THAT(StopsOf("SAVE"), ElementsAre(1460, 1464, 1466, 1488, 1486, 1784, 1002, 1471, 1468, 1600, 1, 2, 9));
}

TEST_F(DialogOrder, ImageFileHeaderIsOneChoice)
{
    EXPECT_THAT(StopsOf("ImgHead"), ElementsAre(101, 1, 2));
}

// Each group of radios is one stop.
TEST_F(DialogOrder, ConfigurationFollowsItsControls)
{
    EXPECT_THAT(StopsOf("INITIAL"), ElementsAre(1598, 1260, 1271, 1293, 1294, 1290, 1291, 1046, 1616, 1, 2, 9));
}

TEST_F(DialogOrder, ConfigurationUnderlinesItsLetters)
{
    EXPECT_THAT(MnemonicsOf("INITIAL"), ElementsAre("Selected Camera &Driver:", "&X", "&Y", "&Pan (pixels):",
                                                    "Show &1 channel", "&Enable byteswap", "&Ok", "&Cancel"));
}

TEST_F(DialogOrder, FrameAccountUnderlinesEachLetterOnce)
{
    EXPECT_THAT(MnemonicsOf("ACCOUNT"), ElementsAre("&Reset", "&Close", "&Help"));
}

TEST_F(DialogOrder, AboutHasItsButtonAlone)
{
    EXPECT_THAT(StopsOf("ABOUT"), ElementsAre(1));
}

TEST_F(DialogOrder, DisplayUnderlinesItsLetters)
{
    EXPECT_THAT(MnemonicsOf("DISPLAY"),
                ElementsAre("Display &brightness:", "Display &contrast:", "&Linear scale", "&Normal BW", "&Inverse BW",
                            "Nor&mal color", "&Gray/color bar", "&Temp. scale", "&Histogram", "&Units:", "&Reset",
                            "&Cancel", "&Help"));
}

TEST_F(DialogOrder, FramesUnderlinesEachLetterOnce)
{
    EXPECT_THAT(MnemonicsOf("FRAMES"),
                ElementsAre("&Left:", "&Top:", "&Right:", "&Bottom:", "&First:", "La&st:", "&Cancel", "&Help"));
}

TEST_F(DialogOrder, GoToFrameUnderlinesEachLetterOnce)
{
    EXPECT_THAT(MnemonicsOf("GOTOFRAME"), ElementsAre("&Frame:", "&Cancel"));
}

}  // namespace
}  // namespace kelvo
