// Serial ports, by their classic names "COM1", "COM2", ... Section Ports of platform.ini says what stands behind a
// name: a device ("/dev/ttyUSB0"), "KIND:WHAT" for a head inside the program that stands for a camera of that kind
// ("sim:FILE", a simulated one by FILE in DefaultDir; "file:FILE"; "genicam:SERIAL"), "none" for no head. A name that
// isn't listed is "none".
//
// The operations are separate steps, since each can fail and each has its own message. All run on the calling thread.
// After a failure LastSerialError tells the system's error number, LastSerialErrorText the same in words.
//
// Faults (platform/faults.h) that make a step fail: "serial open", "serial mask", "serial queues", "serial timeouts",
// "serial state", "serial write".
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

struct SerialPort;  // an open port
struct SerialPortCloser {
    void operator()(SerialPort* port) const;
};
using SerialHandle = std::unique_ptr<SerialPort, SerialPortCloser>;  // closes the port at its end

// A read never waits: reading is set to give at once what there is (interval 0xFFFFFFFF, totals 0), and nothing else
// can be set. A write waits for room as long as its multiplier times the bytes, plus the constant.
struct SerialTimeouts {
    std::uint32_t ReadIntervalTimeout = 0;
    std::uint32_t ReadTotalTimeoutMultiplier = 0;
    std::uint32_t ReadTotalTimeoutConstant = 0;
    std::uint32_t WriteTotalTimeoutMultiplier = 0;
    std::uint32_t WriteTotalTimeoutConstant = 0;  // ms
};

// The settings of a line. Those the system leaves at nothing (flow control, parity) aren't fields: a port is always
// raw.
struct SerialLineState {
    std::uint32_t BaudRate = 0;
    std::uint8_t ByteSize = 0;
    bool dtr = false;
    bool rts = false;
};

// Bits of PurgeSerialPort.
constexpr std::uint32_t kPurgeTxAbort = 1;
constexpr std::uint32_t kPurgeRxAbort = 2;
constexpr std::uint32_t kPurgeTxClear = 4;
constexpr std::uint32_t kPurgeRxClear = 8;

// What stands behind a name: "KIND:WHAT", "none" or a device's path.
std::string SerialDevice(std::string_view name);
// True where the list says "none" of the name, or nothing behind the "=". One that isn't listed doesn't open either,
// but nobody meant it so.
bool SerialPortIsUnused(std::string_view name);

// Opens a port for reading and writing, alone: never waits for a carrier. Null where there is none (ENODEV), another
// program or link holds it (EBUSY), or it isn't a terminal (ENOTTY).
SerialHandle OpenSerialPort(std::string_view name);
// The device behind the port that was opened last, also when it is closed again; empty before, and where that was a
// simulated head of the program itself.
std::string LastSerialDevice();
int LastSerialError();
std::string LastSerialErrorText();

bool SetSerialEventMask(SerialPort& port, std::uint32_t mask);
bool SetSerialQueues(SerialPort& port, std::uint32_t bytesIn, std::uint32_t bytesOut);
bool SetSerialTimeouts(SerialPort& port, const SerialTimeouts& timeouts);
// A modem line that the device doesn't have (pseudo-terminals) is no failure.
bool SetSerialLineState(SerialPort& port, const SerialLineState& state);

void PurgeSerialPort(SerialPort& port, std::uint32_t bits);
void ClearSerialError(SerialPort& port);
void DropSerialDtr(SerialPort& port);

// The number of bytes written within the write time-out; -1 on an error.
std::ptrdiff_t WriteSerialPort(SerialPort& port, std::span<const std::uint8_t> bytes);
// What has arrived, at once: 0 where there is nothing, -1 on an error (the device was unplugged).
std::ptrdiff_t ReadSerialPort(SerialPort& port, std::span<std::uint8_t> bytes);

// The other end of a port that is wired to a head inside the program: takes what the program writes, and gives what it
// has answered so far. Bytes that are purged are gone. Lives as long as the port is open; what the head knows lives
// longer.
struct HeadLine {
    std::function<void(std::span<const std::uint8_t> bytes)> write;
    std::function<std::size_t(std::span<std::uint8_t> bytes)> read;  // the number of bytes given
    std::function<void()> purge;
};
// Makes the line for what stands behind "KIND:"; an empty write means that the head can't be made, and error says why.
using HeadLineMaker = std::function<HeadLine(const std::string& what, std::string& error)>;
// The lines of one kind ("sim", without the colon). An empty maker: there are none.
void SetHeadLines(std::string_view kind, HeadLineMaker maker);

// No head inside the program, and no failure so far. Ports that are open stay so.
void ResetSerial();

}  // namespace kelvo
