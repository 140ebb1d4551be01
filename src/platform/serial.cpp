#include "platform/serial.h"

#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/machine.h"
#include "platform/profile.h"
#include "platform/text.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <iterator>
#include <mutex>
#include <utility>
#include <vector>

namespace kelvo {

// A device behind a descriptor, or a line to a head inside the program.
struct SerialPort {
    int descriptor = -1;
    HeadLine line;
    SerialTimeouts timeouts;
};

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::string_view kPorts = "Ports";  // the list's section
constexpr std::string_view kNoHead = "none";
constexpr std::uint32_t kReadAtOnce = 0xFFFFFFFF;

// A handful, which are set at the start.
std::vector<std::pair<std::string, HeadLineMaker>> headLines;
int lastError = 0;
std::string lastErrorText;
std::string lastDevice;
std::mutex lastDeviceMutex;  // the thread that captures asks which head it follows

void NoteLastDevice(std::string_view device)
{
    const std::scoped_lock lock(lastDeviceMutex);
    lastDevice = device;
}

// Numbers whose usual wording says nothing of a port.
struct ErrorWords {
    int number;
    const char* text;
};
constexpr ErrorWords kErrorWords[] = {
    {ENOTTY, "The device is no serial port"},
    {EBUSY, "The port is used by another program"},
    {ENODEV, "No device is connected to this port"},
    {EIO, "The device doesn't respond"},
};

std::string WordsOf(int number)
{
    const auto* const words = std::ranges::find(kErrorWords, number, &ErrorWords::number);
    return words == std::end(kErrorWords) ? std::strerror(number) : words->text;
}

bool Fail(int number)
{
    lastError = number;
    lastErrorText = WordsOf(number);
    return false;
}

bool FaultStrikes(std::string_view name)
{
    return FaultIsSet(name) && !Fail(EIO);
}

bool IsInside(const SerialPort& port)
{
    return port.descriptor < 0;
}

// --- Opening --------------------------------------------------------------------------------------------------------

// "sim" of "sim:FILE"; empty: it is a device's path.
std::string_view KindOf(std::string_view device)
{
    const std::string_view kind = device.substr(0, device.find(':'));
    const bool isWord = kind.size() < device.size() && kind.find('/') == std::string_view::npos;
    return isWord ? kind : std::string_view();
}

SerialHandle OpenHeadInside(const HeadLineMaker& maker, const std::string& what)
{
    std::string error;
    HeadLine line = maker(what, error);
    if (!line.write) {
        Fail(ENODEV);
        if (!error.empty()) lastErrorText = error;
        return nullptr;
    }
    SerialHandle port(new SerialPort);
    port->line = std::move(line);
    NoteLastDevice({});
    return port;
}

// Looked at before it is opened: opening a pipe or a tape does something to it.
bool IsCharacterDevice(const std::string& device)
{
    struct stat status {};
    if (stat(device.c_str(), &status) != 0) return Fail(errno);
    return S_ISCHR(status.st_mode) || Fail(ENOTTY);
}

// The lock is what a second Kelvo meets, whoever runs it; the kernel's own exclusion doesn't hold against root.
bool TakeAlone(int descriptor)
{
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return Fail(EBUSY);
    ioctl(descriptor, TIOCEXCL);
    return true;
}

SerialHandle OpenDevice(const std::string& device)
{
    if (!IsCharacterDevice(device)) return nullptr;
    // Without O_NONBLOCK, opening a line without a carrier would never return.
    const int descriptor = open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        Fail(errno);
        return nullptr;
    }
    if (!isatty(descriptor) ? !Fail(ENOTTY) : !TakeAlone(descriptor)) {
        close(descriptor);
        return nullptr;
    }
    SerialHandle port(new SerialPort);
    port->descriptor = descriptor;
    NoteLastDevice(device);
    return port;
}

// --- The line's settings --------------------------------------------------------------------------------------------

template <typename Code>
struct Coded {
    std::uint32_t value;
    Code code;
};
constexpr Coded<speed_t> kSpeeds[] = {{1200, B1200},   {2400, B2400},   {4800, B4800},   {9600, B9600},
                                      {19200, B19200}, {38400, B38400}, {57600, B57600}, {115200, B115200}};
constexpr Coded<tcflag_t> kByteSizes[] = {{5, CS5}, {6, CS6}, {7, CS7}, {8, CS8}};

