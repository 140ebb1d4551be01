// The registers of a simulated head on a Unix socket, so that a simulated board in another process shows the video of
// the head that is on its port, whoever holds the port. A message is the registers as HeadRegistersText writes them; it
// comes to each who connects, and again after each frame that the head took.
//
// Both ends belong to one user: the socket's mode is 0600, and a head of another user isn't heard.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace kelvo {

// Where the head at a terminal offers its registers, in SocketDirectory. Links of the device's path are followed;
// nothing need exist.
std::string HeadSocketPath(const std::string& device);

// The head's end. Nothing waits.
class HeadOffer {
  public:
    // What stands at the path is taken away: whoever holds the terminal is the one head on it.
    explicit HeadOffer(std::string path);
    ~HeadOffer();  // the path goes too
    HeadOffer(const HeadOffer&) = delete;
    HeadOffer& operator=(const HeadOffer&) = delete;

    bool Ready() const { return listener_ >= 0; }  // false: errno tells why
    const std::string& Path() const { return path_; }
    int Descriptor() const { return listener_; }  // readable when someone wants to connect
    void Accept(const std::string& registers);    // all who want to, and tells them
    void Tell(const std::string& registers);      // who doesn't read any more is let go

  private:
    std::string path_;
    int listener_ = -1;
    std::vector<int> followers_;
};

// The board's end.
struct HeadNews {
    enum class Kind {
        kNothing,    // as before, or no head offers anything there
        kRegisters,  // the newest
        kGone,       // the head that was followed has ended
    };
    Kind kind = Kind::kNothing;
    std::string registers;
};

class HeadFollower {
  public:
    HeadFollower();
    ~HeadFollower();
    HeadFollower(HeadFollower&& other) noexcept;
    HeadFollower& operator=(HeadFollower&& other) noexcept;

    // What has come from the head at that device; empty: none is followed. Returns at once, but waits up to a second
    // for a head that was just found to tell its registers.
    HeadNews Hear(const std::string& device);

  private:
    struct Connection;
    std::unique_ptr<Connection> connection_;
    std::string device_;
};

}  // namespace kelvo
