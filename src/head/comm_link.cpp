#include "head/comm_link.h"

#include "head/comm_link_write.h"
#include "platform/box.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/profile_text.h"
#include "platform/serial.h"
#include "platform/text.h"
#include "state/camera_config_write.h"
#include "state/state_registry.h"
#include "state/windows.h"
#include "ui/status.h"

#include <algorithm>

namespace kelvo {

namespace write {
LinkVariables link;
}

constinit const std::int32_t& CommPortOpen = write::link.CommPortOpen;
constinit const std::int32_t& CommEchoMode = write::link.CommEchoMode;

namespace {

std::int32_t CommState = -1;      // -1 closed, 1 open
std::int32_t CommLogEnabled = 0;  // key CommLog of section Setup, read at the first frame of a run
std::int32_t CommLogReady = 0;    // 1 once the log has been prepared
std::string CommLogPath;
std::uint32_t CommWriteCount = 0;      // the number in the next "Write%03d" key
std::uint32_t CommWriteReadCount = 0;  // the number in the next "WriteRead%03d" key

const StateNames kStateNames{
    Named("CommPortOpen", CommPortOpen),
    Named("CommState", CommState),
    Named("CommLogEnabled", CommLogEnabled),
    Named("CommLogReady", CommLogReady),
    Named("CommLogPath", CommLogPath),
    Named("CommWriteCount", CommWriteCount),
    Named("CommWriteReadCount", CommWriteReadCount),
};

constexpr std::string_view kErrorCaption = "Comm Error";
constexpr std::string_view kLogSection = "CommLog";
constexpr std::size_t kLargestLog = std::size_t{16} << 20;  // as of any profile file

constexpr std::int32_t kDefaultPort = 2;
constexpr std::uint32_t kByteArrived = 1;  // event mask
constexpr std::uint32_t kQueueBytes = 1028;
constexpr SerialTimeouts kTimeouts = {.ReadIntervalTimeout = 0xFFFFFFFF, .WriteTotalTimeoutConstant = 5000};
constexpr SerialLineState kLine = {.BaudRate = 9600, .ByteSize = 8, .dtr = true, .rts = true};
constexpr std::uint32_t kPurgeBuffers = kPurgeTxClear | kPurgeRxClear;
constexpr std::uint32_t kPurgeAll = kPurgeBuffers | kPurgeTxAbort | kPurgeRxAbort;

constexpr std::int64_t kSettleMs = 100;
constexpr std::int64_t kReplyMs = 1000;
constexpr std::uint8_t kRefusal = 0x69;  // "i", the head's answer to what it doesn't take

SerialHandle CommHandle;

// --- Opening --------------------------------------------------------------------------------------------------------

std::int32_t GiveUp(const char* step)
{
    MessageBeep(Sound::kExclamation);
    ShowCommError(0, step);
    CommHandle = nullptr;
    return -1;
}

std::int32_t ConfigurePort()
{
    if (!SetSerialEventMask(*CommHandle, kByteArrived)) return GiveUp("SetCommMask");
    if (!SetSerialQueues(*CommHandle, kQueueBytes, kQueueBytes)) {
        // Without a beep, under the name of the opening, and the port stays taken until the next attempt.
        ShowCommError(0, "OpenXComm");
        return -1;
    }
    if (!SetSerialTimeouts(*CommHandle, kTimeouts)) return GiveUp("SetCommTimeouts");
    if (!SetSerialLineState(*CommHandle, kLine)) return GiveUp("SetCommState");
    return 1;
}

// --- The log --------------------------------------------------------------------------------------------------------

std::string WithoutSection(std::string_view contents, std::string_view section)
{
    std::string rest;
    bool inside = false;
    ProfileScanner scanner(contents);
    for (ProfileLine line; scanner.Next(line);) {
        if (line.kind == ProfileLine::Kind::kSection) inside = EqualIgnoringCase(line.name, section);
        if (!inside) rest += contents.substr(line.start, line.next - line.start);
    }
    return rest;
}

// Other sections stay. A log beyond the limit goes whole once its copy stands: no line would ever be added to it.
void RemoveLoggedFrames(bool copied)
{
    const auto contents = ReadWholeFile(CommLogPath, kLargestLog);
    if (!contents) {
        if (copied) DeleteFileNamed(CommLogPath);
        return;
    }
    const std::string rest = WithoutSection(*contents, kLogSection);
    if (rest != *contents) ReplaceFile(CommLogPath, rest);
}

// The last run's log moves aside, whether this run writes one or not.
void PrepareLog()
{
    CommLogReady = 1;
    CommLogEnabled = GetPrivateProfileInt("Setup", "CommLog", 0, IniFilePath);
    CommLogPath = StateDir + "/CommLog.txt";
    RemoveLoggedFrames(CopyFileTo(CommLogPath, StateDir + "/PreviousCommLog.txt", false));
}

// Each line is on the disk before the next frame: a log is read after a program that hung. It goes past the gathered
// settings, since a log that can't be written is no matter to stop for.
void WriteLogLine(const std::string& key, std::string_view value)
{
    const auto contents = ReadWholeFile(CommLogPath, kLargestLog);
    if (!contents && FileExists(CommLogPath)) return;
    ReplaceFile(CommLogPath, WithProfileKey(contents.value_or(std::string()), kLogSection, key, &value));
}

std::string HexOf(const CommFrame& frame)
{
    return Format("%02x %02x %02x %02x", frame[0], frame[1], frame[2], frame[3]);
}

void LogWrite(const CommFrame& frame, bool complete)
{
    if (!CommLogEnabled) return;
    WriteLogLine(Format("Write%03u", CommWriteCount++), HexOf(frame) + (complete ? " OK" : " BAD"));
}

// The first OK stands for the frame that was sent, whatever became of it; the second judges the reply.
void LogTransaction(const CommFrame& frame, const CommFrame& reply, bool good)
{
    if (!CommLogEnabled) return;
    WriteLogLine(Format("WriteRead%03u", CommWriteReadCount++),
                 HexOf(frame) + " OK  " + HexOf(reply) + (good ? " OK" : " BAD"));
}

// --- Moving frames --------------------------------------------------------------------------------------------------

// A reply to an earlier frame must not be taken for the answer to this one.
bool PutOnWire(std::span<const std::uint8_t> frame)
{
    if (!CommHandle) return false;
    PurgeSerialPort(*CommHandle, kPurgeAll);
    ClearSerialError(*CommHandle);
    return WriteSerialPort(*CommHandle, frame) == std::ssize(CommFrame());
}

// The device has gone, and comes back as another one: who next needs the link opens it anew.
void LetGoOfDevice()
{
    CommHandle = nullptr;
    CommState = -1;
    write::link.CommPortOpen = 0;
}

// Virtual time stands still while the program works: each look at the line then costs a millisecond of it.
void PassTimeBetweenReads()
{
    if (ClockIsVirtual()) DelayMs(1);
}

}  // namespace

void ResetCommLog(std::uint32_t nextNumber)
{
    CommLogReady = 0;
    CommWriteCount = nextNumber;
    CommWriteReadCount = nextNumber;
}

std::int32_t CommPortNumber()
{
    return nCommPort < 1 ? kDefaultPort : nCommPort;
}

std::int32_t OpenXComm()
{
    if (CommState == 1) return 1;
    const Hourglass hourglass;
    write::camera.nCommPort = CommPortNumber();
    CommHandle = nullptr;  // one that an unfinished opening left
    const std::string name = Format("COM%d", nCommPort);
    CommHandle = OpenSerialPort(name);
    if (!CommHandle) {
        StatusMessage(name + ": " + LastSerialErrorText(), kLeftAligned);  // the box has the number only
        return GiveUp("OpenXComm");
    }
    if (ConfigurePort() < 0) return -1;
    CommState = 1;
    PurgeSerialPort(*CommHandle, kPurgeBuffers);
    DelayMs(kSettleMs);
    return 1;
}

std::int32_t OpenCommLink()
{
    CommState = OpenXComm();
    if (CommState >= 0) return 1;
    MessageBox(hWndMain, "Error opening rs232 communications!  Check port, baud rate, etc.", kErrorCaption);
    return 0;
}

std::int32_t CloseCommLink()
{
    if (CommState <= -1) return 1;
    CommState = -1;
    write::link.CommPortOpen = 0;
    if (!CommHandle) return 1;
    SetSerialEventMask(*CommHandle, 0);
    DropSerialDtr(*CommHandle);
    PurgeSerialPort(*CommHandle, kPurgeAll);
    CommHandle = nullptr;
    return 1;
}

std::int32_t WriteCommFrame(CommFrame& frame, std::size_t length)
{
    const bool complete = PutOnWire(std::span(frame).first(std::min(length, frame.size())));
    if (!CommLogReady) PrepareLog();
    if (!CommEchoMode) {
        LogWrite(frame, complete);
        return 1;  // also of a failed write: the missing reply tells the caller
    }
    CommFrame reply{};
    const bool good = ReadCommFrame(reply) == reply.size() && reply[0] != kRefusal;
    LogTransaction(frame, reply, good);
    if (!good) return 0;
    frame = reply;
    return 1;
}

std::size_t ReadCommFrame(std::span<std::uint8_t> buffer)
{
    const std::int64_t start = TickMs();
    std::size_t count = 0;
    for (;;) {
        count += ReadCommBytes(0, buffer.subspan(count));
        if (count >= buffer.size() || TickMs() - start > kReplyMs) return count;
        PassTimeBetweenReads();
    }
}

std::size_t ReadCommBytes(std::int32_t /*ignored*/, std::span<std::uint8_t> buffer)
{
    if (!CommHandle) return 0;
    ClearSerialError(*CommHandle);
    if (buffer.empty()) return 0;
    const std::ptrdiff_t count = ReadSerialPort(*CommHandle, buffer);
    if (count >= 0) return static_cast<std::size_t>(count);
    LetGoOfDevice();
    return 0;
}

void ShowCommError(std::int32_t /*ignored*/, std::string_view text)
{
    MessageBox(nullptr, Format("%s, Error number %d", std::string(text).c_str(), LastSerialError()), kErrorCaption,
               BoxIcon::kNone);
}

void ResetCommLink()
{
    CommHandle = nullptr;
    CommState = -1;
    write::link.CommPortOpen = 0;
    write::link.CommEchoMode = 0;
    CommLogEnabled = 0;
    CommLogReady = 0;
    CommLogPath.clear();
    CommWriteCount = 0;
    CommWriteReadCount = 0;
}

}  // namespace kelvo
