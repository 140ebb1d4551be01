// What writes image files, with a fault at each of its steps: the disk, the memory, the board. Whatever fails, what lay
// on the disk is there as it was, the state and the settings files are as they were, and the operator was told.
#include "config/settings_write.h"
#include "display/display_pipeline.h"
#include "grabber/board_state_write.h"
#include "imagefile/header_write.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "platform/profile.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/state_registry.h"
#include "state/windows.h"
#include "support/recording_board.h"
#include "support/stored_files.h"
#include "ui/select_file_write.h"
#include "video/video.h"
#include "viewing/bitmap_command.h"
#include "viewing/coefficient_view.h"
#include "viewing/saving.h"
#include "viewing/viewing.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <map>
#include <ostream>
#include <set>

namespace kelvo {
namespace {

using Counts = std::vector<std::int16_t>;
using Files = std::map<std::string, std::string>;  // names below the directory, and bytes
using States = std::map<std::string, StateValue>;

class SavingWithFaults;

// One way to write an image file, over and over.
struct Operation {
    const char* name;
    void (*prepare)(SavingWithFaults&);  // what is on view, and what lies there before
    void (*run)(SavingWithFaults&);
    std::size_t recordBytes = 0;  // of a multi-frame file that lies there: its whole frames are what must stay
    bool mayLeaveAPart = false;   // a new file stays as far as it came
    bool writesSeveral = false;   // files, of which those before the fault stand
    bool takesAFrame = false;     // it takes a new frame
    bool needsTheFrame = false;   // and writes nothing without one; averaging goes on with what it has
};
std::ostream& operator<<(std::ostream& out, const Operation& operation)
{
    return out << operation.name;
}

constexpr int kMostBoxes = 8;

// What a new frame and its way through the host frames change by themselves.
const std::set<std::string> kMoving = {
    "FramesDelivered",
    "FramesShown",
    "FramesMissed",
    "FramesUsed",
    "FramesLost",
    "HostFrameNext",
    "HostFrameBytes",
    "AveragingCapacity",
    "CalibrationListsVersion",
    // What is being done; the command's end puts its own line there.
    "StatusText",
    "StatusAlign",
};

class SavingWithFaults : public BoardTest, public testing::WithParamInterface<Operation> {
  protected:
    SavingWithFaults()
    {
        PutFile(IniFilePath, "[Camera.2]\nMaxNumFramesToAllocate=3\n[Save]\nMultiFrame=0\n");
        PutFile(CameraFilePath, "[Camera.2]\nHroi=2\nVroi=2\nHtotal=2\nVtotal=2\nXpan=0\nYpan=0\n");
        write::camera.numBufFrames = 8;
        write::file.ByteSwap = 0xFFFF;
        write::display.DisplayHigh = 16383;
        GoLive(2, 2);
        write::camera.ActiveConfig.Hactive = write::camera.ActiveConfig.Vactive = 2;
        write::cal.CalType = 0;
        write::board.DataOffset = 0;
        write::cal.DecomList = {0, 1, 2, 3};
        write::cal.OffsetList = {0, 0, 0, 0};
        write::cal.GainList = {1, 1, 1, 1};
        CalibrationListsChanged();
        write::fileChoice.LastFileDirectory = directory.Path() + "/out/";
    }

    // Live video and an empty directory, and then what the operation wants.
    void Prepare()
    {
        if (!LiveVideo) ToggleLiveVideo();
        std::filesystem::remove_all(directory / "out");
        std::filesystem::create_directory(directory / "out");
        write::settings.MultiFrame = 0;
        write::file.ImageHeader = PlainHeader(2, 2);
        GetParam().prepare(*this);
        ASSERT_EQ(RefreshLiveFrame(), 1);
        number = 0;
        ASSERT_TRUE(FlushProfiles());
        boxesBefore = op.Boxes().size();
        for (int box = 0; box < kMostBoxes; ++box) op.AtNextBox(AgreeToAll);
    }

