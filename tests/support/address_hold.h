// GigE Vision's port, which there is once an address: cameras that want it come one after the other, whichever program
// they stand in.
#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

namespace kelvo {

class AddressHold {
  public:
    // Waits for its turn, some minutes at most.
    explicit AddressHold(const std::string& address = "127.0.0.1")
        : file_(open(("/tmp/kelvo-fake-camera-" + address + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666))
    {
        constexpr int kTries = 20'000;
        for (int i = 0; i < kTries && !holds_; ++i) {
            holds_ = file_ >= 0 && flock(file_, LOCK_EX | LOCK_NB) == 0;
            if (!holds_) std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    ~AddressHold()
    {
        if (file_ >= 0) close(file_);
    }
    AddressHold(const AddressHold&) = delete;
    AddressHold& operator=(const AddressHold&) = delete;
    bool Holds() const { return holds_; }

  private:
    int file_ = -1;
    bool holds_ = false;
};

}  // namespace kelvo