// Raw, one stop bit, no parity, no flow control. The line doesn't wait for a carrier, and DTR falls with the last
// close, also when the program dies.
bool ApplyFormat(int descriptor, const SerialLineState& state)
{
    const auto* const speed = std::ranges::find(kSpeeds, state.BaudRate, &Coded<speed_t>::value);
    const auto* const size = std::ranges::find(kByteSizes, state.ByteSize, &Coded<tcflag_t>::value);
    if (speed == std::end(kSpeeds) || size == std::end(kByteSizes)) return Fail(EINVAL);

    termios wanted{};
    wanted.c_cflag = size->code | CREAD | CLOCAL | HUPCL;
    wanted.c_cc[VMIN] = 1;  // with O_NONBLOCK this tells "nothing yet" from "gone"
    cfsetispeed(&wanted, speed->code);
    cfsetospeed(&wanted, speed->code);
    if (tcsetattr(descriptor, TCSANOW, &wanted) != 0) return Fail(errno);

    // Setting succeeds if any part of it could be done.
    termios inForce{};
    if (tcgetattr(descriptor, &inForce) != 0) return Fail(errno);
    const bool taken = cfgetospeed(&inForce) == speed->code && (inForce.c_cflag & CSIZE) == size->code &&
                       (inForce.c_lflag & (ICANON | ECHO)) == 0;
    return taken || Fail(EINVAL);
}

bool MeansNotSupported(int number)
{
    return number == ENOTTY || number == EINVAL || number == ENOSYS || number == EOPNOTSUPP;
}

bool SetModemLine(int descriptor, int line, bool on)
{
    if (ioctl(descriptor, on ? TIOCMBIS : TIOCMBIC, &line) == 0 || MeansNotSupported(errno)) return true;
    return Fail(errno);
}

// --- Moving bytes ---------------------------------------------------------------------------------------------------

bool MeansNotYet(int number)
{
    return number == EAGAIN || number == EWOULDBLOCK || number == EINTR;
}

// Until the line takes more or the time is over. The machine's own time: a device doesn't know any other.
bool WaitForRoom(int descriptor, steady_clock::time_point end)
{
    const auto left = std::chrono::ceil<milliseconds>(end - steady_clock::now()).count();
    if (left <= 0) return false;
    pollfd room{.fd = descriptor, .events = POLLOUT, .revents = 0};
    poll(&room, 1, static_cast<int>(std::min<std::int64_t>(left, 60000)));
    return true;
}

std::ptrdiff_t WriteDevice(int descriptor, std::span<const std::uint8_t> bytes, milliseconds timeout)
{
    const auto end = steady_clock::now() + timeout;
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(descriptor, bytes.data() + written, bytes.size() - written);
        if (count > 0) {
            written += static_cast<std::size_t>(count);
        } else if (count < 0 && !MeansNotYet(errno)) {
            Fail(errno);
            return -1;
        } else if (!WaitForRoom(descriptor, end)) {
            break;
        }
    }
    return static_cast<std::ptrdiff_t>(written);
}

// A device lives in the machine's own time. A program whose clock stands still while it asks would ask a thousand times
// before the first byte can come: it is let wait for a millisecond of that time.
void WaitInVirtualTime(int descriptor)
{
    if (!ClockIsVirtual()) return;
    pollfd arrival{.fd = descriptor, .events = POLLIN, .revents = 0};
    poll(&arrival, 1, 1);
}

std::ptrdiff_t ReadDevice(int descriptor, std::span<std::uint8_t> bytes)
{
    WaitInVirtualTime(descriptor);
    const ssize_t count = read(descriptor, bytes.data(), bytes.size());
    if (count > 0) return count;
    if (count < 0 && MeansNotYet(errno)) return 0;
    Fail(count == 0 ? EIO : errno);  // 0: the line was hung up
    return -1;
}

}  // namespace

void SerialPortCloser::operator()(SerialPort* port) const
{
    const std::unique_ptr<SerialPort> ended(port);
    if (IsInside(*port)) return;
    // The mark stays with the terminal as long as anything holds it open, and would keep us out the next time.
    ioctl(port->descriptor, TIOCNXCL);
    close(port->descriptor);
}

std::string SerialDevice(std::string_view name)
{
    std::string device(Trimmed(MachineSetting(kPorts, name, kNoHead)));
    if (device.empty() || EqualIgnoringCase(device, kNoHead)) return std::string(kNoHead);
    return device;
}

bool SerialPortIsUnused(std::string_view name)
{
    return HasProfileKey(kPorts, name, PlatformFilePath()) && SerialDevice(name) == kNoHead;
}

