// The widget behind each window that paints: it keeps the surface, shows a copy of it, and turns what the operator does
// there into messages.

#include "platform/operator_acts.h"
#include "platform/qt_window.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPalette>
#include <QResizeEvent>
#include <QUrl>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace kelvo {

namespace {

constexpr int kNotch = 120;  // of a wheel, in eighths of a degree

std::vector<std::string> droppedFiles;

QRgb BackgroundOf(const Window& window)
{
    if (window.systemBackground) return window.widget->palette().color(QPalette::Window).rgb();
    const std::uint32_t color = window.background;
    return qRgb(static_cast<int>(color & 0xFF), static_cast<int>((color >> 8) & 0xFF),
                static_cast<int>((color >> 16) & 0xFF));
}

QSize SurfaceSize(const QWidget& widget)
{
    const double ratio = widget.devicePixelRatioF();
    return {static_cast<int>(std::ceil(widget.width() * ratio)), static_cast<int>(std::ceil(widget.height() * ratio))};
}

// What was painted stays in its corner; new parts show the background.
void FitSurface(Window& window)
{
    const QSize size = SurfaceSize(*window.widget);
    if (window.surface.size() == size || size.isEmpty()) return;
    QImage larger(size, QImage::Format_RGB32);
    larger.fill(BackgroundOf(window));
    if (!window.surface.isNull()) {
        QPainter painter(&larger);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.drawImage(QPoint(0, 0), window.surface);
    }
    window.surface = std::move(larger);
}

// What lies under scroll bars and other opaque children isn't seen, and each of them would be drawn again with it.
QRegion SeenOf(const QWidget& widget, const QRect& area)
{
    QRegion seen(area);
    for (const QObject* object : widget.children()) {
        const auto* const child = qobject_cast<const QWidget*>(object);
        if (!child || child->isWindow() || !child->isVisible()) continue;
        const bool opaque = child->autoFillBackground() || child->testAttribute(Qt::WA_OpaquePaintEvent);
        if (opaque) seen -= child->geometry();
    }
    return seen;
}

bool somethingUnseen = false;

// An image on the same bits that is taken for one of plain pixels.
QImage PixelsOf(const QImage& surface)
{
    return {surface.constBits(), surface.width(), surface.height(), surface.bytesPerLine(), QImage::Format_RGB32};
}

struct ButtonMessage {
    Qt::MouseButton button;
    std::uint32_t message;
};
constexpr ButtonMessage kPressMessages[] = {
    {Qt::LeftButton, WM_LBUTTONDOWN}, {Qt::RightButton, WM_RBUTTONDOWN}, {Qt::MiddleButton, WM_MBUTTONDOWN}};

// The numbers that OperateMouse has for what comes as a message; a turn of the wheel downward has the next one.
struct MouseDeed {
    std::uint32_t message;
    int button;
};
constexpr MouseDeed kMouseDeeds[] = {{WM_MOUSEMOVE, 0},   {WM_RBUTTONDOWN, 2}, {WM_LBUTTONDBLCLK, 4},
                                     {WM_MOUSEWHEEL, 5},  {WM_MBUTTONDOWN, 7}, {WM_MBUTTONUP, 8},
                                     {WM_LBUTTONDOWN, 9}, {WM_LBUTTONUP, 10}};

class SurfaceWidget : public QWidget {
  public:
    explicit SurfaceWidget(QWidget* parent) : QWidget(parent)
    {
        setAttribute(Qt::WA_OpaquePaintEvent);
        setAttribute(Qt::WA_NoSystemBackground);
        setMouseTracking(true);
    }

  protected:
    void resizeEvent(QResizeEvent* /*event*/) override
    {
        HWND window = Handle();
        if (!window) return;
        FitSurface(*window);
        AskForPaint(*window);
        if (window->kind == WindowKind::kMain) SendSize(window);
    }

