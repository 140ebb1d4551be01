#include "wirehead/wire_line.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <memory>
#include <span>
#include <utility>

namespace kelvo {

namespace {

// What the port has carried and nobody has taken yet.
struct LineState {
    std::function<std::vector<std::uint8_t>(const WireFrame& frame)> answer;
    std::vector<std::uint8_t> heard;
    std::deque<std::uint8_t> answered;

    void Write(std::span<const std::uint8_t> bytes)
    {
        for (const std::uint8_t byte : bytes) {
            heard.push_back(byte);
            if (heard.size() < WireFrame{}.size()) continue;
            WireFrame frame{};
            std::ranges::copy(heard, frame.begin());
            heard.clear();
            const std::vector<std::uint8_t> said = answer(frame);
            answered.insert(answered.end(), said.begin(), said.end());
        }
    }
    std::size_t Read(std::span<std::uint8_t> bytes)
    {
        const std::size_t count = std::min(bytes.size(), answered.size());
        const auto end = answered.begin() + static_cast<std::ptrdiff_t>(count);
        std::copy(answered.begin(), end, bytes.begin());
        answered.erase(answered.begin(), end);
        return count;
    }
    void Purge()
    {
        heard.clear();
        answered.clear();
    }
};

}  // namespace

HeadLine LineToHead(std::function<std::vector<std::uint8_t>(const WireFrame& frame)> answer)
{
    auto state = std::make_shared<LineState>();
    state->answer = std::move(answer);
    return {.write = [state](std::span<const std::uint8_t> bytes) { state->Write(bytes); },
            .read = [state](std::span<std::uint8_t> bytes) { return state->Read(bytes); },
            .purge = [state] { state->Purge(); }};
}

}  // namespace kelvo
