#include "platform/signal_socket.h"

#include "platform/digest.h"
#include "platform/machine.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

namespace kelvo {

namespace {

constexpr std::string_view kEventName = "{5A963C81-A69C-11d0-AC11-00A024BBB05E}";
constexpr std::size_t kMarkDigits = 16;
constexpr mode_t kOwnersOnly = 0700;

// nullopt: the path is longer than the system takes.
std::optional<sockaddr_un> AddressOf(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) return std::nullopt;
    std::memcpy(static_cast<char*>(address.sun_path), path.data(), path.size());
    return address;
}

const sockaddr* Plain(const sockaddr_un& address)
{
    return reinterpret_cast<const sockaddr*>(&address);  // NOLINT(cppcoreguidelines-pro-type-reinterpret-cast)
}

int MakeSocket()
{
    return socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
}

// A socket with no process behind it refuses.
bool SomebodyListens(const sockaddr_un& address)
{
    const int descriptor = MakeSocket();
    if (descriptor < 0) return false;
    const bool listens = connect(descriptor, Plain(address), sizeof address) == 0;
    close(descriptor);
    return listens;
}

// Its directory stands, and is the user's alone.
bool MakePlaceFor(const std::string& path)
{
    const std::string directory = std::filesystem::path(path).parent_path().string();
    mkdir(directory.c_str(), kOwnersOnly);  // it may stand already
    return IsPrivateDirectory(directory);
}

// The socket at a path, or -1.
int Listen(const std::string& path)
{
    const auto address = AddressOf(path);
    if (!address || !MakePlaceFor(path) || SomebodyListens(*address)) return -1;
    unlink(path.c_str());  // of an owner that died
    const int descriptor = MakeSocket();
    if (descriptor < 0) return -1;
    if (bind(descriptor, Plain(*address), sizeof *address) == 0) return descriptor;
    close(descriptor);
    return -1;
}

std::string RuntimeDirectory()
{
    if (const char* const named = std::getenv("XDG_RUNTIME_DIR")) {
        if (*named == '/' && IsPrivateDirectory(named) && access(named, W_OK) == 0) return named;
    }
    return SocketDirectory();
}

}  // namespace

Event::Event() : descriptor_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

Event::~Event()
{
    if (descriptor_ >= 0) close(descriptor_);
}

void Event::Set()
{
    // A counter that is full is set already.
    if (eventfd_write(descriptor_, 1) != 0) return;
}

bool Event::Take()
{
    eventfd_t count = 0;
    return eventfd_read(descriptor_, &count) == 0;
}

int WaitForEvents(Event& first, Event& second)
{
    for (;;) {
        if (first.Take()) return 0;
        if (second.Take()) return 1;
        std::array<pollfd, 2> arrivals{pollfd{.fd = first.Descriptor(), .events = POLLIN, .revents = 0},
                                       pollfd{.fd = second.Descriptor(), .events = POLLIN, .revents = 0}};
        poll(arrivals.data(), arrivals.size(), -1);
    }
}

SignalThread::SignalThread(Event& stop, Event& signal, std::function<void()> onSignal)
    : stop_(stop), thread_([&stop, &signal, tell = std::move(onSignal)] {
          constexpr int kSignal = 1;
          if (WaitForEvents(stop, signal) == kSignal) tell();
      })
{
}

std::unique_ptr<SignalThread> SignalThread::Start(Event& stop, Event& signal, std::function<void()> onSignal)
{
    try {
        return std::unique_ptr<SignalThread>(new SignalThread(stop, signal, std::move(onSignal)));
    } catch (const std::system_error&) {
        return nullptr;
    }
}

SignalThread::~SignalThread()
{
    stop_.Set();
    thread_.join();
    stop_.Take();  // where the signal had ended the thread before
}

std::string SignalSocketPath(std::string_view dataDirectory)
{
    const std::string place = RuntimeDirectory();
    if (place.empty()) return {};
    // By whichever way one comes to it.
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(std::string(dataDirectory), error);
    const std::string whole = error ? std::string(dataDirectory) : real.string();
    std::string path = place + "/kelvo-" + Sha256Of(whole).substr(0, kMarkDigits) + "/" + std::string(kEventName);
    return AddressOf(path) ? path : std::string();
}

struct SignalSocket::Inside {
    std::string path;
    int descriptor = -1;
    std::function<void()> onSignal;
    std::unique_ptr<QSocketNotifier> notifier;
};

SignalSocket::SignalSocket(std::unique_ptr<Inside> inside) : inside_(std::move(inside))
{
    if (!qApp) return;
    inside_->notifier = std::make_unique<QSocketNotifier>(inside_->descriptor, QSocketNotifier::Read);
    QObject::connect(inside_->notifier.get(), &QSocketNotifier::activated, [this] { TakeSignals(); });
}

std::unique_ptr<SignalSocket> SignalSocket::Open(const std::string& path, std::function<void()> onSignal)
{
    const int descriptor = Listen(path);
    if (descriptor < 0) return nullptr;
    auto inside = std::make_unique<Inside>();
    inside->path = path;
    inside->descriptor = descriptor;
    inside->onSignal = std::move(onSignal);
    return std::unique_ptr<SignalSocket>(new SignalSocket(std::move(inside)));
}

SignalSocket::~SignalSocket()
{
    inside_->notifier.reset();
    close(inside_->descriptor);
    unlink(inside_->path.c_str());
    rmdir(std::filesystem::path(inside_->path).parent_path().c_str());
}

void SignalSocket::TakeSignals()
{
    bool came = false;
    char ignored = 0;
    while (recv(inside_->descriptor, &ignored, 1, MSG_DONTWAIT) >= 0) came = true;
    if (came) inside_->onSignal();
}

bool SendSignal(const std::string& path)
{
    constexpr char kSignal = '!';
    const auto address = AddressOf(path);
    if (!address) return false;
    const int descriptor = MakeSocket();
    if (descriptor < 0) return false;
    const bool sent =
        sendto(descriptor, &kSignal, 1, MSG_NOSIGNAL, Plain(*address), sizeof *address) == 1 || errno == EAGAIN;
    close(descriptor);
    return sent;
}

}  // namespace kelvo
