#include "platform/dialog.h"

#include "platform/controls.h"
#include "platform/faults.h"
#include "platform/operator_acts.h"
#include "platform/qt_dialog.h"
#include "platform/transcript.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QLayout>
#include <QPainter>
#include <QPushButton>
#include <QResizeEvent>
#include <QScreen>
#include <QToolButton>
#include <QUiLoader>
#include <QWindow>

#include <algorithm>
#include <memory>
#include <utility>

namespace kelvo {

namespace {

constexpr const char* kIdProperty = "controlId";
constexpr const char* kIconProperty = "iconName";
constexpr const char* kIconSizeProperty = "iconSize";
constexpr const char* kPanelCaptionProperty = "panelCaption";
constexpr const char* kPanelLineProperty = "panelLine";

// --- The top-level widget of a dialog -----------------------------------------------------------------------------

// Turns the keys and the closing of a dialog window into the commands that a dialog procedure expects. The toolkit's
// own accept and reject never end it: only EndDialog does.
class DialogWindow : public QDialog {
  public:
    explicit DialogWindow(QWidget* parent) : QDialog(parent) {}

    HWND handle = nullptr;

    void reject() override { SendCancel(); }
    void accept() override { SendControlCommand(handle, kIdOk, kButtonClicked); }

  protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        switch (event->key()) {
            case Qt::Key_Escape:
                TellKey("Escape");
                SendCancel();
                break;
            case Qt::Key_F1:
                if (!event->isAutoRepeat())
                    SendControlCommand(handle, kIdHelp, kButtonClicked);  // no act: it only explains
                break;
            case Qt::Key_Return:
            case Qt::Key_Enter:
                PressDefaultButton();
                break;
            default:
                QDialog::keyPressEvent(event);
        }
    }

    // A procedure that tells closing from cancelling handles WM_CLOSE; for the others they are one.
    void closeEvent(QCloseEvent* event) override
    {
        event->ignore();
        const DialogData* record = DialogOf(handle);
        if (record == nullptr || record->ended) return;
        if (IsInFront()) {
            TellOperatorAct({.kind = OperatorAct::Kind::kCancel});
        } else {
            TellClosed();
        }
        if (SendMessage(handle, WM_CLOSE, 0, 0) == 0) SendCancel();
    }

  private:
    bool IsInFront() const
    {
        const ModalEntry* const front = FrontModal();
        return front != nullptr && front->dialog == handle;
    }

    // Of a window that stays open, the button says it as well.
    void TellClosed() const
    {
        if (ControlOf(handle, kIdCancel) == nullptr) return;
        TellOperatorAct({.kind = OperatorAct::Kind::kPress, .id = kIdCancel, .window = DialogName(handle)});
    }

    void TellKey(const char* name) const
    {
        if (IsInFront()) {
            TellOperatorAct({.kind = OperatorAct::Kind::kKey, .text = name});
        } else {
            TellClosed();
        }
    }

    void SendCancel()
    {
        const QWidget* cancel = ControlOf(handle, kIdCancel);
        if (cancel == nullptr || cancel->isEnabled()) SendControlCommand(handle, kIdCancel, kButtonClicked);
    }

    void PressDefaultButton()
    {
        for (QPushButton* button : findChildren<QPushButton*>()) {
            if (!button->isDefault() || !button->isVisible()) continue;
            button->click();
            return;
        }
        TellKey("Return");
        accept();
    }
};

// The docked panel: a fine line closes it below, others part its groups, and it becomes narrower by dropping the words
// under its buttons.
class PanelWidget : public QWidget {
  public:
    explicit PanelWidget(QWidget* parent) : QWidget(parent)
    {
        setAutoFillBackground(true);
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    }

    void Prepare()
    {
        const QFont small = SmallFont();
        for (QWidget* child : findChildren<QWidget*>()) {
            if (child->property(kPanelCaptionProperty).toBool()) child->setFont(small);
            if (child->property(kPanelLineProperty).toBool()) lines_.push_back(child);
        }
        for (QToolButton* button : Buttons()) button->setFont(small);
    }

    // With what it shows now, words included: after WM_INITDIALOG.
    void MeasureFullWidth()
    {
        SetButtonStyle(Qt::ToolButtonTextUnderIcon);
        layout()->activate();
        fullWidth_ = layout()->minimumSize().width();
        fullHeight_ = layout()->minimumSize().height();
    }

    // The same with and without words, so that the picture below stays where it is.
    QSize sizeHint() const override { return {fullWidth_, fullHeight_}; }

