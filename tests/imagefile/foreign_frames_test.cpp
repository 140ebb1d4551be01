#include "imagefile/foreign_frames.h"

#include "imagefile/stored_frames.h"
#include "imagefile/tiff_file.h"
#include "platform/memory.h"
#include "support/stored_files.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

namespace kelvo {
namespace {

using ::testing::ElementsAre;

// The files of make_foreign_files.py, made by NumPy, astropy, tifffile and tiffcp.
class ForeignFiles : public ::testing::Test {
  protected:
    static constexpr int kRows = 37;
    static constexpr int kColumns = 53;

    // Once for all of these tests, which only read them: making them takes longer than the rest.
    static void SetUpTestSuite()
    {
        directory = std::make_unique<TempDirectory>();
        const std::string command = "/usr/bin/python3 " KELVO_MAKE_FOREIGN_FILES " " + directory->Path();
        ASSERT_EQ(std::system(command.c_str()), 0);
    }
    static void TearDownTestSuite() { directory.reset(); }
    static std::string PathOf(const std::string& name) { return directory->Path() + "/" + name; }

    // The same formulas as in the script.
    static int Signed(int frame, int row, int column) { return 1000 * frame + 20 * row + column - 1500; }
    static int Low(int frame, int row, int column) { return Signed(frame, row, column) + 1500; }
    static int HighLowered(int frame, int row, int column) { return 23 * Low(frame, row, column) - 32768; }
    static int SignedFromBelow(int frame, int row, int column) { return Signed(frame, kRows - 1 - row, column); }

    using Sample = int (*)(int frame, int row, int column);
    static void ExpectFrames(const std::string& name, Sample sample, const std::string& changes)
    {
        SCOPED_TRACE(name);
        std::string why;
        std::optional<StoredFrames> frames = StoredFrames::Open(PathOf(name), why);
        ASSERT_TRUE(frames) << why;
        EXPECT_EQ(frames->Changes(), changes);
        ASSERT_EQ(frames->Frames(), 3);
        ExpectSizes(frames->Header());
        // Backwards, so that no reader leans on having read the one before.
        for (int frame = 2; frame >= 0; --frame) ExpectCounts(*frames, frame, sample);
    }

  private:
    static void ExpectSizes(const ImageHeaderRecord& header)
    {
        EXPECT_EQ(int{header.ImageWidth}, kColumns);
        EXPECT_EQ(int{header.ImageHeight}, kRows);
        EXPECT_EQ(int{header.RightColumn}, kColumns - 1);
        EXPECT_EQ(int{header.BottomRow}, kRows - 1);
        EXPECT_EQ(std::uint32_t{header.FrameCount}, 3U);
    }
    static void ExpectCounts(StoredFrames& frames, int frame, Sample sample)
    {
        std::vector<std::int16_t> counts(frames.Pixels());
        std::string why;
        ASSERT_TRUE(frames.ReadCounts(frame, counts, why)) << why;
        std::vector<std::int16_t> expected;
        for (int row = 0; row < kRows; ++row) {
            for (int column = 0; column < kColumns; ++column) {
                expected.push_back(static_cast<std::int16_t>(sample(frame, row, column)));
            }
        }
        EXPECT_EQ(counts, expected) << "frame " << frame;
    }

