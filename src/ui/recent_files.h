// The files last opened, newest first, in the File menu. They stand in recent.ini in StateDir: kelvo.ini travels inside
// calibration sets, and what one operator looked at must not.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

void ReadRecentFiles();                     // at start, and fills the menu
void AddRecentFile(std::string_view path);  // to the front; the same path stands once, at most kRecentFileCount stay
const std::vector<std::string>& RecentFiles();

// Of this process; the settings file keeps its own.
void ForgetRecentFiles();

}  // namespace kelvo
