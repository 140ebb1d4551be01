#include "simcam/head_socket.h"

#include "platform/machine.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <utility>

namespace kelvo {

namespace {

constexpr int kFirstNewsMs = 1000;
constexpr int kWaitingFollowers = 4;
constexpr std::size_t kLongestMessage = 65536;
constexpr mode_t kOthersNothing = 0177;

// nullopt: longer than an address can be.
std::optional<sockaddr_un> AddressOf(const std::string& path)
{
    sockaddr_un address{};
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return std::nullopt;
    }
    address.sun_family = AF_UNIX;
    std::memcpy(static_cast<void*>(address.sun_path), path.data(), path.size());
    return address;
}

int MakeSocket()
{
    return socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
}

const sockaddr* Plain(const sockaddr_un& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

int Listen(const std::string& path)
{
    const auto address = AddressOf(path);
    if (!address) return -1;
    const int listener = MakeSocket();
    if (listener < 0) return -1;
    unlink(path.c_str());
    const mode_t before = umask(kOthersNothing);
    const bool bound = bind(listener, Plain(*address), sizeof *address) == 0;
    umask(before);
    if (bound && listen(listener, kWaitingFollowers) == 0) return listener;
    close(listener);
    return -1;
}

bool IsOurs(int descriptor)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

int Connect(const std::string& path)
{
    const auto address = AddressOf(path);
    if (!address) return -1;
    const int descriptor = MakeSocket();
    if (descriptor < 0) return -1;
    if (connect(descriptor, Plain(*address), sizeof *address) == 0 && IsOurs(descriptor)) return descriptor;
    close(descriptor);
    return -1;
}

void WaitForNews(int descriptor)
{
    pollfd arrival{.fd = descriptor, .events = POLLIN, .revents = 0};
    poll(&arrival, 1, kFirstNewsMs);
}

}  // namespace

std::string HeadSocketPath(const std::string& device)
{
    const std::string directory = SocketDirectory();
    if (directory.empty() || device.empty()) return {};
    std::error_code ignored;
    const std::filesystem::path followed = std::filesystem::weakly_canonical(device, ignored);
    std::string name = followed.empty() ? device : followed.string();
    std::ranges::replace(name, '/', '-');
    return directory + "/kelvo-head" + name;
}

HeadOffer::HeadOffer(std::string path) : path_(std::move(path)), listener_(Listen(path_)) {}

HeadOffer::~HeadOffer()
{
    for (const int follower : followers_) close(follower);
    if (listener_ < 0) return;
    close(listener_);
    unlink(path_.c_str());
}

void HeadOffer::Accept(const std::string& registers)
{
    for (;;) {
        const int follower = accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (follower < 0) return;
        followers_.push_back(follower);
        send(follower, registers.data(), registers.size(), MSG_NOSIGNAL);
    }
}

void HeadOffer::Tell(const std::string& registers)
{
    std::erase_if(followers_, [&registers](int follower) {
        if (send(follower, registers.data(), registers.size(), MSG_NOSIGNAL) >= 0) return false;
        close(follower);  // it finds back when it reads again, and is then told what holds
        return true;
    });
}

struct HeadFollower::Connection {
    explicit Connection(int opened) : descriptor(opened), message(kLongestMessage, '\0') {}
    ~Connection() { close(descriptor); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // The newest of the messages that wait; kGone once they are read and the head has ended.
    HeadNews Read()
    {
        HeadNews news;
        for (;;) {
            const ssize_t count = recv(descriptor, message.data(), message.size(), 0);
            if (count > 0) {
                news = {HeadNews::Kind::kRegisters, message.substr(0, static_cast<std::size_t>(count))};
            } else if (count < 0 && errno == EINTR) {
                continue;
            } else {
                const bool nothingYet = count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
                if (!nothingYet && news.kind == HeadNews::Kind::kNothing) news.kind = HeadNews::Kind::kGone;
                return news;
            }
        }
    }

    int descriptor;
    std::string message;
};

HeadFollower::HeadFollower() = default;
HeadFollower::~HeadFollower() = default;
HeadFollower::HeadFollower(HeadFollower&& other) noexcept = default;
HeadFollower& HeadFollower::operator=(HeadFollower&& other) noexcept = default;

HeadNews HeadFollower::Hear(const std::string& device)
{
    if (device != device_) connection_.reset();
    device_ = device;
    if (device.empty()) return {};
    if (!connection_) {
        const int descriptor = Connect(HeadSocketPath(device));
        if (descriptor < 0) return {};
        connection_ = std::make_unique<Connection>(descriptor);
        WaitForNews(descriptor);
    }
    HeadNews news = connection_->Read();
    if (news.kind == HeadNews::Kind::kGone) connection_.reset();
    return news;
}

}  // namespace kelvo
