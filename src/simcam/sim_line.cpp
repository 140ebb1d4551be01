// The simulated head at the end of a serial port.
#include "platform/serial.h"
#include "simcam/sim_camera.h"
#include "wirehead/wire_line.h"

namespace kelvo {

namespace {

HeadLine MakeLine(const std::string& file, std::string& error)
{
    std::shared_ptr<SimCamera> camera = OpenSimCamera(file, error);
    if (!camera) return {};
    return LineToHead([camera](const WireFrame& frame) { return AnswerSimFrame(*camera, frame); });
}

}  // namespace

void RegisterSimulatedHeads()
{
    SetHeadLines("sim", MakeLine);
}

}  // namespace kelvo