  protected:
    void resizeEvent(QResizeEvent* event) override
    {
        QWidget::resizeEvent(event);
        const bool roomForWords = event->size().width() >= fullWidth_;
        SetButtonStyle(roomForWords ? Qt::ToolButtonTextUnderIcon : Qt::ToolButtonIconOnly);
        layout()->setSpacing(roomForWords ? kWideSpacing : kNarrowSpacing);
    }

    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter painter(this);
        painter.setOpacity(kLineOpacity);
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawLine(0, height() - 1, width(), height() - 1);
        for (const QWidget* line : lines_) {
            const int x = line->geometry().center().x();
            painter.drawLine(x, kLineInset, x, height() - 2 - kLineInset);
        }
    }

  private:
    static constexpr int kWideSpacing = 6;
    static constexpr int kNarrowSpacing = 1;
    static constexpr int kLineInset = 5;
    static constexpr double kLineOpacity = 0.2;

    QList<QToolButton*> Buttons() const
    {
        return findChildren<QToolButton*>(QString(), Qt::FindDirectChildrenOnly);  // not the arrows
    }

    void SetButtonStyle(Qt::ToolButtonStyle style)
    {
        for (QToolButton* button : Buttons()) button->setToolButtonStyle(style);
    }

    QFont SmallFont() const
    {
        QFont small = font();
        small.setPointSizeF(std::max(6.5, small.pointSizeF() * 0.88));
        return small;
    }

    std::vector<QWidget*> lines_;
    int fullWidth_ = 0;
    int fullHeight_ = 0;
};

// --- Loading ------------------------------------------------------------------------------------------------------

class DialogLoader : public QUiLoader {
  public:
    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override
    {
        QWidget* widget = Make(className, parent);
        if (widget == nullptr) return QUiLoader::createWidget(className, parent, name);
        widget->setObjectName(name);
        rootMade_ = true;
        return widget;
    }

  private:
    QWidget* Make(const QString& className, QWidget* parent)
    {
        if (className == QLatin1String("FourWayButton")) return new FourWayButton(parent);
        if (className == QLatin1String("ZoomStepper")) return new ZoomStepper(parent);
        if (rootMade_) return nullptr;
        if (className == QLatin1String("QDialog")) return new DialogWindow(parent);
        if (className == QLatin1String("QWidget")) return new PanelWidget(parent);
        return nullptr;
    }

    bool rootMade_ = false;
};

void SetPictures(QWidget* root)
{
    for (QWidget* child : root->findChildren<QWidget*>()) {
        const std::string icon = child->property(kIconProperty).toString().toStdString();
        if (icon.empty()) continue;
        if (auto* button = qobject_cast<QAbstractButton*>(child)) button->setIcon(IconNamed(icon));
        if (auto* label = qobject_cast<QLabel*>(child)) {
            const int side = label->property(kIconSizeProperty).toInt();
            label->setPixmap(IconNamed(icon).pixmap(QSize(side, side), root->devicePixelRatio()));
        }
    }
}

QString PlainCaption(QString text)
{
    text.remove(QLatin1Char('&'));
    while (text.endsWith(QLatin1Char(':')) || text.endsWith(QLatin1Char(' '))) text.chop(1);
    return text;
}

// For those who hear the screen: the toolkit itself finds the label of some classes only.
void NameControls(QWidget* root)
{
    for (const QLabel* label : root->findChildren<QLabel*>()) {
        QWidget* const named = label->buddy();
        if (named != nullptr && named->accessibleName().isEmpty()) {
            named->setAccessibleName(PlainCaption(label->text()));
        }
    }
    for (QWidget* child : root->findChildren<QWidget*>()) {
        if (child->accessibleName().isEmpty() && !child->toolTip().isEmpty()) {
            child->setAccessibleName(child->toolTip());
        }
    }
}

// Null if the file isn't there, holds no dialog, or the fault "load dialog NAME" is set.
std::unique_ptr<QWidget> LoadWidget(std::string_view name, QWidget* parent)
{
    if (FaultIsSet("load dialog " + std::string(name))) return nullptr;
    QFile file(QStringLiteral(":/dialogs/") + ToQString(name) + QStringLiteral(".ui"));
    if (!file.open(QIODevice::ReadOnly)) return nullptr;
    DialogLoader loader;
    std::unique_ptr<QWidget> root(loader.load(&file, parent));
    if (!root) return nullptr;
    SetPictures(root.get());
    NameControls(root.get());
    return root;
}

void CollectControls(HWND dialog)
{
    DialogData& data = *dialog->dialog;
    for (QWidget* child : dialog->widget->findChildren<QWidget*>()) {
        const QVariant id = child->property(kIdProperty);
        if (!id.isValid() || !data.controls.emplace(id.toInt(), child).second) continue;
        ConnectControl(dialog, id.toInt(), child);
    }
}

