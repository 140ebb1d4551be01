#include "platform/operator_acts.h"

#include <utility>

namespace kelvo {

namespace {

std::function<void(const OperatorAct& act)> listener;
int silenced = 0;

}  // namespace

void SetOperatorActHook(std::function<void(const OperatorAct& act)> hook)
{
    listener = std::move(hook);
}

void TellOperatorAct(const OperatorAct& act)
{
    if (!listener || silenced > 0) return;
    const auto hook = listener;  // it may take itself off
    hook(act);
}

NotTheOperator::NotTheOperator()
{
    ++silenced;
}

NotTheOperator::~NotTheOperator()
{
    --silenced;
}

}  // namespace kelvo
