// What a dialog's controls tell its procedure, and the operations that read and set them by number.

#include "platform/controls.h"
#include "platform/operator_acts.h"
#include "platform/qt_dialog.h"
#include "platform/text.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QColor>
#include <QComboBox>
#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPalette>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <utility>

namespace kelvo {

namespace {

constexpr const char* kWarnsProperty = "warns";
const QColor kWarningOnLight(0xB3, 0x1D, 0x1D);
const QColor kWarningOnDark(0xFF, 0x8A, 0x7A);

// --- Acts ---------------------------------------------------------------------------------------------------------

using ActKind = OperatorAct::Kind;

void TellAct(HWND dialog, ActKind kind, int id, int value = 0, std::string_view text = {})
{
    const DialogData* data = DialogOf(dialog);
    if (data == nullptr || data->ended) return;
    const ModalEntry* const front = FrontModal();
    const bool inFront = front != nullptr && front->dialog == dialog;
    TellOperatorAct({.kind = kind,
                     .id = id,
                     .value = value,
                     .text = std::string(text),
                     .window = inFront ? std::string() : data->name});
}

// A radio button is pressed, whatever it was before; of what turns over it counts where it is turned to.
void TellClicked(HWND dialog, int id, const QAbstractButton& button)
{
    if (button.isCheckable() && !button.autoExclusive()) {
        TellAct(dialog, ActKind::kCheck, id, button.isChecked() ? 1 : 0);
    } else {
        TellAct(dialog, ActKind::kPress, id);
    }
}

// While one lives a text changes by the program, not by the operator.
int programEdits = 0;
class ProgramEdit {
  public:
    ProgramEdit() { ++programEdits; }
    ~ProgramEdit() { --programEdits; }
    ProgramEdit(const ProgramEdit&) = delete;
    ProgramEdit& operator=(const ProgramEdit&) = delete;
};

void TellTyped(HWND dialog, int id, const QWidget& edit)
{
    QString text;
    if (const auto* line = qobject_cast<const QLineEdit*>(&edit)) text = line->text();
    if (const auto* spin = qobject_cast<const QSpinBox*>(&edit)) text = spin->cleanText();
    if (const auto* plain = qobject_cast<const QPlainTextEdit*>(&edit)) text = plain->toPlainText();
    TellAct(dialog, ActKind::kSet, id, 0, FromQString(text));
}

// --- Messages -----------------------------------------------------------------------------------------------------

void SendScroll(HWND dialog, int id, Qt::Orientation orientation, ScrollCode code, int position)
{
    const DialogData* data = DialogOf(dialog);
    if (data == nullptr || data->ended) return;
    SendMessage(dialog, orientation == Qt::Horizontal ? WM_HSCROLL : WM_VSCROLL,
                MakeLong(static_cast<int>(code), position), id);
}

struct ScrollKey {
    int key;
    ScrollCode code;
};
// On a horizontal bar too, "up" is toward the minimum: the scroll rule of the procedures turns it round while the key
// is held.
constexpr std::array<ScrollKey, 8> kScrollKeys = {{{Qt::Key_Left, ScrollCode::kLineUp},
                                                   {Qt::Key_Up, ScrollCode::kLineUp},
                                                   {Qt::Key_Right, ScrollCode::kLineDown},
                                                   {Qt::Key_Down, ScrollCode::kLineDown},
                                                   {Qt::Key_PageUp, ScrollCode::kPageUp},
                                                   {Qt::Key_PageDown, ScrollCode::kPageDown},
                                                   {Qt::Key_Home, ScrollCode::kTop},
                                                   {Qt::Key_End, ScrollCode::kBottom}}};

// What the signals of a control don't tell: focus of an edit, keys of a scroll bar.
class ControlWatcher : public QObject {
  public:
    ControlWatcher(HWND dialog, int id, QWidget* control) : QObject(control), dialog_(dialog), id_(id)
    {
        control->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (auto* slider = qobject_cast<QAbstractSlider*>(watched)) return FilterSlider(*slider, *event);
        if (event->type() == QEvent::FocusIn) SendControlCommand(dialog_, id_, kEditFocus);
        if (event->type() == QEvent::FocusOut) SendControlCommand(dialog_, id_, kEditFocusLost);
        return false;
    }

