#include "genicam/network_check.h"

#include "platform/text.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <system_error>

namespace kelvo {

namespace {

std::int64_t NumberInFile(const std::string& path)
{
    std::ifstream stream(path);
    std::int64_t number = 0;
    return stream >> number ? number : 0;
}

// Which of this machine's own addresses packets to that one bear. Nothing is sent.
std::optional<in_addr> OwnAddressTowards(const std::string& address)
{
    constexpr std::uint16_t kAnyPort = 9;
    sockaddr_in far{};
    far.sin_family = AF_INET;
    far.sin_port = htons(kAnyPort);
    if (inet_pton(AF_INET, address.c_str(), &far.sin_addr) != 1) return std::nullopt;
    const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) return std::nullopt;
    sockaddr_in own{};
    socklen_t size = sizeof(own);
    const bool known = connect(descriptor, reinterpret_cast<const sockaddr*>(&far), sizeof(far)) == 0 &&
                       getsockname(descriptor, reinterpret_cast<sockaddr*>(&own), &size) == 0;
    close(descriptor);
    return known ? std::optional(own.sin_addr) : std::nullopt;
}

std::string InterfaceWithAddress(const in_addr& own)
{
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) return {};
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> kept(list, freeifaddrs);
    for (const ifaddrs* each = list; each; each = each->ifa_next) {
        if (!each->ifa_addr || each->ifa_addr->sa_family != AF_INET) continue;
        const auto* const address = reinterpret_cast<const sockaddr_in*>(each->ifa_addr);
        if (address->sin_addr.s_addr == own.s_addr) return each->ifa_name;
    }
    return {};
}

bool StandsAtPort(int descriptor, std::uint16_t port)
{
    sockaddr_in own{};
    socklen_t size = sizeof(own);
    if (getsockname(descriptor, reinterpret_cast<sockaddr*>(&own), &size) != 0) return false;
    int type = 0;
    socklen_t typeSize = sizeof(type);
    const bool isDatagram = getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &typeSize) == 0 && type == SOCK_DGRAM;
    return isDatagram && own.sin_family == AF_INET && ntohs(own.sin_port) == port;
}

}  // namespace

std::vector<std::string> WhatTheNetworkLacks(const NetworkFigures& figures, std::int64_t frameBytes)
{
    std::vector<std::string> lacks;
    if (figures.packetBytes > 0 && figures.packetBytes < kGoodPacketBytes) {
        lacks.push_back(Format(
            "Packets on %s have at most %lld bytes. Set its MTU to 9000, where camera and switch take that: sudo "
            "ip link set %s mtu 9000",
            figures.interfaceName.c_str(), static_cast<long long>(figures.packetBytes), figures.interfaceName.c_str()));
    }
    // The system's own book-keeping takes up to as much again as the packets themselves.
    const std::int64_t wanted = kFramesOfReceiveBuffer * frameBytes;
    if (figures.receiveBufferMax > 0 && figures.receiveBufferMax < wanted) {
        constexpr std::int64_t kMegabyte = std::int64_t{1024} * 1024;
        const std::int64_t rounded = (wanted + kMegabyte - 1) / kMegabyte * kMegabyte;
        lacks.push_back(
            Format("The receive buffer may have at most %lld bytes, less than two frames of %lld bytes. Let it have "
                   "more: sudo sysctl -w net.core.rmem_max=%lld",
                   static_cast<long long>(figures.receiveBufferMax), static_cast<long long>(frameBytes),
                   static_cast<long long>(rounded)));
    }
    return lacks;
}

NetworkFigures ReadNetworkFigures(const std::string& address)
{
    NetworkFigures figures;
    const std::optional<in_addr> own = OwnAddressTowards(address);
    if (!own) return figures;
    figures.interfaceName = InterfaceWithAddress(*own);
    if (!figures.interfaceName.empty()) {
        figures.packetBytes = NumberInFile("/sys/class/net/" + figures.interfaceName + "/mtu");
    }
    figures.receiveBufferMax = NumberInFile("/proc/sys/net/core/rmem_max");
    return figures;
}

std::int64_t ReceiveBufferOfPort(std::uint16_t port)
{
    std::error_code failed;
    for (std::filesystem::directory_iterator each("/proc/self/fd", failed), end; !failed && each != end;
         each.increment(failed)) {
        const std::string name = each->path().filename().string();
        int descriptor = -1;
        std::from_chars(name.data(), name.data() + name.size(), descriptor);
        if (!StandsAtPort(descriptor, port)) continue;
        int bytes = 0;
        socklen_t size = sizeof(bytes);
        if (getsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &bytes, &size) != 0) return 0;
        return bytes / 2;  // the system doubles what is asked, for its own book-keeping
    }
    return 0;
}

}  // namespace kelvo
