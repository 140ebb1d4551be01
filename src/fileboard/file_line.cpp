// The head of the recorded camera at the end of a serial port.
#include "fileboard/file_camera.h"
#include "platform/serial.h"
#include "wirehead/wire_line.h"

namespace kelvo {

namespace {

HeadLine MakeLine(const std::string& file, std::string& error)
{
    std::shared_ptr<FileCamera> camera = OpenFileCamera(file, error);
    if (!camera) return {};
    return LineToHead([camera](const WireFrame& frame) { return AnswerFileFrame(*camera, frame); });
}

}  // namespace

void RegisterFileHeads()
{
    SetHeadLines("file", MakeLine);
}

}  // namespace kelvo
