// The way of the Tab key through the dialogs, and the letters that their texts underline.
#include "platform/dialog.h"
#include "platform/front.h"
#include "platform/text.h"
#include "platform/window.h"
#include "state/windows.h"
#include "support/picture_fixture.h"

#include <QApplication>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QKeySequence>
#include <QPushButton>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;

// Checks one radio of each group, as the program does.
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

// From the top to the bottom, then the buttons: disabled controls are passed over, a group of radios is one stop, which
// the toolkit enters at the first radio whichever is checked.
struct Order {
    std::string name;
    std::vector<int> stops;
    std::string underlinedTwice;  // letters on which the toolkit goes round, as operators know these dialogs
};
const Order kOrders[] = {
    {"ABOUT", {1}, ""},
    {"ACCOUNT", {1007, 2, 9}, ""},
    // 9103 stands disabled.
    {"ADVANCED",
     {9113, 1375, 1374, 314, 316, 9101, 9102, 9110, 9108, 9109, 9111, 9112, 9107, 9114, 9106, 9104, 9105, 1, 2, 9},
     "losv"},
    {"APPLYCAL", {808, 1371, 1372, 809, 707, 1373, 111, 1, 2, 9}, ""},
    {"BENCH", {1001, 1011, 1012, 1013, 20902, 1015, 1016, 20800, 20801, 2, 9}, ""},
    {"BIORAD_SAVE", {1460, 20300, 102, 109, 124, 1, 2, 9}, ""},
    {"BUFFER", {1334, 1336, 1340, 1342, 1344, 1346, 1352, 1356, 1354, 1360, 1358, 1348, 1353, 1350, 1011, 1, 2, 9}, ""},
    {"BUF_GRAF", {1380, 21502, 1382, 1383, 1386, 1387, 1388, 1256, 1389, 1384, 1385, 1622, 1620, 9}, ""},
    {"BUF_LOAD", {1370, 1371, 1372, 1374, 1375, 1376, 1377, 1614, 1, 2, 9}, ""},
    {"BUF_SAVE", {1370, 1371, 1372, 1374, 1375, 1376, 1377, 1, 2, 9}, ""},
    {"CALIB", {1213, 1216, 1306, 1200, 1208, 1211, 1220, 1206, 1205, 1222, 1, 2, 9}, "o"},
    {"CALREPORT", {1001, 20423, 20422, 1, 9}, ""},
    {"CAL_COLD", {1224, 1225, 20405, 1, 2, 9}, ""},
    {"CAL_HOT", {1226, 1227, 20405, 1, 2, 9}, ""},
    {"CAL_OPEN", {1460, 20300, 1464, 1466, 1472, 1, 2, 9}, ""},
    {"CAL_SAVE", {1460, 20300, 1464, 1466, 1, 2, 9}, ""},
    {"CALVOLT", {101, 1, 2, 9}, ""},
    {"CAMERAS", {22601, 22602, 22604, 22605, 1, 2, 9}, ""},
    {"CLOCK_ON", {1070, 1072, 1074, 2}, ""},
    {"CONTSAVE", {1460, 20701, 1784, 1785, 1630, 626, 1038, 1030, 1395, 1397, 1346, 124, 1, 2, 9}, "h"},
    // 104 and 106 stand disabled.
    {"DIBPRINT", {101, 108, 109, 21802, 1, 2}, ""},
    // 1239, 1250, 1252 and 1254 stand disabled.
    {"DIFFER", {22201, 22203, 22204, 22205, 22206, 1, 2, 9}, ""},
    {"DISPLAY", {1242, 1246, 1238, 1230, 1256, 1248, 1, 2, 9}, "ch"},
    {"EXPORT", {22001, 22007, 22002, 22003, 22004, 22005, 22010, 22011, 22012, 22006, 20300, 1, 2, 9}, ""},
    {"FILEBENCH", {1001, 1021, 1022, 1023, 1034, 2, 9}, ""},
    {"FRAMERATE", {624, 6, 7, 9}, ""},
    {"FRAMES", {1001, 1002, 1003, 1004, 1005, 1006, 1, 2, 9}, ""},
    {"GEOMETRY", {1600, 1300, 1302, 1304, 1306, 20210, 1308, 1310, 1312, 1314, 1604, 1, 2, 9}, "h"},
    {"GRAPH", {21510, 339, 1606, 1620, 9}, ""},
    {"GOTOFRAME", {1001, 1, 2}, ""},
    {"HISTAXIS", {340, 341, 342, 343, 344, 346, 347, 348, 349, 1256, 1, 2, 9}, ""},
    // From each number to its bar, then the buttons.
    {"HISTGRAM", {309, 308, 314, 313, 311, 310, 316, 315, 318, 301, 339, 1606, 338, 9}, ""},
    {"IMGMATH", {701, 702, 704, 705, 706, 707, 111, 1, 2, 9}, ""},
    {"INITIAL", {1598, 1260, 1271, 1293, 1294, 1290, 1291, 1046, 1616, 1, 2, 9}, ""},
    {"ImgHead", {101, 1, 2}, ""},
    {"LINEAXIS", {347, 341, 340, 342, 343, 1256, 1, 2, 9}, ""},
    {"LINEPLOT", {401, 402, 404, 405, 407, 408, 410, 411, 318, 301, 339, 1606, 338, 9}, ""},
    {"NOISE", {22301, 22303, 22304, 22305, 22306, 22307, 22308, 1606, 1, 2, 9}, ""},
    {"PANEL", {}, ""},
    {"PLAYBAR", {}, ""},
    {"PRINTING", {2}, ""},
    {"QVF1058", {624, 626, 651, 660, 670, 1256, 1020, 339, 1606, 1, 2, 9}, ""},
    {"RECORDED", {21103, 21104, 21105, 21106, 2, 9}, ""},
    // What acts first, the settings, then what is looked at before.
    {"RECORDER",
     {21001, 21002, 21003, 21004, 21020, 21021, 21022, 21024, 21025, 21026, 21029, 21027,
      21028, 21030, 21031, 21032, 21033, 21040, 21041, 21042, 21043, 21044, 21046, 21045,
      21047, 21048, 21049, 21051, 21052, 21053, 21060, 21063, 2,     9},
     ""},
    // The table, what is drawn, the fields of the region that is selected, what is left out, files.
    {"REGIONS",
     {22101, 22103, 22104, 22105, 22114, 22106, 22110, 22111, 22112, 22113, 22107, 22108, 1, 22115, 22116, 22118, 22119,
      2, 9},
     ""},
    // From the name through the lists to the numbers; what goes with other files comes behind.
    {"SAVE", {1460, 20300, 1464, 1466, 1488, 1486, 1784, 1002, 1471, 1468, 1600, 1, 2, 9}, "ad"},
    {"SCRIPT", {22502, 22503, 22504, 22505, 9}, ""},
    {"SUPPORT", {22701, 22702, 1, 2, 9}, ""},
    {"TRACES", {22401, 22402, 22403, 22404, 22405, 22414, 22407, 22415, 22416, 22417, 1606, 2, 9}, ""},
    {"TRIGSOFT", {100, 1, 2}, ""},
    {"TRIGVALU", {20820, 20821, 20822, 20823, 20824, 20825, 1, 2}, ""},
    {"USERDLG", {1798, 1800, 1810, 1820, 1, 2}, ""},
    {"USERRESP", {1798, 1, 2}, ""},
};
constexpr int kMostStops = 40;

