// The stack of modal windows: boxes, file dialogs and dialogs alike, so that whoever sits in front can be asked which
// one is in front.

#include "platform/application.h"
#include "platform/front.h"
#include "platform/qt_window.h"

#include <QGuiApplication>

#include <algorithm>
#include <utility>

namespace kelvo {

namespace {

// Pointers to the entries stay valid while others come and go.
std::vector<std::unique_ptr<ModalEntry>> stack;

// Offscreen there is no window manager that does it.
void GiveFocusBack()
{
    if (!RunsOffscreen() || QGuiApplication::focusWindow()) return;
    if (QWidget* const next = OwnerWidget(nullptr); next && next->isVisible()) next->activateWindow();
}

}  // namespace

ModalScope::ModalScope(ModalEntry entry) : entry_(nullptr)
{
    stack.push_back(std::make_unique<ModalEntry>(std::move(entry)));
    entry_ = stack.back().get();
    LetGoOfScrollBars();
    ShowPointerShape();
}

ModalScope::~ModalScope()
{
    std::erase_if(stack, [this](const auto& entry) { return entry.get() == entry_; });
    ShowPointerShape();
    GiveFocusBack();
    ModalHasEnded();
}

const ModalEntry* FrontModal()
{
    // One that was answered is gone for the operator, though its loop hasn't returned yet.
    const auto front = std::find_if(stack.rbegin(), stack.rend(),
                                    [](const auto& entry) { return !entry->widget || entry->widget->isVisible(); });
    return front == stack.rend() ? nullptr : front->get();
}

std::size_t ModalDepth()
{
    return stack.size();
}

bool IsOperatorsInput(QEvent::Type type)
{
    switch (type) {
        case QEvent::KeyPress:
        case QEvent::ShortcutOverride:
        case QEvent::Close:
        case QEvent::Shortcut:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::Wheel:
        case QEvent::ContextMenu:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
        case QEvent::DragEnter:
        case QEvent::DragMove:
        case QEvent::Drop:
            return true;
        default:
            return false;
    }
}

bool ModalIsOpen()
{
    return !stack.empty();
}

std::vector<QWidget*> ModalWidgets()
{
    std::vector<QWidget*> widgets;
    for (const auto& entry : stack) {
        if (entry->widget) widgets.push_back(entry->widget);
    }
    return widgets;
}

}  // namespace kelvo
