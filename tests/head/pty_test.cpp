// The link over a true terminal device, with a simulated head behind it in a process of its own. Everything here runs
// in the machine's own time.
#include "head/comm_link_write.h"
#include "platform/clock.h"
#include "platform/serial.h"
#include "platform/text.h"
#include "simcam/head_socket.h"
#include "state/camera_config_write.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/pseudo_terminal.h"
#include "support/state_value.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

namespace kelvo {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

CommandLine OffscreenInTrueTime()
{
    CommandLine commandLine;
    commandLine.offscreen = true;
    return commandLine;
}

// A running kelvo-head, ended with its owner.
class HeadProgram {
  public:
    explicit HeadProgram(std::vector<std::string> arguments)
    {
        std::array<int, 2> pipeEnds{};
        if (pipe2(pipeEnds.data(), O_CLOEXEC) != 0) return;
        output_ = pipeEnds[0];
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDERR_FILENO);
        arguments.insert(arguments.begin(), KELVO_HEAD_PROGRAM);
        std::vector<char*> argv;
        argv.reserve(arguments.size() + 1);
        for (std::string& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        if (posix_spawn(&id_, KELVO_HEAD_PROGRAM, &actions, nullptr, argv.data(), environ) != 0) id_ = -1;
        posix_spawn_file_actions_destroy(&actions);
        close(pipeEnds[1]);
    }
    HeadProgram(const HeadProgram&) = delete;
    HeadProgram& operator=(const HeadProgram&) = delete;
    ~HeadProgram()
    {
        if (id_ >= 0) End();
        close(output_);
    }

    void Kill()
    {
        if (id_ < 0) return;
        kill(id_, SIGKILL);
        waitpid(id_, nullptr, 0);
        id_ = -1;
    }

    // The next line of its output; empty if none comes within five seconds.
    std::string Line() const
    {
        std::string line;
        for (;;) {
            pollfd arrival{.fd = output_, .events = POLLIN, .revents = 0};
            char c = 0;
            if (poll(&arrival, 1, 5000) <= 0 || read(output_, &c, 1) != 1 || c == '\n') return line;
            line += c;
        }
    }

    // Asks it to end, and gives its exit code.
    int End()
    {
        kill(id_, SIGTERM);
        return ExitCode();
    }

    // Waits for its end and gives its exit code.
    int ExitCode()
    {
        int status = -1;
        waitpid(id_, &status, 0);
        id_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    pid_t id_ = -1;
    int output_ = -1;
};

class LinkOverTerminal : public testing::Test {
  protected:
    LinkOverTerminal() : op(OffscreenInTrueTime())
    {
        SetDefaultDir(directory.Path());
        write::camera.nCommPort = 2;
        PutFile(directory / "camera.cnf", "[Head]\nModel=InSb\n");
        PutFile(directory / "kelvo.ini", "[Setup]\nCommLog=1\n");
    }
    ~LinkOverTerminal() override { CloseCommLink(); }

    void Wire(const std::string& device) const
    {
        PutFile(directory / "platform.ini", "[Ports]\nCOM2=" + device + "\n");
    }

    // A head with a fault (empty: none), wired to port 2, and the link open.
    std::unique_ptr<HeadProgram> OpenTo(const std::string& fault)
    {
        std::vector<std::string> arguments = {directory / "camera.cnf"};
        if (!fault.empty()) arguments.insert(arguments.begin(), {"--fault", fault});
        auto program = std::make_unique<HeadProgram>(arguments);
        slave = program->Line();
        EXPECT_EQ(program->Line(), HeadSocketPath(slave));
        Wire(slave);
        EXPECT_EQ(OpenCommLink(), 1) << LastSerialErrorText();
        return program;
    }

    static std::int64_t TimeOf(const std::function<void()>& work)
    {
        const std::int64_t start = TickMs();
        work();
        return TickMs() - start;
    }

    std::string Log() const { return FileContents(directory / "CommLog.txt"); }