SerialHandle OpenSerialPort(std::string_view name)
{
    if (FaultStrikes("serial open")) return nullptr;
    const std::string device = SerialDevice(name);
    if (device == kNoHead) {
        Fail(ENODEV);
        return nullptr;
    }
    const std::string_view kind = KindOf(device);
    if (kind.empty()) return OpenDevice(device);
    const auto lines = std::ranges::find(headLines, kind, &std::pair<std::string, HeadLineMaker>::first);
    if (lines != headLines.end()) return OpenHeadInside(lines->second, device.substr(kind.size() + 1));
    Fail(ENODEV);
    return nullptr;
}

std::string LastSerialDevice()
{
    const std::scoped_lock lock(lastDeviceMutex);
    return lastDevice;
}

int LastSerialError()
{
    return lastError;
}

std::string LastSerialErrorText()
{
    return lastErrorText;
}

// Arrival is never waited for, and the system's queues are larger than any frame: nothing to set in either.
bool SetSerialEventMask(SerialPort& /*port*/, std::uint32_t /*mask*/)
{
    return !FaultStrikes("serial mask");
}

bool SetSerialQueues(SerialPort& /*port*/, std::uint32_t /*bytesIn*/, std::uint32_t /*bytesOut*/)
{
    return !FaultStrikes("serial queues");
}

bool SetSerialTimeouts(SerialPort& port, const SerialTimeouts& timeouts)
{
    if (FaultStrikes("serial timeouts")) return false;
    const bool readsAtOnce = timeouts.ReadIntervalTimeout == kReadAtOnce && timeouts.ReadTotalTimeoutMultiplier == 0 &&
                             timeouts.ReadTotalTimeoutConstant == 0;
    if (!readsAtOnce) return Fail(EINVAL);
    port.timeouts = timeouts;
    return true;
}

bool SetSerialLineState(SerialPort& port, const SerialLineState& state)
{
    if (FaultStrikes("serial state")) return false;
    if (IsInside(port)) return true;
    return ApplyFormat(port.descriptor, state) && SetModemLine(port.descriptor, TIOCM_DTR, state.dtr) &&
           SetModemLine(port.descriptor, TIOCM_RTS, state.rts);
}

void PurgeSerialPort(SerialPort& port, std::uint32_t bits)
{
    const bool incoming = (bits & (kPurgeRxAbort | kPurgeRxClear)) != 0;
    const bool outgoing = (bits & (kPurgeTxAbort | kPurgeTxClear)) != 0;
    if (IsInside(port)) {
        if (incoming && port.line.purge) port.line.purge();
        return;
    }
    if (incoming) tcflush(port.descriptor, TCIFLUSH);
    if (outgoing) tcflush(port.descriptor, TCOFLUSH);
}

// The system counts line errors and goes on: there is nothing that would hold up the next byte.
void ClearSerialError(SerialPort& /*port*/) {}

void DropSerialDtr(SerialPort& port)
{
    if (!IsInside(port)) SetModemLine(port.descriptor, TIOCM_DTR, false);
}

std::ptrdiff_t WriteSerialPort(SerialPort& port, std::span<const std::uint8_t> bytes)
{
    if (FaultStrikes("serial write")) return -1;
    if (IsInside(port)) {
        port.line.write(bytes);
        return std::ssize(bytes);
    }
    const auto timeout = milliseconds(std::uint64_t{port.timeouts.WriteTotalTimeoutMultiplier} * bytes.size() +
                                      port.timeouts.WriteTotalTimeoutConstant);
    return WriteDevice(port.descriptor, bytes, timeout);
}

std::ptrdiff_t ReadSerialPort(SerialPort& port, std::span<std::uint8_t> bytes)
{
    if (bytes.empty()) return 0;
    if (!IsInside(port)) return ReadDevice(port.descriptor, bytes);
    if (!port.line.read) return 0;
    return static_cast<std::ptrdiff_t>(std::min(port.line.read(bytes), bytes.size()));
}

void SetHeadLines(std::string_view kind, HeadLineMaker maker)
{
    std::erase_if(headLines, [kind](const auto& lines) { return lines.first == kind; });
    if (maker) headLines.emplace_back(kind, std::move(maker));
}

void ResetSerial()
{
    headLines.clear();
    NoteLastDevice({});
    lastError = 0;
    lastErrorText.clear();
}

}  // namespace kelvo
