// The head of a simulated camera in a few lines, until the camera itself is part of the tree: an InSb head that tells
// its identity and echoes all else.
#include "platform/faults.h"
#include "simcam/sim_camera.h"

#include <filesystem>

namespace kelvo {

struct SimCamera {};

std::shared_ptr<SimCamera> OpenSimCamera(const std::string& file, std::string& error)
{
    if (std::filesystem::is_regular_file(file)) return std::make_shared<SimCamera>();
    error = file + ": no such file";
    return nullptr;
}

std::vector<std::uint8_t> AnswerSimFrame(SimCamera& /*camera*/, const SimFrame& frame)
{
    if (FaultIsSet("head silent")) return {};
    if (FaultIsSet("head refuses")) return {0x69, 0, 0, 0};
    if (FaultIsSet("head noise")) return {0xA5, 0x5A, 0xC3};
    std::vector<std::uint8_t> answer(frame.begin(), frame.end());
    if (frame[0] == 0x20) answer = {0x10, 0x66, 0, 0};
    if (FaultIsSet("head short")) answer.resize(2);
    return answer;
}

}  // namespace kelvo
