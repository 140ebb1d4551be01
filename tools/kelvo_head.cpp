// kelvo-head: a simulated camera head on a pseudo-terminal, for trying the serial link without a camera.
//
// kHelp tells how it is used. The registers that it offers on a socket let the simulated board of a Kelvo at this port
// show its video.
#include "platform/faults.h"
#include "simcam/head_socket.h"
#include "simcam/sim_camera.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

using kelvo::WireFrame;

constexpr const char* kUsage = "usage: kelvo-head [--fault silent|refusing|short|noise] [--log] FILE\n";
constexpr const char* kHelp =
    "\n"
    "FILE describes the camera, as a port wired to sim:FILE names it. The first line of\n"
    "output is the terminal's path: wire a port of platform.ini to it. The second is the\n"
    "path of a socket on which the head offers its registers to the simulated board.\n"
    "The head answers until it is ended.\n"
    "\n"
    "  --fault KIND      silent, refusing, short or noise: how it fails to answer\n"
    "  --log             each frame and its answer on the error output\n"
    "  --help            this text\n";
constexpr int kHalfFrameMs = 200;  // what is left of a frame after such a pause is no beginning of the next

struct FaultName {
    std::string_view option;
    std::string_view fault;
};
constexpr FaultName kFaults[] = {
    {"silent", "head silent"}, {"refusing", "head refuses"}, {"short", "head short"}, {"noise", "head noise"}};

struct Options {
    std::string_view fault;  // the model's name of it; empty: none
    bool log = false;
    std::string file;
};

std::optional<std::string_view> FaultOf(std::string_view option)
{
    const auto* const found = std::ranges::find(kFaults, option, &FaultName::option);
    if (found == std::end(kFaults)) return std::nullopt;
    return found->fault;
}

std::optional<Options> ParseArguments(std::span<char* const> arguments)
{
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (argument == "--log") {
            options.log = true;
        } else if (argument == "--fault") {
            const auto fault = i + 1 < arguments.size() ? FaultOf(arguments[++i]) : std::nullopt;
            if (!fault) return std::nullopt;
            options.fault = *fault;
        } else if (!argument.starts_with('-') && options.file.empty()) {
            options.file = argument;
        } else {
            return std::nullopt;
        }
    }
    if (options.file.empty()) return std::nullopt;
    return options;
}

// Both ends of the terminal. The far end is held open as well: without that the near end would be hung up each time the
// link is closed.
class Terminal {
  public:
    Terminal() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
        std::array<char, 64> name{};
        if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0) return;
        if (ptsname_r(master_, name.data(), name.size()) != 0) return;
        path_ = name.data();
        slave_ = open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        MakeRaw();
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal()
    {
        if (slave_ >= 0) close(slave_);
        if (master_ >= 0) close(master_);
    }

    bool Ready() const { return slave_ >= 0; }
    const std::string& Path() const { return path_; }
    int Descriptor() const { return master_; }

    // Bytes that have come, none if there are none; nullopt if the terminal is gone.
    std::optional<std::vector<std::uint8_t>> Receive() const
    {
        std::vector<std::uint8_t> bytes(64);
        const ssize_t count = read(master_, bytes.data(), bytes.size());
        if (count < 0 && errno != EAGAIN && errno != EINTR) return std::nullopt;
        bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        return bytes;
    }

    // What a host that never reads has no room for is lost, as on a wire.
    void Send(std::span<const std::uint8_t> bytes) const
    {
        while (!bytes.empty()) {
            const ssize_t count = ::write(master_, bytes.data(), bytes.size());
            if (count <= 0) return;
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        }
    }

  private:
    // An echo before the link sets its own line would come back as a frame.
    void MakeRaw() const
    {
        termios line{};
        if (slave_ < 0 || tcgetattr(slave_, &line) != 0) return;
        cfmakeraw(&line);
        tcsetattr(slave_, TCSANOW, &line);
    }

    int master_ = -1;
    int slave_ = -1;
    std::string path_;
};

void LogFrame(std::span<const std::uint8_t> frame, std::span<const std::uint8_t> answer)
{
    for (const std::uint8_t byte : frame) std::fprintf(stderr, "%02x ", byte);
    std::fprintf(stderr, "->");
    for (const std::uint8_t byte : answer) std::fprintf(stderr, " %02x", byte);
    std::fprintf(stderr, "\n");
}

