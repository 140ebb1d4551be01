// The working directory, and what stands in it: for dialogs that show lists of files and directories of their own.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// Without a closing separator (but "/"); empty where the directory is gone or may not be named.
std::string CurrentDirectory();
// The path is resolved as every other one (platform/files.h). False: it isn't there or may not be entered, and the
// working directory is as before.
bool ChangeDirectory(std::string_view path);

// Takes an empty directory away; false where it isn't one.
bool RemoveEmptyDirectory(std::string_view path);

// Names of the working directory in the order of their letters, case ignored; hidden ones (a leading point) are left
// out. Empty where it can't be read.
// Files that fit a pattern of the wildcards * and ?, in any case; "*.*" means every name.
std::vector<std::string> FilesOf(std::string_view pattern);
// ".." first, except at the root.
std::vector<std::string> Subdirectories();

}  // namespace kelvo
