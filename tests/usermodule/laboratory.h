// A laboratory's source in place of the delivered functions: it writes down what is called, and does what a test says.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kelvo {

struct Laboratory {
    std::vector<std::vector<std::string>> dispatched;  // number and four parameters, of each call
    std::function<void()> work;                        // within the dispatcher
};
extern Laboratory laboratory;

}  // namespace kelvo