HWND EnterDialog(WindowKind kind, std::string_view name, HWND owner, QWidget* widget, DialogProc procedure)
{
    const HWND dialog = RegisterWindow(kind, widget, procedure, owner);
    if (dialog == nullptr) return nullptr;
    dialog->dialog = std::make_shared<DialogData>();
    dialog->dialog->name = name;
    dialog->dialog->owner = owner;
    if (auto* window = dynamic_cast<DialogWindow*>(widget)) window->handle = dialog;
    CollectControls(dialog);
    return dialog;
}

// The handle and its timers go; the widget stays for its owner to delete.
void LeaveDialog(HWND dialog)
{
    SendMessage(dialog, WM_DESTROY, 0, 0);
    if (!IsWindow(dialog)) return;
    for (const HWND control : dialog->dialog->controlWindows) ForgetWindow(control);
    ForgetWindow(dialog);
}

// --- Showing ------------------------------------------------------------------------------------------------------

void FocusFirstControl(QWidget* widget)
{
    if (widget->focusWidget() != nullptr && widget->focusWidget() != widget) return;
    for (QWidget* next = widget->nextInFocusChain(); next != widget; next = next->nextInFocusChain()) {
        const bool reachable = (next->focusPolicy() & Qt::TabFocus) != 0 && next->isEnabled();
        if (!reachable || next->isHidden() || next->focusProxy() != nullptr) continue;
        FocusAsByTab(*next);
        return;
    }
}

// Filling lists and texts at WM_INITDIALOG may have made it larger.
void FitContents(HWND dialog)
{
    QWidget* widget = dialog->widget;
    if (QLayout* const layout = widget->layout()) layout->activate();  // else layouts within it tell their old sizes
    const QSize fitting = widget->size().expandedTo(widget->sizeHint());
    if (fitting == widget->size()) return;
    widget->resize(fitting);
    if (dialog->dialog->centred) CentreDialog(dialog);
}

void ShowDialogWindow(HWND dialog)
{
    FitContents(dialog);
    FocusFirstControl(dialog->widget);
    Transcribe("dialog", {{"name", dialog->dialog->name}, {"text", GetWindowText(dialog)}});
    dialog->widget->show();
    dialog->widget->activateWindow();
}

// The toolkit would block a child of the main window beside each modal dialog. So only the window system is told, which
// hears it as the window is shown, to whom the window belongs: it keeps it above the main window, and hides it with it.
class BelongsToMainWindow {
  public:
    explicit BelongsToMainWindow(QWidget& widget)
    {
        const HWND mainWindow = MainWindow();
        if (mainWindow == nullptr || mainWindow->frame == nullptr) return;
        widget.winId();  // makes its window
        window_ = widget.windowHandle();
        window_->setTransientParent(mainWindow->frame->windowHandle());
    }
    ~BelongsToMainWindow()
    {
        if (window_ != nullptr) window_->setTransientParent(nullptr);
    }
    BelongsToMainWindow(const BelongsToMainWindow&) = delete;
    BelongsToMainWindow& operator=(const BelongsToMainWindow&) = delete;

  private:
    QPointer<QWindow> window_;
};

// Tells the owner each time the dialog has handled what there was. While F1 is down the dialog has sent its help
// command itself, and the owner must not send it again.
void SendEnterIdle(HWND dialog)
{
    const ModalEntry* front = FrontModal();
    if (!IsWindow(dialog) || front == nullptr || front->dialog != dialog || KeyIsDown(Key::kF1)) return;
    const HWND owner = dialog->dialog->owner;
    if (IsWindow(owner)) SendMessage(owner, WM_ENTERIDLE, 0, reinterpret_cast<LPARAM>(dialog));
}

void RunModal(HWND dialog)
{
    // Showing it moves the focus, and a command that came of that may have ended it already.
    const std::shared_ptr<DialogData> data = dialog->dialog;
    if (QuitPosted() || data->ended) return;
    QEventLoop loop;
    data->loop = &loop;
    ModalEntry entry;
    entry.widget = dialog->widget;
    entry.dialog = dialog;
    const ModalScope inFront(std::move(entry));
    QObject::connect(dialog->widget, &QObject::destroyed, &loop, &QEventLoop::quit);
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, &loop,
                     [dialog] { SendEnterIdle(dialog); });
    loop.exec();
    data->loop = nullptr;
}

}  // namespace

DialogData* DialogOf(HWND dialog)
{
    return IsWindow(dialog) ? dialog->dialog.get() : nullptr;
}

QWidget* ControlOf(HWND dialog, int id)
{
    const DialogData* data = DialogOf(dialog);
    if (data == nullptr) return nullptr;
    const auto found = data->controls.find(id);
    return found == data->controls.end() ? nullptr : found->second.data();
}

void SendControlCommand(HWND dialog, int id, int notification)
{
    const DialogData* data = DialogOf(dialog);
    if (data != nullptr && !data->ended) SendMessage(dialog, WM_COMMAND, MakeLong(id, notification), 1);
}

