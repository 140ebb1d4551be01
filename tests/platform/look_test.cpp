// How the dialogs, the panel and the help window look, with the longest texts that they get: nothing is clipped or
// elided, in both themes, at single and double resolution. With KELVO_PICTURES set to a directory, each test leaves its
// picture there.

#include "platform/dialog_fixture.h"
#include "platform/file_dialog.h"
#include "platform/help.h"
#include "platform/qt_dialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDirIterator>
#include <QFile>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QStyle>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTextBrowser>
#include <QXmlStreamReader>

#include <cstdlib>
#include <memory>

namespace kelvo {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

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

using Complaints = std::vector<std::string>;

bool ShowsText(const QWidget* widget)
{
    return qobject_cast<const QLabel*>(widget) != nullptr || qobject_cast<const QAbstractButton*>(widget) != nullptr ||
           qobject_cast<const QGroupBox*>(widget) != nullptr;
}

QSize RoomWanted(const QWidget* widget)
{
    if (qobject_cast<const QGroupBox*>(widget) != nullptr) return widget->minimumSizeHint();
    if (qobject_cast<const QLabel*>(widget) != nullptr && widget->hasHeightForWidth()) {
        return {0, widget->heightForWidth(widget->width())};
    }
    return widget->sizeHint();
}

// The widgets whose text lacks the room that it asks for, or that lie outside what holds them.
Complaints Clipped(const QWidget* root)
{
    Complaints clipped;
    for (const QWidget* widget : root->findChildren<QWidget*>()) {
        if (!widget->isVisibleTo(root) || widget->parentWidget() == nullptr || !ShowsText(widget)) continue;
        const QSize wanted = RoomWanted(widget).boundedTo(widget->maximumSize());
        const QRect place(widget->mapTo(root, QPoint()), widget->size());
        const bool fits = widget->width() >= wanted.width() && widget->height() >= wanted.height();
        if (!fits || !root->rect().contains(place)) clipped.push_back(Named(widget));
    }
    return clipped;
}

// The controls of one layer that lie over each other.
Complaints Overlapping(const QWidget* root)
{
    Complaints overlapping;
    const QList<QWidget*> children = root->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (const QWidget* a : children) {
        for (const QWidget* b : children) {
            if (a >= b || !a->isVisibleTo(root) || !b->isVisibleTo(root)) continue;
            if (a->geometry().intersects(b->geometry())) overlapping.push_back(Named(a) + " over " + Named(b));
        }
    }
    return overlapping;
}

// --- The longest texts ----------------------------------------------------------------------------------------------
//
// A control whose text comes from the program or the operator tells in its .ui file what the longest one is, in the
// property "longestText": each dialog is looked at with these in place.

QString LongestText(const QWidget* control)
{
    return control->property("longestText").toString();
}

bool TextChanges(const QWidget* control)
{
    const auto* label = qobject_cast<const QLabel*>(control);
    const bool isCaption = label != nullptr && label->buddy() != nullptr;
    return (label != nullptr && !isCaption) || qobject_cast<const QLineEdit*>(control) != nullptr ||
           qobject_cast<const QComboBox*>(control) != nullptr || qobject_cast<const QListWidget*>(control) != nullptr;
}

Complaints WithoutLongestText(HWND dialog)
{
    Complaints without;
    for (const auto& [id, control] : DialogOf(dialog)->controls) {
        if (TextChanges(control) && LongestText(control).isEmpty()) without.push_back(Named(control));
    }
    return without;
}

void FillWithLongestTexts(HWND dialog)
{
    for (const auto& [id, control] : DialogOf(dialog)->controls) {
        const std::string text = LongestText(control).toStdString();
        if (auto* number = qobject_cast<QSpinBox*>(control.data())) number->setValue(number->maximum());
        if (text.empty()) continue;
        if (qobject_cast<QComboBox*>(control.data()) || qobject_cast<QListWidget*>(control.data())) {
            ListSelect(dialog, id, ListAdd(dialog, id, text));
        } else {
            SetDlgItemText(dialog, id, text);
        }
    }
}

// The width that a control has for the text of an entry; -1 for another kind of control.
int RoomForEntry(const QWidget* control)
{
    constexpr int kEditMargin = 2;  // QLineEdit's own, on either side of its contents
    if (const auto* edit = qobject_cast<const QLineEdit*>(control)) {
        QStyleOptionFrame option;
        option.initFrom(edit);
        option.lineWidth = edit->style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, edit);
        return edit->style()->subElementRect(QStyle::SE_LineEditContents, &option, edit).width() - 2 * kEditMargin;
    }
    if (const auto* box = qobject_cast<const QComboBox*>(control)) {
        QStyleOptionComboBox option;
        option.initFrom(box);
        return box->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, box).width();
    }
    if (const auto* list = qobject_cast<const QListWidget*>(control)) return list->viewport()->width();
    return -1;
}

// The edits, combo boxes and lists that don't show their longest text whole, and the numbers that lack room.
Complaints EntriesCut(HWND dialog)
{
    Complaints cut;
    for (const auto& [id, control] : DialogOf(dialog)->controls) {
        const int room = RoomForEntry(control);
        const bool number = qobject_cast<const QSpinBox*>(control.data()) != nullptr;
        const bool textCut = room >= 0 && room < control->fontMetrics().horizontalAdvance(LongestText(control));
        if (textCut || (number && control->width() < control->sizeHint().width())) cut.push_back(Named(control));
    }
    return cut;
}