// The names of all dialogs that the program has: one that is put beside the others needs a row too.
std::vector<std::string> DialogFiles()
{
    std::vector<std::string> names;
    for (QDirIterator it(QStringLiteral(":/dialogs")); it.hasNext();) {
        names.push_back(QFileInfo(it.next()).completeBaseName().toStdString());
    }
    return names;
}

class DialogOrder : public PictureTest {
  protected:
    // The controls that the Tab key visits, from the first until it is back there.
    std::vector<int> StopsOf(const std::string& name)
    {
        std::vector<int> stops;
        op->Do([&] { stops.push_back(FocusedDlgItem(DialogInFront())); });
        for (int i = 0; i < kMostStops; ++i) {
            op->Do([&] {
                if (stops.size() > 1 && stops.front() == stops.back()) return;
                OperateKey("Tab");
                stops.push_back(FocusedDlgItem(DialogInFront()));
            });
        }
        op->Do([] { OperateKey("Esc"); });
        EXPECT_EQ(DialogBox(name, hWndMain, PlainProc), 0) << name;
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

TEST_F(DialogOrder, EachDialogHasARow)
{
    std::vector<std::string> rows;
    for (const Order& order : kOrders) rows.push_back(order.name);
    EXPECT_THAT(rows, UnorderedElementsAreArray(DialogFiles()));
}

TEST_F(DialogOrder, TheTabKeyFollowsTheControls)
{
    for (const Order& order : kOrders) {
        if (order.stops.empty()) continue;  // the panel takes no keys
        EXPECT_THAT(StopsOf(order.name), ElementsAreArray(order.stops)) << order.name;
    }
}

TEST_F(DialogOrder, PlusAndMinusZoomTheMapOfTheReport)
{
    std::vector<std::string> keys;
    op->Do([&] {
        for (const QPushButton* button : QApplication::activeWindow()->findChildren<QPushButton*>()) {
            const std::string key = button->shortcut().toString().toStdString();
            if (button->text().toStdString() == key) keys.push_back(key);
        }
        OperateKey("Esc");
    });
    EXPECT_EQ(DialogBox("CALREPORT", hWndMain, PlainProc), 0);
    EXPECT_THAT(keys, UnorderedElementsAre("+", "-"));
}

// A line under a sign makes another sign of it: "-" reads as "=".
TEST_F(DialogOrder, OnlyLettersAndDigitsAreUnderlined)
{
    for (const Order& order : kOrders) {
        for (const std::string& text : MnemonicsOf(order.name)) {
            const char marked = text.substr(text.find('&') + 1, 1).front();
            EXPECT_TRUE(std::isalnum(static_cast<unsigned char>(marked))) << order.name << ": " << text;
        }
    }
}

TEST_F(DialogOrder, EachLetterIsUnderlinedOnce)
{
    for (const Order& order : kOrders) {
        std::string letters;
        std::set<char> twice;
        for (const std::string& text : MnemonicsOf(order.name)) {
            const char letter = LowerAscii(text.substr(text.find('&') + 1, 1)).front();
            if (letters.find(letter) != std::string::npos) twice.insert(letter);
            letters += letter;
        }
        EXPECT_EQ(std::string(twice.begin(), twice.end()), order.underlinedTwice) << order.name;
    }
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

TEST_F(DialogOrder, RecordedUnderlinesEachLetterOnce)
{
    EXPECT_THAT(MnemonicsOf("RECORDED"),
                ElementsAre("&Gaps:", "&Marks and triggers:", "&Recorded with:", "&Show frame", "&Close", "&Help"));
}

TEST_F(DialogOrder, ExportUnderlinesEachLetterOnce)
{
    EXPECT_THAT(MnemonicsOf("EXPORT"),
                ElementsAre("&What:", "&Part:", "&First frame:", "&Last frame:", "&As:", "F&ormat:", "Color &scale",
                            "&Time", "&Regions", "&Name:", "&Browse...", "&Export", "&Cancel", "&Help"));
}

TEST_F(DialogOrder, GoToFrameUnderlinesEachLetterOnce)
{
    EXPECT_THAT(MnemonicsOf("GOTOFRAME"), ElementsAre("&Frame:", "&Cancel"));
}

}  // namespace
}  // namespace kelvo