int DialogBox(std::string_view name, HWND owner, DialogProc procedure, LPARAM parameter)
{
    std::unique_ptr<QWidget> loaded = LoadWidget(name, OwnerWidget(owner));
    const HWND dialog = loaded ? EnterDialog(WindowKind::kDialog, name, owner, loaded.get(), procedure) : nullptr;
    if (dialog == nullptr) return -1;

    // Destroying the owner destroys the dialog with it, in the midst of its own loop.
    const QPointer<QWidget> widget = loaded.release();
    const std::shared_ptr<DialogData> data = dialog->dialog;
    // Only what the dialog belongs to is blocked: help and the camera's bench stay usable beside it.
    widget->setWindowModality(widget->parentWidget() != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
    data->modal = true;
    widget->adjustSize();
    SendMessage(dialog, WM_INITDIALOG, 0, parameter);

    if (!data->ended && widget != nullptr) {
        ShowDialogWindow(dialog);
        RunModal(dialog);
        data->ended = true;
        if (widget != nullptr) widget->hide();
        Transcribe("close", {{"name", data->name}, {"result", std::int64_t{data->result}}});
    }
    data->pictureGate.reset();
    LeaveDialog(dialog);
    delete widget.data();
    return data->result;
}

void EndDialog(HWND dialog, int result)
{
    DialogData* data = DialogOf(dialog);
    if (data == nullptr || data->ended) return;
    data->ended = true;
    data->result = result;
    if (data->modal) {
        if (data->loop != nullptr) data->loop->quit();
        return;
    }
    const QPointer<QWidget> widget = dialog->widget;
    if (widget) widget->hide();
    Transcribe("close", {{"name", data->name}, {"result", std::int64_t{result}}});
    LeaveDialog(dialog);
    if (widget) widget->deleteLater();
}

HWND CreateStrip(std::string_view name, HWND owner, DialogProc procedure)
{
    if (!IsWindow(owner) || owner->widget == nullptr) return nullptr;
    std::unique_ptr<QWidget> loaded = LoadWidget(name, owner->widget);
    const HWND strip = loaded ? EnterDialog(WindowKind::kPanel, name, owner, loaded.get(), procedure) : nullptr;
    if (strip == nullptr) return nullptr;

    QWidget* widget = loaded.release();  // the owner's client area keeps it
    auto* bar = dynamic_cast<PanelWidget*>(widget);
    if (bar != nullptr) bar->Prepare();
    SendMessage(strip, WM_INITDIALOG, 0, 0);
    if (bar != nullptr) bar->MeasureFullWidth();
    widget->setGeometry(0, 0, owner->widget->width(), widget->sizeHint().height());
    widget->hide();
    return strip;
}

HWND CreateDockedPanel(std::string_view name, HWND owner, DialogProc procedure)
{
    const HWND panel = CreateStrip(name, owner, procedure);
    if (panel == nullptr) return nullptr;
    owner->dockedPanel = panel->widget;
    panel->widget->show();
    SendSize(owner);
    return panel;
}

HWND CreateModelessDialog(std::string_view name, HWND owner, DialogProc procedure, LPARAM parameter)
{
    std::unique_ptr<QWidget> widget = LoadWidget(name, nullptr);
    const HWND dialog = widget ? EnterDialog(WindowKind::kDialog, name, owner, widget.get(), procedure) : nullptr;
    if (dialog == nullptr) return nullptr;
    QWidget* shown = widget.release();  // EndDialog deletes it
    shown->setAttribute(Qt::WA_QuitOnClose, false);
    shown->setWindowFlag(Qt::Tool);
    shown->adjustSize();
    SendMessage(dialog, WM_INITDIALOG, 0, parameter);
    if (!IsWindow(dialog)) return nullptr;
    const BelongsToMainWindow above(*shown);
    ShowDialogWindow(dialog);
    return dialog;
}

std::string DialogName(HWND dialog)
{
    const DialogData* data = DialogOf(dialog);
    return data == nullptr ? std::string() : data->name;
}

void CentreDialog(HWND dialog)
{
    if (DialogOf(dialog) == nullptr || dialog->widget == nullptr) return;
    const HWND mainWindow = MainWindow();
    const bool overMain = mainWindow != nullptr && mainWindow->frame != nullptr && mainWindow->frame->isVisible();
    const QRect screen = dialog->widget->screen()->availableGeometry();
    QRect place(QPoint(), dialog->widget->size());
    place.moveCenter(overMain ? mainWindow->frame->frameGeometry().center() : screen.center());
    place.moveLeft(std::clamp(place.left(), screen.left(), std::max(screen.left(), screen.right() - place.width())));
    place.moveTop(std::clamp(place.top(), screen.top(), std::max(screen.top(), screen.bottom() - place.height())));
    dialog->widget->move(place.topLeft());
    dialog->dialog->centred = true;
}

}  // namespace kelvo
