// What a fixture keeps outside its object is taken back before each test.
#pragma once

namespace kelvo {

// step runs before each test of the program, after Kelvo itself was reset. Called while the program starts:
//     inline const bool isFresh = AtEachTestStart([] { seen.clear(); });
bool AtEachTestStart(void (*step)());  // true

}  // namespace kelvo
