#include "platform/window.h"

#include "platform/application.h"
#include "platform/faults.h"
#include "platform/operator_acts.h"
#include "platform/qt_window.h"
#include "platform/transcript.h"
#include "platform/window_place.h"

#include <QApplication>
#include <QCloseEvent>
#include <QElapsedTimer>
#include <QFontMetrics>
#include <QMenuBar>
#include <QResizeEvent>
#include <QScreen>
#include <QThread>
#include <QWindow>

#include <algorithm>
#include <map>

namespace kelvo {

namespace {

constexpr QSize kFirstSize{1100, 820};
constexpr QSize kSmallestSize{640, 480};

struct RegisteredClass {
    WindowProc procedure = nullptr;
    std::string icon;
    bool systemBackground = true;
    std::uint32_t background = 0;
};
std::map<std::string, RegisteredClass, std::less<>> classes;

// The failures that can be asked for, by the class that they concern.
struct ClassFaults {
    std::string_view className;
    std::string_view registering;
    std::string_view creating;
};
constexpr ClassFaults kClassFaults[] = {
    {"KELVO", "register main class", "create main window"},
    {"StatusWndClass", "register status class", "create status window"},
};

bool MustFail(std::string_view className, std::string_view ClassFaults::*step)
{
    return std::ranges::any_of(kClassFaults, [=](const ClassFaults& faults) {
        return faults.className == className && FaultIsSet(faults.*step);
    });
}

const RegisteredClass* FindClass(std::string_view name)
{
    const auto found = classes.find(name);
    return found == classes.end() ? nullptr : &found->second;
}

// The frame of the main window. Its client area is the central widget.
class MainFrame : public QMainWindow {
  public:
    MainFrame()
    {
        setMinimumSize(kSmallestSize);
        resize(kFirstSize);
    }

  protected:
    // Whether it closes is the window procedure's decision.
    void closeEvent(QCloseEvent* event) override
    {
        event->ignore();
        TellOperatorAct({.kind = OperatorAct::Kind::kClose});
        if (HWND window = WindowOf(this)) SendMessage(window, WM_CLOSE, 0, 0);
    }
};

HWND EnterSurface(WindowKind kind, QWidget* widget, const RegisteredClass& windowClass, HWND parent)
{
    HWND window = RegisterWindow(kind, widget, windowClass.procedure, parent);
    window->systemBackground = windowClass.systemBackground;
    window->background = windowClass.background;
    return window;
}

QRect ToQRect(const Rect& rect)
{
    return {rect.left, rect.top, rect.Width(), rect.Height()};
}

Rect FromQRect(const QRect& rect)
{
    return {rect.left(), rect.top(), rect.left() + rect.width(), rect.top() + rect.height()};
}

// The window system answers in its own time.
constexpr int kShowLimitMs = 1000;
constexpr int kStillForMs = 60;
constexpr unsigned long kShowPauseMs = 3;

void WaitUntilShown(const QWidget& frame)
{
    QElapsedTimer sinceStart;
    QElapsedTimer sinceChange;
    sinceStart.start();
    sinceChange.start();
    QSize size = frame.size();
    const int stillForMs = RunsOffscreen() ? 0 : kStillForMs;
    while (sinceStart.elapsed() < kShowLimitMs) {
        HandlePendingEvents();
        if (frame.size() != size) {
            size = frame.size();
            sinceChange.restart();
        }
        const bool exposed = frame.windowHandle() && frame.windowHandle()->isExposed();
        if (exposed && sinceChange.elapsed() >= stillForMs) return;
        QThread::msleep(kShowPauseMs);
    }
}

// Without a window manager nobody maximises.
bool FillsTheScreen(const QWidget& frame)
{
    const QSize available = frame.screen()->availableGeometry().size();
    return frame.width() * 10 >= available.width() * 9 && frame.height() * 10 >= available.height() * 9;
}

// The upper edge is where the operator takes hold of a window.
constexpr QSize kHold{96, 24};

QScreen* ScreenHolding(const QRect& place)
{
    const QRect edge(place.topLeft(), QSize(place.width(), kHold.height()));
    for (QScreen* const screen : QGuiApplication::screens()) {
        const QSize seen = edge.intersected(screen->availableGeometry()).size();
        if (seen.width() >= kHold.width() && seen.height() >= kHold.height()) return screen;
    }
    return nullptr;
}

QRect OntoAScreen(const QRect& wanted)
{
    QScreen* const screen = ScreenHolding(wanted);
    const QRect available = (screen ? screen : QGuiApplication::primaryScreen())->availableGeometry();
    QRect place(wanted.topLeft(), wanted.size().boundedTo(available.size()).expandedTo(kSmallestSize));
    if (!screen) place.moveCenter(available.center());
    return place;
}

void TakeFocus(Window& window)
{
    if (window.widget) window.widget->setFocus();
    TellFocusChange();
}

QWidget* TopLevelOf(HWND window)
{
    if (!IsWindow(window)) return nullptr;
    if (window->frame) return window->frame;
    return window->widget;
}

void PutFrame(QWidget& widget, const Rect& area)
{
    // Before it is shown a window has no frame of its own yet: it is as large as its contents.
    widget.move(area.right - widget.frameGeometry().width(), area.top);
}

// The desktop tells the size of a frame some time after the window was shown. From then on the place is the operator's,
// but what grows within the area stays within it: a text that is longer than its field makes a dialog wider.
class FrameWatch : public QObject {
  public:
    FrameWatch(QWidget& widget, const Rect& area) : QObject(&widget), widget_(widget), area_(area)
    {
        widget.installEventFilter(this);
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Resize && !isPlacing_) StayWithin(static_cast<const QResizeEvent&>(*event));
        const QSize frame = widget_.frameGeometry().size() - widget_.size();
        if (widget_.isVisible() && frame != frame_ && !isPlacing_) {
            frame_ = frame;
            isPlacing_ = true;  // the move is an event too
            PutFrame(widget_, area_);
            isPlacing_ = false;
        }
        return QObject::eventFilter(watched, event);
    }

