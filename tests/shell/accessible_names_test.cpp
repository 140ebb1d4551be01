// What those who hear the screen are told: each control of the panel and of the dialogs has a name.
#include "platform/dialog.h"
#include "platform/front.h"
#include "platform/text.h"
#include "platform/window.h"
#include "state/windows.h"
#include "support/picture_fixture.h"
#include "viewing/play_bar.h"

#include <QAbstractScrollArea>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QDirIterator>
#include <QFileInfo>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::IsEmpty;

LRESULT PlainProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM /*lParam*/)
{
    if (message == WM_COMMAND && LowWord(wParam) == kIdCancel) EndDialog(dialog, 0);
    return 0;
}

// The toolkit's own parts of a control, which is named as a whole.
bool IsPartOfAControl(const QWidget& widget)
{
    for (const QWidget* above = widget.parentWidget(); above != nullptr; above = above->parentWidget()) {
        if (qobject_cast<const QAbstractScrollArea*>(above) != nullptr ||
            qobject_cast<const QAbstractSpinBox*>(above) != nullptr ||
            qobject_cast<const QComboBox*>(above) != nullptr) {
            return true;
        }
    }
    return false;
}

std::string NameOf(QWidget& widget)
{
    QAccessibleInterface* const interface = QAccessible::queryAccessibleInterface(&widget);
    return interface == nullptr ? std::string() : interface->text(QAccessible::Name).trimmed().toStdString();
}

class AccessibleNames : public PictureTest {
  protected:
    // Controls that the keyboard reaches and that have no name. Adds to the number of those looked at.
    std::vector<std::string> NamelessIn(const QWidget& root)
    {
        std::vector<std::string> nameless;
        for (QWidget* const widget : root.findChildren<QWidget*>()) {
            const bool reached = (widget->focusPolicy() & Qt::TabFocus) != 0 && widget->focusProxy() == nullptr;
            if (!reached || IsPartOfAControl(*widget)) continue;
            ++looked;
            if (NameOf(*widget).empty()) {
                nameless.push_back(root.objectName().toStdString() + ": " + widget->objectName().toStdString());
            }
        }
        return nameless;
    }
    int looked = 0;
};

TEST_F(AccessibleNames, EveryControlOfTheDialogsHasOne)
{
    for (QDirIterator it(QStringLiteral(":/dialogs")); it.hasNext();) {
        const std::string name = QFileInfo(it.next()).completeBaseName().toStdString();
        if (name == "PANEL" || name == "PLAYBAR") continue;
        std::vector<std::string> nameless;
        op->Do([&] {
            nameless = NamelessIn(*QApplication::activeModalWidget());
            OperateKey("Esc");
        });
        EXPECT_EQ(DialogBox(name, hWndMain, PlainProc), 0) << name;
        EXPECT_THAT(nameless, IsEmpty());
    }
    EXPECT_GT(looked, 150);
}

const QWidget* WidgetNamed(QLatin1String name)
{
    for (const QWidget* const widget : QApplication::allWidgets()) {
        if (widget->objectName() == name) return widget;
    }
    return nullptr;
}

TEST_F(AccessibleNames, EveryControlOfThePanelHasOne)
{
    DockPanel();
    const QWidget* const panel = WidgetNamed(QLatin1String("PANEL"));
    ASSERT_NE(panel, nullptr);
    EXPECT_THAT(NamelessIn(*panel), IsEmpty());
    EXPECT_GT(looked, 15);
}

TEST_F(AccessibleNames, EveryControlOfThePlayBarHasOne)
{
    OpenPlayBar();
    const QWidget* const bar = WidgetNamed(QLatin1String("PLAYBAR"));
    ASSERT_NE(bar, nullptr);
    EXPECT_THAT(NamelessIn(*bar), IsEmpty());
    EXPECT_GT(looked, 3);
}

}  // namespace
}  // namespace kelvo