    void paintEvent(QPaintEvent* event) override
    {
        HWND window = Handle();
        QPainter painter(this);
        if (!window) {
            painter.fillRect(event->rect(), palette().window());
            return;
        }
        if (window->surface.size() != SurfaceSize(*this)) {  // moved to a screen with another ratio
            FitSurface(*window);
            EraseSurface(*window);
            AskForPaint(*window);
        }
        // One pixel of the surface is one of the device, wherever the widget lies on a fractional ratio.
        const double ratio = devicePixelRatioF();
        const bool wholeRatio = ratio == std::floor(ratio);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        for (const QRect& part : event->region()) {
            // One rectangle is copied; several at once the toolkit would blend, by threads that have to be waited for.
            // At a fractional ratio a rectangle may end within a device pixel, and its clip be rounded off.
            if (wholeRatio && event->region().rectCount() > 1) painter.setClipRect(part);
            painter.save();
            painter.scale(1 / ratio, 1 / ratio);
            painter.drawImage(QPoint(0, 0), PixelsOf(window->surface));
            painter.restore();
            if (!wholeRatio) break;  // all of it is painted
        }
    }

    void changeEvent(QEvent* event) override
    {
        HWND window = Handle();
        if (event->type() == QEvent::PaletteChange && window && !window->surface.isNull()) {
            EraseSurface(*window);
            AskForPaint(*window);
        }
        QWidget::changeEvent(event);
    }

