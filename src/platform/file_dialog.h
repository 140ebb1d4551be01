// The standard file dialogs: native where the desktop offers them, never under a script or offscreen.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

enum class FileDialogMode { kSave, kOpen, kOpenMany };

struct FileFilter {
    std::string_view text;     // "Image Files (*.img)"
    std::string_view pattern;  // "*.img"; "*.*" means every name
};

struct FileDialogRequest {
    HWND owner = nullptr;
    FileDialogMode mode = FileDialogMode::kOpen;
    std::string_view title;
    std::vector<FileFilter> filters;  // the first is shown first
    std::string directory;
    std::string name;                   // offered to the operator; a pattern stands for no name
    std::string_view defaultExtension;  // added to a name without one, when saving and opening; empty: none
    // The caller's own look at a path that stands up to the other questions; in place of the question about replacing.
    // False keeps the dialog open. Empty: none.
    std::function<bool(const std::string& path)> accept = nullptr;
};

struct FileDialogResult {
    std::vector<std::string> paths;  // whole paths; empty: cancelled, or error is not 0
    std::int32_t error = 0;          // the dialog's own failure (fault "file dialog": 0xFFFF)
};

// Blocks, while other events are handled. Opening a name that doesn't exist and saving over one that does are asked
// about in our message box ("%s\nFile not found.\nPlease verify the correct file name was given."; "%s already
// exists.\nDo you want to replace it?" with Yes and No), and the dialog stays open.
FileDialogResult RunFileDialog(const FileDialogRequest& request);

}  // namespace kelvo
