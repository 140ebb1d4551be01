#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/temp_directory.h"
#include "viewing/img_head_dialog.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

class ImgHead : public testing::Test {
  protected:
    ImgHead() { write::windows.IniFilePath = directory / "kelvo.ini"; }
    static std::string Stored() { return GetPrivateProfileString("Setup", "ImageHeader", "missing", IniFilePath); }
    static int Checked(HWND dialog)
    {
        for (const int id : {101, 102, 103, 104}) {
            if (IsDlgButtonChecked(dialog, id)) return id;
        }
        return 0;
    }
    int Run(std::function<void(HWND)> work)
    {
        op.Do([work = std::move(work)] { work(DialogInFront()); });
        return ImgHeadDialog(nullptr);
    }

    TestOperator op;
    TempDirectory directory;
};

TEST_F(ImgHead, OpensWithTheStoredChoice)
{
    EXPECT_EQ(Run([](HWND dialog) {
                  EXPECT_EQ(GetWindowText(dialog), "Image File Header Setup");
                  EXPECT_EQ(Checked(dialog), 101) << "without a key";
                  EXPECT_FALSE(DlgItemEnabled(dialog, 103));
                  OperatePress(dialog, kIdCancel);
              }),
              0);
    for (const int stored : {0, 1, 2, 3}) {
        WritePrivateProfileString("Setup", "ImageHeader", std::to_string(stored), IniFilePath);
        Run([=](HWND dialog) {
            EXPECT_EQ(Checked(dialog), 101 + stored);
            EXPECT_FALSE(DlgItemEnabled(dialog, 103));
            OperatePress(dialog, kIdCancel);
        });
    }
}

TEST_F(ImgHead, OkStoresTheChoiceAsANumber)
{
    const std::pair<int, const char*> rows[] = {{102, "1"}, {104, "3"}, {101, "0"}};
    for (const auto& [id, stored] : rows) {
        EXPECT_EQ(Run([id = id](HWND dialog) {
                      EXPECT_TRUE(OperatePress(dialog, id));
                      OperatePress(dialog, kIdOk);
                  }),
                  1);
        EXPECT_EQ(Stored(), stored);
    }
    WritePrivateProfileString("Setup", "ImageHeader", "2", IniFilePath);
    Run([](HWND dialog) { OperatePress(dialog, kIdOk); });
    EXPECT_EQ(Stored(), "2") << "what can't be chosen can still be kept";
}

TEST_F(ImgHead, CancelStoresNothing)
{
    EXPECT_EQ(Run([](HWND dialog) {
                  OperatePress(dialog, 104);
                  OperatePress(dialog, kIdCancel);
              }),
              0);
    EXPECT_EQ(Stored(), "missing");
}

TEST_F(ImgHead, ANumberBeyondTheChoicesShowsTheNearest)
{
    WritePrivateProfileString("Setup", "ImageHeader", "77", IniFilePath);
    Run([](HWND dialog) {
        EXPECT_EQ(Checked(dialog), 104);
        OperatePress(dialog, kIdCancel);
    });
}

TEST_F(ImgHead, ADialogThatCannotBeShownIsTold)
{
    SetFault("load dialog ImgHead", true);
    EXPECT_EQ(ImgHeadDialog(nullptr), 0);
    EXPECT_EQ(op.Boxes().at(0).text, "Unable to display dialog");
    EXPECT_EQ(op.Boxes().at(0).caption, "System Error");
}

}  // namespace
}  // namespace kelvo
