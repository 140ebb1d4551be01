// The simulated head at the end of a serial port.
#include "platform/serial.h"
#include "simcam/sim_camera.h"

#include <algorithm>
#include <deque>

namespace kelvo {

namespace {

// What the port has carried and nobody has taken yet. The head hears whole frames of four bytes.
struct LineState {
    std::shared_ptr<SimCamera> camera;
    std::vector<std::uint8_t> heard;
    std::deque<std::uint8_t> answered;

    void Write(std::span<const std::uint8_t> bytes)
    {
        for (const std::uint8_t byte : bytes) {
            heard.push_back(byte);
            if (heard.size() < SimFrame{}.size()) continue;
            SimFrame frame{};
            std::ranges::copy(heard, frame.begin());
            heard.clear();
            const std::vector<std::uint8_t> answer = AnswerSimFrame(*camera, frame);
            answered.insert(answered.end(), answer.begin(), answer.end());
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

SimulatedLine MakeLine(const std::string& file, std::string& error)
{
    auto state = std::make_shared<LineState>();
    state->camera = OpenSimCamera(file, error);
    if (!state->camera) return {};
    return {[state](std::span<const std::uint8_t> bytes) { state->Write(bytes); },
            [state](std::span<std::uint8_t> bytes) { return state->Read(bytes); }, [state] { state->Purge(); }};
}

}  // namespace

void RegisterSimulatedLines()
{
    SetSimulatedLines(MakeLine);
}

}  // namespace kelvo