    Files AllFiles() const
    {
        Files files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(directory.Path())) {
            if (!entry.is_regular_file()) continue;
            files[entry.path().string().substr(directory.Path().size() + 1)] = FileContents(entry.path());
        }
        return files;
    }
    static States WholeState()
    {
        States states;
        for (const std::string& name : AllStateNames()) {
            if (!kMoving.contains(name)) states[name] = ReadState(name).value_or(StateValue{});
        }
        states["the whole ImageHeader"] = HeaderBytes(ImageHeader);
        states["ImageBuffer"] = std::string(ImageBuffer.begin(), ImageBuffer.end());
        return states;
    }
    // Each question has the answer that goes on.
    static void AgreeToAll(const FrontBox&)
    {
        if (!PressBoxButton(Button::kYes)) PressBoxButton(Button::kOk);
    }
    // Boxes since the operation began, but for the questions.
    std::size_t Told() const
    {
        const auto boxes = op.Boxes();
        return static_cast<std::size_t>(
            std::count_if(boxes.begin() + static_cast<std::ptrdiff_t>(boxesBefore), boxes.end(),
                          [](const TestOperator::Box& box) { return box.buttons.size() == 1; }));
    }

    void ExpectSameState(const States& before) const
    {
        const States now = WholeState();
        for (const auto& [name, value] : before) EXPECT_EQ(now.at(name) == value, true) << name;
    }

    // The files that stood are as they were; new ones are whole, or, where that is so, as far as they came.
    void ExpectKept(const Files& before, const Files& written) const
    {
        const Files now = AllFiles();
        for (const auto& [name, bytes] : before) {
            ASSERT_TRUE(now.contains(name)) << name;
            if (GetParam().writesSeveral && now.at(name) == written.at(name)) continue;
            std::size_t kept = bytes.size();
            if (GetParam().recordBytes != 0 && name.starts_with("out/")) {
                kept -= (kept - 512) % GetParam().recordBytes;
            }
            EXPECT_EQ(now.at(name).substr(0, kept), bytes.substr(0, kept)) << name;
            EXPECT_LE(now.at(name).size(), bytes.size()) << name;
        }
        for (const auto& [name, bytes] : now) {
            if (before.contains(name)) continue;
            ASSERT_TRUE(written.contains(name)) << name << " was left behind";
            if (GetParam().mayLeaveAPart) {
                // Behind a partial frame that isn't the first comes the header once more, which doesn't count it.
                const bool headerBehind = bytes.size() > written.at(name).size();
                EXPECT_TRUE(written.at(name).starts_with(bytes.substr(0, bytes.size() - (headerBehind ? 512 : 0))));
            } else {
                EXPECT_EQ(bytes, written.at(name)) << name;
            }
        }
    }

    // Runs the operation with the n-th question for a fault answered by it. False where there were fewer.
    bool RunWithFault(const std::string& fault, int n, const Files& written)
    {
        Prepare();
        const Files before = AllFiles();
        const States state = WholeState();
        SetFaultOnce(fault, n);
        GetParam().run(*this);
        const bool came = QuestionsUntilFault(fault) == 0;
        SetFaultOnce(fault, 0);
        if (!came) {
            EXPECT_EQ(AllFiles(), written) << "without a fault all is written";
            return false;
        }
        if (Told() == 0) {
            EXPECT_EQ(AllFiles(), written) << "what isn't told has no effect";
            return true;
        }
        ExpectSameState(state);
        EXPECT_EQ(number, 0) << "of the sequence";
        EXPECT_TRUE(FlushProfiles());
        ExpectKept(before, written);
        return true;
    }

    // A frame that can't be read is told. What was gathered before is saved in its place: the operator has read why.
    void ExpectToldOfTheBoard(const Files& written)
    {
        Prepare();
        const Files before = AllFiles();
        const States state = WholeState();
        recordingBoard.answers["icp_read_area"] = -1;
        GetParam().run(*this);
        recordingBoard.answers.clear();
        EXPECT_GT(Told(), 0U);
        EXPECT_TRUE(FlushProfiles());
        if (GetParam().needsTheFrame) {
            ExpectSameState(state);
            ExpectKept(before, written);
            return;
        }
        Files now = AllFiles();
        EXPECT_EQ(now.size(), written.size());
        for (const auto& [name, bytes] : before) {
            if (name.starts_with("out/")) continue;
            EXPECT_EQ(now[name], bytes) << name;
        }
    }

