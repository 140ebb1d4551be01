// Serial ports over true devices (pseudo-terminals), and the lines of simulated heads.
#include "platform/serial.h"

#include "platform/faults.h"
#include "platform/machine.h"
#include "state/windows_write.h"
#include "support/pseudo_terminal.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <termios.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<std::uint8_t>;

constexpr SerialTimeouts kReadsAtOnce = {.ReadIntervalTimeout = 0xFFFFFFFF, .WriteTotalTimeoutConstant = 5000};
constexpr SerialLineState kHeadLine = {.BaudRate = 9600, .ByteSize = 8, .dtr = true, .rts = true};

class Serial : public testing::Test {
  protected:
    Serial() { SetDefaultDir(directory.Path()); }
    ~Serial() override { SetHeadLines("sim", {}); }

    void Wire(const std::string& device) const
    {
        PutFile(directory / "platform.ini", "[Ports]\nCOM2=" + device + "\n");
    }

    SerialHandle OpenReady() const
    {
        SerialHandle port = OpenSerialPort("COM2");
        EXPECT_NE(port, nullptr);
        if (!port) return port;
        EXPECT_TRUE(SetSerialTimeouts(*port, kReadsAtOnce));
        EXPECT_TRUE(SetSerialLineState(*port, kHeadLine));
        return port;
    }

    void ExpectRefused(const std::string& device, int error) const
    {
        Wire(device);
        EXPECT_EQ(OpenSerialPort("COM2"), nullptr) << device;
        EXPECT_EQ(LastSerialError(), error) << device;
    }

    // Reads until that many bytes are there, for two seconds at most.
    static Bytes ReadFor(SerialPort& port, std::size_t wanted)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        Bytes all;
        while (all.size() < wanted && std::chrono::steady_clock::now() < end) {
            Bytes chunk(wanted - all.size());
            const std::ptrdiff_t count = ReadSerialPort(port, chunk);
            if (count < 0) break;
            all.insert(all.end(), chunk.begin(), chunk.begin() + count);
        }
        return all;
    }

    TempDirectory directory;
};

TEST_F(Serial, NamesStandForWhatPlatformIniSays)
{
    PutFile(directory / "platform.ini", "[Ports]\nCOM1=/dev/ttyS7\ncom3 = sim:a b.cnf\nCOM4=NONE\nCOM5=\n");
    EXPECT_EQ(PlatformFilePath(), directory / "platform.ini");
    EXPECT_EQ(SerialDevice("COM1"), "/dev/ttyS7");
    EXPECT_EQ(SerialDevice("COM3"), "sim:a b.cnf");
    EXPECT_EQ(SerialDevice("COM4"), "none");
    EXPECT_EQ(SerialDevice("COM5"), "none");
    EXPECT_EQ(SerialDevice("COM9"), "none");
    EXPECT_EQ(MachineSetting("Board", "Board", "none"), "none");
}

TEST_F(Serial, APortWithoutADeviceDoesNotOpen)
{
    ExpectRefused("none", ENODEV);
    EXPECT_EQ(LastSerialErrorText(), "No device is connected to this port");
    EXPECT_EQ(OpenSerialPort("COM7"), nullptr);
    ExpectRefused(directory / "missing", ENOENT);
}

TEST_F(Serial, WhatIsNoTerminalIsToldSo)
{
    PutFile(directory / "file", "x");
    ASSERT_EQ(mkfifo((directory / "pipe").c_str(), 0600), 0);
    ExpectRefused(directory / "file", ENOTTY);
    ExpectRefused(directory / "pipe", ENOTTY);
    ExpectRefused(directory.Path(), ENOTTY);
    ExpectRefused("/dev/null", ENOTTY);
    EXPECT_EQ(LastSerialErrorText(), "The device is no serial port");
    EXPECT_EQ(FileContents(directory / "file"), "x");
}

TEST_F(Serial, ASecondOpeningIsToldThatThePortIsBusy)
{
    const PseudoTerminal terminal;
    Wire(terminal.Slave());
    SerialHandle port = OpenSerialPort("COM2");
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(OpenSerialPort("COM2"), nullptr);
    EXPECT_EQ(LastSerialError(), EBUSY);
    port.reset();
    EXPECT_NE(OpenSerialPort("COM2"), nullptr);
}

