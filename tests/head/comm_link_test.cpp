// The link to the camera head, over a line whose far end is the test itself.
#include "head/comm_link_write.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/pointer.h"
#include "platform/serial.h"
#include "state/camera_config_write.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/pseudo_terminal.h"
#include "support/state_value.h"
#include "support/temp_directory.h"
#include "ui/status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <thread>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Bytes = std::vector<std::uint8_t>;

constexpr const char* kLinkText = "Error opening rs232 communications!  Check port, baud rate, etc.";

// A head that answers each frame as the test says, and what happened on its line, in order.
struct FarEnd {
    std::function<Bytes(const Bytes& frame)> answer = [](const Bytes& frame) { return frame; };
    Bytes queued;
    std::vector<std::string> events;
};

class CommLink : public testing::Test {
  protected:
    CommLink()
    {
        SetDefaultDir(directory.Path());
        PutFile(directory / "platform.ini", "[Ports]\nCOM1=sim:one.cnf\nCOM2=sim:two.cnf\n");
        write::camera.nCommPort = 2;
        SetHeadLines("sim", [this](const std::string& file, std::string&) {
            head.events.push_back("open " + file);
            return HeadLine{.write =
                                [this](auto bytes) {
                                    Take({bytes.begin(), bytes.end()});
                                },
                            .read = [this](auto bytes) { return Give(bytes); },
                            .purge =
                                [this] {
                                    head.events.emplace_back("purge");
                                    head.queued.clear();
                                }};
        });
    }
    ~CommLink() override
    {
        CloseCommLink();
        SetHeadLines("sim", {});
    }

    void Take(const Bytes& frame)
    {
        head.events.push_back("frame of " + std::to_string(frame.size()));
        const Bytes reply = head.answer(frame);
        head.queued.insert(head.queued.end(), reply.begin(), reply.end());
    }

    std::size_t Give(std::span<std::uint8_t> bytes)
    {
        const std::size_t count = std::min(bytes.size(), head.queued.size());
        std::copy_n(head.queued.begin(), count, bytes.begin());
        head.queued.erase(head.queued.begin(), head.queued.begin() + static_cast<std::ptrdiff_t>(count));
        return count;
    }

    void Open()
    {
        write::link.CommPortOpen = OpenCommLink();
        ASSERT_EQ(CommPortOpen, 1);
        head.events.clear();
    }

    void EnableLog() const { PutFile(directory / "kelvo.ini", "[Setup]\nCommLog=1\n"); }
    std::string Log() const { return FileContents(directory / "CommLog.txt"); }
    std::string PreviousLog() const { return FileContents(directory / "PreviousCommLog.txt"); }

    // The failure of one step of opening: what the operator sees and hears.
    void ExpectOpeningFails(const char* fault, const std::string& firstText, std::size_t beeps)
    {
        SetFault(fault, true);
        SetPointer(Pointer::kCross);
        EXPECT_EQ(OpenCommLink(), 0);
        SetFault(fault, false);
        EXPECT_EQ(StateNumber("CommState"), -1);
        EXPECT_EQ(CurrentPointer(), Pointer::kCross);
        EXPECT_THAT(op.Texts("beep", "sound"), SizeIs(beeps));
        const auto boxes = op.Boxes();
        ASSERT_THAT(boxes, SizeIs(2));
        EXPECT_EQ(boxes[0].text, firstText);
        EXPECT_EQ(boxes[0].caption, "Comm Error");
        EXPECT_THAT(boxes[0].buttons, ElementsAre("ok"));
        EXPECT_EQ(boxes[1].text, kLinkText);
        EXPECT_EQ(boxes[1].caption, "Comm Error");
    }

    bool PortIsFree() { return OpenSerialPort("COM2") != nullptr; }

    TestOperator op;
    TempDirectory directory;
    FarEnd head;
};

// --- Opening and closing --------------------------------------------------------------------------------------------

