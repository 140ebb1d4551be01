// The loopback's address, which there is once on a machine: while one of these holds it no camera of another test's
// comes up there. Cameras of tests/support/fake_camera.h hold it by the same file.
#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace kelvo {

class AddressHold {
  public:
    // Waits for its turn, some minutes at most.
    AddressHold() : file_(open("/tmp/kelvo-fake-camera-127.0.0.1.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0666))
    {
        constexpr int kTries = 20'000;
        for (int i = 0; i < kTries && !holds_; ++i) {
            holds_ = flock(file_, LOCK_EX | LOCK_NB) == 0;
            if (!holds_) std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    ~AddressHold() { close(file_); }
    AddressHold(const AddressHold&) = delete;
    AddressHold& operator=(const AddressHold&) = delete;
    bool Holds() const { return holds_; }

  private:
    int file_ = -1;
    bool holds_ = false;
};

}  // namespace kelvo
