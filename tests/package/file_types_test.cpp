// Which type a desktop gives to a file: several kinds end in .img, and the first bytes tell which it is.
#include "support/temp_directory.h"

#include <QMimeDatabase>
#include <QString>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {
namespace {

constexpr std::string_view kImage = "application/x-kelvo-image";

// The desktop's types and Kelvo's in one directory, as an installed program has them, and made ready as its package
// does.
class FileTypes : public testing::Test {
  protected:
    static void SetUpTestSuite()
    {
        if (share) return;
        share.emplace();
        const std::string packages = *share / "mime/packages";
        std::filesystem::create_directories(packages);
        for (const char* const types : {KELVO_TYPES, "/usr/share/mime/packages/freedesktop.org.xml"})
            std::filesystem::copy(types, packages);
        setenv("XDG_DATA_HOME", share->Path().c_str(), 1);
        setenv("PKGSYSTEM_ENABLE_FSYNC", "0", 1);
        ASSERT_EQ(std::system(("update-mime-database '" + (*share / "mime") + "'").c_str()), 0);
    }
    FileTypes()
    {
        setenv("XDG_DATA_DIRS", share->Path().c_str(), 1);
        setenv("XDG_DATA_HOME", directory.Path().c_str(), 1);
    }
    ~FileTypes() override
    {
        unsetenv("XDG_DATA_DIRS");
        unsetenv("XDG_DATA_HOME");
    }

    std::string TypeOf(const std::string& name, std::string_view contents)
    {
        PutFile(directory / name, contents);
        return QMimeDatabase().mimeTypeForFile(QString::fromStdString(directory / name)).name().toStdString();
    }

    inline static std::optional<TempDirectory> share;
    TempDirectory directory;
};

// The first 12 bytes as docs/files.md has them: ByteSwap, 160 columns, 120 rows, the bytes of a sample, filled up.
std::string HeaderWith(unsigned char sampleBytes)
{
    std::string header = {'\xFF', '\xFF', '\xA0', '\0', '\x78', '\0', static_cast<char>(sampleBytes), '\0'};
    header.append(4, '\xFF');
    header.resize(512);
    return header;
}

std::string WithWordsSwapped(std::string bytes)
{
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) std::swap(bytes[i], bytes[i + 1]);
    bytes[0] = bytes[1] = '\0';
    return bytes;
}

TEST_F(FileTypes, TheShippedSampleIsAnImage)
{
    const std::string sample = FileContents(KELVO_DEFAULTS "/sample.seq");
    ASSERT_GT(sample.size(), 512U);
    EXPECT_EQ(TypeOf("sample.seq", sample), kImage);
    EXPECT_EQ(TypeOf("without_an_ending", sample), kImage);
}

TEST_F(FileTypes, CountsAndFloatsAreImagesWithoutAnEnding)
{
    EXPECT_EQ(TypeOf("counts", HeaderWith(2)), kImage);
    EXPECT_EQ(TypeOf("floats", HeaderWith(4)), kImage);
    EXPECT_EQ(TypeOf("swapped", WithWordsSwapped(HeaderWith(2))), kImage);
    EXPECT_EQ(TypeOf("wrapped", '\x01' + std::string(110, '\0') + HeaderWith(2)), kImage);
}

TEST_F(FileTypes, OtherBytesAreNone)
{
    EXPECT_NE(TypeOf("bytes_of_three", HeaderWith(3)), kImage);
    EXPECT_NE(TypeOf("filled", std::string(512, '\xFF')), kImage);
    EXPECT_NE(TypeOf("zeros", std::string(512, '\0')), kImage);
    EXPECT_NE(TypeOf("text", "Infrared images, a list\n"), kImage);
}

TEST_F(FileTypes, OfTwoKindsWithOneEndingTheBytesDecide)
{
    EXPECT_EQ(TypeOf("own.img", HeaderWith(2)), kImage);
    EXPECT_EQ(TypeOf("OWN.IMG", HeaderWith(4)), kImage);
    EXPECT_EQ(TypeOf("disk.img", std::string(40000, '\0')), "application/x-raw-disk-image");
    EXPECT_EQ(TypeOf("unknown.seq", std::string(512, '\0')), kImage) << "nobody else has that ending";
}

TEST_F(FileTypes, TheJournalOfARecordingHasItsOwn)
{
    EXPECT_EQ(TypeOf("run.seq.frames", "KVFRAMES"), "application/x-kelvo-frames");
    EXPECT_EQ(TypeOf("run", "KVFRAMES" + std::string(56, '\0')), "application/x-kelvo-frames");
}

}  // namespace
}  // namespace kelvo
