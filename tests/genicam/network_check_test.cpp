#include "genicam/network_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kFrame = 163840;  // 320 x 256 of 16 bits

TEST(NetworkCheck, NamesSmallPacketsAndASmallBuffer)
{
    const NetworkFigures figures{.interfaceName = "eth1", .packetBytes = 1500, .receiveBufferMax = 212992};
    EXPECT_THAT(
        WhatTheNetworkLacks(figures, kFrame),
        ElementsAre("Packets on eth1 have at most 1500 bytes. Set its MTU to 9000, where camera and switch take "
                    "that: sudo ip link set eth1 mtu 9000",
                    "The receive buffer may have at most 212992 bytes, less than two frames of 163840 bytes. Let "
                    "it have more: sudo sysctl -w net.core.rmem_max=1048576"));
}

TEST(NetworkCheck, FindsNothingLackingAtTheLimits)
{
    EXPECT_THAT(WhatTheNetworkLacks({.interfaceName = "eth1", .packetBytes = 8000, .receiveBufferMax = 327680}, kFrame),
                IsEmpty());
    EXPECT_THAT(WhatTheNetworkLacks({.interfaceName = "eth1", .packetBytes = 7999, .receiveBufferMax = 327679}, kFrame),
                testing::SizeIs(2));
}

TEST(NetworkCheck, MissesNothingThatIsNotKnown)
{
    EXPECT_THAT(WhatTheNetworkLacks({}, kFrame), IsEmpty());
}

TEST(NetworkCheck, ReadsTheInterfaceThatLeadsToAnAddress)
{
    const NetworkFigures figures = ReadNetworkFigures("127.0.0.1");
    EXPECT_EQ(figures.interfaceName, "lo");
    ifreq request{};
    std::strncpy(request.ifr_name, "lo", IFNAMSIZ - 1);
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    ASSERT_EQ(ioctl(descriptor, SIOCGIFMTU, &request), 0);
    close(descriptor);
    EXPECT_EQ(figures.packetBytes, request.ifr_mtu);
}

TEST(NetworkCheck, ReadsBackTheReceiveBufferOfAPort)
{
    constexpr int kAsked = 65536;
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in own{};
    own.sin_family = AF_INET;
    own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&own), sizeof(own)), 0);
    ASSERT_EQ(setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &kAsked, sizeof(kAsked)), 0);
    socklen_t size = sizeof(own);
    ASSERT_EQ(getsockname(descriptor, reinterpret_cast<sockaddr*>(&own), &size), 0);
    EXPECT_EQ(ReceiveBufferOfPort(ntohs(own.sin_port)), kAsked);
    close(descriptor);
    EXPECT_EQ(ReceiveBufferOfPort(ntohs(own.sin_port)), 0);
}

TEST(NetworkCheck, KnowsNothingOfWhatIsNoAddress)
{
    EXPECT_EQ(ReadNetworkFigures("USB3").interfaceName, "");
}

}  // namespace
}  // namespace kelvo
