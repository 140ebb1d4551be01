#include "head/video_setup_fixture.h"

#include "camera/turn_on.h"
#include "head/video_setup_dialog.h"
#include "platform/files.h"
#include "platform/menu.h"
#include "platform/profile.h"
#include "platform/qt_dialog.h"
#include "resources/menu.h"
#include "state/frame_state.h"
#include "state/head_state_write.h"
#include "state/windows.h"
#include "support/recording_board.h"

#include <QApplication>
#include <QKeyEvent>

#include <memory>

namespace kelvo {

void VideoSetUpTest::SetUp()
{
    HeadTest::SetUp();
    RegisterQuietBoard();
    SetBoardFrames({{1000}});
    WritePrivateProfileString("Board", "Board", "recording", DefaultDir + "/platform.ini");
    SetMenu(hWndMain, MainMenu());
    DockPanel();
}

void VideoSetUpTest::TurnOn(std::string_view section)
{
    PutSection(section);
    IdentifyAsInSb();
    ASSERT_EQ(TurnCameraOn("", 1), 1);
    write::head.FirstSetupPending = 0;
    TakeBoardCalls();
    head->Taken();
}

void VideoSetUpTest::TurnOnHgCdTe(std::string_view section)
{
    PutSection(section);
    IdentifyAsHgCdTe();
    ASSERT_EQ(TurnCameraOn("", 1), 1);
    write::head.FirstSetupPending = 0;
    TakeBoardCalls();
    head->Taken();
}

int VideoSetUpTest::Run(std::initializer_list<Step> steps)
{
    for (const Step& step : steps) {
        op->Do([step] { step(DialogInFront()); });
    }
    const auto ended = std::make_shared<bool>(false);
    for (int i = 0; i < 2; ++i) {
        op->Do([ended] {
            if (!*ended && DialogInFront()) OperatePress(DialogInFront(), kIdCancel);
        });
    }
    const int result = VideoSetupDialog(hWndMain);
    *ended = true;
    return result;
}

Step VideoSetUpTest::Press(int id)
{
    return [id](HWND dialog) { EXPECT_TRUE(OperatePress(dialog, id)) << id; };
}

Step VideoSetUpTest::Tick()
{
    return [](HWND dialog) { SendMessage(dialog, WM_TIMER, 1, 0); };
}

void VideoSetUpTest::Key(HWND dialog, int id, int key)
{
    QWidget* control = ControlOf(dialog, id);
    ASSERT_NE(control, nullptr);
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(control, &down);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier);
    QApplication::sendEvent(control, &up);
}

std::string VideoSetUpTest::SetupKey(const char* key)
{
    return GetPrivateProfileString("Setup", key, "missing", IniFilePath);
}

}  // namespace kelvo
