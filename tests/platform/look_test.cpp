// How the dialogs, the panel and the help window look: nothing is clipped or elided, in both themes, at single and
// double resolution. With KELVO_PICTURES set to a directory, each test leaves its picture there.

#include "platform/dialog_fixture.h"
#include "platform/file_dialog.h"
#include "platform/help.h"
#include "platform/qt_dialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDirIterator>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QTextBrowser>

#include <cstdlib>

namespace kelvo {

namespace {

struct Look {
    const char* name;
    Theme theme;
    double scale;
};

void PrintTo(const Look& look, std::ostream* out)
{
    *out << look.name;
}

class LookOf : public DialogFixture, public testing::WithParamInterface<Look> {
  protected:
    void SetUp() override
    {
        CommandLine commandLine;
        commandLine.theme = GetParam().theme;
        commandLine.scale = GetParam().scale;
        Start(commandLine);
    }

    void Picture(QWidget* widget, const std::string& name) const
    {
        const QPixmap picture = widget->grab();
        EXPECT_EQ(picture.devicePixelRatio(), GetParam().scale);
        EXPECT_EQ(picture.width(), qRound(widget->width() * GetParam().scale));
        if (const char* directory = std::getenv("KELVO_PICTURES")) {
            EXPECT_TRUE(picture.save(
                QStringLiteral("%1/%2-%3.png")
                    .arg(QLatin1String(directory), QLatin1String(name.c_str()), QLatin1String(GetParam().name))));
        }
    }
};

std::string Named(const QWidget* widget)
{
    return std::string(widget->metaObject()->className()) + " " + widget->objectName().toStdString();
}

// Each text has the room that it asks for, and lies inside what holds it.
void ExpectNothingClipped(QWidget* root)
{
    int texts = 0;
    for (const QWidget* widget : root->findChildren<QWidget*>()) {
        if (!widget->isVisibleTo(root) || widget->parentWidget() == nullptr) continue;
        const bool label = qobject_cast<const QLabel*>(widget) != nullptr;
        const bool button = qobject_cast<const QAbstractButton*>(widget) != nullptr;
        const bool group = qobject_cast<const QGroupBox*>(widget) != nullptr;
        if (!label && !button && !group) continue;
        ++texts;
        QSize wanted = group ? widget->minimumSizeHint() : widget->sizeHint();
        if (label && widget->hasHeightForWidth()) wanted = {0, widget->heightForWidth(widget->width())};
        EXPECT_GE(widget->width(), std::min(wanted.width(), widget->maximumWidth())) << Named(widget);
        EXPECT_GE(widget->height(), std::min(wanted.height(), widget->maximumHeight())) << Named(widget);
        const QRect place(widget->mapTo(root, QPoint()), widget->size());
        EXPECT_TRUE(root->rect().contains(place)) << Named(widget);
    }
    EXPECT_GE(texts, 2);
}

// The controls of one layer don't lie over each other.
void ExpectNoOverlap(const QWidget* root)
{
    const QList<QWidget*> children = root->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (const QWidget* a : children) {
        for (const QWidget* b : children) {
            if (a >= b || !a->isVisibleTo(root) || !b->isVisibleTo(root)) continue;
            EXPECT_FALSE(a->geometry().intersects(b->geometry())) << Named(a) << " over " << Named(b);
        }
    }
}

// Fills the controls as the procedures do, with their longest contents.
void FillDisplay(HWND dialog)
{
    SetDlgItemText(dialog, 1240, "1000");
    SetDlgItemText(dialog, 1244, "100");
    SetScrollPos(dialog, 1242, 580);
    SetScrollPos(dialog, 1246, 16);
    for (const char* unit : {"Signal (Counts)", "Signal (V)",
                             "Temperature (\xB0"
                             "C)"})
        ListAdd(dialog, 1256, unit);
    ListSelect(dialog, 1256, 2);
}

void FillGeometry(HWND dialog)
{
    SetDlgItemText(dialog, 1608, "InSb 320 x 256, four channels");
    SetDlgItemText(
        dialog, 1460,
        "Bad det file: /home/operator/.local/share/kelvo/calibrations/InSb 320 x 256/2.5 ms/unity/November/Last.bad");
    for (const char* line : {"   0,   1", "  23,  32", "1023,1023"}) ListAdd(dialog, 1308, line);
    SetDlgItemText(dialog, 1312, "1023,1023");
}

}  // namespace

TEST_P(LookOf, Dialogs)
{
    for (const char* name : {"DISPLAY",  "ABOUT",    "FRAMES",    "GOTOFRAME", "BENCH", "CLOCK_ON", "INITIAL",
                             "ACCOUNT",  "QVF1058",  "ADVANCED",  "FRAMERATE", "CALIB", "CAL_COLD", "CAL_HOT",
                             "CAL_OPEN", "CAL_SAVE", "CALREPORT", "GEOMETRY",  "SAVE",  "ImgHead"}) {
        dialogRule = [name](HWND dialog, const SeenMessage& seen) -> LRESULT {
            if (seen.message == WM_INITDIALOG && std::string_view(name) == "DISPLAY") FillDisplay(dialog);
            if (seen.message == WM_INITDIALOG && std::string_view(name) == "GOTOFRAME") {
                SetDlgItemText(dialog, 1002, "0 to 2147483647");
            }
            if (seen.message == WM_INITDIALOG && std::string_view(name) == "BENCH") {
                SetDlgItemText(dialog, 1011, "-40");
                SetDlgItemText(dialog, 1012, "150");
                SetDlgItemText(dialog, 1014, "a recording with a long name.raw");
            }
            if (seen.message == WM_INITDIALOG && std::string_view(name) == "QVF1058") {
                for (int id = 602; id <= 612; ++id) SetDlgItemText(dialog, id, "-1906.875");
                ListAdd(dialog, 624, "100.0");
                ListAdd(dialog, 626, "0.00125");
                SetDlgItemText(dialog, 641, "255");
                SetDlgItemText(dialog, 655, "15");
                ListAdd(dialog, 1256,
                        "Temperature (\xB0"
                        "C)");
            }
            if (seen.message == WM_INITDIALOG && std::string_view(name) == "CALIB") {
                for (const int id : {1205, 1206, 1211, 1216, 1220}) SetDlgItemText(dialog, id, "2047.00");
            }
            if (seen.message == WM_INITDIALOG && std::string_view(name) == "GEOMETRY") FillGeometry(dialog);
            if (seen.message == WM_INITDIALOG && std::string_view(name).starts_with("CAL_")) {
                for (const int id : {1224, 1226}) SetDlgItemText(dialog, id, "-274.00");
            }
            if (seen.message == WM_INITDIALOG && std::string_view(name) == "ACCOUNT") {
                for (const int id : {1001, 1002, 1003, 1004}) SetDlgItemText(dialog, id, "999999999999");
                for (const int id : {1005, 1006}) SetDlgItemText(dialog, id, "1000.0 Hz");
            }
            return 0;
        };
        Then([this, name] {
            QWidget* widget = DialogInFront()->widget;
            ExpectNothingClipped(widget);
            ExpectNoOverlap(widget);
            Picture(widget, name);
            EndDialog(DialogInFront(), 1);
        });
        EXPECT_EQ(DialogBox(name, mainWindow, DialogTestProc), 1) << name;
    }
}

TEST_P(LookOf, Panel)
{
    const HWND panel = CreateDockedPanel("PANEL", mainWindow, DialogTestProc);
    ASSERT_NE(panel, nullptr);
    ShowDlgItem(panel, 1014, false);
    ShowDlgItem(panel, 1015, false);
    SetDlgItemText(panel, 311, "16");
    SetDlgItemText(panel, 313, "-640,-512");
    SetDlgItemText(panel, 316, "1000");
    SetDlgItemText(panel, 317, "100");
    CheckDlgButton(panel, 1013, true);
    for (const char* unit : {"Signal (Counts)",
                             "Temperature (\xB0"
                             "C)"})
        ListAdd(panel, 1256, unit);
    ListSelect(panel, 1256, 1);
    for (const int width : {1280, 1000, 800}) {
        panel->widget->resize(width, panel->widget->height());
        QApplication::processEvents();
        ExpectNothingClipped(panel->widget);
        ExpectNoOverlap(panel->widget);
        EXPECT_LE(panel->widget->layout()->minimumSize().width(), width);
        EXPECT_LE(panel->widget->height(), 48);
        Picture(panel->widget, "PANEL" + std::to_string(width));
    }
}

TEST_P(LookOf, HelpWindow)
{
    ShowHelpContext(770);
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* text = widget->findChild<QTextBrowser*>(QStringLiteral("helpText"));
        if (text == nullptr) continue;
        EXPECT_LE(text->document()->idealWidth(), text->viewport()->width());
        Picture(widget, "HELP770");
        ShowHelpContents();
        Picture(widget, "HELP769");
        ShowHelpContext(2003);
        Picture(widget, "HELP2003");
    }
}

