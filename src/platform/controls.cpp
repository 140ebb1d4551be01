#include "platform/controls.h"

#include "platform/dialog.h"
#include "platform/qt_window.h"

#include <QHBoxLayout>
#include <QToolButton>

#include <algorithm>
#include <string_view>

namespace kelvo {

namespace {

constexpr int kRepeatDelayMs = 350;
constexpr int kRepeatIntervalMs = 70;
constexpr QSize kArrowSize(14, 14);

struct Arrow {
    int direction;
    std::string_view icon;
    const char* name;
};
// From left to right as they stand on the panel.
constexpr std::array<Arrow, 4> kArrows = {{{kDirectionLeft, "left", "Left"},
                                           {kDirectionUp, "up", "Up"},
                                           {kDirectionDown, "down", "Down"},
                                           {kDirectionRight, "right", "Right"}}};

QToolButton* AddRepeatingButton(QWidget* parent, std::string_view icon, const char* name)
{
    auto* button = new QToolButton(parent);
    button->setIcon(IconNamed(icon));
    button->setIconSize(kArrowSize);
    button->setAccessibleName(QLatin1String(name));
    button->setAutoRaise(true);
    button->setAutoRepeat(true);
    button->setAutoRepeatDelay(kRepeatDelayMs);
    button->setAutoRepeatInterval(kRepeatIntervalMs);
    button->setFocusPolicy(Qt::TabFocus);
    parent->layout()->addWidget(button);
    return button;
}

void LayOutAsRow(QWidget* widget)
{
    auto* row = new QHBoxLayout(widget);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(1);
    widget->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    widget->setFocusPolicy(Qt::NoFocus);
}

}  // namespace

FourWayButton::FourWayButton(QWidget* parent) : QWidget(parent)
{
    LayOutAsRow(this);
    for (const Arrow& arrow : kArrows) {
        QToolButton* button = AddRepeatingButton(this, arrow.icon, arrow.name);
        const int direction = arrow.direction;
        connect(button, &QToolButton::clicked, this, [this, direction] {
            if (onPressed) onPressed(direction);
        });
        buttons_.at(static_cast<std::size_t>(direction - kDirectionUp)) = button;
    }
}

bool FourWayButton::Click(int direction)
{
    if (direction < kDirectionUp || direction > kDirectionLeft) return false;
    buttons_.at(static_cast<std::size_t>(direction - kDirectionUp))->click();
    return true;
}

ZoomStepper::ZoomStepper(QWidget* parent) : QWidget(parent)
{
    LayOutAsRow(this);
    minus_ = AddRepeatingButton(this, "minus", "Smaller");
    plus_ = AddRepeatingButton(this, "plus", "Larger");
    connect(minus_, &QToolButton::clicked, this, [this] {
        if (onStep) onStep(false);
    });
    connect(plus_, &QToolButton::clicked, this, [this] {
        if (onStep) onStep(true);
    });
}

void ZoomStepper::SetRange(int minimum, int maximum)
{
    minimum_ = minimum;
    maximum_ = std::max(minimum, maximum);
    SetPosition(position_);
}

void ZoomStepper::SetPosition(int position)
{
    position_ = std::clamp(position, minimum_, maximum_);
}

void ZoomStepper::ClickPlus()
{
    plus_->click();
}

void ZoomStepper::ClickMinus()
{
    minus_->click();
}

}  // namespace kelvo
