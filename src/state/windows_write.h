// The variables behind state/windows.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "state/windows.h"

namespace kelvo {

struct WindowsVariables {
    HWND hWndMain = nullptr;
    HWND hWndStatus = nullptr;
    HWND hDlgPanel = nullptr;
    std::int16_t ClientWidth = 0;
    std::int16_t ClientHeight = 0;
    std::int16_t TextHeight = 0;
    std::int32_t ViewWidth = 0;
    std::int32_t ViewHeight = 0;
    std::string DefaultDir;
    std::string StateDir;
    std::string CacheDir;
    std::string IniFilePath;
    std::string CameraFilePath;
    std::string BuffBrdFilePath;
    std::string SeqFilePath;
    std::string HelpFilePath;
    std::string FilePathBuf;
    std::string ViewFilePath;
    std::string CnfFilePath;
    std::int32_t HelpMode = 0;
};

namespace write {
extern WindowsVariables windows;
}

// DefaultDir, without a closing separator, and the paths formed from it; the platform's "c:\KELVO" is the same
// directory (platform/files.h). A sequence that the operator has named keeps its path when a set-up runs again.
void SetDefaultDir(std::string_view directory);

// Apart from DefaultDir, which they follow otherwise.
void SetStateDir(std::string_view directory);
void SetCacheDir(std::string_view directory);

// As at the start of the program.
void ResetWindows();

}  // namespace kelvo