TEST_P(LookOf, FileSelection)
{
    FileDialogRequest request;
    request.owner = mainWindow;
    request.title = "Open File";
    request.filters = {{"Image Files (*.img)", "*.img"}, {"All Files (*.*)", "*.*"}};
    request.directory = "/usr/share";
    Then([this] {
        Picture(FrontModal()->widget, "FILE");
        EXPECT_GE(FrontModal()->widget->width(), 600);
        CancelFileDialog();
    });
    EXPECT_TRUE(RunFileDialog(request).paths.empty());
}

// All icons on a sheet: no two look alike.
TEST_P(LookOf, Icons)
{
    QWidget sheet;
    auto* grid = new QGridLayout(&sheet);
    std::vector<std::pair<std::string, QImage>> seen;
    for (QDirIterator it(QStringLiteral(":/icons")); it.hasNext();) {
        const std::string name = QFileInfo(it.next()).completeBaseName().toStdString();
        const int place = static_cast<int>(seen.size());
        const QPixmap picture = IconNamed(name).pixmap(QSize(24, 24), GetParam().scale);
        for (const auto& [other, image] : seen) EXPECT_NE(picture.toImage(), image) << name << " and " << other;
        seen.emplace_back(name, picture.toImage());
        auto* label = new QLabel;
        label->setPixmap(picture);
        grid->addWidget(label, place / 10, place % 10);
    }
    EXPECT_GT(seen.size(), 25U);
    Picture(&sheet, "ICONS");
}

INSTANTIATE_TEST_SUITE_P(AllLooks, LookOf,
                         testing::Values(Look{"light1", Theme::kLight, 1.0}, Look{"light2", Theme::kLight, 2.0},
                                         Look{"dark1", Theme::kDark, 1.0}, Look{"dark2", Theme::kDark, 2.0}),
                         [](const auto& look) { return std::string(look.param.name); });

}  // namespace kelvo
