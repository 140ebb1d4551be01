// A pseudo-terminal: its slave is a serial port as the system has them, without modem lines.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

class PseudoTerminal {
  public:
    PseudoTerminal() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        std::array<char, 64> name{};
        if (grantpt(master_) != 0 || unlockpt(master_) != 0 || ptsname_r(master_, name.data(), name.size()) != 0) {
            ADD_FAILURE() << "no pseudo-terminal";
        }
        slave_ = name.data();
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;
    ~PseudoTerminal() { Unplug(); }

    const std::string& Slave() const { return slave_; }

    // As the slave stands now; asked at the far end, since a port is opened alone.
    termios LineSettings() const
    {
        termios line{};
        EXPECT_EQ(tcgetattr(master_, &line), 0);
        return line;
    }

    // The far end goes away, as a cable that is pulled.
    void Unplug()
    {
        if (master_ >= 0) close(master_);
        master_ = -1;
    }

    void Send(const std::vector<std::uint8_t>& bytes) const
    {
        ASSERT_EQ(::write(master_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    // What arrives until that many bytes are there, or nothing has come for two seconds.
    std::vector<std::uint8_t> Receive(std::size_t wanted) const
    {
        std::vector<std::uint8_t> received;
        while (received.size() < wanted && Arrived(2000)) {
            std::array<std::uint8_t, 64> chunk{};
            const ssize_t count = read(master_, chunk.data(), chunk.size());
            if (count <= 0) break;
            received.insert(received.end(), chunk.begin(), chunk.begin() + count);
        }
        return received;
    }

    bool Arrived(int waitMs) const
    {
        pollfd arrival{.fd = master_, .events = POLLIN, .revents = 0};
        return poll(&arrival, 1, waitMs) > 0 && (arrival.revents & POLLIN) != 0;
    }

  private:
    int master_ = -1;
    std::string slave_;
};

}  // namespace kelvo