  private:
    bool FilterSlider(const QAbstractSlider& slider, const QEvent& event) const
    {
        if (event.type() != QEvent::KeyPress) return false;
        const int key = static_cast<const QKeyEvent&>(event).key();
        const auto* found = std::find_if(kScrollKeys.begin(), kScrollKeys.end(),
                                         [key](const ScrollKey& entry) { return entry.key == key; });
        if (found == kScrollKeys.end()) return false;
        const QPointer<const QAbstractSlider> alive = &slider;
        SendScroll(dialog_, id_, slider.orientation(), found->code, slider.value());
        if (alive) TellAct(dialog_, ActKind::kScroll, id_, alive->value());
        return true;
    }

    HWND dialog_;
    int id_;
};

ScrollCode CodeOf(int action)
{
    switch (action) {
        case QAbstractSlider::SliderSingleStepAdd:
            return ScrollCode::kLineDown;
        case QAbstractSlider::SliderSingleStepSub:
            return ScrollCode::kLineUp;
        case QAbstractSlider::SliderPageStepAdd:
            return ScrollCode::kPageDown;
        case QAbstractSlider::SliderPageStepSub:
            return ScrollCode::kPageUp;
        case QAbstractSlider::SliderToMinimum:
            return ScrollCode::kTop;
        case QAbstractSlider::SliderToMaximum:
            return ScrollCode::kBottom;
        default:
            return ScrollCode::kThumbTrack;
    }
}

// The toolkit moves the slider to where the action leads unless its position is put back here. For a step the
// procedure decides where it leads; a thumb stands where the hand has put it.
void HandleSliderAction(HWND dialog, int id, QAbstractSlider* slider, int action)
{
    const ScrollCode code = CodeOf(action);
    if (code != ScrollCode::kThumbTrack) slider->setSliderPosition(slider->value());
    const int position = slider->sliderPosition();
    const bool wheel = code == ScrollCode::kThumbTrack && !slider->isSliderDown();
    if (wheel) TellAct(dialog, ActKind::kScroll, id, position);
    const QPointer<const QAbstractSlider> alive = slider;
    SendScroll(dialog, id, slider->orientation(), code, position);
    if (alive && code != ScrollCode::kThumbTrack) TellAct(dialog, ActKind::kScroll, id, alive->value());
    if (wheel) SendScroll(dialog, id, slider->orientation(), ScrollCode::kThumbPosition, position);
}

void ConnectSlider(HWND dialog, int id, QAbstractSlider* slider)
{
    QObject::connect(slider, &QAbstractSlider::actionTriggered, slider,
                     [dialog, id, slider](int action) { HandleSliderAction(dialog, id, slider, action); });
    QObject::connect(slider, &QAbstractSlider::sliderReleased, slider, [dialog, id, slider] {
        TellAct(dialog, ActKind::kScroll, id, slider->sliderPosition());
        SendScroll(dialog, id, slider->orientation(), ScrollCode::kThumbPosition, slider->sliderPosition());
    });
    new ControlWatcher(dialog, id, slider);
}

void ConnectList(HWND dialog, int id, QListWidget* list)
{
    QObject::connect(list, &QListWidget::currentRowChanged, list, [dialog, id](int row) {
        TellAct(dialog, ActKind::kPick, id, row);
        SendControlCommand(dialog, id, kSelectionChanged);
    });
    QObject::connect(list, &QListWidget::itemDoubleClicked, list, [dialog, id] {
        TellAct(dialog, ActKind::kPress, id);
        SendControlCommand(dialog, id, kDoubleClicked);
    });
}

void ConnectEdit(HWND dialog, int id, QWidget* edit)
{
    const auto changed = [dialog, id, edit] {
        if (programEdits == 0) TellTyped(dialog, id, *edit);
        const int edits = std::exchange(programEdits, 0);  // what comes of it may put a box before the operator
        SendControlCommand(dialog, id, kEditChanged);
        programEdits = edits;
    };
    if (auto* line = qobject_cast<QLineEdit*>(edit)) QObject::connect(line, &QLineEdit::textChanged, line, changed);
    if (auto* spin = qobject_cast<QSpinBox*>(edit)) QObject::connect(spin, &QSpinBox::textChanged, spin, changed);
    if (auto* plain = qobject_cast<QPlainTextEdit*>(edit)) {
        QObject::connect(plain, &QPlainTextEdit::textChanged, plain, changed);
    }
    new ControlWatcher(dialog, id, edit);
}

bool IsEdit(const QWidget* control)
{
    return qobject_cast<const QLineEdit*>(control) != nullptr || qobject_cast<const QSpinBox*>(control) != nullptr ||
           qobject_cast<const QPlainTextEdit*>(control) != nullptr;
}

// The checked one of a group can't be cleared while the toolkit keeps the group exclusive.
void SetChecked(QAbstractButton* button, bool checked)
{
    const bool exclusive = button->autoExclusive();
    if (!checked) button->setAutoExclusive(false);
    button->setChecked(checked);
    if (!checked) button->setAutoExclusive(exclusive);
}

// --- Scroll bars, and what has a range like one -------------------------------------------------------------------

struct Range {
    int minimum = 0;
    int maximum = 0;
    int position = 0;
};

Range RangeOf(HWND dialog, int id)
{
    const QWidget* control = ControlOf(dialog, id);
    if (const auto* slider = qobject_cast<const QAbstractSlider*>(control)) {
        return {slider->minimum(), slider->maximum(), slider->value()};
    }
    if (const auto* spin = qobject_cast<const QSpinBox*>(control)) {
        return {spin->minimum(), spin->maximum(), spin->value()};
    }
    if (const auto* progress = qobject_cast<const QProgressBar*>(control)) {
        return {progress->minimum(), progress->maximum(), progress->value()};
    }
    if (const auto* stepper = dynamic_cast<const ZoomStepper*>(control)) {
        return {stepper->Minimum(), stepper->Maximum(), stepper->Position()};
    }
    return {};
}

// --- Lists --------------------------------------------------------------------------------------------------------

// Combo boxes and list boxes behind one face.
class ListControl {
  public:
    ListControl(HWND dialog, int id)
        : combo_(ControlAs<QComboBox>(dialog, id)),
          list_(ControlAs<QListWidget>(dialog, id)),
          quietCombo_(combo_),
          quietList_(list_)
    {
    }