  public:
    std::string Out(std::string_view name) const { return directory / "out" + '/' + std::string(name); }
    void Freeze() const
    {
        ASSERT_EQ(RefreshLiveFrame(), 1);
        ToggleLiveVideo();
        ASSERT_EQ(LiveVideo, 0);
    }
    // Three frames of 2 x 2, each behind a header of its own where prefix says so.
    void View(std::int16_t prefix = 0, std::uint32_t frame = 1)
    {
        ImageHeaderRecord header = PlainHeader(2, 2);
        header.ImageHeaderDataOffset = prefix;
        std::string bytes = HeaderBytes(header);
        for (std::int16_t f = 0; f < 3; ++f) {
            bytes += std::string(static_cast<std::size_t>(prefix), 'h') +
                     SampleBytes({static_cast<std::int16_t>(10 * f + 1), 2, 3, 4});
        }
        PutFile(directory / "view.seq", bytes);
        ASSERT_EQ(ViewImage(directory / "view.seq", frame), 1);
    }
    void ViewList()
    {
        PutFile(directory / "c.cal", "[Setup]\nActiveCamera=2\n");
        PutFile(directory / "c.off", SampleBytes({5, 6, 7, 8}));
        std::filesystem::last_write_time(directory / "c.off", {});  // which stands in the header
        ASSERT_EQ(ViewCoefficientFile(directory / "c.off"), 1);
    }
    void PutRecording(const std::string& tail)
    {
        write::settings.MultiFrame = 1;
        ImageHeaderRecord header = PlainHeader(2, 2);
        header.FrameCount = 2;
        PutFile(Out("r0.seq"), HeaderBytes(header) + SampleBytes({1, 2, 3, 4, 5, 6, 7, 8}) + tail);
    }
    void Save() { SaveSequence(Out("r.seq"), number, 1); }
    void AcceptDialog()
    {
        op.Do([] { OperatePress(DialogInFront(), 1); });
    }
    void Choose(const std::string& name)
    {
        op.Do([path = Out(name)] { ChooseFiles({path}); });
    }

