#include "genicam/camera_wiring.h"

#include "platform/faults.h"
#include "platform/profile.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/shipped_file.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

namespace kelvo {
namespace {

// A machine with the settings as they are shipped: Camera.1 to Camera.4, COM1 to COM4.
class CameraWiring : public testing::Test {
  protected:
    CameraWiring()
    {
        for (const char* name : {"camera.ini", "platform.ini", "kelvo.ini"}) {
            std::filesystem::copy_file(ShippedFile(name), directory / name);
        }
        SetDefaultDir(directory.Path());
    }

    std::optional<WiringPlan> Plan() const { return PlanWiring(camera, offer, *PixelFormatNamed("Mono14")); }
    std::string Camera(std::string_view section, std::string_view key) const
    {
        return GetPrivateProfileString(section, key, "-", directory / "camera.ini");
    }
    std::string Machine(std::string_view section, std::string_view key) const
    {
        return GetPrivateProfileString(section, key, "-", directory / "platform.ini");
    }
    std::map<std::string, std::string> Files() const
    {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(directory.Path())) {
            files[entry.path().filename().string()] = FileContents(entry.path().string());
        }
        return files;
    }

    TempDirectory directory;
    TestOperator op;
    FoundCamera camera{.id = "Kelvo-Loopback-K7",
                       .vendor = "Kelvo",
                       .model = "Loopback",
                       .serial = "K7",
                       .address = "127.0.0.1",
                       .transport = "GigE Vision"};
    CameraOffer offer{.columns = 320,
                      .rows = 256,
                      .formats = {"Mono14"},
                      .format = "Mono14",
                      .ratesHz = NumberRange{2, 200},
                      .rateHz = 50,
                      .exposuresUs = {},
                      .exposureUs = {}};
};

TEST_F(CameraWiring, TakesTheFirstSectionAndPortThatNobodyHas)
{
    const auto plan = Plan();
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->section, 5);
    EXPECT_EQ(plan->port, 5);
    EXPECT_FALSE(plan->standsAlready);
}

TEST_F(CameraWiring, PlansWithoutWriting)
{
    const auto before = Files();
    Plan();
    EXPECT_TRUE(FlushProfiles());
    EXPECT_EQ(Files(), before);
}

TEST_F(CameraWiring, LeavesAPortToTheSectionThatNamesIt)
{
    WritePrivateProfileString("Camera.5", "Description", "Another", directory / "camera.ini");
    WritePrivateProfileString("Camera.5", "nCommPort", "5", directory / "camera.ini");
    WritePrivateProfileString("Ports", "COM6", "none", directory / "platform.ini");
    const auto plan = Plan();
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->section, 6);
    EXPECT_EQ(plan->port, 7);
}

TEST_F(CameraWiring, WritesSectionPortBoardAndActiveCamera)
{
    ASSERT_TRUE(WriteWiring(*Plan()));
    ForgetProfiles();  // as the disk has them
    EXPECT_EQ(Camera("Camera.5", "Description"), "Kelvo Loopback K7");
    EXPECT_EQ(Camera("Camera.5", "nCommPort"), "5");
    EXPECT_EQ(Camera("Camera.5", "QVF1058_MasterClockFrequency"), "65536000");
    EXPECT_EQ(Camera("Camera.5", "IndexFrameRate"), "6");
    EXPECT_EQ(Camera("Camera.5", "cnfFile"), "camera5.cnf");
    EXPECT_EQ(FileContents(directory / "camera5.cnf"), "[GenICam]\nDevice=K7\nFormat=Mono14\n");
    EXPECT_EQ(Machine("Ports", "COM5"), "genicam:K7");
    EXPECT_EQ(Machine("Board", "Board"), "genicam");
    EXPECT_EQ(GetPrivateProfileInt("Setup", "ActiveCamera", 0, directory / "kelvo.ini"), 5);
    EXPECT_EQ(Camera("Camera.2", "Description"), "InSb 320 x 256") << "the others stay";
    EXPECT_EQ(Machine("Ports", "COM2"), "sim:insb320.cnf");
}

TEST_F(CameraWiring, KeepsSectionAndPortOfACameraThatStandsAlready)
{
    ASSERT_TRUE(WriteWiring(*Plan()));
    offer.rateHz = 100;
    const auto again = Plan();
    ASSERT_TRUE(again);
    EXPECT_EQ(again->section, 5);
    EXPECT_EQ(again->port, 5);
    EXPECT_TRUE(again->standsAlready);
    camera.serial = "K8";
    EXPECT_EQ(Plan()->section, 6);
    EXPECT_EQ(Plan()->port, 6);
}

TEST_F(CameraWiring, HasNoPlanWhereAllSectionsAreTaken)
{
    for (int number = 1; number <= 40; ++number) {
        WritePrivateProfileString("Camera." + std::to_string(number), "Description", "Taken", directory / "camera.ini");
    }
    EXPECT_FALSE(Plan());
}

TEST_F(CameraWiring, LeavesAllFilesAsTheyWereWhereADiskFails)
{
    const auto before = Files();
    const auto plan = Plan();
    int failed = 0;
    for (int step = 1;; ++step) {
        SetFaultOnce("disk", step);
        const bool written = WriteWiring(*plan);
        const bool met = QuestionsUntilFault("disk") == 0;
        SetFaultOnce("disk", 0);
        ASSERT_NE(written, met) << "step " << step;
        if (written) break;
        ++failed;
        ASSERT_TRUE(FlushProfiles());
        ASSERT_EQ(Files(), before) << "step " << step;
        ForgetProfiles();
    }
    EXPECT_GE(failed, 4) << "each of the four files can fail";
}

}  // namespace
}  // namespace kelvo