    int Count() const { return combo_ != nullptr ? combo_->count() : list_ != nullptr ? list_->count() : 0; }
    bool Has(int index) const { return index >= 0 && index < Count(); }

    int Selection() const
    {
        if (combo_ != nullptr) return combo_->currentIndex();
        // The keyboard's focus alone makes an item the current one, but selects none.
        const QListWidgetItem* current = list_ != nullptr ? list_->currentItem() : nullptr;
        return current != nullptr && current->isSelected() ? list_->currentRow() : -1;
    }

    void Select(int index)
    {
        const int known = Has(index) ? index : -1;
        if (combo_ != nullptr) combo_->setCurrentIndex(known);
        if (list_ != nullptr) list_->setCurrentRow(known);
    }

    void Clear()
    {
        if (combo_ != nullptr) combo_->clear();
        if (list_ != nullptr) list_->clear();
    }

    // The index, or -1 if there is no such list. Nothing becomes selected by it.
    int Insert(int index, std::string_view text, std::intptr_t data)
    {
        if (combo_ == nullptr && list_ == nullptr) return -1;
        const int place = index >= 0 && index <= Count() ? index : Count();
        const bool wasEmpty = Count() == 0;
        const QVariant stored = QVariant::fromValue(static_cast<qlonglong>(data));
        if (combo_ != nullptr) {
            combo_->insertItem(place, ToQString(text), stored);
            if (wasEmpty) combo_->setCurrentIndex(-1);
        } else {
            auto* item = new QListWidgetItem(ToQString(text));
            item->setData(Qt::UserRole, stored);
            list_->insertItem(place, item);
        }
        return place;
    }

    void Delete(int index)
    {
        if (!Has(index)) return;
        const bool wasSelected = Selection() == index;
        if (combo_ != nullptr) combo_->removeItem(index);
        if (list_ != nullptr) delete list_->takeItem(index);
        if (wasSelected) Select(-1);
    }

