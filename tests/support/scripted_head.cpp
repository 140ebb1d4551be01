#include "support/scripted_head.h"

#include "platform/serial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace kelvo {

ScriptedHead::ScriptedHead()
{
    SetHeadLines("sim", [this](const std::string&, std::string&) {
        return HeadLine{.write =
                            [this](std::span<const std::uint8_t> bytes) {
                                CommFrame frame{};
                                ASSERT_EQ(bytes.size(), frame.size());
                                std::ranges::copy(bytes, frame.begin());
                                taken_.push_back(frame);
                                const auto listed = answers_.find(frame);
                                waiting_ = listed != answers_.end() ? listed->second
                                                                    : all_.value_or(Answer(frame.begin(), frame.end()));
                            },
                        .read =
                            [this](std::span<std::uint8_t> bytes) {
                                const std::size_t count = std::min(bytes.size(), waiting_.size());
                                std::copy_n(waiting_.begin(), count, bytes.begin());
                                waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(count));
                                return count;
                            },
                        .purge = [this] { waiting_.clear(); }};
    });
}

ScriptedHead::~ScriptedHead()
{
    CloseCommLink();
    SetHeadLines("sim", {});
}

Frames ScriptedHead::Taken()
{
    return std::exchange(taken_, {});
}

}  // namespace kelvo
