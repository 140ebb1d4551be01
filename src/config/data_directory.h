// Where the settings lie: the directory that the program, and a command without a window, works with.
#pragma once

#include <string>

namespace kelvo {

// The one that key DefaultDir of section Kelvo in the user's kelvo/win.ini names, whole; without it "kelvo" among the
// user's data. It needn't stand yet.
std::string DataDirectoryByDefault();

}  // namespace kelvo