  private:
    void StayWithin(const QResizeEvent& resize)
    {
        const QRect now = widget_.frameGeometry();
        const int end = now.x() + now.width();
        const int grown = resize.size().width() - resize.oldSize().width();
        if (end <= area_.right || end - grown > area_.right) return;
        isPlacing_ = true;
        widget_.move(now.x() - (end - area_.right), now.y());
        isPlacing_ = false;
    }

    QWidget& widget_;
    Rect area_;
    QSize frame_{0, 0};
    bool isPlacing_ = false;
};

enum class FocusHolder { kNobody, kMain, kOther };
FocusHolder focusTold = FocusHolder::kNobody;
HWND otherInFocus = nullptr;

FocusHolder FocusHolderNow()
{
    const QWindow* const focus = QGuiApplication::focusWindow();
    HWND mainWindow = MainWindow();
    if (!focus) return FocusHolder::kNobody;
    if (mainWindow && mainWindow->frame && focus == mainWindow->frame->windowHandle()) return FocusHolder::kMain;
    return FocusHolder::kOther;
}

// A window of ours that has no handle, such as a menu, counts as the main window itself.
WPARAM FocusPartner(FocusHolder holder, HWND mainWindow)
{
    if (holder != FocusHolder::kOther) return 0;
    return reinterpret_cast<WPARAM>(IsWindow(otherInFocus) ? otherInFocus : mainWindow);
}

}  // namespace

// --- Classes and windows -------------------------------------------------------------------------------------------

bool RegisterWindowClass(const WindowClass& windowClass)
{
    if (MustFail(windowClass.name, &ClassFaults::registering) || windowClass.name.empty()) return false;
    classes[std::string(windowClass.name)] = {windowClass.procedure, std::string(windowClass.icon),
                                              windowClass.systemBackground, windowClass.background};
    return true;
}

HWND CreateMainWindow(std::string_view className, std::string_view title)
{
    const RegisteredClass* const windowClass = FindClass(className);
    if (!windowClass || !qApp || MainWindow() || MustFail(className, &ClassFaults::creating)) return nullptr;

    QPointer<QMainWindow> frame = std::make_unique<MainFrame>().release();
    QWidget* const client = MakeSurfaceWidget(frame);
    client->setFocusPolicy(Qt::StrongFocus);
    client->setAcceptDrops(true);
    frame->setCentralWidget(client);
    frame->setContextMenuPolicy(Qt::NoContextMenu);
    const QIcon icon = IconNamed(windowClass->icon);
    if (!icon.isNull()) QApplication::setWindowIcon(icon);

    HWND window = EnterSurface(WindowKind::kMain, client, *windowClass, nullptr);
    window->frame = frame;
    SetWindowText(window, title);
    SendMessage(window, WM_CREATE, 0, 0);
    return window;
}