void ExpectGoodLook(HWND dialog)
{
    EXPECT_THAT(Clipped(dialog->widget), IsEmpty());
    EXPECT_THAT(Overlapping(dialog->widget), IsEmpty());
    EXPECT_THAT(WithoutLongestText(dialog), IsEmpty());
    EXPECT_THAT(EntriesCut(dialog), IsEmpty());
}

// --- The dialogs ----------------------------------------------------------------------------------------------------

constexpr const char* kTestsOwn = "EVERYCONTROL";

QString RootClass(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    for (QXmlStreamReader xml(&file); !xml.atEnd(); xml.readNext()) {
        if (xml.isStartElement() && xml.name() == QLatin1String("widget")) {
            return xml.attributes().value(QLatin1String("class")).toString();
        }
    }
    return {};
}

// All that the program has: a file that is put beside the others is looked at from then on.
std::vector<std::string> NamesOf(const char* rootClass)
{
    std::vector<std::string> names;
    for (QDirIterator it(QStringLiteral(":/dialogs")); it.hasNext();) {
        const QString path = it.next();
        const std::string name = QFileInfo(path).completeBaseName().toStdString();
        if (name != kTestsOwn && RootClass(path) == QLatin1String(rootClass)) names.push_back(name);
    }
    return names;
}

}  // namespace

// The words of a menu have air around them; the lines between them stay thin.
TEST_P(LookOf, MenuRows)
{
    const std::unique_ptr<QStyle> plain(QStyleFactory::create(QStringLiteral("Fusion")));
    QStyleOptionMenuItem item;
    item.text = QStringLiteral("Freeze");
    const QSize content(80, 16);
    const auto rowOf = [&](const QStyle& style) { return style.sizeFromContents(QStyle::CT_MenuItem, &item, content); };
    item.menuItemType = QStyleOptionMenuItem::Normal;
    EXPECT_EQ(rowOf(*QApplication::style()), rowOf(*plain) + QSize(12, 3));
    item.menuItemType = QStyleOptionMenuItem::Separator;
    EXPECT_EQ(rowOf(*QApplication::style()), rowOf(*plain));
}

TEST_P(LookOf, Dialogs)
{
    const std::vector<std::string> names = NamesOf("QDialog");
    EXPECT_GE(names.size(), 20U);
    dialogRule = [](HWND dialog, const SeenMessage& seen) -> LRESULT {
        if (seen.message == WM_INITDIALOG) FillWithLongestTexts(dialog);
        return 0;
    };
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        Then([this, name] {
            SCOPED_TRACE(name);
            ExpectGoodLook(DialogInFront());
            Picture(DialogInFront()->widget, name);
            EndDialog(DialogInFront(), 1);
        });
        EXPECT_EQ(DialogBox(name, mainWindow, DialogTestProc), 1);
    }
}

// A tick that the operator can't reach says why.
TEST_P(LookOf, TheTicksOfTheDisplaySetUpThatDoNothing)
{
    Then([] {
        const HWND dialog = DialogInFront();
        for (const char* name : {"colorBar", "tempScale", "sideHistogram"}) {
            const auto* const box = dialog->widget->findChild<QCheckBox*>(QLatin1String(name));
            ASSERT_NE(box, nullptr) << name;
            EXPECT_FALSE(box->isEnabled()) << name;
            EXPECT_TRUE(box->toolTip().startsWith(QLatin1String("Not drawn by this version"))) << name;
        }
        EndDialog(dialog, 1);
    });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 1);
}

// What the looks rest on: each complaint comes where there is something to complain of.
TEST_P(LookOf, EachComplaintCanBeMade)
{
    Then([] {
        const HWND dialog = DialogInFront();
        QWidget* root = dialog->widget;
        EXPECT_THAT(WithoutLongestText(dialog),
                    UnorderedElementsAre("QLabel label", "QLineEdit edit", "QComboBox combo", "QListWidget list"));
        EXPECT_THAT(Clipped(root), IsEmpty());
        EXPECT_THAT(Overlapping(root), IsEmpty());
        EXPECT_THAT(EntriesCut(dialog), IsEmpty());
        for (const char* name : {"edit", "combo", "list"}) {
            root->findChild<QWidget*>(QLatin1String(name))->setProperty("longestText", QString(500, QLatin1Char('M')));
        }
        auto* spin = root->findChild<QWidget*>(QStringLiteral("spin"));
        spin->resize(10, spin->height());
        EXPECT_THAT(EntriesCut(dialog),
                    UnorderedElementsAre("QLineEdit edit", "QComboBox combo", "QListWidget list", "QSpinBox spin"));
        auto* push = root->findChild<QWidget*>(QStringLiteral("push"));
        push->resize(5, push->height());
        EXPECT_THAT(Clipped(root), ElementsAre("QPushButton push"));
        auto* label = root->findChild<QWidget*>(QStringLiteral("label"));
        label->setGeometry(push->geometry());
        EXPECT_THAT(Overlapping(root), SizeIs(1));
        EndDialog(dialog, 1);
    });
    EXPECT_EQ(DialogBox(kTestsOwn, mainWindow, DialogTestProc), 1);
}

TEST_P(LookOf, Panel)
{
    EXPECT_THAT(NamesOf("QWidget"), ElementsAre("PANEL", "PLAYBAR"));
    const HWND panel = CreateDockedPanel("PANEL", mainWindow, DialogTestProc);
    ASSERT_NE(panel, nullptr);
    ShowDlgItem(panel, 1014, false);
    ShowDlgItem(panel, 1015, false);
    FillWithLongestTexts(panel);
    CheckDlgButton(panel, 1013, true);
    for (const int width : {1280, 1000, 800}) {
        panel->widget->resize(width, panel->widget->height());
        QApplication::processEvents();
        ExpectGoodLook(panel);
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
