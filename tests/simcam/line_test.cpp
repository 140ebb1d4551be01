// The simulated head at the end of a serial port.
#include "platform/serial.h"
#include "support/camera_fixture.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class SimLine : public SimCameraTest {
  protected:
    void SetUp() override
    {
        SimCameraTest::SetUp();
        PutFile(directory / "platform.ini", "[Ports]\nCOM2=sim:insb320.cnf\nCOM3=sim:hgcdte64.cnf\nCOM4=sim:no.cnf\n");
        RegisterSimulatedHeads();
    }
    static void Write(SerialPort& port, const std::vector<std::uint8_t>& bytes)
    {
        EXPECT_EQ(WriteSerialPort(port, bytes), static_cast<std::ptrdiff_t>(bytes.size()));
    }
    static std::vector<std::uint8_t> Read(SerialPort& port, std::size_t most = 16)
    {
        std::vector<std::uint8_t> bytes(most);
        const std::ptrdiff_t count = ReadSerialPort(port, bytes);
        bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
        return bytes;
    }
};

TEST_F(SimLine, TheHeadAnswersWholeFrames)
{
    const SerialHandle port = OpenSerialPort("COM2");
    ASSERT_TRUE(port);
    Write(*port, {0x20, 0});
    EXPECT_THAT(Read(*port), IsEmpty());
    Write(*port, {0, 0, 0x70});
    EXPECT_THAT(Read(*port, 3), ElementsAre(0x10, 0x66, 0));
    EXPECT_THAT(Read(*port), ElementsAre(0));
    Write(*port, {1, 99, 0, 0x80, 3, 0, 0});
    EXPECT_THAT(Read(*port), ElementsAre(0x70, 1, 99, 0, 0x80, 3, 0, 0));
}

TEST_F(SimLine, PurgedAnswersAreGone)
{
    const SerialHandle port = OpenSerialPort("COM2");
    ASSERT_TRUE(port);
    Write(*port, {0x20, 0, 0, 0});
    PurgeSerialPort(*port, kPurgeRxClear);
    EXPECT_THAT(Read(*port), IsEmpty());
    Write(*port, {0x20, 0, 0, 0});
    EXPECT_THAT(Read(*port), ElementsAre(0x10, 0x66, 0, 0));
}

TEST_F(SimLine, TheHeadKeepsItsRegistersWhenItsLinkCloses)
{
    {
        const SerialHandle port = OpenSerialPort("COM3");
        ASSERT_TRUE(port);
        Write(*port, {0x90, 5, 11, 0});
    }
    Open("hgcdte64.cnf");
    EXPECT_DOUBLE_EQ(SimFramePeriodUs(*camera), 4096);
}

TEST_F(SimLine, AFileThatMakesNoHeadDoesNotOpen)
{
    EXPECT_EQ(OpenSerialPort("COM4"), nullptr);
    EXPECT_THAT(LastSerialErrorText(), HasSubstr("can't be read"));
}

}  // namespace
}  // namespace kelvo
