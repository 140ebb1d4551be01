// The steps that the operator can take back, oldest first, with a place among them: taking back goes down, doing again
// goes up, and a new step drops those above the place. What a step is, its functions know.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace kelvo {

// Of more steps the oldest are forgotten.
constexpr int kMostUndoSteps = 200;

// A function that can't do its work tells the operator why and gives false: the place stays where it is.
struct UndoStep {
    std::string name;  // for the menu: "contrast"
    std::function<bool()> takeBack;
    std::function<bool()> doAgain;
};

// A step that has been done just now; nothing is called.
void PushUndoStep(UndoStep step);
// The step that would be taken back has gone on: it keeps its name, and has these functions now. Without such a step
// nothing happens; neither does in DropLastUndoStep.
void ExtendLastUndoStep(std::function<bool()> takeBack, std::function<bool()> doAgain);
// That step has come to nothing: it goes, and nothing is called.
void DropLastUndoStep();

// The name of the step that would be taken back or done again; nullopt: there is none.
std::optional<std::string> NextUndoName();
std::optional<std::string> NextRedoName();

// One step back, one up again. False where there is none, or its function couldn't.
bool TakeBackUndoStep();
bool DoUndoStepAgain();

void ClearUndoSteps();

}  // namespace kelvo