    TestOperator op;
    TempDirectory directory;
    std::string slave;
};

TEST_F(LinkOverTerminal, AWholeTransactionGoesThrough)
{
    const auto program = OpenTo("");
    EXPECT_THAT(slave, StartsWith("/dev/"));
    write::link.CommEchoMode = 1;
    CommFrame frame = {0x20, 0, 0, 0};
    ASSERT_EQ(WriteCommFrame(frame, 4), 1);
    EXPECT_EQ(frame[0], 0x10);
    EXPECT_EQ(frame[1], 0x66);
    frame = {0x50, 0, 0, 7};
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    EXPECT_EQ(frame[0], 0x50);
    EXPECT_THAT(Log(), HasSubstr("WriteRead001=50 00 00 07 OK  50 "));
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

// The board asks for the device of the port that was opened last, whether or not it is open now.
TEST_F(LinkOverTerminal, ABoardHearsTheRegistersBeforeTheAnswerIsThere)
{
    EXPECT_EQ(LastSerialDevice(), "");
    const auto program = OpenTo("");
    EXPECT_EQ(LastSerialDevice(), slave);
    HeadFollower follower;
    EXPECT_THAT(follower.Hear(LastSerialDevice()).registers, HasSubstr("\nclocks_on 0\n"));
    write::link.CommEchoMode = 1;
    CommFrame frame = {0x90, 0x30, 0, 0};
    ASSERT_EQ(WriteCommFrame(frame, 4), 1);
    EXPECT_THAT(follower.Hear(LastSerialDevice()).registers, HasSubstr("\nclocks_on 1\n"));
    CloseCommLink();
    EXPECT_EQ(LastSerialDevice(), slave);
}

TEST_F(LinkOverTerminal, WithoutEchoTheCallerReadsTheReplyItself)
{
    const auto program = OpenTo("");
    CommFrame frame = {0x90, 0x10, 0, 0};
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    CommFrame reply{};
    EXPECT_EQ(ReadCommFrame(reply), 4U);
    EXPECT_EQ(reply[0], 0x90);
    EXPECT_THAT(Log(), EndsWith("Write000=90 10 00 00 OK\n"));
}

TEST_F(LinkOverTerminal, BytesThatATerminalWouldTakeForKeysReachTheHead)
{
    const auto program = OpenTo("");
    write::link.CommEchoMode = 1;
    constexpr std::uint8_t kKeys[] = {0x03, 0x04, 0x0A, 0x0D, 0x11, 0x13, 0x1A, 0x7F};
    for (const std::uint8_t key : kKeys) {
        CommFrame frame = {0x70, 1, key, 0};
        EXPECT_EQ(WriteCommFrame(frame, 4), 1) << int{key};
        EXPECT_THAT(frame, ElementsAre(0x70, 1, key, 0));
    }
}

TEST_F(LinkOverTerminal, ASilentHeadCostsASecond)
{
    const auto program = OpenTo("silent");
    write::link.CommEchoMode = 1;
    CommFrame frame = {0x20, 0, 0, 0};
    const std::int64_t time = TimeOf([&] { EXPECT_EQ(WriteCommFrame(frame, 4), 0); });
    EXPECT_GT(time, 1000);
    EXPECT_THAT(frame, ElementsAre(0x20, 0, 0, 0));
    EXPECT_THAT(Log(), EndsWith("WriteRead000=20 00 00 00 OK  00 00 00 00 BAD\n"));
}

TEST_F(LinkOverTerminal, ARefusingHeadLeavesTheFrame)
{
    const auto program = OpenTo("refusing");
    write::link.CommEchoMode = 1;
    CommFrame frame = {0x50, 0, 0, 7};
    EXPECT_EQ(WriteCommFrame(frame, 4), 0);
    EXPECT_THAT(frame, ElementsAre(0x50, 0, 0, 7));
    EXPECT_THAT(Log(), HasSubstr("WriteRead000=50 00 00 07 OK  69 "));
    EXPECT_THAT(Log(), EndsWith(" BAD\n"));
}

TEST_F(LinkOverTerminal, AShortAnswerCountsAsNone)
{
    const auto program = OpenTo("short");
    write::link.CommEchoMode = 1;
    CommFrame frame = {0x50, 0, 0, 7};
    const std::int64_t time = TimeOf([&] { EXPECT_EQ(WriteCommFrame(frame, 4), 0); });
    EXPECT_GT(time, 1000);
    EXPECT_THAT(frame, ElementsAre(0x50, 0, 0, 7));
    EXPECT_THAT(Log(), EndsWith(" BAD\n"));
}

// The link judges the refusal alone: what else comes is the caller's to compare.
TEST_F(LinkOverTerminal, NoiseReplacesTheFrameAndIsLoggedAsItCame)
{
    const auto program = OpenTo("noise");
    write::link.CommEchoMode = 1;
    CommFrame frame = {0x50, 0, 0, 7};
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    EXPECT_NE(frame[0], 0x50);
    EXPECT_THAT(Log(), EndsWith(Format("WriteRead000=50 00 00 07 OK  %02x %02x %02x %02x OK\n", frame[0], frame[1],
                                       frame[2], frame[3])));
}

TEST_F(LinkOverTerminal, TheHeadSurvivesClosingAndAnswersAfterReopening)
{
    const auto program = OpenTo("");
    write::link.CommEchoMode = 1;
    for (int round = 0; round < 3; ++round) {
        CommFrame frame = {0x50, 0, 0, 7};
        EXPECT_EQ(WriteCommFrame(frame, 4), 1);
        EXPECT_EQ(CloseCommLink(), 1);
        EXPECT_EQ(OpenCommLink(), 1);
    }
}

TEST_F(LinkOverTerminal, ASecondLinkIsToldThatThePortIsBusy)
{
    const auto program = OpenTo("");
    EXPECT_EQ(OpenSerialPort("COM2"), nullptr);
    EXPECT_EQ(LastSerialError(), EBUSY);
}

TEST_F(LinkOverTerminal, AHeadUnpluggedDuringATransactionIsAShortReply)
{
    const auto program = OpenTo("silent");
    write::link.CommEchoMode = 1;
    std::thread hand([&] {
        usleep(200000);
        program->Kill();
    });
    CommFrame frame = {0x50, 0, 0, 7};
    const std::int64_t time = TimeOf([&] { EXPECT_EQ(WriteCommFrame(frame, 4), 0); });
    hand.join();
    EXPECT_GT(time, 1000);
    EXPECT_THAT(frame, ElementsAre(0x50, 0, 0, 7));
    EXPECT_THAT(Log(), EndsWith("WriteRead000=50 00 00 07 OK  00 00 00 00 BAD\n"));
}

TEST_F(LinkOverTerminal, AfterUnpluggingWritesAreLoggedBadAndTheLinkCloses)
{
    const auto program = OpenTo("");
    program->Kill();
    CommFrame frame = {0x90, 0x10, 0, 0};
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    EXPECT_THAT(Log(), EndsWith("Write000=90 10 00 00 BAD\n"));
    EXPECT_EQ(CloseCommLink(), 1);
    EXPECT_EQ(StateNumber("CommState"), -1);
    EXPECT_EQ(OpenCommLink(), 0);
    EXPECT_THAT(op.Boxes(), SizeIs(2));
}

// Each client opens the link if it isn't open: one that stayed open to a device that has gone would never be opened
// again.
TEST_F(LinkOverTerminal, AHeadThatIsPluggedInAgainIsReached)
{
    auto program = OpenTo("");
    write::link.CommPortOpen = 1;
    write::link.CommEchoMode = 1;
    program->Kill();
    CommFrame frame = {0x80, 3, 0, 0};
    EXPECT_EQ(WriteCommFrame(frame, 4), 0);
    EXPECT_EQ(StateNumber("CommState"), -1);
    EXPECT_EQ(CommPortOpen, 0);
    program = OpenTo("");
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

// --- A terminal whose far end is the test ---------------------------------------------------------------------------

TEST_F(LinkOverTerminal, AReplyThatDribblesInIsPutTogether)
{
    const PseudoTerminal terminal;
    Wire(terminal.Slave());
    ASSERT_EQ(OpenCommLink(), 1);
    write::link.CommEchoMode = 1;
    std::thread far([&] {
        const auto frame = terminal.Receive(4);
        for (const std::uint8_t byte : frame) {
            usleep(20000);
            terminal.Send({byte});
        }
    });
    CommFrame frame = {0x80, 3, 0, 0};
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    far.join();
    EXPECT_THAT(frame, ElementsAre(0x80, 3, 0, 0));
}

TEST_F(LinkOverTerminal, ALateReplyIsGoneBeforeTheNextFrame)
{
    const PseudoTerminal terminal;
    Wire(terminal.Slave());
    ASSERT_EQ(OpenCommLink(), 1);
    terminal.Send({1, 2, 3, 4});
    std::array<std::uint8_t, 1> first{};
    ASSERT_EQ(ReadCommFrame(first), 1U);  // so the others have come too
    CommFrame frame = {0x20, 0, 0, 0};
    EXPECT_EQ(WriteCommFrame(frame, 4), 1);
    EXPECT_THAT(terminal.Receive(4), ElementsAre(0x20, 0, 0, 0));
    CommFrame late{};
    EXPECT_EQ(ReadCommBytes(0, late), 0U);
}

TEST_F(LinkOverTerminal, AFloodEndsWithTheFourBytesAskedFor)
{
    const PseudoTerminal terminal;
    Wire(terminal.Slave());
    ASSERT_EQ(OpenCommLink(), 1);
    terminal.Send(std::vector<std::uint8_t>(1000, 0x55));
    CommFrame reply{};
    EXPECT_EQ(ReadCommFrame(reply), 4U);
    EXPECT_THAT(reply, ElementsAre(0x55, 0x55, 0x55, 0x55));
}

// --- The program ----------------------------------------------------------------------------------------------------

// Opens the terminal of a head as a host without the link would.
class HeadAlone : public testing::Test {
  protected:
    HeadAlone() { PutFile(directory / "camera.cnf", "[Head]\nModel=InSb\n"); }
    ~HeadAlone() override
    {
        if (line >= 0) close(line);
    }

    void Start(std::vector<std::string> options = {})
    {
        options.push_back(directory / "camera.cnf");
        program = std::make_unique<HeadProgram>(options);
        line = open(program->Line().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        socket = program->Line();
        ASSERT_GE(line, 0);
    }

    void Put(const std::vector<std::uint8_t>& bytes) const
    {
        ASSERT_EQ(::write(line, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    // The first bytes of that many answers of four, and of any that come in the tenth of a second after them.
    std::vector<std::uint8_t> Answers(std::size_t wanted) const
    {
        std::vector<std::uint8_t> all;
        pollfd arrival{.fd = line, .events = POLLIN, .revents = 0};
        while (poll(&arrival, 1, all.size() < 4 * wanted ? 5000 : 100) > 0) {
            std::array<std::uint8_t, 64> chunk{};
            const ssize_t count = read(line, chunk.data(), chunk.size());
            if (count <= 0) break;
            all.insert(all.end(), chunk.begin(), chunk.begin() + count);
        }
        EXPECT_EQ(all.size() % 4, 0U);
        std::vector<std::uint8_t> firsts;
        for (std::size_t i = 0; i < all.size(); i += 4) firsts.push_back(all[i]);
        return firsts;
    }

    TempDirectory directory;
    std::unique_ptr<HeadProgram> program;
    std::string socket;
    int line = -1;
};

TEST_F(HeadAlone, AHalfFrameWaitsForItsOtherBytes)
{
    Start();
    Put({0x50, 0});
    usleep(2000);
    Put({0, 7, 0x70, 0, 0});
    usleep(2000);
    Put({0});
    EXPECT_THAT(Answers(2), ElementsAre(0x50, 0x70));
}

TEST_F(HeadAlone, AfterAPauseAHalfFrameIsDropped)
{
    Start();
    Put({0x50, 0, 0});
    usleep(1500000);
    Put({0x70, 0, 0, 0});
    EXPECT_THAT(Answers(1), ElementsAre(0x70));
}

TEST_F(HeadAlone, TheLogNamesFrameAndAnswer)
{
    Start({"--log"});
    Put({0x50, 0, 0, 7});
    EXPECT_THAT(program->Line(), StartsWith("50 00 00 07 -> 50 "));
}

TEST_F(HeadAlone, AHostThatNeverReadsDoesNotStopIt)
{
    Start({"--log"});
    for (int i = 0; i < 3000; ++i) {
        Put({0x50, 0, 0, 7});
        ASSERT_THAT(program->Line(), StartsWith("50 00 00 07")) << i;
    }
}

TEST_F(HeadAlone, OffersItsRegistersUntilItEnds)
{
    Start();
    struct stat status {};
    ASSERT_EQ(stat(socket.c_str(), &status), 0);
    EXPECT_TRUE(S_ISSOCK(status.st_mode));
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    EXPECT_EQ(program->End(), 0);
    EXPECT_NE(stat(socket.c_str(), &status), 0);
}

TEST_F(HeadAlone, WrongUseIsTold)
{
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                      {"--fault"},
                                                      {"--fault", "loud", "a.cnf"},
                                                      {"a.cnf", "b.cnf"},
                                                      {"--what", "a.cnf"}}) {
        HeadProgram wrong(arguments);
        EXPECT_THAT(wrong.Line(), StartsWith("usage: kelvo-head"));
        EXPECT_EQ(wrong.ExitCode(), 2);
    }
}

TEST_F(HeadAlone, ACameraFileThatIsMissingIsNamed)
{
    HeadProgram wrong(std::vector<std::string>{directory / "missing.cnf"});
    EXPECT_THAT(wrong.Line(), AllOf(StartsWith("kelvo-head: "), HasSubstr("missing.cnf")));
    EXPECT_EQ(wrong.ExitCode(), 1);
}

}  // namespace
}  // namespace kelvo
