#include "support/fake_camera.h"

#include "genicam/glib_handles.h"
#include "support/shipped_file.h"
#include "support/temp_directory.h"

#include <arv.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <memory>
#include <numeric>
#include <thread>

namespace kelvo {
namespace {

using testing::ElementsAre;

std::vector<std::uint8_t> Packed(std::vector<std::int16_t> counts, std::string_view format)
{
    return PackFakeCounts(counts, *FakePixelFormatOf(format));
}

TEST(FakeFormats, LieOnTheWireAsTheStandardHasThem)
{
    EXPECT_THAT(Packed({0x2ABC, 0x1234}, "Mono14"), ElementsAre(0xBC, 0x2A, 0x34, 0x12));
    EXPECT_THAT(Packed({0x2ABC, 0x1234}, "Mono16"), ElementsAre(0xBC, 0x2A, 0x34, 0x12));
    EXPECT_THAT(Packed({0x2ABC, 0x1234}, "Mono14p"), ElementsAre(0xBC, 0x2A, 0x8D, 0x04));  // 0x1234 << 14 | 0x2ABC
    // Of 12 bits: 0xAAF and 0x48D.
    EXPECT_THAT(Packed({0x2ABC, 0x1234}, "Mono12"), ElementsAre(0xAF, 0x0A, 0x8D, 0x04));
    EXPECT_THAT(Packed({0x2ABC, 0x1234}, "Mono12p"), ElementsAre(0xAF, 0xDA, 0x48));
    EXPECT_THAT(Packed({0x2ABC, 0x1234}, "Mono12Packed"), ElementsAre(0xAA, 0xDF, 0x48));
    // Of 10 bits: 0x2AB and 0x123.
    EXPECT_THAT(Packed({0x2ABC, 0x1234}, "Mono10"), ElementsAre(0xAB, 0x02, 0x23, 0x01));
    EXPECT_THAT(Packed({0x2ABC, 0x1234}, "Mono10p"), ElementsAre(0xAB, 0x8E, 0x04));
    EXPECT_THAT(Packed({0x2ABC, 0x1234}, "Mono10Packed"), ElementsAre(0xAA, 0x33, 0x48));
    EXPECT_THAT(Packed({0x2ABC, 0x1234}, "Mono8"), ElementsAre(0xAA, 0x48));
}

TEST(FakeDetector, ShowsTheSourcesApart)
{
    std::string error;
    FakeDetector detector(*ReadSimSettings(ShippedFile("insb320.cnf"), error));
    ASSERT_EQ(detector.Columns(), 320U);
    ASSERT_EQ(detector.Rows(), 256U);
    const FakeRegisters registers{.exposureUs = 19400, .columns = 320, .rows = 256};
    const auto mean = [&](FakeFront front) {
        const std::vector<std::int16_t> frame = detector.Frame(registers, front, 1);
        return std::accumulate(frame.begin(), frame.end(), 0.0) / static_cast<double>(frame.size());
    };
    EXPECT_GT(mean(FakeFront::kHigh), mean(FakeFront::kLow) + 100);
    EXPECT_EQ(detector.Frame(registers, FakeFront::kLow, 5), detector.Frame(registers, FakeFront::kLow, 5));
    EXPECT_NE(detector.Frame(registers, FakeFront::kLow, 5), detector.Frame(registers, FakeFront::kLow, 6));
}

TEST(FakeDetector, TurnsAndCutsTheFrameAsItsRegistersSay)
{
    std::string error;
    FakeDetector detector(*ReadSimSettings(ShippedFile("insb320.cnf"), error));
    FakeRegisters registers{.columns = 320, .rows = 256};
    const std::vector<std::int16_t> whole = detector.Frame(registers, FakeFront::kLow, 3);
    registers = {.reverseX = true, .columns = 2, .rows = 2, .left = 10, .top = 20};
    const std::vector<std::int16_t> part = detector.Frame(registers, FakeFront::kLow, 3);
    const auto at = [&](std::size_t row, std::size_t column) { return whole[row * 320 + column]; };
    EXPECT_THAT(part, ElementsAre(at(20, 11), at(20, 10), at(21, 11), at(21, 10)));
    registers.testPattern = true;
    EXPECT_THAT(detector.Frame(registers, FakeFront::kLow, 3), ElementsAre(0, 16, 16, 32));
}

// --- On the loopback ------------------------------------------------------------------------------------------------

FakeCameraSetup LoopbackSetup()
{
    return {.settingsFile = ShippedFile("insb320.cnf"),
            .serial = "KTEST1",
            .format = "Mono14",
            .rateHz = 50,
            .frontFile = {}};
}

// Each format's first frame is the detector's, bit for bit.
TEST(FakeCameraOnLoopback, SendsWhatItsDetectorSees)
{
    std::string error;
    FakeDetector detector(*ReadSimSettings(ShippedFile("insb320.cnf"), error));
    for (const char* const format : {"Mono16", "Mono14p", "Mono12p", "Mono12Packed", "Mono8"}) {
        FakeCameraSetup setup = LoopbackSetup();
        setup.format = format;
        FakeCamera camera(setup);
        ASSERT_EQ(camera.Error(), "");
        camera.Put(FakeFront::kHigh);
        GError* failure = nullptr;
        const ObjectHold<ArvCamera> client(arv_camera_new("127.0.0.1", &failure));
        ASSERT_TRUE(client) << failure->message;
        const ObjectHold<ArvBuffer> buffer(arv_camera_acquisition(client.get(), 3000000, &failure));
        ASSERT_TRUE(buffer) << format;
        ASSERT_EQ(arv_buffer_get_status(buffer.get()), ARV_BUFFER_STATUS_SUCCESS) << format;
        std::size_t size = 0;
        const auto* const data = static_cast<const std::uint8_t*>(arv_buffer_get_data(buffer.get(), &size));
        const auto number = static_cast<std::int64_t>(arv_buffer_get_frame_id(buffer.get()));
        const auto expected =
            PackFakeCounts(detector.Frame(camera.Registers(), FakeFront::kHigh, number), *FakePixelFormatOf(format));
        EXPECT_TRUE(std::ranges::equal(std::span(data, size), expected)) << format << ", frame " << number;
    }
}

TEST(FakeCameraOnLoopback, HasARegisterForEachFeature)
{
    const FakeCamera camera(LoopbackSetup());
    ASSERT_EQ(camera.Error(), "");
    GError* failure = nullptr;
    const ObjectHold<ArvCamera> client(arv_camera_new("127.0.0.1", &failure));
    ASSERT_TRUE(client) << failure->message;
    EXPECT_STREQ(arv_camera_get_model_name(client.get(), &failure), "Loopback");
    EXPECT_STREQ(arv_camera_get_device_serial_number(client.get(), &failure), "KTEST1");
    EXPECT_EQ(arv_camera_get_frame_rate(client.get(), &failure), 50);
    arv_camera_set_float(client.get(), "AcquisitionFrameRate", 125, &failure);
    arv_camera_set_float(client.get(), "ExposureTime", 1500, &failure);
    arv_camera_set_float(client.get(), "Gain", 7, &failure);
    arv_camera_set_float(client.get(), "BlackLevel", 200, &failure);
    arv_camera_set_boolean(client.get(), "ReverseX", 1, &failure);
    arv_camera_set_boolean(client.get(), "ReverseY", 1, &failure);
    arv_camera_set_string(client.get(), "TestPattern", "GreyDiagonalRamp", &failure);
    arv_camera_set_region(client.get(), 16, 8, 64, 32, &failure);
    ASSERT_EQ(failure, nullptr) << failure->message;
    EXPECT_EQ(camera.Registers(), (FakeRegisters{.exposureUs = 1500,
                                                 .periodUs = 8000,
                                                 .gain = 7,
                                                 .blackLevel = 200,
                                                 .reverseX = true,
                                                 .reverseY = true,
                                                 .testPattern = true,
                                                 .columns = 64,
                                                 .rows = 32,
                                                 .left = 16,
                                                 .top = 8}));
    EXPECT_EQ(arv_camera_get_payload(client.get(), &failure), 64 * 32 * 2);
}

TEST(FakeCameraOnLoopback, TakesWhatStandsInFrontFromAFile)
{
    const TempDirectory directory;
    FakeCameraSetup setup = LoopbackSetup();
    setup.frontFile = directory / "front";
    PutFile(setup.frontFile, "low\n");
    const FakeCamera camera(setup);
    std::string error;
    FakeDetector detector(*ReadSimSettings(ShippedFile("insb320.cnf"), error));
    GError* failure = nullptr;
    const ObjectHold<ArvCamera> client(arv_camera_new("127.0.0.1", &failure));
    ASSERT_TRUE(client) << failure->message;
    for (const auto& [word, front] : {std::pair{"low", FakeFront::kLow}, {"high", FakeFront::kHigh}}) {
        PutFile(setup.frontFile, word);
        const ObjectHold<ArvBuffer> buffer(arv_camera_acquisition(client.get(), 3000000, &failure));
        ASSERT_TRUE(buffer);
        std::size_t size = 0;
        const auto* const data = static_cast<const std::uint8_t*>(arv_buffer_get_data(buffer.get(), &size));
        const auto number = static_cast<std::int64_t>(arv_buffer_get_frame_id(buffer.get()));
        const auto expected =
            PackFakeCounts(detector.Frame(camera.Registers(), front, number), *FakePixelFormatOf("Mono14"));
        EXPECT_TRUE(std::ranges::equal(std::span(data, size), expected)) << word;
    }
}

TEST(FakeCameraOnLoopback, IsGoneWhenItEnds)
{
    const auto opens = [] { return ObjectHold<ArvCamera>(arv_camera_new("127.0.0.1", nullptr)) != nullptr; };
    {
        const FakeCamera camera(LoopbackSetup());
        ASSERT_EQ(camera.Error(), "");
        EXPECT_TRUE(opens());
    }
    EXPECT_FALSE(opens());
}

TEST(FakeCamera, TellsWhyItCannotStand)
{
    FakeCameraSetup format = LoopbackSetup();
    format.format = "RGB8";
    EXPECT_EQ(FakeCamera(format).Error(), "There is no format RGB8.");
    FakeCameraSetup rate = LoopbackSetup();
    rate.rateHz = 1000;
    EXPECT_EQ(FakeCamera(rate).Error(), "The rate must lie between 2 and 200 Hz.");
    FakeCameraSetup file = LoopbackSetup();
    file.settingsFile = "/nowhere.cnf";
    EXPECT_NE(FakeCamera(file).Error(), "");
    FakeCameraSetup address = LoopbackSetup();
    address.address = "192.0.2.1";
    EXPECT_THAT(FakeCamera(address).Error(), testing::StartsWith("No camera can stand at 192.0.2.1"));
}

}  // namespace
}  // namespace kelvo
