// Two controls of the control panel that the toolkit doesn't have: a button with four directions, and a stepper that
// works like a short scroll bar. Their buttons take the keyboard focus from the Tab key alone, so that the main
// window's keys stay in force after a click. What they mean to a dialog procedure is told in platform/dialog.h; here
// they only call back.
#pragma once

#include <QWidget>

#include <array>
#include <functional>

class QToolButton;

namespace kelvo {

// Four arrows in a row: left, up, down, right. A button that is held down repeats.
class FourWayButton : public QWidget {
  public:
    explicit FourWayButton(QWidget* parent = nullptr);

    // Clicks one of the arrows, kDirectionUp to kDirectionLeft; false for any other number.
    bool Click(int direction);

    std::function<void(int direction)> onPressed;

  private:
    std::array<QToolButton*, 4> buttons_{};  // by direction less kDirectionUp
};

// Minus and plus. A click asks for a step and doesn't take it: the position stands until SetPosition, as with a scroll
// bar whose procedure decides. Plus is "line up", minus "line down", which is what the panel's zoom expects.
class ZoomStepper : public QWidget {
  public:
    explicit ZoomStepper(QWidget* parent = nullptr);

    void SetRange(int minimum, int maximum);  // clamps the position; a maximum below the minimum counts as the minimum
    void SetPosition(int position);           // clamped
    int Minimum() const { return minimum_; }
    int Maximum() const { return maximum_; }
    int Position() const { return position_; }

    void ClickPlus();
    void ClickMinus();

    std::function<void(bool plus)> onStep;

  private:
    QToolButton* minus_ = nullptr;
    QToolButton* plus_ = nullptr;
    int minimum_ = 1;
    int maximum_ = 16;
    int position_ = 1;
};

}  // namespace kelvo