HWND CreateChildWindow(std::string_view className, HWND parent, const Rect& place)
{
    const RegisteredClass* const windowClass = FindClass(className);
    if (!windowClass || !IsWindow(parent) || !parent->widget || MustFail(className, &ClassFaults::creating)) {
        return nullptr;
    }
    QWidget* const widget = MakeSurfaceWidget(parent->widget);
    HWND window = EnterSurface(WindowKind::kChild, widget, *windowClass, parent);
    widget->setGeometry(ToQRect(place));
    widget->show();
    SendMessage(window, WM_CREATE, 0, 0);
    return window;
}

void DestroyWindow(HWND window)
{
    if (!IsWindow(window) || window->isBeingDestroyed) return;
    window->isBeingDestroyed = true;
    SendMessage(window, WM_DESTROY, 0, 0);
    for (HWND child : ChildrenOf(window)) DestroyWindow(child);
    if (QWidget* const widget = TopLevelOf(window)) {
        widget->hide();
        widget->deleteLater();
    }
    ForgetWindow(window);
}

// --- Showing and placing -------------------------------------------------------------------------------------------

void ShowWindowMaximised(HWND window)
{
    if (!IsWindow(window) || !window->frame) return;
    QMainWindow& frame = *window->frame;
    frame.showMaximized();
    WaitUntilShown(frame);
    if (!FillsTheScreen(frame)) {
        frame.setGeometry(frame.screen()->availableGeometry());
        WaitUntilShown(frame);
    }
    TakeFocus(*window);
}

WindowPlace GetWindowPlace(HWND window)
{
    if (!IsWindow(window) || !window->frame) return {};
    const QMainWindow& frame = *window->frame;
    const bool maximised = frame.isMaximized();
    const QRect place = maximised ? frame.normalGeometry() : QRect(frame.pos(), frame.size());
    return {place.x(), place.y(), place.width(), place.height(), maximised};
}

void ShowWindowAt(HWND window, const WindowPlace& place)
{
    if (!IsWindow(window) || !window->frame) return;
    QMainWindow& frame = *window->frame;
    const QRect fitting = OntoAScreen({place.x, place.y, place.width, place.height});
    if (!frame.isVisible()) {
        frame.move(fitting.topLeft());
        frame.resize(fitting.size());
    }
    if (place.maximised) {
        ShowWindowMaximised(window);
        return;
    }
    frame.show();
    WaitUntilShown(frame);
    TakeFocus(*window);
}

void ShowWindow(HWND window, bool shown)
{
    if (QWidget* const widget = TopLevelOf(window)) widget->setVisible(shown);
}

void BringToFront(HWND window, const std::string& activation)
{
    QWidget* const widget = TopLevelOf(window);
    if (!widget) return;
    if (!activation.empty()) qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(activation));
    widget->setWindowState(widget->windowState() & ~Qt::WindowMinimized);
    widget->show();
    widget->raise();
    widget->activateWindow();
}

void MoveWindow(HWND window, const Rect& place)
{
    if (QWidget* const widget = TopLevelOf(window)) widget->setGeometry(ToQRect(place));
}

void DockWindow(HWND window, const Rect& area)
{
    QWidget* const widget = TopLevelOf(window);
    if (!widget) return;
    PutFrame(*widget, area);
    static_cast<void>(std::make_unique<FrameWatch>(*widget, area).release());  // the widget owns it
}

void UpdateWindow(HWND window)
{
    if (!IsWindow(window)) return;
    if (window->paintDue) {
        window->paintDue = false;
        SendMessage(window, WM_PAINT, 0, 0);
        if (!IsWindow(window)) return;
    }
    if (!window->widget || !window->widget->isVisible()) return;
    window->unseen = QRect();
    window->widget->repaint();
}

Rect GetClientRect(HWND window)
{
    if (!IsWindow(window) || !window->widget) return {};
    return {0, 0, window->widget->width(), window->widget->height()};
}

