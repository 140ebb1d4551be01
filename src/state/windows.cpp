#include "state/windows.h"

#include "platform/files.h"
#include "state/state_registry.h"
#include "state/windows_write.h"

namespace kelvo {

namespace write {
WindowsVariables windows;
}

constinit const HWND& hWndMain = write::windows.hWndMain;
constinit const HWND& hWndStatus = write::windows.hWndStatus;
constinit const HWND& hDlgPanel = write::windows.hDlgPanel;
constinit const std::int16_t& ClientWidth = write::windows.ClientWidth;
constinit const std::int16_t& ClientHeight = write::windows.ClientHeight;
constinit const std::int16_t& TextHeight = write::windows.TextHeight;
constinit const std::int32_t& ViewWidth = write::windows.ViewWidth;
constinit const std::int32_t& ViewHeight = write::windows.ViewHeight;
constinit const std::string& DefaultDir = write::windows.DefaultDir;
constinit const std::string& StateDir = write::windows.StateDir;
constinit const std::string& CacheDir = write::windows.CacheDir;
constinit const std::string& IniFilePath = write::windows.IniFilePath;
constinit const std::string& CameraFilePath = write::windows.CameraFilePath;
constinit const std::string& BuffBrdFilePath = write::windows.BuffBrdFilePath;
constinit const std::string& SeqFilePath = write::windows.SeqFilePath;
constinit const std::string& HelpFilePath = write::windows.HelpFilePath;
constinit const std::string& FilePathBuf = write::windows.FilePathBuf;
constinit const std::string& ViewFilePath = write::windows.ViewFilePath;
constinit const std::string& CnfFilePath = write::windows.CnfFilePath;
constinit const std::int32_t& HelpMode = write::windows.HelpMode;

void ResetWindows()
{
    write::windows = {};
}

namespace {

constexpr const char* kFirstSequence = "/a.seq";

const StateNames kStateNames{
    Named("ClientWidth", ClientWidth),
    Named("ClientHeight", ClientHeight),
    Named("TextHeight", TextHeight),
    Named("ViewWidth", ViewWidth),
    Named("ViewHeight", ViewHeight),
    Named("HelpMode", HelpMode),
    Named("DefaultDir", DefaultDir),
    Named("IniFilePath", IniFilePath),
    Named("CameraFilePath", CameraFilePath),
    Named("BuffBrdFilePath", BuffBrdFilePath),
    Named("SeqFilePath", SeqFilePath),
    Named("HelpFilePath", HelpFilePath),
    Named("FilePathBuf", FilePathBuf),
    Named("ViewFilePath", ViewFilePath),
    Named("CnfFilePath", CnfFilePath),
    Named("StateDir", StateDir),
    Named("CacheDir", CacheDir),
};

}  // namespace

void SetDefaultDir(std::string_view directory)
{
    WindowsVariables& paths = write::windows;
    const bool named = !SeqFilePath.empty() && SeqFilePath != DefaultDir + kFirstSequence;
    const bool stateIsApart = StateDir != DefaultDir;
    const bool cacheIsApart = CacheDir != DefaultDir;
    paths.DefaultDir = directory;
    while (DefaultDir.size() > 1 && DefaultDir.back() == '/') paths.DefaultDir.pop_back();
    SetKelvoDirectory(DefaultDir);
    paths.IniFilePath = DefaultDir + "/kelvo.ini";
    paths.CameraFilePath = DefaultDir + "/camera.ini";
    paths.BuffBrdFilePath = DefaultDir + "/buffbrd.ini";
    if (!named) paths.SeqFilePath = DefaultDir + kFirstSequence;
    paths.HelpFilePath = DefaultDir + "/KELVO.hlp";
    if (!stateIsApart) paths.StateDir = DefaultDir;
    if (!cacheIsApart) paths.CacheDir = DefaultDir;
}

void SetStateDir(std::string_view directory)
{
    write::windows.StateDir = directory;
}

void SetCacheDir(std::string_view directory)
{
    write::windows.CacheDir = directory;
}

}  // namespace kelvo
