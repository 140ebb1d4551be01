// What the operator does, told where it reaches the program: by hand and by platform/front.h alike. What the program
// does by itself isn't told. An act is told before what it brings about, so that an act inside of a dialog that it
// opened comes after it; a bar that was moved by steps is told with the position to which they led.
#pragma once

#include "platform/types.h"

#include <functional>
#include <string>
#include <vector>

namespace kelvo {

struct OperatorAct {
    enum class Kind {
        kCommand,  // id
        kPress,    // a control: id; value: direction of a four-way button, else 0
        kSet,      // id, text
        kCheck,    // id, value 0 or 1
        kPick,     // id, value: index from 0
        kScroll,   // id, value: position
        kAnswer,   // value: a Button
        kChoose,   // paths
        kCancel,   // the file dialog, or the dialog in front by its close button
        kClose,    // the main window's close button
        kMouse,    // place in the main window's client area; value: as OperateMouse has it
        kKey,      // text: as OperateKey has it
        kDrop,     // paths
    };
    Kind kind = Kind::kCommand;
    int id = 0;
    int value = 0;
    std::string text = {};
    std::string window = {};  // of a control: the name of its dialog or strip; empty: the dialog in front
    Point place = {};
    std::vector<std::string> paths = {};
};

// One listener; null takes it off.
void SetOperatorActHook(std::function<void(const OperatorAct& act)> hook);
void TellOperatorAct(const OperatorAct& act);

// While one lives nothing is told: what the operator only asks an explanation of.
class NotTheOperator {
  public:
    NotTheOperator();
    ~NotTheOperator();
    NotTheOperator(const NotTheOperator&) = delete;
    NotTheOperator& operator=(const NotTheOperator&) = delete;
};

}  // namespace kelvo
