// What this machine's network lacks for a GigE Vision camera: packets too small, a receive buffer too small. Both lose
// frames. The judgement is pure; what it judges is read from the system.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

struct NetworkFigures {
    std::string interfaceName;          // over which the camera is reached, "eth0"; empty: not known
    std::int64_t packetBytes = 0;       // largest that the interface takes (its MTU); 0: not known
    std::int64_t receiveBufferMax = 0;  // bytes that a program may ask for (net.core.rmem_max); 0: not known
    friend bool operator==(const NetworkFigures&, const NetworkFigures&) = default;
};

// A packet of less costs the machine an interrupt each: frames get lost under load. What cameras and switches call
// jumbo frames has 9000 bytes, some a little less.
constexpr std::int64_t kGoodPacketBytes = 8000;

// A stream's receive buffer holds so many frames: one comes while the other is taken apart.
constexpr std::int64_t kFramesOfReceiveBuffer = 2;

// What is lacking and what to do, a sentence or two each; empty: nothing. frameBytes: of a frame on the wire. A figure
// that isn't known lacks nothing.
std::vector<std::string> WhatTheNetworkLacks(const NetworkFigures& figures, std::int64_t frameBytes);

// The figures of the interface over which that address (IPv4, in digits) is reached.
NetworkFigures ReadNetworkFigures(const std::string& address);

// The receive buffer that this process's socket at that UDP port was granted, in bytes as a program asks for them. 0:
// no socket of this process is there.
std::int64_t ReceiveBufferOfPort(std::uint16_t port);

}  // namespace kelvo