// Answers the whole frames at the front of pending and leaves what is left of a frame. Who follows the registers is
// told before the answer goes out: a host that has it knows that its board has heard too.
void AnswerFrames(kelvo::SimCamera& camera, const Terminal& terminal, kelvo::HeadOffer& offer, bool log,
                  std::vector<std::uint8_t>& pending)
{
    WireFrame frame{};
    while (pending.size() >= frame.size()) {
        const auto end = pending.begin() + std::ssize(frame);
        std::copy(pending.begin(), end, frame.begin());
        pending.erase(pending.begin(), end);
        const std::vector<std::uint8_t> answer = AnswerSimFrame(camera, frame);
        offer.Tell(SimRegistersText(camera));
        if (log) LogFrame(frame, answer);
        terminal.Send(answer);
    }
}

// The signals that end the program, as a descriptor: what it made can then be taken away.
class EndSignals {
  public:
    EndSignals()
    {
        sigset_t ends{};
        sigemptyset(&ends);
        for (const int number : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&ends, number);
        sigprocmask(SIG_BLOCK, &ends, nullptr);
        descriptor_ = signalfd(-1, &ends, SFD_CLOEXEC);
    }
    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;
    ~EndSignals() { close(descriptor_); }
    int Descriptor() const { return descriptor_; }

  private:
    int descriptor_ = -1;
};

// Until a signal ends it or the terminal is gone.
void Serve(kelvo::SimCamera& camera, const Terminal& terminal, kelvo::HeadOffer& offer, const EndSignals& end, bool log)
{
    std::vector<std::uint8_t> pending;
    for (;;) {
        std::array<pollfd, 3> arrivals{{{.fd = terminal.Descriptor(), .events = POLLIN, .revents = 0},
                                        {.fd = offer.Descriptor(), .events = POLLIN, .revents = 0},
                                        {.fd = end.Descriptor(), .events = POLLIN, .revents = 0}}};
        const int count = poll(arrivals.data(), arrivals.size(), pending.empty() ? -1 : kHalfFrameMs);
        if (count < 0 && errno != EINTR) return;
        if (count <= 0) pending.clear();
        if (count <= 0) continue;
        if (arrivals[2].revents != 0) return;
        if (arrivals[1].revents != 0) offer.Accept(SimRegistersText(camera));
        if (arrivals[0].revents == 0) continue;
        const auto received = terminal.Receive();
        if (!received) return;
        pending.insert(pending.end(), received->begin(), received->end());
        AnswerFrames(camera, terminal, offer, log, pending);
    }
}

int Run(const Options& options)
{
    std::string error;
    const auto camera = kelvo::OpenSimCamera(std::filesystem::absolute(options.file).string(), error);
    if (!camera) {
        std::fprintf(stderr, "kelvo-head: %s\n", error.c_str());
        return 1;
    }
    const EndSignals end;
    const Terminal terminal;
    if (!terminal.Ready()) {
        std::fprintf(stderr, "kelvo-head: no pseudo-terminal: %s\n", std::strerror(errno));
        return 1;
    }
    kelvo::HeadOffer offer(kelvo::HeadSocketPath(terminal.Path()));
    if (!offer.Ready()) {
        std::fprintf(stderr, "kelvo-head: no socket for its registers: %s\n", std::strerror(errno));
        return 1;
    }
    if (!options.fault.empty()) kelvo::SetFault(options.fault, true);
    std::printf("%s\n%s\n", terminal.Path().c_str(), offer.Path().c_str());
    std::fflush(stdout);
    Serve(*camera, terminal, offer, end, options.log);
    return 0;
}

}  // namespace

int main(int argc, char* argv[])
{
    const std::span<char* const> arguments(argv + 1, static_cast<std::size_t>(argc - 1));
    if (std::ranges::find(arguments, std::string_view("--help")) != arguments.end()) {
        std::fputs(kUsage, stdout);
        std::fputs(kHelp, stdout);
        return 0;
    }
    const auto options = ParseArguments(arguments);
    if (!options) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    return Run(*options);
}