    std::int32_t number = 0;
    std::size_t boxesBefore = 0;
};

const Operation kOperations[] = {
    {.name = "a live image",
     .prepare = [](SavingWithFaults&) {},
     .run = [](SavingWithFaults& t) { SaveImage(t.Out("a.img"), 1); },
     .mayLeaveAPart = true,
     .takesAFrame = true},
    {.name = "an averaged image in the place of another",
     .prepare = [](SavingWithFaults& t) { PutFile(t.Out("a.img"), "a former one"); },
     .run = [](SavingWithFaults& t) { SaveImage(t.Out("a.img"), 3); },
     .takesAFrame = true},
    {.name = "the frozen image",
     .prepare = [](SavingWithFaults& t) { t.Freeze(); },
     .run = [](SavingWithFaults& t) { SaveImage(t.Out("a.img"), 1); },
     .mayLeaveAPart = true},
    {.name = "an image of a recording with frame headers",
     .prepare = [](SavingWithFaults& t) { t.View(80); },
     .run = [](SavingWithFaults& t) { SaveImage(t.Out("a.img"), 1); },
     .mayLeaveAPart = true},
    {.name = "an image of a list",
     .prepare =
         [](SavingWithFaults& t) {
             t.ViewList();
             PutFile(t.Out("a.img"), "a former one");
         },
     .run = [](SavingWithFaults& t) { SaveImage(t.Out("a.img"), 1); }},
    {.name = "a numbered file",
     .prepare = [](SavingWithFaults&) {},
     .run = [](SavingWithFaults& t) { t.Save(); },
     .takesAFrame = true},
    {.name = "a numbered file in the place of another",
     .prepare =
         [](SavingWithFaults& t) {
             t.Freeze();
             PutFile(t.Out("r0.seq"), "a former one");
         },
     .run = [](SavingWithFaults& t) { t.Save(); }},
    {.name = "a numbered file of a file on view",
     .prepare = [](SavingWithFaults& t) { t.View(); },
     .run = [](SavingWithFaults& t) { t.Save(); },
     .mayLeaveAPart = true},
    {.name = "the first frame of a file",
     .prepare = [](SavingWithFaults&) { write::settings.MultiFrame = 1; },
     .run = [](SavingWithFaults& t) { t.Save(); },
     .mayLeaveAPart = true,
     .takesAFrame = true},
    {.name = "a frame appended",
     .prepare = [](SavingWithFaults& t) { t.PutRecording(""); },
     .run = [](SavingWithFaults& t) { t.Save(); },
     .takesAFrame = true},
    {.name = "a frame appended behind a part of one",
     .prepare = [](SavingWithFaults& t) { t.PutRecording("part"); },
     .run = [](SavingWithFaults& t) { t.Save(); },
     .recordBytes = 8,
     .takesAFrame = true},
    {.name = "a frame of a file on view appended",
     .prepare =
         [](SavingWithFaults& t) {
             t.View(80);
             t.PutRecording("");
         },
     .run = [](SavingWithFaults& t) { t.Save(); }},
    {.name = "a live bitmap",
     .prepare = [](SavingWithFaults&) {},
     .run =
         [](SavingWithFaults& t) {
             t.Choose("b.bmp");
             SaveBitmapCommand();
         },
     .takesAFrame = true,
     .needsTheFrame = true},
    {.name = "the frozen frame's bitmap in the place of another",
     .prepare =
         [](SavingWithFaults& t) {
             t.Freeze();
             PutFile(t.Out("b.bmp"), "a former one");
         },
     .run =
         [](SavingWithFaults& t) {
             t.Choose("b.bmp");
             SaveBitmapCommand();
         }},
    {.name = "bitmaps of three frames",
     .prepare =
         [](SavingWithFaults& t) {
             t.View(0, 0);
             PutFile(t.Out("b1.bmp"), "a former one");
         },
     .run =
         [](SavingWithFaults& t) {
             t.AcceptDialog();
             t.Choose("b.bmp");
             SaveBitmapCommand();
         },
     .writesSeveral = true},
};

class SaveFaults : public SavingWithFaults {};

// "a live image" is ALiveImage.
std::string CamelCase(std::string_view words)
{
    std::string name;
    bool first = true;
    for (const char letter : words) {
        const bool isLetter = letter >= 'a' && letter <= 'z';
        if (isLetter) name += first ? static_cast<char>(letter - 'a' + 'A') : letter;
        first = !isLetter;
    }
    return name;
}

TEST_P(SaveFaults, LeaveAllAsItWasAndAreTold)
{
    Prepare();
    const Files before = AllFiles();
    GetParam().run(*this);
    EXPECT_EQ(Told(), 0U);
    const Files written = AllFiles();
    EXPECT_NE(written, before) << "it writes a file";

    for (const std::string fault : {"disk", "disk full", "memory", "disk read"}) {
        int steps = fault == "disk read" ? 1 : 0;  // not all of them read
        for (int n = 1; n < 50; ++n) {
            SCOPED_TRACE(testing::Message() << fault << ", step " << n);
            if (!RunWithFault(fault, n, written)) break;
            ++steps;
        }
        EXPECT_GT(steps, 0) << fault;
        EXPECT_LT(steps, 49) << fault;
    }
    if (GetParam().takesAFrame) ExpectToldOfTheBoard(written);
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(WritingImageFiles, SaveFaults, testing::ValuesIn(kOperations),
                         [](const testing::TestParamInfo<Operation>& test) { return CamelCase(test.param.name); });
}  // namespace kelvo