    void mouseMoveEvent(QMouseEvent* event) override
    {
        const QPoint at = event->position().toPoint();
        if (holdsMiddle_ && !event->buttons().testFlag(Qt::MiddleButton)) ReleaseMiddle(at);  // the release went astray
        SendMouse(WM_MOUSEMOVE, at, 0);
    }
    void mousePressEvent(QMouseEvent* event) override
    {
        const QPoint at = event->position().toPoint();
        if (event->button() == Qt::MiddleButton) holdsMiddle_ = childAt(at) == nullptr;
        for (const ButtonMessage& press : kPressMessages) {
            if (press.button == event->button()) SendMouse(press.message, at, 0);
        }
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override
    {
        if (event->button() == Qt::LeftButton) {
            SendMouse(WM_LBUTTONDBLCLK, event->position().toPoint(), 0);
        } else {
            mousePressEvent(event);
        }
    }
    void leaveEvent(QEvent* /*event*/) override
    {
        HWND window = Handle();
        if (window && !window->isBeingDestroyed) SendMessage(window, WM_MOUSELEAVE, 0, 0);
    }
    void mouseReleaseEvent(QMouseEvent* event) override
    {
        if (event->button() == Qt::MiddleButton) ReleaseMiddle(event->position().toPoint());
        if (event->button() == Qt::LeftButton) SendMouse(WM_LBUTTONUP, event->position().toPoint(), 0);
    }

    void wheelEvent(QWheelEvent* event) override
    {
        HWND window = Handle();
        if (!window) return;
        window->wheelRest += event->angleDelta().y();
        const int steps = window->wheelRest / kNotch;
        window->wheelRest %= kNotch;
        for (int i = 0; i < std::abs(steps); ++i) {
            SendMouse(WM_MOUSEWHEEL, event->position().toPoint(), MakeLong(0, steps > 0 ? 1 : -1));
        }
    }

    void dragEnterEvent(QDragEnterEvent* event) override
    {
        if (!LocalPaths(*event->mimeData()).empty()) event->acceptProposedAction();
    }
    void dropEvent(QDropEvent* event) override
    {
        std::vector<std::string> paths = LocalPaths(*event->mimeData());
        if (paths.empty()) return;
        event->acceptProposedAction();
        TellOperatorAct({.kind = OperatorAct::Kind::kDrop, .paths = paths});
        droppedFiles = std::move(paths);
        // The program that the files come from waits for the end of the drop: it must not wait for our dialogs.
        if (HWND window = Handle()) PostMessage(window, WM_DROPFILES, 0, 0);
    }

    void keyPressEvent(QKeyEvent* event) override
    {
        const std::optional<Key> key = KeyOf(event->key());
        if (HWND window = Handle(); window && key) {
            if (window->kind == WindowKind::kMain && *key == Key::kEscape) {
                TellOperatorAct({.kind = OperatorAct::Kind::kKey, .text = "Escape"});
            }
            SendMessage(window, WM_KEYDOWN, static_cast<WPARAM>(*key), 0);
        }
        QWidget::keyPressEvent(event);
    }

  private:
    HWND Handle() const
    {
        HWND window = WindowOf(this);
        return window && window->widget == this ? window : nullptr;
    }

    static void AskForPaint(Window& window)
    {
        window.paintDue = true;
        PostPaints();
    }

    static std::vector<std::string> LocalPaths(const QMimeData& data)
    {
        std::vector<std::string> paths;
        for (const QUrl& url : data.urls()) {
            if (!url.isLocalFile()) continue;
            // Percent signs carry any byte of a name, also such as are no UTF-8.
            paths.push_back(QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString());
        }
        return paths;
    }

    void ReleaseMiddle(QPoint at)
    {
        SendMouse(WM_MBUTTONUP, at, 0);
        holdsMiddle_ = false;
    }

    static void TellMouse(std::uint32_t message, QPoint at, WPARAM wParam)
    {
        const auto* const deed = std::ranges::find(kMouseDeeds, message, &MouseDeed::message);
        if (deed == std::end(kMouseDeeds)) return;
        const bool down = message == WM_MOUSEWHEEL && SignedHighWord(wParam) < 0;
        TellOperatorAct({.kind = OperatorAct::Kind::kMouse, .value = deed->button + down, .place = {at.x(), at.y()}});
    }

    // What happens over a child is the child's, also where the toolkit hands it on to the parent.
    void SendMouse(std::uint32_t message, QPoint at, WPARAM wParam)
    {
        HWND window = Handle();
        if (!window || (!holdsMiddle_ && childAt(at))) return;
        const QPoint screen = mapToGlobal(at);
        NotePointer({screen.x(), screen.y()});
        if (window->kind == WindowKind::kMain) TellMouse(message, at, wParam);
        const Point surface = ToSurface(*window, {at.x(), at.y()});
        SendMessage(window, message, wParam, static_cast<LPARAM>(MakeLong(surface.x, surface.y)));
    }

    bool holdsMiddle_ = false;
};

}  // namespace

QWidget* MakeSurfaceWidget(QWidget* parent)
{
    return std::make_unique<SurfaceWidget>(parent).release();  // the parent owns it
}

void ShowSoon(Window& window, const QRect& area)
{
    window.unseen |= area;
    somethingUnseen = true;
}

// The toolkit takes memory for what it is asked to show: so it is asked once, and not while a frame is on its way.
void ShowPainted()
{
    if (!std::exchange(somethingUnseen, false)) return;
    for (HWND window : AllWindows()) {
        const QRect area = std::exchange(window->unseen, QRect());
        if (!area.isEmpty() && window->widget) window->widget->update(SeenOf(*window->widget, area));
    }
}

void EraseSurface(Window& window)
{
    if (!window.surface.isNull()) window.surface.fill(BackgroundOf(window));
    if (window.widget) ShowSoon(window, window.widget->rect());
}

std::uint32_t BackgroundColor(const Window& window)
{
    return window.widget ? BackgroundOf(window) : 0;
}

double DeviceRatio(const Window& window)
{
    return window.widget ? window.widget->devicePixelRatioF() : 1.0;
}

void EnsureSurface(Window& window)
{
    if (window.widget && window.kind != WindowKind::kDialog && window.kind != WindowKind::kPanel) FitSurface(window);
}

std::vector<std::string> DroppedFiles()
{
    return droppedFiles;
}

void ForgetDroppedFiles()
{
    droppedFiles.clear();
}

}  // namespace kelvo