    static inline std::unique_ptr<TempDirectory> directory;
};

TEST_F(ForeignFiles, GiveEachSampleAsOtherProgramsStoredIt)
{
    for (const char* name : {"signed.npy", "big_endian.npy", "version2.npy", "version3.npy", "cube.fits",
                             "top_down.fits", "long_header.fits", "signed.tif", "big_endian.tif", "big.tif",
                             "tiles.tif", "zip.tif", "lzw.tif", "packbits.tif", "lzma.tif", "zstd.tif"}) {
        ExpectFrames(name, Signed, "");
    }
}

TEST_F(ForeignFiles, WithoutSignStayAsTheyAreWhereCountsHoldThem)
{
    for (const char* name : {"low.npy", "low.fits", "low.TIFF"}) ExpectFrames(name, Low, "");
}

TEST_F(ForeignFiles, WithoutSignAreLoweredAsAWholeWhereOneIsTooHigh)
{
    for (const char* name : {"high.npy", "high_big_endian.npy", "high.fts", "high.tif"}) {
        ExpectFrames(name, HighLowered, "less 32768");
    }
}

TEST_F(ForeignFiles, StoredFromBelowAreTurned)
{
    for (const char* name : {"bottom_up.fits", "bottom_up.tif"}) ExpectFrames(name, SignedFromBelow, "rows turned");
}

TEST_F(ForeignFiles, OfOnePlaneHaveOneFrame)
{
    for (const char* name : {"plane.npy", "plane.fit"}) {
        SCOPED_TRACE(name);
        std::string why;
        std::optional<StoredFrames> frames = StoredFrames::Open(PathOf(name), why);
        ASSERT_TRUE(frames) << why;
        ASSERT_EQ(frames->Frames(), 1);
        std::vector<std::int16_t> counts(frames->Pixels());
        ASSERT_TRUE(frames->ReadCounts(0, counts, why)) << why;
        EXPECT_EQ(counts.at(2 * kColumns + 7), Signed(1, 2, 7));
        EXPECT_FALSE(frames->ReadCounts(1, counts, why));
        EXPECT_EQ(why, "has no such frame");
    }
}

TEST_F(ForeignFiles, HaveTheRangeThatHoldsTheirCounts)
{
    // The highest samples are 2772 - 1500, 2772 and 23 * 2772 - 32768.
    for (const auto& [name, high] :
         {std::pair("signed.npy", 16383), std::pair("low.TIFF", 16383), std::pair("high.fts", 32767)}) {
        std::string why;
        const std::optional<StoredFrames> frames = StoredFrames::Open(PathOf(name), why);
        ASSERT_TRUE(frames) << why;
        EXPECT_EQ(int{frames->Header().DisplayLow}, 0) << name;
        EXPECT_EQ(int{frames->Header().DisplayHigh}, high) << name;
    }
}

TEST_F(ForeignFiles, TellTheIntegrationTime)
{
    std::string why;
    const std::optional<StoredFrames> frames = StoredFrames::Open(PathOf("cube.fits"), why);
    ASSERT_TRUE(frames) << why;
    EXPECT_EQ(float{frames->Header().IntegrationMsec}, 2.5F);
}

TEST_F(ForeignFiles, ThatArentCountsAreRefusedWithTheReason)
{
    const std::pair<const char*, const char*> refused[] = {
        {"fortran.npy", "is stored in Fortran order"},
        {"floats.npy", "holds floats"},
        {"bytes.npy", "holds samples of 8 bits"},
        {"longs.npy", "holds samples of 32 bits"},
        {"line.npy", "has 1 dimension"},
        {"scalar.npy", "has 0 dimensions"},
        {"four.npy", "has 4 dimensions"},
        {"nothing.npy", "holds no pixels"},
        {"complex.npy", "holds complex numbers"},
        {"truths.npy", "holds what aren't numbers"},
        {"records.npy", "holds records"},
        {"floats.fits", "holds floats"},
        {"bytes.fits", "holds samples of 8 bits"},
        {"four.fits", "has 4 dimensions"},
        {"extension.fits", "holds no image in its first part"},
        {"scaled.fits", "holds values that aren't counts (BSCALE or BZERO)"},
        {"floats.tif", "holds floats"},
        {"bytes.tif", "holds samples of 8 bits"},
        {"color.tif", "holds 3 planes"},
        {"turned.tif", "is stored mirrored or turned"},
        {"mixed.tif", "holds pages of different kinds"},
    };
    for (const auto& [name, reason] : refused) {
        std::string why;
        EXPECT_FALSE(StoredFrames::Open(PathOf(name), why)) << name;
        EXPECT_EQ(why, reason) << name;
    }
}

std::string Contents(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(ForeignFiles, CutAnywhereAreRefusedOrWhole)
{
    for (const std::string name : {"plane.npy", "plane.fit", "signed.tif", "zip.tif", "tiles.tif"}) {
        const std::string whole = Contents(PathOf(name));
        for (std::size_t bytes = 0; bytes < whole.size(); bytes += 1 + bytes / 16) {
            const std::string path = PathOf("cut" + std::filesystem::path(name).extension().string());
            std::ofstream(path, std::ios::binary) << whole.substr(0, bytes);
            std::string why;
            std::optional<StoredFrames> frames = StoredFrames::Open(path, why);
            bool isWhole = frames.has_value();
            std::vector<std::int16_t> counts(frames ? frames->Pixels() : 0);
            for (std::int64_t frame = 0; isWhole && frame < frames->Frames(); ++frame) {
                isWhole = frames->ReadCounts(frame, counts, why);
            }
            // What lies behind the samples, filling and directories of no page, may be missing.
            if (isWhole) continue;
            EXPECT_FALSE(why.empty()) << name << " cut at " << bytes;
        }
        std::ofstream(PathOf("half" + std::filesystem::path(name).extension().string()), std::ios::binary)
            << whole.substr(0, whole.size() / 2);
    }
    for (const auto& [name, reason] : {std::pair("half.npy", "is cut short"), std::pair("half.fit", "is cut short")}) {
        std::string why;
        EXPECT_FALSE(StoredFrames::Open(PathOf(name), why));
        EXPECT_EQ(why, reason) << name;
    }
    std::string why;
    EXPECT_FALSE(StoredFrames::Open(PathOf("half.tif"), why));
    EXPECT_EQ(why, "is cut short");  // of the tiles, whose directories come first
}

// ---- made by hand

std::string Npy(const std::string& header, std::size_t samples)
{
    std::string bytes("\x93NUMPY\x01\0", 8);
    bytes += static_cast<char>(header.size() & 0xFF);
    bytes += static_cast<char>(header.size() >> 8);
    return bytes + header + std::string(2 * samples, '\0');
}

std::string WhyNotOpened(const std::string& path)
{
    std::string why;
    EXPECT_FALSE(StoredFrames::Open(path, why)) << path;
    return why;
}

TEST(ForeignFrames, NeedsMoreThanANumpyHeader)
{
    const TempDirectory directory;
    const std::string path = directory.Path() + "/a.npy";
    const auto refused = [&path](const std::string& header) {
        std::ofstream(path, std::ios::binary) << Npy(header, 6);
        return WhyNotOpened(path);
    };
    const std::string unreadable = "has a header that can't be read";
    EXPECT_EQ(refused(""), unreadable);
    EXPECT_EQ(refused("{"), unreadable);
    EXPECT_EQ(refused("{'descr': '<i2', 'fortran_order': False, 'shape': (2, 3)"), unreadable);
    EXPECT_EQ(refused("{'descr': '<i2', 'fortran_order': False, 'shape': (2, 3)} x"), unreadable);
    EXPECT_EQ(refused("{'descr': '<i2', 'fortran_order': False}"), unreadable);
    EXPECT_EQ(refused("{'descr': '<i2', 'descr': '<i2', 'fortran_order': False, 'shape': (2, 3)}"), unreadable);
    EXPECT_EQ(refused("{'descr': '<i2', 'fortran_order': False, 'shape': (2, -3)}"), unreadable);
    EXPECT_EQ(refused("{'descr': '<i2', 'fortran_order': False, 'shape': (2, 99999999999999999999)}"), unreadable);
    EXPECT_EQ(refused("{'descr': '<i2', 'fortran_order': Maybe, 'shape': (2, 3)}"), unreadable);
    EXPECT_EQ(refused("{'descr': '<i2x', 'fortran_order': False, 'shape': (2, 3)}"), unreadable);
    EXPECT_EQ(refused("{'descr': '<i', 'fortran_order': False, 'shape': (2, 3)}"), unreadable);
    EXPECT_EQ(refused("{'descr': '|i2', 'fortran_order': False, 'shape': (2, 3)}"), unreadable);
    EXPECT_EQ(refused("{'descr': '<i2', 'fortran_order': False, 'shape': (2, 4)}"), "is cut short");
    EXPECT_EQ(refused("{'descr': '<i2', 'fortran_order': False, 'shape': (32768, 1)}"),
              "has sides of more than 32767 pixels");
    EXPECT_EQ(refused("{'descr': '<i2', 'fortran_order': False, 'shape': (2147483648, 1, 1)}"),
              "holds more than 2147483647 frames");
    EXPECT_EQ(refused("{'descr': '<i2', 'fortran_order': False, 'shape': (2147483647, 32767, 32767)}"), "is cut short");
    std::string why;
    std::ofstream(path, std::ios::binary) << Npy("{\"shape\":(2,3),'descr':'<i2','fortran_order':False}", 6);
    EXPECT_TRUE(StoredFrames::Open(path, why)) << why;  // no commas at the end, another order, other quotes
}

// A header of these cards and those of 3 x 2 samples, with as many zeros.
std::string Fits(const std::vector<std::string>& cards)
{
    constexpr std::size_t kBlock = 2880;
    std::string text;
    std::vector<std::string> all = {"SIMPLE  =                    T", "BITPIX  =                   16",
                                    "NAXIS   =                    2", "NAXIS1  =                    3",
                                    "NAXIS2  =                    2"};
    all.insert(all.end(), cards.begin(), cards.end());
    all.emplace_back("END");
    for (std::string card : all) {
        card.resize(80, ' ');
        text += card;
    }
    text.resize((text.size() + kBlock - 1) / kBlock * kBlock, ' ');
    return text + std::string(kBlock, '\0');
}

TEST(ForeignFrames, TakeNumbersOfFitsCardsAsItsRulesWriteThem)
{
    const TempDirectory directory;
    const std::string path = directory.Path() + "/a.fits";
    const auto exposure = [&path](const std::string& card) {
        std::ofstream(path, std::ios::binary) << Fits({card});
        std::string why;
        const std::optional<StoredFrames> frames = StoredFrames::Open(path, why);
        return frames ? static_cast<double>(frames->Header().IntegrationMsec) : -1;
    };
    EXPECT_EQ(exposure("EXPTIME =              +2.5D-1 / a double's exponent"), 250);
    EXPECT_EQ(exposure("EXPTIME =                  1e9"), 1e12F);
    for (const char* const none : {"1.1e9", "1D308", "-5", "'soon'", "nan", "-inf"}) {
        EXPECT_EQ(exposure(std::string("EXPTIME = ") + none), 0) << none;
    }
    std::ofstream(path, std::ios::binary) << Fits({"BSCALE  = 1.0D0", "BZERO   = 3.2768D4"});
    std::string why;
    EXPECT_TRUE(StoredFrames::Open(path, why)) << why;
    std::ofstream(path, std::ios::binary) << Fits({"BSCALE  = 1.0D0", "BZERO   = 3.2768D3"});
    EXPECT_EQ(WhyNotOpened(path), "holds values that aren't counts (BSCALE or BZERO)");
}

TEST(ForeignFrames, AreKnownByNameAndByWhatTheyBeginWith)
{
    const TempDirectory directory;
    const auto kindOf = [&directory](const std::string& name, const std::string& bytes) {
        std::ofstream(directory.Path() + "/" + name, std::ios::binary) << bytes;
        return ForeignKindOf(directory.Path() + "/" + name);
    };
    EXPECT_EQ(kindOf("a.NPY", Npy("", 0)), ForeignKind::kNpy);
    EXPECT_EQ(kindOf("a.fts", "no such thing"), ForeignKind::kFits);
    EXPECT_EQ(kindOf("a.tiff", Npy("", 0)), ForeignKind::kNpy);
    EXPECT_EQ(kindOf("a.seq", Npy("", 0)), std::nullopt);
    EXPECT_EQ(kindOf("a.tif", HeaderBytes(PlainHeader(2, 2))), std::nullopt);
    EXPECT_EQ(ForeignKindOf(directory.Path() + "/none.tif"), ForeignKind::kTiff);
    EXPECT_EQ(WhyNotOpened(directory.Path() + "/none.tif"), "can't be opened");
    EXPECT_EQ(WhyNotOpened(directory.Path() + "/a.fts"), "isn't a FITS file");
}

TEST(ForeignFrames, TakeWhatKelvoSavedForOthersWithItsSigns)
{
    const TempDirectory directory;
    const std::string path = directory.Path() + "/own.tif";
    const std::vector<std::int16_t> counts = {-5, 6, 32767, -32768, 0, 1};
    BuildTiffHead();
    ASSERT_EQ(WriteTiffFile(path, std::as_bytes(std::span(counts)), 16, 0, 0, 2, 3, 0, 0, 0, 0, 0, 0), 1);
    std::string why;
    std::optional<StoredFrames> frames = StoredFrames::Open(path, why);
    ASSERT_TRUE(frames) << why;
    EXPECT_EQ(frames->Rows(), 2U);
    std::vector<std::int16_t> read(6);
    ASSERT_TRUE(frames->ReadCounts(0, read, why)) << why;
    EXPECT_EQ(read, counts);
    EXPECT_EQ(frames->Changes(), "");
    ResetTiffHead();
}

TEST(ForeignFrames, WithoutMemoryAreRefused)
{
    const TempDirectory directory;
    const std::string path = directory.Path() + "/a.npy";
    std::ofstream(path, std::ios::binary) << Npy("{'descr': '<i2', 'fortran_order': False, 'shape': (2, 3)}", 6);
    FailAllocation(1);
    EXPECT_EQ(WhyNotOpened(path), "needs more memory than is left");
    FailAllocation(0);
}

TEST(ForeignFrames, AreLookedThroughAsLongAsSomebodyWaits)
{
    const TempDirectory directory;
    const std::string path = directory.Path() + "/a.npy";
    std::ofstream(path, std::ios::binary) << Npy("{'descr': '<u2', 'fortran_order': False, 'shape': (4, 1, 2)}", 8);
    std::vector<std::int64_t> asked;
    std::string why;
    const auto goesOn = [&asked](std::int64_t frame, std::int64_t frames) {
        EXPECT_EQ(frames, 4);
        asked.push_back(frame);
        return frame < 2;
    };
    EXPECT_FALSE(ForeignFrames::Open(path, ForeignKind::kNpy, why, goesOn));
    EXPECT_EQ(why, "wasn't looked through");
    EXPECT_THAT(asked, ElementsAre(0, 1, 2));
}

TEST_F(ForeignFiles, PagesAreCountedAsLongAsSomebodyWaits)
{
    int asked = 0;
    std::string why;
    const auto goesOn = [&asked](std::int64_t frame, std::int64_t frames) {
        EXPECT_EQ(frame, 0);
        EXPECT_EQ(frames, 1);
        return ++asked < 2;
    };
    EXPECT_FALSE(StoredFrames::Open(PathOf("signed.tif"), why, goesOn));
    EXPECT_EQ(why, "wasn't looked through");
    EXPECT_EQ(asked, 2) << "before each of the two pages behind the first";
}

}  // namespace
}  // namespace kelvo
