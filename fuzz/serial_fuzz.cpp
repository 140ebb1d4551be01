// What a head may answer, and what may stand in the log of the run before.
//
// The first byte chooses: 1 the log is on, 2 the rest of the input is the old log; otherwise it is a conversation, each
// part of it four bytes of a frame, the number of bytes that come back, and those bytes.
#include "head/comm_link_write.h"
#include "platform/clock.h"
#include "platform/profile_text.h"
#include "platform/serial.h"
#include "platform/text.h"
#include "reset/reset.h"
#include "state/camera_config_write.h"
#include "state/windows_write.h"

#include <stdlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

using kelvo::CommFrame;
using Bytes = std::span<const std::uint8_t>;

constexpr std::uint8_t kRefusal = 0x69;
constexpr int kMostFrames = 24;  // a silent head costs a thousand reads each

std::string directory;
Bytes reply;                     // to the next frame
std::vector<std::uint8_t> line;  // what has come and isn't read yet

void Check(bool holds)
{
    if (!holds) __builtin_trap();
}

std::size_t Read(std::span<std::uint8_t> bytes)
{
    const std::size_t count = std::min(bytes.size(), line.size());
    std::copy_n(line.begin(), count, bytes.begin());
    line.erase(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(count));
    return count;
}

kelvo::HeadLine MakeLine(const std::string& /*file*/, std::string& /*error*/)
{
    return {
        .write = [](Bytes) { line.assign(reply.begin(), reply.end()); }, .read = Read, .purge = [] { line.clear(); }};
}

std::string Contents(const std::string& name)
{
    std::ifstream stream(directory + '/' + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void Put(const std::string& name, std::string_view contents)
{
    std::ofstream stream(directory + '/' + name, std::ios::binary);
    stream.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    Check(static_cast<bool>(stream.flush()));
}

Bytes Take(Bytes& input, std::size_t count)
{
    const Bytes taken = input.first(std::min(count, input.size()));
    input = input.subspan(taken.size());
    return taken;
}

void HoldTransaction(CommFrame frame, Bytes answer, bool echo)
{
    reply = answer;
    kelvo::write::link.CommEchoMode = echo ? 1 : 0;
    CommFrame given = frame;
    const bool good = answer.size() >= frame.size() && answer[0] != kRefusal;
    Check(kelvo::WriteCommFrame(given, given.size()) == (!echo || good ? 1 : 0));
    if (echo && good) std::copy_n(answer.begin(), frame.size(), frame.begin());
    Check(given == frame);
    if (echo) return;
    CommFrame read{};
    Check(kelvo::ReadCommFrame(read) == std::min(answer.size(), read.size()));
}

void HoldConversation(Bytes input)
{
    for (int i = 0; i < kMostFrames && input.size() > 4; ++i) {
        CommFrame frame{};
        std::ranges::copy(Take(input, frame.size()), frame.begin());
        const std::uint8_t control = Take(input, 1)[0];
        HoldTransaction(frame, Take(input, control & 0x0F), (control & 0x80) != 0);
    }
}

bool HasSection(std::string_view contents, std::string_view section)
{
    kelvo::ProfileScanner scanner(contents);
    for (kelvo::ProfileLine found; scanner.Next(found);) {
        if (found.kind == kelvo::ProfileLine::Kind::kSection && kelvo::EqualIgnoringCase(found.name, section))
            return true;
    }
    return false;
}

void RotateLog(std::string_view old, bool logs)
{
    Put("CommLog.txt", old);
    HoldTransaction({0x20, 0, 0, 0}, {}, false);
    Check(Contents("PreviousCommLog.txt") == old);
    Check(HasSection(Contents("CommLog.txt"), "CommLog") == logs);
    if (logs) Check(kelvo::ProfileText(Contents("CommLog.txt"), "CommLog", "Write000", "") == "20 00 00 00 OK");
}

// As the program starts: nothing of the input before is left, neither in memory nor in the directory.
void Start(bool logs)
{
    kelvo::ResetModules();
    std::filesystem::remove_all(directory);
    Check(std::filesystem::create_directory(directory));
    Put("platform.ini", "[Ports]\nCOM2=sim:fuzz\n");
    Put("kelvo.ini", logs ? "[Setup]\nCommLog=1\n" : "");
    kelvo::SetDefaultDir(directory);
    kelvo::UseVirtualClock(0);
    kelvo::SetHeadLines("sim", MakeLine);
    kelvo::write::camera.nCommPort = 2;
    Check(kelvo::OpenXComm() == 1);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    const char* const base = getenv("TMPDIR");
    directory = std::string(base ? base : "/tmp") + "/kelvo-fuzz-XXXXXX";
    if (!mkdtemp(directory.data())) abort();
    atexit([] { std::filesystem::remove_all(directory); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    const bool logs = (data[0] & 1) != 0;
    const Bytes rest(data + 1, size - 1);
    Start(logs);
    if ((data[0] & 2) != 0) {
        RotateLog({reinterpret_cast<const char*>(rest.data()), rest.size()}, logs);
    } else {
        HoldConversation(rest);
    }
    return 0;
}
