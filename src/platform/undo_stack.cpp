#include "platform/undo_stack.h"

#include "platform/qt_window.h"

#include <QUndoCommand>
#include <QUndoStack>

#include <memory>
#include <utility>

namespace kelvo {

namespace {

// Whether the functions of steps are called when the stack moves: not where a step is only entered, or goes back to its
// place because it couldn't be done.
bool calls = false;
bool succeeded = false;

class StackedStep : public QUndoCommand {
  public:
    enum class Joining { kAlone, kGoesOn, kComesToNothing };

    explicit StackedStep(UndoStep step, Joining joining = Joining::kAlone)
        : QUndoCommand(ToQString(step.name)), step_(std::move(step)), joining_(joining)
    {
    }

    void undo() override { Call(step_.takeBack); }
    void redo() override { Call(step_.doAgain); }

    int id() const override { return 1; }
    bool mergeWith(const QUndoCommand* next) override
    {
        const auto& later = static_cast<const StackedStep&>(*next);  // all steps here are of one class
        if (later.joining_ == Joining::kAlone) return false;
        step_.takeBack = later.step_.takeBack;
        step_.doAgain = later.step_.doAgain;
        setObsolete(later.joining_ == Joining::kComesToNothing);
        return true;
    }

  private:
    static void Call(const std::function<bool()>& function)
    {
        if (calls) succeeded = function();
    }

    UndoStep step_;
    Joining joining_;
};

QUndoStack& Stack()
{
    static const std::unique_ptr<QUndoStack> stack = [] {
        auto made = std::make_unique<QUndoStack>();
        made->setUndoLimit(kMostUndoSteps);
        return made;
    }();
    return *stack;
}

void Push(UndoStep step, StackedStep::Joining joining)
{
    Stack().push(std::make_unique<StackedStep>(std::move(step), joining).release());  // the stack owns it
}

// Moves the stack, and back again without a call where the step's function couldn't.
bool Move(void (QUndoStack::*there)(), void (QUndoStack::*back)())
{
    succeeded = false;
    calls = true;
    (Stack().*there)();
    calls = false;
    if (!succeeded) (Stack().*back)();
    return succeeded;
}

}  // namespace

void PushUndoStep(UndoStep step)
{
    Push(std::move(step), StackedStep::Joining::kAlone);
}

void ExtendLastUndoStep(std::function<bool()> takeBack, std::function<bool()> doAgain)
{
    if (!Stack().canUndo()) return;
    Push({.name = {}, .takeBack = std::move(takeBack), .doAgain = std::move(doAgain)}, StackedStep::Joining::kGoesOn);
}

void DropLastUndoStep()
{
    if (!Stack().canUndo()) return;
    Push({}, StackedStep::Joining::kComesToNothing);
}

std::optional<std::string> NextUndoName()
{
    if (!Stack().canUndo()) return std::nullopt;
    return FromQString(Stack().undoText());
}

std::optional<std::string> NextRedoName()
{
    if (!Stack().canRedo()) return std::nullopt;
    return FromQString(Stack().redoText());
}

bool TakeBackUndoStep()
{
    return Stack().canUndo() && Move(&QUndoStack::undo, &QUndoStack::redo);
}

bool DoUndoStepAgain()
{
    return Stack().canRedo() && Move(&QUndoStack::redo, &QUndoStack::undo);
}

void ClearUndoSteps()
{
    Stack().clear();
}

}  // namespace kelvo
