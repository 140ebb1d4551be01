// The inside of dialogs: what dialog.cpp, dialog_controls.cpp and dialog_operate.cpp share.
#pragma once

#include "platform/dialog.h"
#include "platform/qt_window.h"

#include <QEventLoop>
#include <QPointer>
#include <QWidget>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

struct DialogData {
    std::string name;
    HWND owner = nullptr;
    std::map<int, QPointer<QWidget>> controls;  // by controlId; of several with one number the first
    std::vector<HWND> controlWindows;           // DlgItemWindow's, forgotten with the dialog
    QEventLoop* loop = nullptr;                 // while DialogBox waits
    bool modal = false;
    std::shared_ptr<QObject> pictureGate;  // while it takes presses on the picture
    bool ended = false;                    // EndDialog was called: the controls are silent from then on
    bool centred = false;                  // CentreDialog placed it: kept centred when it grows before it is seen
    int result = 0;
};

// The dialog's record; null for a handle that is no dialog or panel.
DialogData* DialogOf(HWND dialog);

// The control of that number as a T; null if the dialog has none of that number and class.
QWidget* ControlOf(HWND dialog, int id);
template <typename T>
T* ControlAs(HWND dialog, int id)
{
    return dynamic_cast<T*>(ControlOf(dialog, id));
}

// Lets what the control does reach the dialog's procedure.
void ConnectControl(HWND dialog, int id, QWidget* control);

// Gives a control the focus as the Tab key does: an edit's text is selected, so that what is typed replaces it.
void FocusAsByTab(QWidget& control);

// WM_COMMAND as a control sends it; nothing once the dialog has ended.
void SendControlCommand(HWND dialog, int id, int notification);

}  // namespace kelvo