    std::intptr_t Data(int index) const
    {
        if (!Has(index)) return 0;
        const QVariant stored = combo_ != nullptr ? combo_->itemData(index) : list_->item(index)->data(Qt::UserRole);
        return static_cast<std::intptr_t>(stored.toLongLong());
    }

    std::string Text(int index) const
    {
        if (!Has(index)) return {};
        return FromQString(combo_ != nullptr ? combo_->itemText(index) : list_->item(index)->text());
    }

  private:
    QComboBox* combo_;
    QListWidget* list_;
    QSignalBlocker quietCombo_;
    QSignalBlocker quietList_;
};

}  // namespace

void ConnectControl(HWND dialog, int id, QWidget* control)
{
    if (auto* button = qobject_cast<QAbstractButton*>(control)) {
        QObject::connect(button, &QAbstractButton::clicked, button, [dialog, id, button] {
            TellClicked(dialog, id, *button);
            SendControlCommand(dialog, id, kButtonClicked);
        });
    } else if (auto* slider = qobject_cast<QAbstractSlider*>(control)) {
        ConnectSlider(dialog, id, slider);
    } else if (auto* combo = qobject_cast<QComboBox*>(control)) {
        QObject::connect(combo, &QComboBox::activated, combo, [dialog, id](int index) {
            TellAct(dialog, ActKind::kPick, id, index);
            SendControlCommand(dialog, id, kSelectionChanged);
        });
        if (const QLineEdit* const line = combo->lineEdit()) {
            QObject::connect(line, &QLineEdit::textEdited, line, [dialog, id, line] { TellTyped(dialog, id, *line); });
        }
    } else if (auto* list = qobject_cast<QListWidget*>(control)) {
        ConnectList(dialog, id, list);
    } else if (IsEdit(control)) {
        ConnectEdit(dialog, id, control);
    } else if (auto* fourWay = dynamic_cast<FourWayButton*>(control)) {
        fourWay->onPressed = [dialog, id](int direction) {
            TellAct(dialog, ActKind::kPress, id, direction);
            SendControlCommand(dialog, id, direction);
        };
    } else if (auto* stepper = dynamic_cast<ZoomStepper*>(control)) {
        stepper->onStep = [dialog, id, stepper](bool plus) {
            const QPointer<const ZoomStepper> alive = stepper;
            SendScroll(dialog, id, Qt::Vertical, plus ? ScrollCode::kLineUp : ScrollCode::kLineDown,
                       stepper->Position());
            if (alive) TellAct(dialog, ActKind::kScroll, id, alive->Position());
        };
    }
}

// --- Texts and states ---------------------------------------------------------------------------------------------

void SetDlgItemText(HWND dialog, int id, std::string_view text)
{
    const ProgramEdit byTheProgram;
    QWidget* control = ControlOf(dialog, id);
    const QString shown = ToQString(text);
    if (auto* label = qobject_cast<QLabel*>(control)) label->setText(shown);
    if (auto* button = qobject_cast<QAbstractButton*>(control)) button->setText(shown);
    if (auto* line = qobject_cast<QLineEdit*>(control)) line->setText(shown);
    if (auto* plain = qobject_cast<QPlainTextEdit*>(control)) plain->setPlainText(shown);
    if (auto* spin = qobject_cast<QSpinBox*>(control)) spin->setValue(ScanDecimal(text).value_or(spin->minimum()));
    if (auto* combo = qobject_cast<QComboBox*>(control)) combo->setCurrentText(shown);
}

std::string GetDlgItemText(HWND dialog, int id)
{
    const QWidget* control = ControlOf(dialog, id);
    if (const auto* label = qobject_cast<const QLabel*>(control)) return FromQString(label->text());
    if (const auto* button = qobject_cast<const QAbstractButton*>(control)) return FromQString(button->text());
    if (const auto* line = qobject_cast<const QLineEdit*>(control)) return FromQString(line->text());
    if (const auto* plain = qobject_cast<const QPlainTextEdit*>(control)) return FromQString(plain->toPlainText());
    if (const auto* spin = qobject_cast<const QSpinBox*>(control)) return FromQString(spin->text());
    if (const auto* combo = qobject_cast<const QComboBox*>(control)) return FromQString(combo->currentText());
    return {};
}

void AppendDlgItemText(HWND dialog, int id, std::string_view text)
{
    const ProgramEdit byTheProgram;
    constexpr int kLinesKept = 10000;
    auto* plain = ControlAs<QPlainTextEdit>(dialog, id);
    if (plain == nullptr) return;
    plain->setMaximumBlockCount(kLinesKept);
    plain->appendPlainText(ToQString(text));
}

void SetDlgItemInt(HWND dialog, int id, int value)
{
    SetDlgItemText(dialog, id, std::to_string(value));
}

void CheckDlgButton(HWND dialog, int id, bool checked)
{
    if (auto* button = ControlAs<QAbstractButton>(dialog, id)) SetChecked(button, checked);
}

bool IsDlgButtonChecked(HWND dialog, int id)
{
    const auto* button = ControlAs<QAbstractButton>(dialog, id);
    return button != nullptr && button->isChecked();
}

void CheckRadioButton(HWND dialog, int firstId, int lastId, int checkId)
{
    for (int id = firstId; id <= lastId; ++id) {
        if (id != checkId) CheckDlgButton(dialog, id, false);
    }
    CheckDlgButton(dialog, checkId, true);
}

void EnableDlgItem(HWND dialog, int id, bool enabled)
{
    if (QWidget* control = ControlOf(dialog, id)) control->setEnabled(enabled);
}

void SetDefaultButton(HWND dialog, int id)
{
    if (auto* button = qobject_cast<QPushButton*>(ControlOf(dialog, id))) button->setDefault(true);
}

bool DlgItemEnabled(HWND dialog, int id)
{
    const QWidget* control = ControlOf(dialog, id);
    return control != nullptr && control->isEnabledTo(dialog->widget);
}

void SetDlgItemTip(HWND dialog, int id, std::string_view text)
{
    if (QWidget* control = ControlOf(dialog, id)) control->setToolTip(ToQString(text));
}

std::string DlgItemTip(HWND dialog, int id)
{
    const QWidget* control = ControlOf(dialog, id);
    return control == nullptr ? std::string() : FromQString(control->toolTip());
}

void ShowDlgItem(HWND dialog, int id, bool shown)
{
    if (QWidget* control = ControlOf(dialog, id)) control->setVisible(shown);
}

bool HasDlgItem(HWND dialog, int id)
{
    return ControlOf(dialog, id) != nullptr;
}

void WarnDlgItem(HWND dialog, int id, bool warn)
{
    QWidget* control = ControlOf(dialog, id);
    if (control == nullptr || DlgItemWarns(dialog, id) == warn) return;
    control->setProperty(kWarnsProperty, warn);
    QPalette colors;  // an empty one takes all from the theme
    const bool dark = control->palette().color(QPalette::Window).lightness() < 128;
    if (warn) colors.setColor(QPalette::WindowText, dark ? kWarningOnDark : kWarningOnLight);
    control->setPalette(colors);
}

bool DlgItemWarns(HWND dialog, int id)
{
    const QWidget* control = ControlOf(dialog, id);
    return control != nullptr && control->property(kWarnsProperty).toBool();
}

void FocusAsByTab(QWidget& control)
{
    // In a dialog that isn't shown yet the reason is lost.
    control.setFocus(Qt::TabFocusReason);
    if (auto* line = qobject_cast<QLineEdit*>(&control)) line->selectAll();
    if (auto* number = qobject_cast<QAbstractSpinBox*>(&control)) number->selectAll();
}

void FocusDlgItem(HWND dialog, int id)
{
    if (QWidget* const control = ControlOf(dialog, id)) FocusAsByTab(*control);
}

int FocusedDlgItem(HWND dialog)
{
    const DialogData* data = DialogOf(dialog);
    if (data == nullptr || dialog->widget == nullptr) return 0;
    for (const QWidget* widget = dialog->widget->focusWidget(); widget != nullptr; widget = widget->parentWidget()) {
        for (const auto& [id, control] : data->controls) {
            if (control == widget) return id;
        }
    }
    return 0;
}

// --- Scroll bars --------------------------------------------------------------------------------------------------

void SetScrollRange(HWND dialog, int id, int minimum, int maximum)
{
    const ProgramEdit byTheProgram;
    QWidget* control = ControlOf(dialog, id);
    const QSignalBlocker quiet(control);
    if (auto* slider = qobject_cast<QAbstractSlider*>(control)) slider->setRange(minimum, maximum);
    if (auto* spin = qobject_cast<QSpinBox*>(control)) spin->setRange(minimum, maximum);
    if (auto* progress = qobject_cast<QProgressBar*>(control)) progress->setRange(minimum, maximum);
    if (auto* stepper = dynamic_cast<ZoomStepper*>(control)) stepper->SetRange(minimum, maximum);
}

void SetScrollPos(HWND dialog, int id, int position)
{
    const ProgramEdit byTheProgram;
    QWidget* control = ControlOf(dialog, id);
    if (auto* slider = qobject_cast<QAbstractSlider*>(control)) slider->setValue(position);
    if (auto* spin = qobject_cast<QSpinBox*>(control)) spin->setValue(position);
    if (auto* progress = qobject_cast<QProgressBar*>(control)) progress->setValue(position);
    if (auto* stepper = dynamic_cast<ZoomStepper*>(control)) stepper->SetPosition(position);
}

int GetScrollPos(HWND dialog, int id)
{
    return RangeOf(dialog, id).position;
}

int GetScrollMin(HWND dialog, int id)
{
    return RangeOf(dialog, id).minimum;
}

int GetScrollMax(HWND dialog, int id)
{
    return RangeOf(dialog, id).maximum;
}

// --- Lists --------------------------------------------------------------------------------------------------------

void ListClear(HWND dialog, int id)
{
    ListControl(dialog, id).Clear();
}

int ListAdd(HWND dialog, int id, std::string_view text, std::intptr_t data)
{
    ListControl list(dialog, id);
    return list.Insert(list.Count(), text, data);
}

int ListInsert(HWND dialog, int id, int index, std::string_view text)
{
    return ListControl(dialog, id).Insert(index, text, 0);
}

void ListDelete(HWND dialog, int id, int index)
{
    ListControl(dialog, id).Delete(index);
}

int ListCount(HWND dialog, int id)
{
    return ListControl(dialog, id).Count();
}

void ListSelect(HWND dialog, int id, int index)
{
    ListControl(dialog, id).Select(index);
}

int ListSelection(HWND dialog, int id)
{
    return ListControl(dialog, id).Selection();
}

std::intptr_t ListItemData(HWND dialog, int id, int index)
{
    return ListControl(dialog, id).Data(index);
}

std::string ListItemText(HWND dialog, int id, int index)
{
    return ListControl(dialog, id).Text(index);
}

// --- Surfaces -----------------------------------------------------------------------------------------------------

namespace {

// Painting and the pointer are the dialog's: it knows its surfaces by their controls' numbers.
LRESULT HandToDialog(HWND surface, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    const int id = surface->widget->parentWidget()->property("controlId").toInt();
    switch (message) {
        case WM_PAINT:
            return SendMessage(surface->parent, WM_DRAWITEM, static_cast<WPARAM>(id), 0);
        case WM_MOUSEMOVE:
        case WM_LBUTTONDOWN:
        case WM_MOUSEWHEEL:
            return SendMessage(surface->parent, message, MakeLong(id, HighWord(wParam)), lParam);
        default:
            return DefWindowProc(surface, message, wParam, lParam);
    }
}

}  // namespace

HWND DlgItemWindow(HWND dialog, int id)
{
    QWidget* control = ControlOf(dialog, id);
    if (control == nullptr) return nullptr;
    for (const HWND window : dialog->dialog->controlWindows) {
        if (window->widget != nullptr && window->widget->parentWidget() == control) return window;
    }
    auto* fill = new QVBoxLayout(control);
    fill->setContentsMargins(0, 0, 0, 0);
    QWidget* surface = MakeSurfaceWidget(control);
    fill->addWidget(surface);
    const HWND window = RegisterWindow(WindowKind::kControl, surface, HandToDialog, dialog);
    if (window != nullptr) dialog->dialog->controlWindows.push_back(window);
    return window;
}

}  // namespace kelvo
