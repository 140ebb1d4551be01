#include "viewing/saving.h"

#include "config/settings_write.h"
#include "grabber/board_state_write.h"
#include "grabber/host_frames.h"
#include "imagefile/header_write.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/recording_board.h"
#include "support/rounds.h"
#include "support/shown.h"
#include "support/stored_files.h"
#include "video/video.h"
#include "viewing/coefficient_view.h"
#include "viewing/viewing.h"

#include <QCoreApplication>

#include <gmock/gmock.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <random>

namespace kelvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Counts = std::vector<std::int16_t>;

ImageHeaderRecord HeaderIn(const std::string& bytes)
{
    ImageHeaderRecord header;
    EXPECT_GE(bytes.size(), sizeof header);
    std::memcpy(&header, bytes.data(), std::min(bytes.size(), sizeof header));
    return header;
}

Counts CountsAt(const std::string& bytes, std::size_t position, std::size_t count)
{
    Counts counts;
    for (std::size_t i = position; i + 1 < bytes.size() && counts.size() < count; i += 2) {
        counts.push_back(static_cast<std::int16_t>(static_cast<std::uint8_t>(bytes[i]) |
                                                   static_cast<std::uint8_t>(bytes[i + 1]) << 8));
    }
    return counts;
}

std::string WithWordsSwapped(std::string bytes)
{
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) std::swap(bytes[i], bytes[i + 1]);
    return bytes;
}

std::vector<std::string> NamesIn(const std::string& path)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path)) names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
}

// A limit on the size of files, as a disk that fills up at that place.
class FullAt {
  public:
    explicit FullAt(rlim_t bytes)
    {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &before_), 0);
        signal(SIGXFSZ, SIG_IGN);
        Limit(bytes);
    }
    // The disk has room again after the first write that it refused.
    static void RoomAfterRefusal()
    {
        signal(SIGXFSZ, [](int) {
            rlimit now{};
            getrlimit(RLIMIT_FSIZE, &now);
            now.rlim_cur = now.rlim_max;
            setrlimit(RLIMIT_FSIZE, &now);
        });
    }
    FullAt(const FullAt&) = delete;
    FullAt& operator=(const FullAt&) = delete;
    ~FullAt()
    {
        setrlimit(RLIMIT_FSIZE, &before_);
        signal(SIGXFSZ, SIG_DFL);
    }

  private:
    void Limit(rlim_t bytes) const
    {
        rlimit limit = before_;
        limit.rlim_cur = bytes;
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    rlimit before_{};
};

// Live video of 2 x 2, the pixels of a frame being 1000, 1001, 1100, 1101. What is saved goes to out.
class Saving : public BoardTest {
  protected:
    Saving()
    {
        PutFile(IniFilePath, "[Camera.2]\nMaxNumFramesToAllocate=3\n");
        std::filesystem::create_directory(directory / "out");
        write::camera.numBufFrames = 8;
        write::file.ByteSwap = 0xFFFF;
        write::display.DisplayHigh = 16383;
        GoLive(2, 2);
        write::cal.CalType = 0;
        write::board.DataOffset = 0;
        write::cal.DecomList = {0, 1, 2, 3};
        write::cal.OffsetList = {0, 0, 0, 0};
        write::cal.GainList = {1, 1, 1, 1};
        CalibrationListsChanged();
        write::settings.MultiFrame = 0;
    }

    std::string Out(std::string_view name) const { return directory / "out" + '/' + std::string(name); }
    std::vector<std::string> Saved() const { return NamesIn(directory / "out"); }

    // The frozen frame, in readout order; no captured one looks like it.
    static void Freeze()
    {
        write::frames.LiveVideo = 0;
        write::frames.RawFrame = {7, 8, 9, 10};
    }
    // A file of frames of 2 x 2 on view at its first; frame f has the counts 10 f + 1 to 10 f + 4.
    void ViewFrames(int frames)
    {
        std::vector<Counts> all;
        for (int f = 0; f < frames; ++f) {
            const auto base = static_cast<std::int16_t>(10 * f);
            all.push_back({static_cast<std::int16_t>(base + 1), static_cast<std::int16_t>(base + 2),
                           static_cast<std::int16_t>(base + 3), static_cast<std::int16_t>(base + 4)});
        }
        WriteImageFile(directory / "view.seq", PlainHeader(2, 2), all);
        ASSERT_EQ(ViewImage(directory / "view.seq", 0), 1);
    }

    std::int32_t Save(std::string_view base, std::uint32_t frames = 1)
    {
        return SaveSequence(Out(base), number, frames);
    }
    std::size_t Beeps() const { return op.Texts("beep", "sound").size(); }

    std::int32_t number = 0;
};

// ---- Save image

TEST_F(Saving, OneLiveImageIsAHeaderAndItsCounts)
{
    EXPECT_EQ(SaveImage(Out("a.img"), 1), 1);
    const std::string bytes = FileContents(Out("a.img"));
    ASSERT_EQ(bytes.size(), 512U + 8U);
    const ImageHeaderRecord header = HeaderIn(bytes);
    EXPECT_EQ(+header.ByteSwap, 0xFFFF);
    EXPECT_EQ(+header.ImageWidth, 2);
    EXPECT_EQ(+header.ImageHeight, 2);
    EXPECT_EQ(+header.SampleBytes, 2);
    EXPECT_EQ(+header.FrameCount, 1U);
    EXPECT_EQ(+header.FramesAveraged, 1);
    EXPECT_EQ(+header.RightColumn, 1);
    EXPECT_EQ(+header.BottomRow, 1);
    EXPECT_THAT(CountsAt(bytes, 512, 9), ElementsAre(1000, 1001, 1100, 1101));
    EXPECT_THAT(op.Boxes(), IsEmpty());
    EXPECT_THAT(op.Texts("status", "text"), Contains("Collecting image to save"));
    EXPECT_EQ(op.Texts("status", "text").back(), " Writing image to file");
    EXPECT_THAT(Saved(), ElementsAre("a.img")) << "nothing is left beside it";
    EXPECT_EQ(ImageHeader.FramesAveraged, 1) << "the header of the frame replaces the one that stood there";
}

TEST_F(Saving, LiveFramesAreAveragedOnTheirWay)
{
    recordingBoard.onRead = [](std::int32_t n) { recordingBoard.picture = n % 2 == 0 ? 1000 : 2001; };
    EXPECT_EQ(SaveImage(Out("a.img"), 2), 1);
    const std::string bytes = FileContents(Out("a.img"));
    EXPECT_EQ(CountsAt(bytes, 512, 1).at(0), 1500) << "3001 / 2";
    EXPECT_EQ(HeaderIn(bytes).FramesAveraged, 2);
}

TEST_F(Saving, ACalibratedImageIsThePictureMirroredAndSubstituted)
{
    write::cal.CalType = 2;
    write::cal.DecomList = {1, 1, 3, 2};  // mirrored left to right; pixel 1 takes its neighbour's sample
    write::cal.OffsetList = {0, 1, 0, 101};
    write::cal.GainList = {1, 2, 4, 1};
    CalibrationListsChanged();
    EXPECT_EQ(SaveImage(Out("a.img"), 1), 1);
    // (1001 - 1) / 2, the same, (1101 - 101) / 1, (1100 - 0) / 4
    EXPECT_THAT(CountsAt(FileContents(Out("a.img")), 512, 4), ElementsAre(500, 500, 1000, 275));
    ASSERT_EQ(RefreshLiveFrame(), 1);
    EXPECT_THAT(LiveFrame, ElementsAre(500, 500, 1000, 275)) << "the screen shows the same";
}

TEST_F(Saving, AnUncalibratedImageStaysInReadoutOrder)
{
    write::cal.DecomList = {3, 2, 1, 0};
    CalibrationListsChanged();
    EXPECT_EQ(SaveImage(Out("a.img"), 1), 1);
    EXPECT_THAT(CountsAt(FileContents(Out("a.img")), 512, 4), ElementsAre(1000, 1001, 1100, 1101));
}