TEST_F(CommLink, OpeningPurgesThePortAndWaitsATenthOfASecond)
{
    const std::int64_t before = TickMs();
    SetPointer(Pointer::kCross);
    EXPECT_EQ(OpenXComm(), 1);
    EXPECT_EQ(StateNumber("CommState"), 1);
    EXPECT_EQ(TickMs() - before, 100);
    EXPECT_EQ(CurrentPointer(), Pointer::kCross);
    EXPECT_THAT(head.events, ElementsAre("open two.cnf", "purge"));
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(CommLink, OpeningAnOpenPortDoesNothing)
{
    Open();
    const std::int64_t before = TickMs();
    EXPECT_EQ(OpenXComm(), 1);
    EXPECT_EQ(OpenCommLink(), 1);
    EXPECT_EQ(TickMs(), before);
    EXPECT_THAT(head.events, IsEmpty());
}

TEST_F(CommLink, ClosingAClosedPortDoesNothing)
{
    EXPECT_EQ(StateNumber("CommState"), -1);
    write::link.CommPortOpen = 1;
    EXPECT_EQ(CloseCommLink(), 1);
    EXPECT_EQ(CommPortOpen, 1);
    EXPECT_THAT(head.events, IsEmpty());
}

TEST_F(CommLink, ClosingPurgesAndKeepsTheEchoMode)
{
    Open();
    write::link.CommEchoMode = 1;
    EXPECT_EQ(CloseCommLink(), 1);
    EXPECT_EQ(StateNumber("CommState"), -1);
    EXPECT_EQ(CommPortOpen, 0);
    EXPECT_EQ(CommEchoMode, 1);
    EXPECT_THAT(head.events, ElementsAre("purge"));
    EXPECT_EQ(OpenCommLink(), 1);
}

TEST_F(CommLink, APortNumberBelowOneOpensPortTwoAndStoresIt)
{
    for (const std::int32_t number : {0, -5}) {
        write::camera.nCommPort = number;
        head.events.clear();
        EXPECT_EQ(OpenXComm(), 1);
        EXPECT_EQ(nCommPort, 2);
        EXPECT_EQ(head.events.at(0), "open two.cnf");
        CloseCommLink();
    }
    write::camera.nCommPort = 1;
    EXPECT_EQ(OpenXComm(), 1);
    EXPECT_EQ(head.events.back(), "purge");
    EXPECT_EQ(head.events.at(head.events.size() - 2), "open one.cnf");
}

TEST_F(CommLink, APortThatDoesNotOpenGivesTwoBoxesAndABeep)
{
    ExpectOpeningFails("serial open", "OpenXComm, Error number 5", 1);
}

TEST_F(CommLink, AnEventMaskThatFailsIsNamed)
{
    ExpectOpeningFails("serial mask", "SetCommMask, Error number 5", 1);
}

TEST_F(CommLink, QueuesThatFailBearTheOpeningsNameWithoutABeep)
{
    ExpectOpeningFails("serial queues", "OpenXComm, Error number 5", 0);
}

TEST_F(CommLink, TimeOutsThatFailAreNamed)
{
    ExpectOpeningFails("serial timeouts", "SetCommTimeouts, Error number 5", 1);
}

TEST_F(CommLink, LineSettingsThatFailAreNamed)
{
    ExpectOpeningFails("serial state", "SetCommState, Error number 5", 1);
}

TEST_F(CommLink, TheStepsOfOpeningFollowEachOther)
{
    const char* const faults[] = {"serial mask", "serial queues", "serial timeouts", "serial state"};
    for (const char* fault : faults) SetFault(fault, true);
    for (const char* fault : faults) {
        EXPECT_EQ(OpenCommLink(), 0);
        SetFault(fault, false);
    }
    const auto boxes = op.Boxes();
    ASSERT_THAT(boxes, SizeIs(8));
    EXPECT_EQ(boxes[0].text, "SetCommMask, Error number 5");
    EXPECT_EQ(boxes[2].text, "OpenXComm, Error number 5");
    EXPECT_EQ(boxes[4].text, "SetCommTimeouts, Error number 5");
    EXPECT_EQ(boxes[6].text, "SetCommState, Error number 5");
    EXPECT_EQ(OpenCommLink(), 1);
}

TEST_F(CommLink, AFailedStepLetsThePortGoExceptAtTheQueues)
{
    const PseudoTerminal terminal;
    PutFile(directory / "platform.ini", "[Ports]\nCOM2=" + terminal.Slave() + "\n");
    for (const char* fault : {"serial mask", "serial timeouts", "serial state"}) {
        SetFault(fault, true);
        EXPECT_EQ(OpenCommLink(), 0);
        SetFault(fault, false);
        EXPECT_TRUE(PortIsFree()) << fault;
    }
    SetFault("serial queues", true);
    EXPECT_EQ(OpenCommLink(), 0);
    SetFault("serial queues", false);
    EXPECT_FALSE(PortIsFree());
    EXPECT_EQ(OpenCommLink(), 1) << "the operator can try again";
}

TEST_F(CommLink, AMissingPortIsToldWithTheSystemsNumber)
{
    PutFile(directory / "platform.ini", "[Ports]\nCOM2=" + (directory / "gone") + "\n");
    EXPECT_EQ(OpenCommLink(), 0);
    EXPECT_EQ(op.Boxes().at(0).text, "OpenXComm, Error number 2");
}

TEST_F(CommLink, WhyAPortDoesNotOpenStandsInTheStatusLine)
{
    PutFile(directory / "file", "");
    PutFile(directory / "platform.ini", "[Ports]\nCOM2=" + (directory / "file") + "\n");
    EXPECT_EQ(OpenCommLink(), 0);
    EXPECT_EQ(op.Boxes().at(0).text, "OpenXComm, Error number 25");
    EXPECT_EQ(StatusText, "COM2: The device is no serial port");
    EXPECT_EQ(StatusAlign, 0);
}

TEST_F(CommLink, ABusyPortIsToldWithTheSystemsNumber)
{
    const PseudoTerminal terminal;
    PutFile(directory / "platform.ini", "[Ports]\nCOM2=" + terminal.Slave() + "\n");
    const SerialHandle other = OpenSerialPort("COM2");
    EXPECT_EQ(OpenCommLink(), 0);
    EXPECT_EQ(op.Boxes().at(0).text, "OpenXComm, Error number 16");
}

// --- Frames ---------------------------------------------------------------------------------------------------------

TEST_F(CommLink, AFrameGoesOutAfterAWholePurge)
{
    Open();
    head.queued = {1, 2, 3, 4};
    CommFrame frame = {0x20, 0, 0, 0};
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    EXPECT_THAT(head.events, ElementsAre("purge", "frame of 4"));
    EXPECT_THAT(head.queued, ElementsAre(0x20, 0, 0, 0)) << "the stale reply is gone, the new one waits";
}

TEST_F(CommLink, AnyReplyButARefusalReplacesTheFrame)
{
    Open();
    write::link.CommEchoMode = 1;
    head.answer = [](const Bytes&) { return Bytes{0x00, 0x69, 0xFF, 0x42}; };
    CommFrame frame = {0x50, 1, 2, 3};
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    EXPECT_THAT(frame, ElementsAre(0x00, 0x69, 0xFF, 0x42));
}

TEST_F(CommLink, ARefusalReturnsZeroAndLeavesTheFrame)
{
    Open();
    write::link.CommEchoMode = 1;
    head.answer = [](const Bytes&) { return Bytes{0x69, 1, 2, 3}; };
    CommFrame frame = {0x50, 0, 0, 7};
    EXPECT_EQ(WriteCommFrame(frame, 4), 0);
    EXPECT_THAT(frame, ElementsAre(0x50, 0, 0, 7));
}

TEST_F(CommLink, AHeadThatIsOffReturnsZeroAfterASecondAndIsLogged)
{
    EnableLog();
    Open();
    write::link.CommEchoMode = 1;
    head.answer = [](const Bytes&) { return Bytes(); };
    CommFrame frame = {0x80, 3, 0, 0};
    const std::int64_t before = TickMs();
    EXPECT_EQ(WriteCommFrame(frame, 4), 0);
    EXPECT_EQ(TickMs() - before, 1001) << "the first pass after more than 1000 ms ends it";
    EXPECT_THAT(frame, ElementsAre(0x80, 3, 0, 0));
    EXPECT_EQ(Log(), "[CommLog]\nWriteRead000=80 03 00 00 OK  00 00 00 00 BAD\n");
}

TEST_F(CommLink, AShortReplyCountsAsNoneAndItsBytesAreLogged)
{
    EnableLog();
    Open();
    write::link.CommEchoMode = 1;
    head.answer = [](const Bytes&) { return Bytes{0xAB, 0xCD}; };
    CommFrame frame = {0x50, 0, 0, 9};
    EXPECT_EQ(WriteCommFrame(frame, 4), 0);
    EXPECT_THAT(frame, ElementsAre(0x50, 0, 0, 9));
    EXPECT_EQ(Log(), "[CommLog]\nWriteRead000=50 00 00 09 OK  ab cd 00 00 BAD\n");
}

TEST_F(CommLink, AReplyInPiecesIsPutTogether)
{
    Open();
    write::link.CommEchoMode = 1;
    const std::int64_t start = TickMs();
    const Bytes reply = {1, 2, 3, 4};
    std::size_t given = 0;
    SetHeadLines("sim", [&](const std::string&, std::string&) {
        return HeadLine{.write = [](auto) {},
                        .read = [&](std::span<std::uint8_t> bytes) -> std::size_t {
                            if (given == reply.size() || TickMs() < start + 200 * std::ssize(reply)) return 0;
                            bytes[0] = reply[given++];
                            return 1;
                        },
                        .purge = nullptr};
    });
    CloseCommLink();
    ASSERT_EQ(OpenCommLink(), 1);
    CommFrame frame{};
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    EXPECT_THAT(frame, ElementsAre(1, 2, 3, 4));
}

TEST_F(CommLink, AWriteWithoutEchoReturnsOneEvenIfThePortRefusedIt)
{
    EnableLog();
    Open();
    SetFault("serial write", true);
    CommFrame frame = {0x90, 0x10, 0, 0};
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    SetFault("serial write", false);
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    EXPECT_EQ(Log(), "[CommLog]\nWrite000=90 10 00 00 BAD\nWrite001=90 10 00 00 OK\n");
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(CommLink, AFailedWriteInEchoModeIsLoggedAsSent)
{
    EnableLog();
    Open();
    write::link.CommEchoMode = 1;
    SetFault("serial write", true);
    CommFrame frame = {0x60, 4, 5, 6};
    EXPECT_EQ(WriteCommFrame(frame, 4), 0);
    SetFault("serial write", false);
    EXPECT_EQ(Log(), "[CommLog]\nWriteRead000=60 04 05 06 OK  00 00 00 00 BAD\n");
}

TEST_F(CommLink, AFrameIsWrittenOnceWhateverTheAnswer)
{
    Open();
    write::link.CommEchoMode = 1;
    head.answer = [](const Bytes&) { return Bytes{0x69, 0, 0, 0}; };
    CommFrame frame = {0x50, 0, 0, 7};
    WriteCommFrame(frame, 4);
    EXPECT_THAT(head.events, ElementsAre("purge", "frame of 4"));
}

TEST_F(CommLink, ReadsOfAClosedPortEndWithNothing)
{
    Bytes room(4);
    EXPECT_EQ(ReadCommBytes(0, room), 0U);
    EXPECT_EQ(ReadCommFrame(room), 0U);
    CommFrame frame = {1, 2, 3, 4};
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    write::link.CommEchoMode = 1;
    EXPECT_EQ(WriteCommFrame(frame, 4), 0);
}

TEST_F(CommLink, ASingleReadGivesWhatIsThereAndNoMoreThanAsked)
{
    Open();
    head.queued = {1, 2, 3};
    Bytes room(2);
    EXPECT_EQ(ReadCommBytes(0, room), 2U);
    EXPECT_THAT(room, ElementsAre(1, 2));
    EXPECT_EQ(ReadCommBytes(0, room), 1U);
    EXPECT_EQ(ReadCommBytes(0, room), 0U);
    EXPECT_EQ(ReadCommBytes(0, {}), 0U);
}

TEST_F(CommLink, ReadingNothingTakesNoTime)
{
    Open();
    const std::int64_t before = TickMs();
    EXPECT_EQ(ReadCommFrame({}), 0U);
    EXPECT_EQ(TickMs(), before);
}

// A script in virtual time may have a true device at the other end.
TEST_F(CommLink, ADeviceHasTimeToAnswerAlsoInVirtualTime)
{
    const PseudoTerminal terminal;
    PutFile(directory / "platform.ini", "[Ports]\nCOM2=" + terminal.Slave() + "\n");
    Open();
    write::link.CommEchoMode = 1;
    std::thread far([&] {
        const auto frame = terminal.Receive(4);
        usleep(50000);
        terminal.Send(frame);
    });
    CommFrame frame = {0x80, 3, 0, 0};
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    far.join();
}

// --- The log --------------------------------------------------------------------------------------------------------

TEST_F(CommLink, GoodTransactionsAndWritesAreCountedApart)
{
    EnableLog();
    Open();
    CommFrame frame = {0x20, 0, 0, 0};
    WriteCommFrame(frame, 4);
    write::link.CommEchoMode = 1;
    head.answer = [](const Bytes&) { return Bytes{0x10, 0x66, 0, 1}; };
    WriteCommFrame(frame, 4);
    write::link.CommEchoMode = 0;
    WriteCommFrame(frame, 4);
    EXPECT_EQ(Log(),
              "[CommLog]\n"
              "Write000=20 00 00 00 OK\n"
              "WriteRead000=20 00 00 00 OK  10 66 00 01 OK\n"
              "Write001=10 66 00 01 OK\n");
}

TEST_F(CommLink, ARefusalIsLoggedAsBad)
{
    EnableLog();
    Open();
    write::link.CommEchoMode = 1;
    head.answer = [](const Bytes&) { return Bytes{0x69, 0, 0, 2}; };
    CommFrame frame = {0x60, 0, 0, 0};
    WriteCommFrame(frame, 4);
    EXPECT_EQ(Log(), "[CommLog]\nWriteRead000=60 00 00 00 OK  69 00 00 02 BAD\n");
}

TEST_F(CommLink, CountersGoOnAfterReopening)
{
    EnableLog();
    Open();
    CommFrame frame = {0x20, 0, 0, 0};
    WriteCommFrame(frame, 4);
    CloseCommLink();
    Open();
    WriteCommFrame(frame, 4);
    EXPECT_EQ(Log(), "[CommLog]\nWrite000=20 00 00 00 OK\nWrite001=20 00 00 00 OK\n");
}

TEST_F(CommLink, TheLogOfTheRunBeforeMovesAsideAtTheFirstFrameEvenWithoutLogging)
{
    const std::string old = "[CommLog]\nWrite000=20 00 00 00 OK\n";
    PutFile(directory / "CommLog.txt", old);
    PutFile(directory / "PreviousCommLog.txt", "older");
    Open();
    EXPECT_EQ(Log(), old) << "nothing is moved before the first frame";
    CommFrame frame = {0x20, 0, 0, 0};
    WriteCommFrame(frame, 4);
    EXPECT_EQ(StateNumber("CommLogReady"), 1);
    EXPECT_EQ(StateNumber("CommLogEnabled"), 0);
    EXPECT_EQ(StateText("CommLogPath"), directory / "CommLog.txt");
    EXPECT_EQ(PreviousLog(), old);
    EXPECT_EQ(Log(), "");
}

TEST_F(CommLink, OtherSectionsOfTheLogFileStay)
{
    PutFile(directory / "CommLog.txt",
            "; mine\n[Notes]\na=1\n[commlog]\nWrite000=x\n; y\n[After]\nb=2\n[CommLog]\nc=3\n");
    Open();
    CommFrame frame = {0x20, 0, 0, 0};
    WriteCommFrame(frame, 4);
    EXPECT_EQ(Log(), "; mine\n[Notes]\na=1\n[After]\nb=2\n");
}

// A profile file has its limit; what lies beyond it moves aside whole, and the new log begins.
TEST_F(CommLink, ALogThatIsTooLongToReadMovesAsideToo)
{
    EnableLog();
    const std::string old = "[CommLog]\n" + std::string(std::size_t{17} << 20, ';');
    PutFile(directory / "CommLog.txt", old);
    Open();
    CommFrame frame = {0x20, 0, 0, 0};
    WriteCommFrame(frame, 4);
    EXPECT_TRUE(PreviousLog() == old);
    EXPECT_EQ(Log(), "[CommLog]\nWrite000=20 00 00 00 OK\n");
}

TEST_F(CommLink, WithoutAnEarlierLogNoneIsMadeUnlessAskedFor)
{
    Open();
    CommFrame frame = {0x20, 0, 0, 0};
    WriteCommFrame(frame, 4);
    EXPECT_FALSE(std::filesystem::exists(directory / "CommLog.txt"));
    EXPECT_FALSE(std::filesystem::exists(directory / "PreviousCommLog.txt"));
}

TEST_F(CommLink, TheSwitchIsReadOnceARun)
{
    Open();
    CommFrame frame = {0x20, 0, 0, 0};
    WriteCommFrame(frame, 4);
    EnableLog();
    WriteCommFrame(frame, 4);
    EXPECT_EQ(StateNumber("CommLogEnabled"), 0);
    EXPECT_FALSE(std::filesystem::exists(directory / "CommLog.txt"));
}

TEST_F(CommLink, TheRotatedLogDoesNotHoldTheFrameThatRotatedIt)
{
    EnableLog();
    PutFile(directory / "CommLog.txt", "[CommLog]\nWrite007=ff ff ff ff OK\n");
    Open();
    CommFrame frame = {0x20, 0, 0, 0};
    WriteCommFrame(frame, 4);
    EXPECT_EQ(PreviousLog(), "[CommLog]\nWrite007=ff ff ff ff OK\n");
    EXPECT_EQ(Log(), "[CommLog]\nWrite000=20 00 00 00 OK\n");
}

TEST_F(CommLink, MoreThan999FramesWidenTheNumber)
{
    EnableLog();
    Open();
    ResetCommLog(999);
    CommFrame frame = {0x20, 0, 0, 0};
    WriteCommFrame(frame, 4);
    WriteCommFrame(frame, 4);
    EXPECT_EQ(Log(), "[CommLog]\nWrite999=20 00 00 00 OK\nWrite1000=20 00 00 00 OK\n");
}

TEST_F(CommLink, ALogThatCannotBeWrittenStopsNothing)
{
    EnableLog();
    std::filesystem::create_directory(directory / "CommLog.txt");
    Open();
    write::link.CommEchoMode = 1;
    CommFrame frame = {0x20, 0, 0, 0};
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    EXPECT_THAT(op.Boxes(), IsEmpty());
    EXPECT_TRUE(std::filesystem::is_empty(directory / "CommLog.txt"));
}

}  // namespace
}  // namespace kelvo