TEST_F(Serial, AnotherProgramsLockMeansBusyAndIsLeftAlone)
{
    const PseudoTerminal terminal;
    Wire(terminal.Slave());
    const int other = open(terminal.Slave().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(other, 0);
    ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
    ExpectRefused(terminal.Slave(), EBUSY);
    close(other);
    EXPECT_NE(OpenSerialPort("COM2"), nullptr);
}

TEST_F(Serial, TheLineIsRawAt9600With8DataBits)
{
    const PseudoTerminal terminal;
    Wire(terminal.Slave());
    const SerialHandle port = OpenReady();
    const termios line = terminal.LineSettings();
    EXPECT_EQ(cfgetospeed(&line), static_cast<speed_t>(B9600));
    EXPECT_EQ(line.c_cflag & CSIZE, static_cast<tcflag_t>(CS8));
    EXPECT_EQ(line.c_cflag & (PARENB | CSTOPB | CRTSCTS), 0U);
    EXPECT_NE(line.c_cflag & CLOCAL, 0U);
    EXPECT_EQ(line.c_iflag, 0U);
    EXPECT_EQ(line.c_oflag, 0U);
    EXPECT_EQ(line.c_lflag, 0U);
}

TEST_F(Serial, EveryByteValueGoesThroughUnchangedBothWays)
{
    const PseudoTerminal terminal;
    Wire(terminal.Slave());
    const SerialHandle port = OpenReady();
    Bytes all(256);
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<std::uint8_t>(i);
    EXPECT_EQ(WriteSerialPort(*port, all), 256);
    EXPECT_EQ(terminal.Receive(256), all);
    terminal.Send(all);
    EXPECT_EQ(ReadFor(*port, 256), all);
    EXPECT_FALSE(terminal.Arrived(0)) << "the line echoes";
}

TEST_F(Serial, AReadGivesWhatIsThereAndNeverWaits)
{
    const PseudoTerminal terminal;
    Wire(terminal.Slave());
    const SerialHandle port = OpenReady();
    Bytes room(4);
    EXPECT_EQ(ReadSerialPort(*port, room), 0);
    terminal.Send({1, 2, 3});
    EXPECT_THAT(ReadFor(*port, 3), ElementsAre(1, 2, 3));
    EXPECT_EQ(ReadSerialPort(*port, room), 0);
    EXPECT_EQ(ReadSerialPort(*port, {}), 0);
}

TEST_F(Serial, APurgeThrowsAwayWhatHasArrived)
{
    const PseudoTerminal terminal;
    Wire(terminal.Slave());
    const SerialHandle port = OpenReady();
    terminal.Send({9, 9, 9, 9});
    ASSERT_THAT(ReadFor(*port, 1), ElementsAre(9));  // so they have arrived
    PurgeSerialPort(*port, kPurgeRxClear);
    terminal.Send({7});
    EXPECT_THAT(ReadFor(*port, 1), ElementsAre(7));
}

TEST_F(Serial, AWriteNobodyTakesEndsWithItsTimeOut)
{
    const PseudoTerminal terminal;
    Wire(terminal.Slave());
    const SerialHandle port = OpenReady();
    ASSERT_TRUE(SetSerialTimeouts(*port, {.ReadIntervalTimeout = 0xFFFFFFFF, .WriteTotalTimeoutConstant = 50}));
    const Bytes large(1000000);
    const std::ptrdiff_t written = WriteSerialPort(*port, large);
    EXPECT_GT(written, 0);
    EXPECT_LT(written, 1000000);
}

TEST_F(Serial, AnUnpluggedDeviceIsAnError)
{
    PseudoTerminal terminal;
    Wire(terminal.Slave());
    const SerialHandle port = OpenReady();
    terminal.Unplug();
    Bytes room(4);
    EXPECT_EQ(ReadSerialPort(*port, room), -1);
    EXPECT_EQ(LastSerialError(), EIO);
    EXPECT_EQ(WriteSerialPort(*port, room), -1);
    EXPECT_FALSE(SetSerialLineState(*port, kHeadLine));
    PurgeSerialPort(*port, kPurgeRxClear | kPurgeTxClear);
    DropSerialDtr(*port);
}

TEST_F(Serial, SettingsThatNoPortHasAreRefused)
{
    const PseudoTerminal terminal;
    Wire(terminal.Slave());
    const SerialHandle port = OpenReady();
    EXPECT_FALSE(SetSerialLineState(*port, {.BaudRate = 9601, .ByteSize = 8}));
    EXPECT_EQ(LastSerialError(), EINVAL);
    EXPECT_FALSE(SetSerialLineState(*port, {.BaudRate = 9600, .ByteSize = 9}));
    EXPECT_FALSE(SetSerialTimeouts(*port, {.ReadTotalTimeoutConstant = 10}));
}

TEST_F(Serial, EachFaultFailsItsStepAlone)
{
    const PseudoTerminal terminal;
    Wire(terminal.Slave());
    const SerialHandle port = OpenSerialPort("COM2");
    ASSERT_NE(port, nullptr);
    const std::pair<const char*, std::function<bool()>> steps[] = {
        {"serial mask", [&] { return SetSerialEventMask(*port, 1); }},
        {"serial queues", [&] { return SetSerialQueues(*port, 1028, 1028); }},
        {"serial timeouts", [&] { return SetSerialTimeouts(*port, kReadsAtOnce); }},
        {"serial state", [&] { return SetSerialLineState(*port, kHeadLine); }},
        {"serial write", [&] { return WriteSerialPort(*port, Bytes{1}) == 1; }},
    };
    for (const auto& [fault, unused] : steps) {
        SetFault(fault, true);
        for (const auto& [name, step] : steps) EXPECT_EQ(step(), std::string(name) != fault) << name << ", " << fault;
        EXPECT_EQ(LastSerialError(), EIO);
        SetFault(fault, false);
    }
    SetFault("serial open", true);
    EXPECT_EQ(OpenSerialPort("COM2"), nullptr);
    EXPECT_EQ(LastSerialError(), EIO);
}

TEST_F(Serial, ASimulatedLineTakesAndGivesBytes)
{
    Wire("sim:head.cnf");
    Bytes toHead;
    Bytes toHost = {5, 6, 7};
    std::string openedFile;
    SetHeadLines("sim", [&](const std::string& file, std::string&) {
        openedFile = file;
        return HeadLine{.write = [&](auto bytes) { toHead.assign(bytes.begin(), bytes.end()); },
                        .read =
                            [&](auto bytes) {
                                const std::size_t count = std::min(bytes.size(), toHost.size());
                                std::copy_n(toHost.begin(), count, bytes.begin());
                                toHost.erase(toHost.begin(), toHost.begin() + static_cast<std::ptrdiff_t>(count));
                                return count;
                            },
                        .purge = [&] { toHost.clear(); }};
    });
    const SerialHandle port = OpenReady();
    EXPECT_EQ(openedFile, "head.cnf");
    EXPECT_EQ(WriteSerialPort(*port, Bytes{1, 2, 3, 4}), 4);
    EXPECT_THAT(toHead, ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(ReadFor(*port, 2), ElementsAre(5, 6));
    PurgeSerialPort(*port, kPurgeTxClear);
    EXPECT_THAT(toHost, ElementsAre(7));
    PurgeSerialPort(*port, kPurgeRxClear);
    EXPECT_THAT(toHost, IsEmpty());
}

TEST_F(Serial, ASimulatedHeadThatCannotBeMadeSaysWhy)
{
    Wire("sim:head.cnf");
    EXPECT_EQ(OpenSerialPort("COM2"), nullptr);
    EXPECT_EQ(LastSerialError(), ENODEV);
    SetHeadLines("sim", [](const std::string& file, std::string& error) {
        error = file + ": no detector";
        return HeadLine{};
    });
    EXPECT_EQ(OpenSerialPort("COM2"), nullptr);
    EXPECT_EQ(LastSerialErrorText(), "head.cnf: no detector");
}

}  // namespace
}  // namespace kelvo
