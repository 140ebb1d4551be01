// The objects and failures of the library that talks to cameras, held as C++ holds things.
#pragma once

#include <glib-object.h>

#include <memory>
#include <string>

namespace kelvo {

struct ReleaseObject {
    void operator()(void* object) const { g_object_unref(object); }
};
template <typename Object>
using ObjectHold = std::unique_ptr<Object, ReleaseObject>;

// The library's reason for a failure. Each call that is given its place forgets the one before.
class Failure {
  public:
    Failure() = default;
    ~Failure() { g_clear_error(&error_); }
    Failure(const Failure&) = delete;
    Failure& operator=(const Failure&) = delete;
    GError** Place()
    {
        g_clear_error(&error_);
        return &error_;
    }
    explicit operator bool() const { return error_ != nullptr; }
    std::string Text() const { return error_ ? std::string(error_->message) : std::string(); }  // empty: none

  private:
    GError* error_ = nullptr;
};

}  // namespace kelvo