Rect GetWindowRect(HWND window)
{
    const QWidget* const widget = TopLevelOf(window);
    if (!widget) return {};
    if (widget->isWindow()) return FromQRect(widget->frameGeometry());
    return FromQRect({widget->mapToGlobal(QPoint(0, 0)), widget->size()});
}

Point ClientToScreen(HWND window, Point client)
{
    if (!IsWindow(window) || !window->widget) return client;
    const QPoint screen = window->widget->mapToGlobal(QPoint(client.x, client.y));
    return {screen.x(), screen.y()};
}

Point ScreenToClient(HWND window, Point screen)
{
    if (!IsWindow(window) || !window->widget) return screen;
    const QPoint client = window->widget->mapFromGlobal(QPoint(screen.x, screen.y));
    return {client.x(), client.y()};
}

std::string GetWindowText(HWND window)
{
    if (!IsWindow(window)) return {};
    if (window->kind == WindowKind::kMain) return window->text;
    return window->widget ? FromQString(window->widget->windowTitle()) : std::string();
}

void SetWindowText(HWND window, std::string_view text)
{
    QWidget* const widget = TopLevelOf(window);
    if (!widget) return;
    widget->setWindowTitle(ToQString(text));
    if (window->kind != WindowKind::kMain) return;
    window->text = text;
    Transcribe("title", {{"text", std::string(text)}});
}

int TextLineHeight(HWND window)
{
    if (!IsWindow(window) || !window->widget) return 0;
    return QFontMetrics(window->widget->font()).lineSpacing();
}

// --- Messages ------------------------------------------------------------------------------------------------------

LRESULT SendMessage(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    if (!IsWindow(window)) return 0;
    if (!window->procedure) return DefWindowProc(window, message, wParam, lParam);
    return window->procedure(window, message, wParam, lParam);
}

LRESULT DefWindowProc(HWND window, std::uint32_t message, WPARAM /*wParam*/, LPARAM /*lParam*/)
{
    if (message == WM_CLOSE) DestroyWindow(window);
    return 0;
}

void SendSize(HWND mainWindow)
{
    if (!IsWindow(mainWindow) || !mainWindow->widget) return;
    const QSize size = mainWindow->widget->size();
    if (QWidget* const panel = mainWindow->dockedPanel) {
        const int wanted =
            panel->hasHeightForWidth() ? panel->heightForWidth(size.width()) : panel->sizeHint().height();
        panel->setGeometry(0, 0, size.width(), wanted);
        panel->raise();
    }
    FitScrollBars(*mainWindow);
    SendMessage(mainWindow, WM_SIZE, 0, static_cast<LPARAM>(MakeLong(size.width(), size.height())));
}

// --- Focus ---------------------------------------------------------------------------------------------------------

void SetFocusTo(HWND window)
{
    QWidget* const widget = TopLevelOf(window);
    if (!widget) return;
    if (widget->isWindow()) widget->activateWindow();
    if (window->widget) window->widget->setFocus();
}

void TellFocusChange()
{
    const FocusHolder before = focusTold;
    const FocusHolder now = FocusHolderNow();
    if (now == FocusHolder::kOther) otherInFocus = WindowOf(QApplication::activeWindow());
    focusTold = now;
    HWND mainWindow = MainWindow();
    if (!mainWindow || now == before) return;
    if (now == FocusHolder::kMain) SendMessage(mainWindow, WM_SETFOCUS, FocusPartner(before, mainWindow), 0);
    if (before == FocusHolder::kMain) SendMessage(mainWindow, WM_KILLFOCUS, FocusPartner(now, mainWindow), 0);
    // Another program may come between two windows of ours.
    const bool leftProgram = before == FocusHolder::kOther && now == FocusHolder::kNobody;
    if (leftProgram) otherInFocus = nullptr;
}

// --- The widget that dialogs and boxes belong to -------------------------------------------------------------------

QWidget* OwnerWidget(HWND owner)
{
    if (const ModalEntry* const front = FrontModal(); front && front->widget) return front->widget;
    if (QWidget* const widget = TopLevelOf(owner)) return widget->window();
    return TopLevelOf(MainWindow());
}

void ForgetWindowClasses()
{
    classes.clear();
    focusTold = FocusHolder::kNobody;
    otherInFocus = nullptr;
}

}  // namespace kelvo
