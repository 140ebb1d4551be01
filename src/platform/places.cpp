// Where things stand on the screen, for hands that work the real pointer.

#include "platform/front.h"
#include "platform/qt_dialog.h"
#include "platform/qt_window.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>

#include <algorithm>

namespace kelvo {

namespace {

Rect OnScreen(const QWidget& widget, const QRect& area)
{
    const QPoint corner = widget.mapToGlobal(area.topLeft());
    return {corner.x(), corner.y(), corner.x() + area.width(), corner.y() + area.height()};
}

// As it is read: without the mark of its letter and without the name of its key.
QString Read(const QString& text)
{
    return text.section(QLatin1Char('\t'), 0, 0).remove(QLatin1Char('&')).trimmed();
}

std::optional<Rect> PlaceOfAction(const QWidget& menu, const QString& text)
{
    for (QAction* const action : menu.actions()) {
        if (!action->isVisible() || Read(action->text()) != text) continue;
        if (const auto* const bar = qobject_cast<const QMenuBar*>(&menu))
            return OnScreen(menu, bar->actionGeometry(action));
        if (const auto* const open = qobject_cast<const QMenu*>(&menu))
            return OnScreen(menu, open->actionGeometry(action));
    }
    return std::nullopt;
}

}  // namespace

std::optional<Rect> PlaceOfControl(HWND dialog, int id)
{
    const QWidget* const control = ControlOf(dialog, id);
    if (!control || !control->isVisible()) return std::nullopt;
    return OnScreen(*control, control->rect());
}

std::optional<Rect> PlaceOfDialog(std::string_view name, int id)
{
    for (HWND dialog : WindowsOfKind(WindowKind::kDialog)) {
        if (DialogName(dialog) == name) return PlaceOfControl(dialog, id);
    }
    return std::nullopt;
}

std::optional<Rect> PlaceOfMenu(std::string_view text)
{
    HWND window = MainWindow();
    if (!window || !window->frame) return std::nullopt;
    return PlaceOfAction(*window->frame->menuBar(), ToQString(text));
}

std::optional<Rect> PlaceOfMenuItem(std::string_view text)
{
    for (const QWidget* const widget : QApplication::topLevelWidgets()) {
        if (!widget->isVisible() || !qobject_cast<const QMenu*>(widget)) continue;
        if (const auto place = PlaceOfAction(*widget, ToQString(text))) return place;
    }
    return std::nullopt;
}

std::optional<Rect> PlaceOfButton(std::string_view text)
{
    const QWidget* const modal = FrontModal() ? FrontModal()->widget.data() : nullptr;
    for (const QWidget* const window : QApplication::topLevelWidgets()) {
        if (!window->isVisible() || (modal && window != modal)) continue;
        for (const QAbstractButton* const button : window->findChildren<QAbstractButton*>()) {
            if (button->isVisible() && Read(button->text()) == ToQString(text))
                return OnScreen(*button, button->rect());
        }
    }
    return std::nullopt;
}

std::optional<Rect> PlaceOfWindow(std::string_view title)
{
    for (const QWidget* const window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->windowTitle().startsWith(ToQString(title))) {
            return OnScreen(*window, window->rect());
        }
    }
    return std::nullopt;
}

}  // namespace kelvo
