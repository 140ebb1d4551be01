// The operator's hands on the controls of dialogs and of the panel. Each works the widget as a person does, so that the
// procedure gets the same messages; what a person can't reach is refused.

#include "platform/controls.h"
#include "platform/front.h"
#include "platform/qt_dialog.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressBar>
#include <QRadioButton>
#include <QSpinBox>

#include <algorithm>

namespace kelvo {

namespace {

// The control if it can be reached: shown and enabled, itself and all that it lies in.
QWidget* Reachable(HWND dialog, int id)
{
    QWidget* control = ControlOf(dialog, id);
    if (control == nullptr || !control->isEnabled()) return nullptr;
    return control->isVisibleTo(dialog->widget) ? control : nullptr;
}

template <typename T>
bool Is(QWidget* control)
{
    return dynamic_cast<T*>(control) != nullptr;
}

struct Kind {
    std::string_view name;
    bool (*fits)(QWidget*);
    bool takesAHand;
};
// The first that fits: a radio button is a button too.
constexpr Kind kKinds[] = {
    {"four-way", Is<FourWayButton>, true}, {"stepper", Is<ZoomStepper>, true},    {"check", Is<QCheckBox>, true},
    {"radio", Is<QRadioButton>, true},     {"button", Is<QAbstractButton>, true}, {"edit", Is<QLineEdit>, true},
    {"number", Is<QSpinBox>, true},        {"memo", Is<QPlainTextEdit>, true},    {"combo", Is<QComboBox>, true},
    {"list", Is<QListWidget>, true},       {"bar", Is<QAbstractSlider>, true},    {"progress", Is<QProgressBar>, false},
    {"label", Is<QLabel>, false},          {"picture", Is<QWidget>, false},
};

bool IsReadOnly(QWidget* control)
{
    if (const auto* line = qobject_cast<QLineEdit*>(control)) return line->isReadOnly();
    if (const auto* memo = qobject_cast<QPlainTextEdit*>(control)) return memo->isReadOnly();
    return false;
}

bool TypeInto(QLineEdit* line, const QString& text)
{
    if (line == nullptr || line->isReadOnly()) return false;
    line->setFocus(Qt::MouseFocusReason);
    line->selectAll();
    const QPointer<QLineEdit> alive = line;
    line->insert(text);  // validator and length limit hold, as for typed characters
    return alive.isNull() || alive->text() == text || !alive->hasAcceptableInput();
}

bool TypeInto(QSpinBox* spin, const QString& text)
{
    auto* line = spin->findChild<QLineEdit*>();
    if (line == nullptr || spin->isReadOnly()) return false;
    int position = 0;
    QString checked = text;
    if (line->validator() != nullptr && line->validator()->validate(checked, position) == QValidator::Invalid) {
        return false;
    }
    spin->setFocus(Qt::MouseFocusReason);
    line->selectAll();
    line->insert(text);
    return true;
}

bool TypeInto(QPlainTextEdit* edit, const QString& text)
{
    if (edit->isReadOnly()) return false;
    edit->setFocus(Qt::MouseFocusReason);
    edit->selectAll();
    edit->insertPlainText(text);
    return true;
}

bool StepTo(ZoomStepper* stepper, int position)
{
    const QPointer<ZoomStepper> alive = stepper;
    while (alive && alive->Position() != position) {
        const int before = alive->Position();
        if (before < position) {
            alive->ClickPlus();
        } else {
            alive->ClickMinus();
        }
        const bool closer = alive && (before < position ? alive->Position() > before : alive->Position() < before);
        if (!closer) return false;
    }
    return true;
}

bool DragTo(QAbstractSlider* slider, int position)
{
    if (position < slider->minimum() || position > slider->maximum()) return false;
    const QPointer<QAbstractSlider> alive = slider;
    slider->setSliderDown(true);
    slider->setSliderPosition(position);
    if (alive) alive->setSliderDown(false);
    return true;
}

}  // namespace

std::vector<FrontControl> ControlsOf(HWND dialog)
{
    std::vector<FrontControl> controls;
    const DialogData* data = DialogOf(dialog);
    if (data == nullptr) return controls;
    for (const auto& [id, control] : data->controls) {
        if (control.isNull()) continue;
        const Kind* const kind = std::ranges::find_if(kKinds, [&](const Kind& each) { return each.fits(control); });
        const bool worked = kind->takesAHand && Reachable(dialog, id) != nullptr && !IsReadOnly(control);
        controls.push_back({.id = id, .kind = kind->name, .canBeWorked = worked});
    }
    return controls;
}

bool OperatePress(HWND dialog, int id, int direction)
{
    QWidget* control = Reachable(dialog, id);
    if (auto* fourWay = dynamic_cast<FourWayButton*>(control)) return fourWay->Click(direction);
    if (auto* list = qobject_cast<QListWidget*>(control); list != nullptr && list->currentItem() != nullptr) {
        Q_EMIT list->itemDoubleClicked(list->currentItem());
        return true;
    }
    auto* button = qobject_cast<QAbstractButton*>(control);
    if (button == nullptr) return false;
    button->click();
    return true;
}

bool OperateText(HWND dialog, int id, std::string_view text)
{
    QWidget* control = Reachable(dialog, id);
    const QString typed = ToQString(text);
    if (auto* spin = qobject_cast<QSpinBox*>(control)) return TypeInto(spin, typed);
    if (auto* plain = qobject_cast<QPlainTextEdit*>(control)) return TypeInto(plain, typed);
    if (auto* combo = qobject_cast<QComboBox*>(control)) return TypeInto(combo->lineEdit(), typed);
    return TypeInto(qobject_cast<QLineEdit*>(control), typed);
}

bool OperateCheck(HWND dialog, int id, bool on)
{
    auto* button = qobject_cast<QAbstractButton*>(Reachable(dialog, id));
    if (button == nullptr || !button->isCheckable()) return false;
    if (button->isChecked() == on) return true;
    if (!on && qobject_cast<QRadioButton*>(button) != nullptr) return false;  // only another radio button clears it
    button->click();
    return true;
}

bool OperatePick(HWND dialog, int id, int index)
{
    QWidget* control = Reachable(dialog, id);
    if (index < 0 || index >= ListCount(dialog, id) || control == nullptr) return false;
    if (auto* list = qobject_cast<QListWidget*>(control)) list->setCurrentRow(index);
    if (auto* combo = qobject_cast<QComboBox*>(control)) {
        combo->setCurrentIndex(index);
        Q_EMIT combo->activated(index);
    }
    return true;
}

bool OperateScroll(HWND dialog, int id, int position)
{
    QWidget* control = Reachable(dialog, id);
    if (auto* stepper = dynamic_cast<ZoomStepper*>(control)) return StepTo(stepper, position);
    if (auto* slider = qobject_cast<QAbstractSlider*>(control)) return DragTo(slider, position);
    return false;
}

void OperateClose(HWND dialog)
{
    if (dialog != nullptr && dialog->widget) dialog->widget->close();
}

}  // namespace kelvo
