#include "batch/gap_report.h"

#include "platform/json_text.h"
#include "platform/text.h"

#include <vector>

namespace kelvo {

std::string GapText(const FrameGap& gap)
{
    std::string text = Format("before frame %lld: %lld missing", static_cast<long long>(gap.beforeFrame),
                              static_cast<long long>(gap.Missing()));
    if (gap.firstNumber >= 0) text += Format(" from number %lld", static_cast<long long>(gap.firstNumber));
    return text + ", " + CausesOf(gap);
}

std::string GapsJson(std::span<const FrameGap> gaps)
{
    std::vector<std::string> objects;
    objects.reserve(gaps.size());
    for (const FrameGap& gap : gaps) {
        objects.push_back(JsonText()
                              .Whole("before", gap.beforeFrame)
                              .Whole("first", gap.firstNumber)
                              .Whole("missing", gap.Missing())
                              .Whole("board", gap.lostByBoard)
                              .Whole("ring", gap.lostByRing)
                              .Whole("passed_over", gap.passedOver)
                              .Whole("unexplained", gap.unexplained)
                              .Whole("transport", gap.lostByTransport)
                              .Json());
    }
    return JsonList(objects);
}

}  // namespace kelvo