TEST_F(Saving, AFrozenImageIsTheFrozenFrame)
{
    Freeze();
    write::cal.CalType = 1;
    write::cal.DecomList = {3, 2, 1, 0};
    write::cal.OffsetList = {1, 1, 1, 1};
    CalibrationListsChanged();
    EXPECT_EQ(SaveImage(Out("a.img"), 1), 1);
    EXPECT_THAT(CountsAt(FileContents(Out("a.img")), 512, 4), ElementsAre(9, 8, 7, 6));
}

TEST_F(Saving, AStoredFrameIsSavedUnderItsOwnHeader)
{
    ViewFrames(3);
    recordingBoard.asked.clear();
    EXPECT_EQ(SaveImage(Out("a.img"), 5), 1);
    const std::string bytes = FileContents(Out("a.img"));
    ImageHeaderRecord expected = PlainHeader(2, 2);
    expected.FrameCount = 3;
    expected.FramesAveraged = 5;
    EXPECT_EQ(bytes, HeaderBytes(expected) + SampleBytes({1, 2, 3, 4}));
    EXPECT_THAT(recordingBoard.asked, IsEmpty()) << "the board has no part in it";
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(Saving, AByteSwappedImageIsSwappedAsAWholeAndTheRecordIsNot)
{
    write::file.ByteSwap = 0;
    EXPECT_EQ(SaveImage(Out("a.img"), 1), 1);
    const std::string bytes = FileContents(Out("a.img"));
    const std::string native = WithWordsSwapped(bytes);
    EXPECT_EQ(+HeaderIn(native).ImageWidth, 2);
    EXPECT_EQ(+HeaderIn(bytes).ImageWidth, 2 << 8);
    EXPECT_EQ(+HeaderIn(bytes).ByteSwap, 0);
    EXPECT_THAT(CountsAt(native, 512, 4), ElementsAre(1000, 1001, 1100, 1101));
    EXPECT_EQ(+ImageHeader.ImageWidth, 2);
}

TEST_F(Saving, ASaveFromACoefficientViewSwapsHeaderAndData)
{
    PutFile(CameraFilePath, "[Camera.2]\nHroi=2\nVroi=2\nHtotal=2\nVtotal=2\n");
    PutFile(directory / "c.cal", "[Setup]\nActiveCamera=2\n");
    PutFile(directory / "c.off", SampleBytes({5, 6, 7, 8}));
    write::frames.LiveVideo = 0;
    ASSERT_EQ(ViewCoefficientFile(directory / "c.off"), 1);
    ASSERT_EQ(+ImageHeader.ByteSwap, 0);
    EXPECT_EQ(SaveImage(Out("a.img"), 1), 1);
    const std::string native = WithWordsSwapped(FileContents(Out("a.img")));
    EXPECT_EQ(+HeaderIn(native).ImageWidth, 2);
    EXPECT_THAT(CountsAt(native, 512, 4), ElementsAre(5, 6, 7, 8));
}

TEST_F(Saving, AFloatFileOnViewKeepsItsSampleSizeOverItsCounts)
{
    ImageHeaderRecord header = PlainHeader(2, 1);
    header.SampleBytes = 4;
    const float samples[] = {3.0F, 4.0F};
    std::string bytes = HeaderBytes(header);
    bytes.append(reinterpret_cast<const char*>(samples), sizeof samples);
    PutFile(directory / "f.flt", bytes);
    ASSERT_EQ(ViewImage(directory / "f.flt", 0), 1);
    op.Answer({Button::kYes});
    EXPECT_EQ(Save("r.seq"), 1);
    const std::string saved = FileContents(Out("r0.seq"));
    EXPECT_EQ(+HeaderIn(saved).SampleBytes, 4);
    ASSERT_EQ(saved.size(), 512U + 8U + 4U) << "frame 1 begins 2 x 4 bytes behind frame 0 and has 2 x 2";
    EXPECT_THAT(CountsAt(saved, 520, 2), ElementsAre(3, 4));
}

TEST_F(Saving, AnImageOfAFloatFileOnViewIsItsCountsUnderItsHeader)
{
    ImageHeaderRecord header = PlainHeader(2, 1);
    header.SampleBytes = 4;
    const float samples[] = {3.0F, -4.4F};
    std::string bytes = HeaderBytes(header);
    bytes.append(reinterpret_cast<const char*>(samples), sizeof samples);
    PutFile(directory / "f.flt", bytes);
    ASSERT_EQ(ViewImage(directory / "f.flt", 0), 1);
    EXPECT_EQ(SaveImage(Out("a.img"), 1), 1);
    const std::string saved = FileContents(Out("a.img"));
    EXPECT_EQ(+HeaderIn(saved).SampleBytes, 4);
    EXPECT_EQ(+HeaderIn(saved).DataType, 8);
    ASSERT_EQ(saved.size(), 512U + 4U);
    EXPECT_THAT(CountsAt(saved, 512, 2), ElementsAre(3, -3)) << "trunc(-4.4 + 0.5)";
}

// Two frames of 2 x 2, each behind 80 bytes of its own: the counts 1 to 4, then 11 to 14. An image has its counts right
// behind its header, and says so; in a sequence the place of the frame's own header stays.
TEST_F(Saving, AFrameBehindAFrameHeaderIsSavedWithoutItsOwn)
{
    ImageHeaderRecord header = PlainHeader(2, 2);
    header.ImageHeaderDataOffset = 80;
    PutFile(directory / "h.seq", HeaderBytes(header) + std::string(80, 'a') + SampleBytes({1, 2, 3, 4}) +
                                     std::string(80, 'b') + SampleBytes({11, 12, 13, 14}));
    ASSERT_EQ(ViewImage(directory / "h.seq", 1), 1);
    EXPECT_EQ(SaveImage(Out("a.img"), 1), 1);
    std::string saved = FileContents(Out("a.img"));
    ASSERT_EQ(saved.size(), 512U + 8U);
    header.ImageHeaderDataOffset = 0;
    header.FrameCount = 2;
    EXPECT_EQ(saved, HeaderBytes(header) + SampleBytes({11, 12, 13, 14})) << "all else is the header of the file";
    EXPECT_EQ(+ImageHeader.ImageHeaderDataOffset, 80) << "the frame on view stands where it stood";
    EXPECT_THAT(ImageBufferPixels(80).first(4), ElementsAre(11, 12, 13, 14));

    op.Answer({Button::kYes});
    EXPECT_EQ(Save("r.seq"), 1);
    saved = FileContents(Out("r0.seq"));
    EXPECT_EQ(+HeaderIn(saved).FrameCount, 3U);
    ASSERT_EQ(saved.size(), 512U + 3 * 88U) << "the third record, without a byte more";
    EXPECT_EQ(saved.substr(512, 2 * 88 + 80), std::string(2 * 88 + 80, '\0'));
    EXPECT_THAT(CountsAt(saved, 512 + 2 * 88 + 80, 4), ElementsAre(11, 12, 13, 14));
    EXPECT_EQ(ViewImage(Out("r0.seq"), 2), 1) << "the viewer finds it there";
    EXPECT_THAT(ImageBufferPixels(80).first(4), ElementsAre(11, 12, 13, 14));

    EXPECT_EQ(ViewImage(Out("a.img"), 0), 1) << "the image opens again";
    EXPECT_THAT(ImageBufferPixels(0).first(4), ElementsAre(11, 12, 13, 14));
    EXPECT_THAT(op.Boxes(), SizeIs(1)) << "the question alone";
}

TEST_F(Saving, WithoutAGrabberThereIsNothingToSave)
{
    write::frames.GrabberPresent = 0;
    for (const std::int32_t live : {0, 1}) {
        write::frames.LiveVideo = live;
        EXPECT_EQ(SaveImage(Out("a.img"), 1), 0);
        EXPECT_EQ(op.Boxes().back().text, "Video Data Acquisition Failed, Hardware error");
        EXPECT_EQ(op.Boxes().back().caption, "Kelvo message");
        if (live == 0) op.Answer({Button::kOk});  // the image is frozen
        EXPECT_EQ(Save("r.seq"), -1);
        EXPECT_EQ(op.Boxes().back().text, "Unable to get image data!");
    }
    EXPECT_THAT(recordingBoard.asked, IsEmpty());
    EXPECT_THAT(Saved(), IsEmpty());
}

TEST_F(Saving, BeforeTheFirstFrameThereIsNothingToSave)
{
    write::frames.LiveVideo = 0;
    write::frames.RawFrame.clear();
    EXPECT_EQ(SaveImage(Out("a.img"), 1), 0);
    EXPECT_EQ(op.Boxes().back().text, "Video Data Acquisition Failed, Hardware error");
    EXPECT_THAT(Saved(), IsEmpty());
}

// A capture that fails doesn't end a run of averaging: what the host frames held before is taken for the picture.
TEST_F(Saving, AFailedReadIsToldAndTheImageHoldsOldCounts)
{
    EXPECT_EQ(SaveImage(Out("a.img"), 1), 1);
    recordingBoard.picture = 5000;
    recordingBoard.answers["icp_read_area"] = -1;
    EXPECT_EQ(SaveImage(Out("b.img"), 1), 1);
    ASSERT_THAT(op.Boxes(), SizeIs(1));
    EXPECT_EQ(op.Boxes()[0].text, "icp_read_area() Error");
    EXPECT_EQ(op.Boxes()[0].caption, "ITEX Board Error!");
    EXPECT_THAT(CountsAt(FileContents(Out("b.img")), 512, 4), ElementsAre(1000, 1001, 1100, 1101));
}

TEST_F(Saving, AnExistingImageIsReplacedOnlyWithConsent)
{
    PutFile(Out("a.img"), "old");
    EXPECT_EQ(SaveImage(Out("a.img"), 1), 0);
    ASSERT_THAT(op.Boxes(), SizeIs(1));
    EXPECT_EQ(op.Boxes()[0].text, Out("a.img") + "\nFile already exists, replace it?");
    EXPECT_EQ(op.Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(op.Boxes()[0].buttons, ElementsAre("yes", "no"));
    EXPECT_EQ(op.Boxes()[0].defaultButton, "no");
    EXPECT_EQ(FileContents(Out("a.img")), "old");

    op.Answer({Button::kYes});
    EXPECT_EQ(SaveImage(Out("a.img"), 1), 1);
    EXPECT_EQ(FileContents(Out("a.img")).size(), 520U);
    EXPECT_THAT(Saved(), ElementsAre("a.img"));
}

TEST_F(Saving, AnImageThatCannotBeMadeIsToldTwice)
{
    EXPECT_EQ(SaveImage(Out("missing/a.img"), 1), 0);
    ASSERT_THAT(op.Boxes(), SizeIs(2));
    EXPECT_EQ(op.Boxes()[0].text, Out("missing/a.img") + "\nOpen file failure on Save Image");
    EXPECT_EQ(op.Boxes()[1].text, "Failure writing header for image file");
    EXPECT_EQ(Beeps(), 1U);
}

TEST_F(Saving, NoMemoryForAnImageLeavesNothing)
{
    FailAllocation(1);
    EXPECT_EQ(SaveImage(Out("a.img"), 1), 0);
    EXPECT_EQ(op.Boxes().at(0).text, "Failure to allocate or lock video memory!");
    EXPECT_THAT(Saved(), IsEmpty());
}

TEST_F(Saving, AnImageThatIsNotGatheredLeavesNothing)
{
    Freeze();
    op.Answer({Button::kNo});
    EXPECT_EQ(SaveImage(Out("a.img"), 5), 0);
    ASSERT_THAT(op.Boxes(), SizeIs(2));
    EXPECT_EQ(op.Boxes()[0].text, "Number of frames to average is 5, but image is frozen.");
    EXPECT_EQ(op.Boxes()[1].text, "Video Data Acquisition Failed, Hardware error");
    EXPECT_THAT(Saved(), IsEmpty());

    op.Answer({Button::kYes});
    EXPECT_EQ(SaveImage(Out("a.img"), 5), 1);
    EXPECT_THAT(CountsAt(FileContents(Out("a.img")), 512, 4), ElementsAre(7, 8, 9, 10));
}

TEST_F(Saving, AnEarlierImageStaysWhereTheNewOneIsNotGathered)
{
    Freeze();
    PutFile(Out("a.img"), "old");
    op.Answer({Button::kYes, Button::kNo});
    EXPECT_EQ(SaveImage(Out("a.img"), 5), 0);
    EXPECT_EQ(FileContents(Out("a.img")), "old");
}

TEST_F(Saving, ADiskThatFillsUpInTheHeaderLeavesNoImage)
{
    {
        const FullAt limit(100);
        EXPECT_EQ(SaveImage(Out("a.img"), 1), 0);
    }
    EXPECT_EQ(op.Boxes().at(0).text, "Failure writing header for image file");
    EXPECT_THAT(Saved(), IsEmpty());
}

TEST_F(Saving, ADiskThatFillsUpAmongThePixelsLeavesWhatItTook)
{
    {
        const FullAt limit(512 + 3);
        EXPECT_EQ(SaveImage(Out("a.img"), 1), 1);
    }
    EXPECT_EQ(op.Boxes().at(0).text, "Error writing data to file!");
    EXPECT_EQ(op.Boxes().at(0).caption, "File Write Error");
    EXPECT_EQ(Beeps(), 1U);
    EXPECT_EQ(FileContents(Out("a.img")).size(), 515U);
    EXPECT_THAT(Saved(), ElementsAre("a.img"));
}

TEST_F(Saving, ADiskThatFillsUpKeepsTheImageThatWasToBeReplaced)
{
    PutFile(Out("a.img"), "old");
    for (const rlim_t room : {rlim_t{100}, rlim_t{515}}) {
        op.Answer({Button::kYes});
        const FullAt limit(room);
        SaveImage(Out("a.img"), 1);
        EXPECT_EQ(FileContents(Out("a.img")), "old") << room;
    }
    EXPECT_THAT(Saved(), ElementsAre("a.img"));
    EXPECT_THAT(op.Boxes(), SizeIs(4)) << "each time the question and what failed";
}

TEST_F(Saving, ADeviceThatTakesNothingIsToldAndStays)
{
    EXPECT_EQ(SaveImage("/dev/full", 1), 0);
    EXPECT_EQ(op.Boxes().at(0).text, "Failure writing header for image file");
    write::settings.MultiFrame = 1;
    number = 0;
    std::filesystem::create_symlink("/dev/full", Out("r0.seq"));
    EXPECT_EQ(Save("r.seq"), 0);
    EXPECT_EQ(op.Boxes().at(1).text, "Failure writing header for image file\nDisk Full ??");
    write::settings.MultiFrame = 0;
    EXPECT_EQ(Save("r.seq"), 0);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

// ---- Save sequence

TEST_F(Saving, ALiveSequenceGoesToNumberedFiles)
{
    recordingBoard.onRead = [](std::int32_t n) { recordingBoard.picture = 1000 * n; };
    recordingBoard.reads = 0;
    number = 8;
    EXPECT_EQ(Save("run.seq"), 1);
    EXPECT_EQ(Save("run.seq"), 1);
    EXPECT_EQ(Save("run.seq"), 1);
    EXPECT_EQ(number, 11);
    EXPECT_THAT(Saved(), ElementsAre("run10.seq", "run8.seq", "run9.seq"));
    EXPECT_THAT(CountsAt(FileContents(Out("run10.seq")), 512, 2), ElementsAre(3000, 3001));
    EXPECT_EQ(+HeaderIn(FileContents(Out("run10.seq"))).FrameCount, 1U);
    EXPECT_THAT(op.Boxes(), IsEmpty());
    EXPECT_EQ(op.Texts("status", "text").back(), "Saving image to file");
}

TEST_F(Saving, OnlyLiveFramesOfASequenceAreAveraged)
{
    recordingBoard.onRead = [](std::int32_t n) { recordingBoard.picture = n % 2 == 0 ? 1000 : 2001; };
    EXPECT_EQ(Save("r.seq", 2), 1);
    EXPECT_EQ(CountsAt(FileContents(Out("r0.seq")), 512, 1).at(0), 1500);
    EXPECT_EQ(HeaderIn(FileContents(Out("r0.seq"))).FramesAveraged, 2);
    Freeze();
    op.Answer({Button::kOk});
    EXPECT_EQ(Save("r.seq", 2), 1);
    EXPECT_EQ(HeaderIn(FileContents(Out("r1.seq"))).FramesAveraged, 1);
    EXPECT_THAT(op.Boxes(), SizeIs(1)) << "no question how many frames are wanted";
}

TEST_F(Saving, AFrozenFrameIsSavedOnlyOnPurpose)
{
    Freeze();
    number = 12;
    EXPECT_EQ(Save("r.seq"), -1);
    ASSERT_THAT(op.Boxes(), SizeIs(1));
    EXPECT_EQ(op.Boxes()[0].text,
              "IMAGE IS FROZEN!\nIt will be saved as \n" + Out("r12.seq") + "\nDo you want to do this?");
    EXPECT_EQ(op.Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(op.Boxes()[0].buttons, ElementsAre("ok", "cancel"));
    EXPECT_EQ(op.Boxes()[0].defaultButton, "cancel");
    EXPECT_EQ(number, 12);
    EXPECT_THAT(Saved(), IsEmpty());
}

TEST_F(Saving, AStoredFrameIsSavedInASequenceOnlyOnPurpose)
{
    ViewFrames(1);
    EXPECT_EQ(Save("r.seq"), -1);
    EXPECT_EQ(op.Boxes().at(0).text,
              "YOU ARE VIEWING A FILE!\nIt will be saved as\n" + Out("r0.seq") + "\nDo you want to do this?");
    EXPECT_THAT(op.Boxes()[0].buttons, ElementsAre("yes", "no"));
    EXPECT_EQ(op.Boxes()[0].defaultButton, "no");
    EXPECT_EQ(+ImageHeader.FrameCount, 1U);
    EXPECT_THAT(Saved(), IsEmpty());
}

TEST_F(Saving, AStemOfSevenLettersTakesOneDigit)
{
    number = 9;
    EXPECT_EQ(Save("abcdefg.seq"), 1);
    EXPECT_EQ(number, 10);
    EXPECT_EQ(Save("abcdefg.seq"), -1);
    ASSERT_THAT(op.Boxes(), SizeIs(1));
    EXPECT_EQ(op.Boxes()[0].text, Out("abcdefg.seq") + "\nSequence number, 10, too large for given base filename");
    EXPECT_EQ(op.Boxes()[0].caption, "Kelvo message");
    EXPECT_EQ(Beeps(), 1U);
    EXPECT_EQ(number, 10);
    EXPECT_THAT(Saved(), ElementsAre("abcdefg9.seq"));
}

TEST_F(Saving, AOneLetterStemTakesSevenDigits)
{
    number = 9999999;
    EXPECT_EQ(Save("a.seq"), 1);
    EXPECT_EQ(number, 10000000);
    EXPECT_EQ(Save("a.seq"), -1);
    EXPECT_THAT(Saved(), ElementsAre("a9999999.seq"));
}

TEST_F(Saving, NumberOneThousandHasFourDigits)
{
    number = 1000;
    EXPECT_EQ(Save("abcd.seq"), 1) << "4 + 4";
    number = 1000;
    EXPECT_EQ(Save("abcde.seq"), -1) << "5 + 4";
    number = 999;
    EXPECT_EQ(Save("abcde.seq"), 1) << "5 + 3";
    EXPECT_THAT(Saved(), ElementsAre("abcd1000.seq", "abcde999.seq"));
}

TEST_F(Saving, ANegativeNumberBecomesNull)
{
    number = -5;
    EXPECT_EQ(Save("r.seq"), 1);
    EXPECT_EQ(number, 1);
    EXPECT_THAT(Saved(), ElementsAre("r0.seq"));
}

TEST_F(Saving, KeepingAFileMovesOnToTheNextNumber)
{
    PutFile(Out("r3.seq"), "old");
    number = 3;
    EXPECT_EQ(Save("r.seq"), -1);
    EXPECT_EQ(op.Boxes().at(0).text, Out("r3.seq") + "\nFile already exists, replace it?");
    EXPECT_EQ(op.Boxes()[0].defaultButton, "no");
    EXPECT_EQ(number, 4);
    EXPECT_EQ(Save("r.seq"), 1);
    EXPECT_EQ(FileContents(Out("r3.seq")), "old");
    EXPECT_THAT(Saved(), ElementsAre("r3.seq", "r4.seq"));

    number = 3;
    op.Answer({Button::kYes});
    EXPECT_EQ(Save("r.seq"), 1);
    EXPECT_EQ(FileContents(Out("r3.seq")).size(), 520U);
}

TEST_F(Saving, TwoFrozenFramesShareOneMultiFrameFile)
{
    write::settings.MultiFrame = 1;
    Freeze();
    op.Answer({Button::kOk, Button::kOk});
    EXPECT_EQ(Save("r.seq"), 1);
    write::frames.RawFrame = {17, 18, 19, 20};
    EXPECT_EQ(Save("r.seq"), 1);
    EXPECT_EQ(number, 0);
    EXPECT_THAT(Saved(), ElementsAre("r0.seq"));
    const std::string bytes = FileContents(Out("r0.seq"));
    EXPECT_EQ(bytes.size(), 512U + 16U);
    EXPECT_EQ(+HeaderIn(bytes).FrameCount, 2U);
    EXPECT_THAT(CountsAt(bytes, 512, 8), ElementsAre(7, 8, 9, 10, 17, 18, 19, 20));
}

TEST_F(Saving, TheFifthFrameOfAFileOnViewMakesASixthPlace)
{
    ViewFrames(5);
    op.Answer({Button::kYes});
    EXPECT_EQ(Save("r.seq"), 1);
    const std::string bytes = FileContents(Out("r0.seq"));
    EXPECT_EQ(bytes.size(), 512U + 6 * 8U);
    EXPECT_EQ(+HeaderIn(bytes).FrameCount, 6U);
    EXPECT_EQ(bytes.substr(512, 40), std::string(40, '\0'));
    EXPECT_THAT(CountsAt(bytes, 552, 4), ElementsAre(1, 2, 3, 4));
    ImageHeaderRecord read;
    EXPECT_EQ(ReadImageHeader(Out("r0.seq"), read), 512);
    EXPECT_EQ(+read.FrameCount, 6U);
    EXPECT_EQ(+ImageHeader.FrameCount, 6U) << "the record on view counts it too";
}

// The header of the file that grows decides, and the frame lies behind all that are there; the frame on view stays what
// it is, whatever its own file counts.
TEST_F(Saving, AFrameOnViewIsAppendedUnderTheHeaderOfTheMultiFrameFile)
{
    write::settings.MultiFrame = 1;
    ViewFrames(5);
    const std::string onView = HeaderBytes(ImageHeader);
    ImageHeaderRecord header = PlainHeader(2, 2);
    header.Year = 25;
    WriteImageFile(Out("r0.seq"), header, {{21, 22, 23, 24}, {31, 32, 33, 34}});
    for (std::uint32_t count = 3; count <= 4; ++count) {
        op.Answer({Button::kYes});
        EXPECT_EQ(Save("r.seq"), 1);
        header.FrameCount = count;
        EXPECT_EQ(FileContents(Out("r0.seq")).substr(0, 512), HeaderBytes(header));
        EXPECT_EQ(HeaderBytes(ImageHeader), onView);
    }
    EXPECT_EQ(FileContents(Out("r0.seq")).substr(512),
              SampleBytes({21, 22, 23, 24, 31, 32, 33, 34, 1, 2, 3, 4, 1, 2, 3, 4}));
}

TEST_F(Saving, AFrameOnViewBeginsAMultiFrameFileAsItsFirst)
{
    write::settings.MultiFrame = 1;
    ViewFrames(5);
    for (std::uint32_t count = 1; count <= 2; ++count) {
        op.Answer({Button::kYes});
        EXPECT_EQ(Save("r.seq"), 1);
        ImageHeaderRecord header = PlainHeader(2, 2);
        header.FrameCount = count;
        EXPECT_EQ(FileContents(Out("r0.seq")).substr(0, 512), HeaderBytes(header));
    }
    EXPECT_EQ(FileContents(Out("r0.seq")).substr(512), SampleBytes({1, 2, 3, 4, 1, 2, 3, 4}));
    EXPECT_EQ(+ImageHeader.FrameCount, 5U);
}

// Counts of a float file fill the first half of a record of floats: the file has whole records all the same.
TEST_F(Saving, ASecondFrameOfFloatsLeavesTheFirst)
{
    write::settings.MultiFrame = 1;
    ImageHeaderRecord header = PlainHeader(2, 1);
    header.SampleBytes = 4;
    const float samples[] = {3.0F, 4.0F};
    std::string bytes = HeaderBytes(header);
    bytes.append(reinterpret_cast<const char*>(samples), sizeof samples);
    PutFile(directory / "f.flt", bytes);
    ASSERT_EQ(ViewImage(directory / "f.flt", 0), 1);
    op.Answer({Button::kYes, Button::kYes});
    EXPECT_EQ(Save("r.seq"), 1);
    EXPECT_EQ(Save("r.seq"), 1);
    EXPECT_EQ(FileContents(Out("r0.seq")).substr(512), SampleBytes({3, 4, 0, 0, 3, 4, 0, 0}));
}

TEST_F(Saving, ASwappedMultiFrameFileGrowsSwapped)
{
    write::settings.MultiFrame = 1;
    write::file.ByteSwap = 0;
    for (std::uint32_t count = 1; count <= 3; ++count) {
        recordingBoard.picture = static_cast<std::int32_t>(1000 * count);
        EXPECT_EQ(Save("r.seq"), 1);
        EXPECT_EQ(+HeaderIn(WithWordsSwapped(FileContents(Out("r0.seq")))).FrameCount, count);
        EXPECT_EQ(+ImageHeader.ImageWidth, 2) << "native in memory";
    }
    EXPECT_THAT(op.Boxes(), IsEmpty());
    EXPECT_EQ(WithWordsSwapped(FileContents(Out("r0.seq")).substr(512)),
              SampleBytes({1000, 1001, 1100, 1101, 2000, 2001, 2100, 2101, 3000, 3001, 3100, 3101}));
    // Of a swapped file the swapping alone counts, not the setting.
    write::file.ByteSwap = 0xFFFF;
    EXPECT_EQ(Save("r.seq"), 1);
    EXPECT_EQ(WithWordsSwapped(FileContents(Out("r0.seq")).substr(512 + 24)), SampleBytes({3000, 3001, 3100, 3101}));
}

// Some writers leave the header of such a file as it is in memory.
TEST_F(Saving, ASwappedFileWithANativeHeaderKeepsIt)
{
    write::settings.MultiFrame = 1;
    ImageHeaderRecord header = PlainHeader(2, 2);
    header.ByteSwap = 0;
    PutFile(Out("r0.seq"), HeaderBytes(header) + WithWordsSwapped(SampleBytes({1, 2, 3, 4})));
    EXPECT_EQ(Save("r.seq"), 1);
    const std::string bytes = FileContents(Out("r0.seq"));
    header.FrameCount = 2;
    EXPECT_EQ(bytes.substr(0, 512), HeaderBytes(header));
    EXPECT_EQ(WithWordsSwapped(bytes.substr(512)), SampleBytes({1, 2, 3, 4, 1000, 1001, 1100, 1101}));
}

TEST_F(Saving, APartFrameIsCutOffBeforeTheNextOne)
{
    write::settings.MultiFrame = 1;
    ImageHeaderRecord header = PlainHeader(2, 2);
    for (const std::uint32_t counted : {0U, 1U, 2U, 7U, 0xFFFFFFFFU}) {
        header.FrameCount = counted;
        PutFile(Out("r0.seq"), HeaderBytes(header) + SampleBytes({1, 2, 3, 4, 5, 6, 7}));
        EXPECT_EQ(Save("r.seq"), 1);
        const std::string bytes = FileContents(Out("r0.seq"));
        EXPECT_EQ(+HeaderIn(bytes).FrameCount, 2U) << counted;
        EXPECT_EQ(bytes.substr(512), SampleBytes({1, 2, 3, 4, 1000, 1001, 1100, 1101})) << counted;
    }
}

// Frames of an older version have no headers of their own, whatever stands in the field.
TEST_F(Saving, AFileOfAnOlderVersionGrowsWithoutFrameHeaders)
{
    write::settings.MultiFrame = 1;
    ImageHeaderRecord header = PlainHeader(2, 2);
    header.HeaderVersion = 7;
    header.ImageHeaderDataOffset = 80;
    PutFile(Out("r0.seq"), HeaderBytes(header) + SampleBytes({1, 2, 3, 4}));
    EXPECT_EQ(Save("r.seq"), 1);
    const std::string bytes = FileContents(Out("r0.seq"));
    EXPECT_EQ(+HeaderIn(bytes).ImageHeaderDataOffset, 80);
    EXPECT_EQ(bytes.substr(512), SampleBytes({1, 2, 3, 4, 1000, 1001, 1100, 1101}));
    EXPECT_EQ(ViewImage(Out("r0.seq"), 1), 1) << "the viewer finds it there";
    EXPECT_THAT(ImageBufferPixels(0).first(4), ElementsAre(1000, 1001, 1100, 1101));
}

TEST_F(Saving, AFileWithSidesAbove1024Grows)
{
    write::settings.MultiFrame = 1;
    ImageHeaderRecord header = PlainHeader(1100, 2);
    const Counts first(2200, 5);
    WriteImageFile(Out("r0.seq"), header, {first});
    EXPECT_EQ(Save("r.seq"), 1);
    EXPECT_EQ(Save("r.seq"), 1);
    const std::string bytes = FileContents(Out("r0.seq"));
    EXPECT_EQ(+HeaderIn(bytes).FrameCount, 3U);
    ASSERT_EQ(bytes.size(), 512U + 3 * 4400U);
    EXPECT_EQ(bytes.substr(512, 4400), SampleBytes(first));
    for (const std::size_t frame : {1U, 2U}) {
        EXPECT_THAT(CountsAt(bytes, 512 + frame * 4400, 4), ElementsAre(1000, 1001, 1100, 1101));
    }
}

TEST_F(Saving, AFileOnViewThatCountsFramesBeyondReasonIsRefused)
{
    ViewFrames(1);
    for (const std::uint32_t count : {0xFFFFFFFFU, 0xFFFFFFF0U}) {
        write::file.ImageHeader.FrameCount = count;
        op.Answer({Button::kYes});
        EXPECT_EQ(Save("r.seq"), -1);
        EXPECT_EQ(op.Boxes().back().text, Out("r0.seq") + "\nSaveSequence: Unable to read existing image header!");
        EXPECT_EQ(+ImageHeader.FrameCount, count);
    }
    EXPECT_THAT(Saved(), IsEmpty());
}

TEST_F(Saving, AFrameIsAppendedUnderTheFilesOwnMeasures)
{
    write::settings.MultiFrame = 1;
    ImageHeaderRecord header = PlainHeader(3, 1);  // not those of the frame in hand
    WriteImageFile(Out("r0.seq"), header, {{1, 2, 3}});
    EXPECT_EQ(Save("r.seq"), 1);
    const std::string bytes = FileContents(Out("r0.seq"));
    EXPECT_EQ(+HeaderIn(bytes).ImageWidth, 3);
    EXPECT_EQ(+HeaderIn(bytes).FrameCount, 2U);
    EXPECT_THAT(CountsAt(bytes, 512, 9), ElementsAre(1, 2, 3, 1000, 1001, 1100, 1101));
}

TEST_F(Saving, AFileWithFrameHeadersGetsTheFrameBehindThePlaceOfItsOwn)
{
    write::settings.MultiFrame = 1;
    ImageHeaderRecord header = PlainHeader(2, 2);
    header.ImageHeaderDataOffset = 80;
    PutFile(Out("r0.seq"), HeaderBytes(header) + std::string(80, 'h') + SampleBytes({1, 2, 3, 4}));
    EXPECT_EQ(Save("r.seq"), 1);
    const std::string bytes = FileContents(Out("r0.seq"));
    ASSERT_EQ(bytes.size(), 512U + 2 * 88U);
    EXPECT_EQ(bytes.substr(600, 80), std::string(80, '\0'));
    EXPECT_THAT(CountsAt(bytes, 680, 4), ElementsAre(1000, 1001, 1100, 1101));
}

TEST_F(Saving, FramesThatTheHeaderDoesNotCountAreNotWrittenOver)
{
    write::settings.MultiFrame = 1;
    for (const std::uint32_t counted : {0U, 1U}) {
        ImageHeaderRecord header = PlainHeader(2, 2);
        WriteImageFile(Out("r0.seq"), header, {{1, 2, 3, 4}, {5, 6, 7, 8}});
        header.FrameCount = counted;
        std::string bytes = FileContents(Out("r0.seq"));
        bytes.replace(0, 512, HeaderBytes(header));
        PutFile(Out("r0.seq"), bytes);
        EXPECT_EQ(Save("r.seq"), 1);
        bytes = FileContents(Out("r0.seq"));
        EXPECT_EQ(+HeaderIn(bytes).FrameCount, 3U);
        EXPECT_THAT(CountsAt(bytes, 512, 12), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 1000, 1001, 1100, 1101));
    }
}

TEST_F(Saving, AMultiFrameFileWithoutAUsableHeaderStaysAsItIs)
{
    write::settings.MultiFrame = 1;
    ImageHeaderRecord negative = PlainHeader(2, 2);
    negative.ImageWidth = -2;
    ImageHeaderRecord samples = PlainHeader(2, 2);
    samples.SampleBytes = 5;
    ImageHeaderRecord spectrometer = PlainHeader(2, 2);
    spectrometer.ByteSwap = 1;  // its own header lies elsewhere
    ImageHeaderRecord swapped = PlainHeader(2, 2);
    swapped.ByteSwap = 0;
    swapped.ImageHeight = 0;
    const std::string part = "\1\2\3";  // nothing is cut off either
    const std::string contents[] = {"short", HeaderBytes(negative) + part, HeaderBytes(samples) + part,
                                    HeaderBytes(spectrometer) + part, WithWordsSwapped(HeaderBytes(swapped)) + part};
    const std::string before = HeaderBytes(ImageHeader);
    for (const std::string& bytes : contents) {
        PutFile(Out("r0.seq"), bytes);
        const std::size_t boxes = op.Boxes().size();
        EXPECT_EQ(Save("r.seq"), -1);
        ASSERT_EQ(op.Boxes().size(), boxes + 1);
        EXPECT_EQ(op.Boxes().back().text, Out("r0.seq") + "\nSaveSequence: Unable to read existing image header!");
        EXPECT_EQ(FileContents(Out("r0.seq")), bytes);
        EXPECT_EQ(HeaderBytes(ImageHeader), before);
    }
    EXPECT_EQ(Beeps(), std::size(contents));
}

TEST_F(Saving, NoMemoryForASequenceIsTold)
{
    FailAllocation(1);
    EXPECT_EQ(Save("r.seq"), -1);
    EXPECT_EQ(op.Boxes().at(0).text, "Failure to allocate memory!");
    EXPECT_EQ(op.Boxes()[0].caption, "Kelvo SaveSequence Error");
    EXPECT_EQ(Beeps(), 1U);
    EXPECT_THAT(Saved(), IsEmpty());
}

TEST_F(Saving, AFrameThatIsNotToBeHadIsTold)
{
    ViewFrames(1);
    write::frames.ImageBuffer.resize(4);
    op.Answer({Button::kYes});
    EXPECT_EQ(Save("r.seq"), -1);
    EXPECT_EQ(op.Boxes().at(1).text, "Unable to get image data!");
    EXPECT_EQ(op.Boxes()[1].caption, "Kelvo SaveSequence Error");
    EXPECT_EQ(Beeps(), 1U);
    EXPECT_THAT(Saved(), IsEmpty());
}

TEST_F(Saving, ASequenceFileThatCannotBeOpenedIsTold)
{
    for (const std::int32_t multi : {0, 1}) {
        write::settings.MultiFrame = multi;
        EXPECT_EQ(Save("missing/r.seq"), -1);
        EXPECT_EQ(op.Boxes().back().text, Out("missing/r0.seq") + "\nSaveSequence: Open file failure");
        EXPECT_EQ(op.Boxes().back().caption, "Kelvo message");
    }
    EXPECT_EQ(Beeps(), 2U);
    EXPECT_EQ(number, 0);
}

TEST_F(Saving, AFullDiskTakesAnUnwrittenHeaderAwayButNoMultiFrameFile)
{
    {
        const FullAt limit(100);
        EXPECT_EQ(Save("r.seq"), 0);
    }
    EXPECT_EQ(op.Boxes().at(0).text, "Failure writing header for image file\nDisk Full ??");
    EXPECT_THAT(Saved(), IsEmpty());
    write::settings.MultiFrame = 1;
    {
        const FullAt limit(100);
        EXPECT_EQ(Save("r.seq"), 0);
    }
    EXPECT_THAT(Saved(), ElementsAre("r0.seq"));
    EXPECT_EQ(number, 0);
    EXPECT_EQ(FileContents(Out("r0.seq")), "") << "nothing in it keeps the first frame out";
    EXPECT_EQ(Save("r.seq"), 1);
    EXPECT_EQ(FileContents(Out("r0.seq")).size(), 520U);
}

TEST_F(Saving, AFullDiskTakesTheFirstFramesFileAway)
{
    for (const std::int32_t multi : {0, 1}) {
        write::settings.MultiFrame = multi;
        const FullAt limit(512 + 5);
        EXPECT_EQ(Save("r.seq"), 5) << "the bytes that were written";
        EXPECT_THAT(Saved(), IsEmpty());
        EXPECT_EQ(op.Boxes().back().text, "Error writing data to file!");
    }
    EXPECT_EQ(number, 0);
}

// The header counts a frame when it is there, and what the disk took of one that isn't is cut off again.
TEST_F(Saving, AFullDiskLeavesAMultiFrameFileAsItWas)
{
    write::settings.MultiFrame = 1;
    EXPECT_EQ(Save("r.seq"), 1);
    EXPECT_EQ(Save("r.seq"), 1);
    const std::string former = FileContents(Out("r0.seq"));
    const std::string header = HeaderBytes(ImageHeader);
    for (const rlim_t room : {rlim_t{0}, rlim_t{5}}) {
        const FullAt limit(512 + 16 + room);
        EXPECT_EQ(Save("r.seq"), static_cast<std::int32_t>(room)) << "the bytes that were written";
        EXPECT_EQ(op.Boxes().back().text, "Error writing data to file!");
        EXPECT_EQ(op.Boxes().back().caption, "File Write Error");
        EXPECT_EQ(FileContents(Out("r0.seq")), former);
        EXPECT_EQ(HeaderBytes(ImageHeader), header);
    }
    EXPECT_EQ(number, 0);
    EXPECT_EQ(Save("r.seq"), 1) << "and the next one stands behind the two";
    EXPECT_EQ(FileContents(Out("r0.seq")).substr(512 + 16), SampleBytes({1000, 1001, 1100, 1101}));
}

// A numbered file of its own, which the frame on view begins behind as many places as its file has frames.
TEST_F(Saving, ThePartialFrameIsFollowedByTheHeaderThatDoesNotCountIt)
{
    ViewFrames(2);
    op.Answer({Button::kYes});
    {
        const FullAt limit(512 + 16 + 5);
        FullAt::RoomAfterRefusal();
        EXPECT_EQ(Save("r.seq"), 5);
    }
    const std::string bytes = FileContents(Out("r0.seq"));
    ASSERT_EQ(bytes.size(), 512U + 16U + 5U + 512U);
    EXPECT_EQ(+HeaderIn(bytes).FrameCount, 3U);
    EXPECT_EQ(+HeaderIn(bytes.substr(533)).FrameCount, 2U);
    EXPECT_EQ(+ImageHeader.FrameCount, 2U);
    EXPECT_EQ(op.Boxes().back().text, "Error writing data to file!");
}

TEST_F(Saving, ACutFrameOfAFileOnViewKeepsTheFileThatWasToBeReplaced)
{
    ViewFrames(2);
    PutFile(Out("r0.seq"), "old");
    op.Answer({Button::kYes, Button::kYes});
    {
        const FullAt limit(512 + 16 + 3);
        EXPECT_EQ(Save("r.seq"), 0);
    }
    EXPECT_EQ(FileContents(Out("r0.seq")), "old");
    EXPECT_EQ(+ImageHeader.FrameCount, 2U);
    EXPECT_THAT(Saved(), ElementsAre("r0.seq"));
}

// ---- Without rights

class SavingWithoutRights : public Saving {
  protected:
    SavingWithoutRights() { EXPECT_EQ(chmod(directory.Path().c_str(), 0755), 0); }

    // Whether the work gives what it should in a process without the administrator's rights.
    static bool AsOrdinaryUser(const std::function<bool()>& work)
    {
        constexpr uid_t kNobody = 65534;
        const pid_t child = fork();
        if (child == 0) {
            const bool ordinary = geteuid() != 0 || setuid(kNobody) == 0;
            _exit(ordinary && work() ? 0 : 1);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    bool ImageIsRefused() const
    {
        return SaveImage(Out("a.img"), 1) == 0 && op.Boxes().size() == 2 &&
               op.Boxes()[0].text == Out("a.img") + "\nOpen file failure on Save Image" &&
               op.Boxes()[1].text == "Failure writing header for image file";
    }
    bool SequenceIsRefused(std::int32_t multi)
    {
        write::settings.MultiFrame = multi;
        return Save("r.seq") == -1 && op.Boxes().size() == 1 &&
               op.Boxes()[0].text == Out("r0.seq") + "\nSaveSequence: Open file failure";
    }
};

TEST_F(SavingWithoutRights, ADirectoryThatTakesNoFileIsTold)
{
    ASSERT_EQ(chmod(Out("").c_str(), 0555), 0);
    EXPECT_TRUE(AsOrdinaryUser([&] { return ImageIsRefused(); }));
    EXPECT_TRUE(AsOrdinaryUser([&] { return SequenceIsRefused(0); }));
    EXPECT_TRUE(AsOrdinaryUser([&] { return SequenceIsRefused(1); }));
    EXPECT_THAT(Saved(), IsEmpty());
}

TEST_F(SavingWithoutRights, AFileThatMayOnlyBeReadIsNotAppendedTo)
{
    ASSERT_EQ(chmod(Out("").c_str(), 0777), 0);
    PutFile(Out("r0.seq"), "frames");
    ASSERT_EQ(chmod(Out("r0.seq").c_str(), 0444), 0);
    EXPECT_TRUE(AsOrdinaryUser([&] { return SequenceIsRefused(1); }));
    EXPECT_EQ(FileContents(Out("r0.seq")), "frames");
}

TEST_F(SavingWithoutRights, AnImageThatMayOnlyBeReadIsNotReplaced)
{
    ASSERT_EQ(chmod(Out("").c_str(), 0777), 0);
    PutFile(Out("a.img"), "old");
    ASSERT_EQ(chmod(Out("a.img").c_str(), 0444), 0);
    EXPECT_TRUE(AsOrdinaryUser([&] {
        op.Answer({Button::kYes});
        return SaveImage(Out("a.img"), 1) == 0 && op.Boxes().size() == 3 &&
               op.Boxes()[1].text == Out("a.img") + "\nOpen file failure on Save Image";
    }));
    EXPECT_EQ(FileContents(Out("a.img")), "old");
    EXPECT_THAT(Saved(), ElementsAre("a.img"));
}

// ---- Killed while saving

// Live video of 160 x 120; the pixels of a frame are picture + 100 row + column.
class KilledSaving : public BoardTest {
  protected:
    static constexpr int kColumns = 160;
    static constexpr int kRows = 120;
    static constexpr std::size_t kFrameBytes = std::size_t{2} * kColumns * kRows;
    const int kills_ = Rounds(200);

    KilledSaving()
    {
        PutFile(IniFilePath, "[Camera.2]\nMaxNumFramesToAllocate=1\n");
        write::camera.numBufFrames = 1;
        GoLive(kColumns, kRows);
        write::cal.CalType = 0;
        write::board.DataOffset = 0;
    }

    // A forked process shares the descriptor that wakes the message loop: what one takes from it the other waits for.
    static void TakeOwnWakeUp()
    {
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code error;
            if (std::filesystem::read_symlink(entry.path(), error) != "anon_inode:[eventfd]") continue;
            const int fresh = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
            if (fresh < 0 || dup2(fresh, std::stoi(entry.path().filename())) < 0) _exit(2);
            close(fresh);
        }
    }

    // What becomes of the process that saves: it is killed after a time, or in the midst of writing its next picture,
    // when a file has grown to so many bytes.
    struct Kill {
        int after = 0;                    // pictures
        std::optional<rlim_t> atBytes{};  // of the file that it writes
    };
    // Every other kill meets the writing; the file then has so many bytes before it, and takes so many more.
    Kill NextKill(int kill, const std::function<rlim_t(int)>& bytesBefore, rlim_t bytesWritten)
    {
        Kill next{.after = std::uniform_int_distribution(0, 3)(random_)};
        if (kill % 2 != 0) return next;
        next.atBytes = bytesBefore(next.after) + std::uniform_int_distribution<rlim_t>(1, bytesWritten - 1)(random_);
        return next;
    }

    // A process that saves pictures 1, 2, 3, ... until it is killed: after none to three of them, and in its own
    // writing or a time that differs from kill to kill, so that a busy machine has its kills too. Returns how many had
    // been reported as written.
    int SaveUntilKilled(const Kill& how, const std::function<bool()>& save)
    {
        int reports[2];
        EXPECT_EQ(pipe(reports), 0);
        QCoreApplication::processEvents();  // nothing is on its way through the message loop when the two part
        const pid_t child = fork();
        if (child == 0) {
            TakeOwnWakeUp();
            for (int picture = 1;; ++picture) {
                if (how.atBytes && picture == how.after + 1) DieAt(*how.atBytes);
                recordingBoard.asked.clear();
                recordingBoard.picture = picture;
                const char done = '.';
                if (!save() || ::write(reports[1], &done, 1) != 1) _exit(1);
            }
        }
        close(reports[1]);
        const auto reported = [&] {
            constexpr int kLongestSaveMs = 30000;
            pollfd readable = {.fd = reports[0], .events = POLLIN, .revents = 0};
            char done = 0;
            return poll(&readable, 1, kLongestSaveMs) == 1 && read(reports[0], &done, 1) == 1;
        };
        int count = 0;
        while (count < how.after && reported()) ++count;
        EXPECT_EQ(count, how.after) << "the child doesn't get on";
        if (how.atBytes) {
            EXPECT_FALSE(reported()) << "the child dies while it writes";
        } else {
            usleep(std::uniform_int_distribution<useconds_t>(0, 5000)(random_));
        }
        EXPECT_EQ(kill(child, SIGKILL), 0);  // one that has died is there until it is waited for
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status)) << "the child met a failure of its own";
        EXPECT_EQ(WTERMSIG(status), how.atBytes ? SIGXFSZ : SIGKILL);
        while (reported()) ++count;
        close(reports[0]);
        return count;
    }

    // The process ends within the write that would make a file larger.
    static void DieAt(rlim_t bytes)
    {
        signal(SIGXFSZ, SIG_DFL);
        const rlimit none{.rlim_cur = 0, .rlim_max = 0};
        const rlimit limit{.rlim_cur = bytes, .rlim_max = bytes};
        if (setrlimit(RLIMIT_CORE, &none) != 0 || setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(2);
    }

    static bool IsPicture(std::string_view counts, int picture)
    {
        if (counts.size() != kFrameBytes) return false;
        for (int row = 0; row < kRows; ++row) {
            for (int column = 0; column < kColumns; ++column) {
                std::int16_t count = 0;
                std::memcpy(&count, counts.data() + 2 * (row * kColumns + column), 2);
                if (count != static_cast<std::int16_t>(picture + 100 * row + column)) return false;
            }
        }
        return true;
    }
    static int PictureIn(std::string_view bytes)
    {
        std::int16_t first = 0;
        std::memcpy(&first, bytes.data() + 512, 2);
        return first;
    }

    static rlim_t NothingBefore(int /*pictures*/) { return 0; }  // each picture has a file of its own

    std::mt19937 random_{20261};  // NOLINT: the same kills in each run
};

TEST_F(KilledSaving, AnImageIsWholeUnderItsName)
{
    const std::string path = directory / "a.img";
    ASSERT_EQ(SaveImage(path, 1), 1);  // the picture that stands there before: 1000
    int written = 0;
    int beside = 0;
    for (int kill = 0; kill < kills_; ++kill) {
        const Kill how = NextKill(kill, NothingBefore, 512 + kFrameBytes);
        const int reported = SaveUntilKilled(how, [&] {
            op.Answer({Button::kYes});  // replace it
            return SaveImage(path, 1) == 1;
        });
        written += reported;
        const std::string bytes = FileContents(path);
        ASSERT_EQ(bytes.size(), 512 + kFrameBytes) << "kill " << kill;
        ASSERT_EQ(+HeaderIn(bytes).ImageWidth, kColumns);
        ASSERT_TRUE(IsPicture(std::string_view(bytes).substr(512), PictureIn(bytes)));
        if (reported > 0) {
            ASSERT_GE(PictureIn(bytes), reported) << "what was reported as written is there";
            ASSERT_LE(PictureIn(bytes), reported + 1);
        }
        // At most the one picture that was in the making lies beside it, and the next save takes its place.
        const std::vector<std::string> names = NamesIn(directory.Path());
        const auto newOnes = std::ranges::count(names, ".a.img.new");
        if (how.atBytes) {
            ASSERT_EQ(newOnes, 1);
            ASSERT_EQ(FileContents(directory / ".a.img.new").size(), *how.atBytes) << "the kill met the writing";
        }
        ASSERT_EQ(
            std::ranges::count_if(names, [](const std::string& n) { return n.find("a.img") != std::string::npos; }),
            1 + newOnes);
        beside += static_cast<int>(newOnes);
    }
    EXPECT_GT(written, 0);
    EXPECT_GE(beside, (kills_ + 1) / 2) << "as many kills as were meant to met the writing";
}

TEST_F(KilledSaving, EachNumberedFileIsWhole)
{
    write::settings.MultiFrame = 0;
    int written = 0;
    int met = 0;
    for (int kill = 0; kill < kills_; ++kill) {
        const std::string base = directory / "s/r.seq";
        std::filesystem::remove_all(directory / "s");
        std::filesystem::create_directory(directory / "s");
        std::int32_t number = 1;
        const Kill how = NextKill(kill, NothingBefore, 512 + kFrameBytes);
        const int reported = SaveUntilKilled(how, [&] { return SaveSequence(base, number, 1) == 1; });
        int whole = 0;
        int inTheMaking = 0;
        for (const std::string& name : NamesIn(directory / "s")) {
            if (name.starts_with('.')) {
                ASSERT_EQ(name, Format(".r%d.seq.new", reported + 1));
                ++inTheMaking;
                continue;
            }
            const std::string bytes = FileContents(directory / ("s/" + name));
            ASSERT_TRUE(IsPicture(std::string_view(bytes).substr(512), std::stoi(name.substr(1)))) << name;
            ++whole;
        }
        if (how.atBytes) {
            const std::string part = directory / Format("s/.r%d.seq.new", reported + 1);
            ASSERT_EQ(inTheMaking, 1);
            ASSERT_EQ(FileContents(part).size(), *how.atBytes) << "the kill met the writing";
            ASSERT_EQ(whole, reported);
        }
        ASSERT_GE(whole, reported);
        ASSERT_LE(whole, reported + 1);
        written += reported;
        met += inTheMaking;
    }
    EXPECT_GT(written, 0);
    EXPECT_GE(met, (kills_ + 1) / 2) << "as many kills as were meant to met the writing";
}

TEST_F(KilledSaving, AMultiFrameFileHasEveryFrameThatWasWritten)
{
    write::settings.MultiFrame = 1;
    const std::string path = directory / "r0.seq";
    const auto bytesBefore = [](int frames) { return rlim_t{512} + static_cast<rlim_t>(frames) * kFrameBytes; };
    int written = 0;
    int met = 0;
    for (int kill = 0; kill < kills_; ++kill) {
        std::filesystem::remove(path);
        std::int32_t number = 0;
        const Kill how = NextKill(kill, bytesBefore, kFrameBytes);
        const int reported = SaveUntilKilled(how, [&] { return SaveSequence(directory / "r.seq", number, 1) == 1; });
        written += reported;
        const std::string left = FileContents(path);
        if (how.atBytes) {
            ASSERT_EQ(left.size(), *how.atBytes) << "the kill met the writing";
        }
        if (left.size() < 512) {
            ASSERT_EQ(left, "") << "made, and not begun";
        } else {
            const std::size_t whole = (left.size() - 512) / kFrameBytes;
            const bool part = (left.size() - 512) % kFrameBytes != 0;
            ASSERT_GE(whole, static_cast<std::size_t>(reported));
            ASSERT_LE(+HeaderIn(left).FrameCount, whole) << "no frame is counted that isn't there";
            ASSERT_GE(+HeaderIn(left).FrameCount, static_cast<std::uint32_t>(reported));
            if (part || HeaderIn(left).FrameCount < whole) ++met;
        }

        // What comes next leaves them alone, and stands right behind them.
        recordingBoard.picture = 5000;
        ASSERT_EQ(SaveSequence(directory / "r.seq", number, 1), 1);
        const std::string bytes = FileContents(path);
        ASSERT_EQ((bytes.size() - 512) % kFrameBytes, 0U);
        const std::size_t frames = (bytes.size() - 512) / kFrameBytes;
        ASSERT_EQ(+HeaderIn(bytes).FrameCount, frames);
        ASSERT_LE(frames, static_cast<std::size_t>(reported) + 2);
        for (std::size_t frame = 0; frame < frames; ++frame) {
            const std::size_t position = 512 + frame * kFrameBytes;
            const int picture = frame + 1 < frames ? static_cast<int>(frame) + 1 : 5000;
            ASSERT_TRUE(IsPicture(std::string_view(bytes).substr(position, kFrameBytes), picture)) << frame;
        }
    }
    EXPECT_GT(written, 0);
    EXPECT_GE(met, (kills_ + 1) / 2) << "as many kills as were meant to met the writing";
}

}  // namespace
}  // namespace kelvo
