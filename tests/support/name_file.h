// Naming a file in a dialog that has lists of its own (CAL_OPEN, CAL_SAVE): typed, then Ok.
#pragma once

#include "platform/dialog.h"
#include "platform/front.h"
#include "ui/file_lists.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvo {

inline void NameFile(const std::string& name)
{
    const HWND dialog = DialogInFront();
    ASSERT_TRUE(dialog);
    OperateText(dialog, kNameToFile, name);
    OperatePress(dialog, kIdOk);
}

inline void CancelNaming()
{
    ASSERT_TRUE(DialogInFront());
    OperatePress(DialogInFront(), kIdCancel);
}

}  // namespace kelvo
