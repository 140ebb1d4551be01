#include "state/windows.h"

#include "platform/files.h"
#include "state/state_registry.h"

namespace kelvo {

HWND hWndMain = nullptr;
HWND hWndStatus = nullptr;
HWND hDlgPanel = nullptr;

std::int16_t ClientWidth = 0;
std::int16_t ClientHeight = 0;
std::int16_t TextHeight = 0;
std::int32_t ViewWidth = 0;
std::int32_t ViewHeight = 0;

std::string DefaultDir;
std::string IniFilePath;
std::string CameraFilePath;
std::string BuffBrdFilePath;
std::string SeqFilePath;
std::string HelpFilePath;
std::string FilePathBuf;
std::string ViewFilePath;
std::string CnfFilePath;

std::int32_t HelpMode = 0;

namespace {

const StateNames kStateNames{
    Named("ClientWidth", ClientWidth),       Named("ClientHeight", ClientHeight),
    Named("TextHeight", TextHeight),         Named("ViewWidth", ViewWidth),
    Named("ViewHeight", ViewHeight),         Named("HelpMode", HelpMode),
    Named("DefaultDir", DefaultDir),         Named("IniFilePath", IniFilePath),
    Named("CameraFilePath", CameraFilePath), Named("BuffBrdFilePath", BuffBrdFilePath),
    Named("SeqFilePath", SeqFilePath),       Named("HelpFilePath", HelpFilePath),
    Named("FilePathBuf", FilePathBuf),       Named("ViewFilePath", ViewFilePath),
    Named("CnfFilePath", CnfFilePath),
};

}  // namespace

void SetDefaultDir(std::string_view directory)
{
    DefaultDir = directory;
    while (DefaultDir.size() > 1 && DefaultDir.back() == '/') DefaultDir.pop_back();
    SetKelvoDirectory(DefaultDir);
    IniFilePath = DefaultDir + "/kelvo.ini";
    CameraFilePath = DefaultDir + "/camera.ini";
    BuffBrdFilePath = DefaultDir + "/buffbrd.ini";
    SeqFilePath = DefaultDir + "/a.seq";
    HelpFilePath = DefaultDir + "/KELVO.hlp";
}

}  // namespace kelvo
