#include "platform/application.h"

#include "platform/qt_window.h"
#include "support/temp_directory.h"
#include "window_fixture.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QPalette>
#include <QRadioButton>
#include <QSpinBox>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

namespace kelvo {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST(CommandLine, TakesAllOptions)
{
    const CommandLine line = ParseCommandLine({"--data", "/d", "--view=/v w.seq", "--script", "/s.lua", "--transcript",
                                               "/t", "--offscreen", "--scale", "1.5", "--virtual-time", "--theme",
                                               "dark", "a.cal", "AUTOSTART", "--", "--data", "x"});
    EXPECT_EQ(line.error, "");
    EXPECT_EQ(line.dataDirectory, "/d");
    EXPECT_THAT(line.viewFiles, ElementsAre("/v w.seq"));
    EXPECT_EQ(line.scriptFile, "/s.lua");
    EXPECT_EQ(line.transcriptFile, "/t");
    EXPECT_TRUE(line.offscreen);
    EXPECT_EQ(line.scale, 1.5);
    EXPECT_TRUE(line.virtualTime);
    EXPECT_EQ(line.theme, Theme::kDark);
    EXPECT_EQ(line.rest, "a.cal AUTOSTART");
    EXPECT_THAT(line.scriptArguments, ElementsAre("--data", "x"));
    EXPECT_FALSE(line.showHelp);
}

TEST(CommandLine, IsPlainWithoutArguments)
{
    const CommandLine line = ParseCommandLine({});
    EXPECT_EQ(line.error, "");
    EXPECT_EQ(line.rest, "");
    EXPECT_EQ(line.dataDirectory, "");
    EXPECT_EQ(line.scale, 1.0);
    EXPECT_FALSE(line.theme.has_value());
    EXPECT_FALSE(line.offscreen);
}

TEST(CommandLine, MakesPathsAbsoluteButLeavesTheRest)
{
    const std::string here = std::filesystem::current_path().string();
    const CommandLine line = ParseCommandLine({"--view", "a/b.img", "--data=d", "set.cal"});
    EXPECT_THAT(line.viewFiles, ElementsAre(here + "/a/b.img"));
    EXPECT_EQ(line.dataDirectory, here + "/d");
    EXPECT_EQ(line.rest, "set.cal");
}

TEST(CommandLine, ABarePathIsMadeWholeAndABareNameStays)
{
    const std::string here = std::filesystem::current_path().string();
    const std::pair<const char*, std::string> cases[] = {
        {"set.cal", "set.cal"},
        {"AUTOSTART", "AUTOSTART"},
        {"sets/warm.cal", here + "/sets/warm.cal"},
        {"sets\\warm.cal", here + "/sets/warm.cal"},
        {"./last.cal", here + "/./last.cal"},
        {"/sets/warm.cal", "/sets/warm.cal"},
        {"\\KELVO\\last.cal", "\\KELVO\\last.cal"},
        {"d:sets\\warm.cal", "d:sets\\warm.cal"},
    };
    for (const auto& [argument, whole] : cases) {
        EXPECT_EQ(ParseCommandLine({"AUTOSTART", argument}).rest, "AUTOSTART " + whole) << argument;
    }
}

TEST(CommandLine, OneQuotedArgumentSaysWhatTwoSay)
{
    const std::string here = std::filesystem::current_path().string();
    const std::pair<const char*, std::string> cases[] = {
        {"AUTOSTART sets/q.cal", "AUTOSTART " + here + "/sets/q.cal"},
        {"autostart  sets/my q.cal", "autostart " + here + "/sets/my q.cal"},
        {"sets/q.cal AUTOSTART", here + "/sets/q.cal AUTOSTART"},
        {"AUTOSTART q.cal", "AUTOSTART q.cal"},
        {"AUTOSTART /sets/q.cal", "AUTOSTART /sets/q.cal"},
        {"AUTOSTART", "AUTOSTART"},
        {"sets/AUTOSTART", here + "/sets/AUTOSTART"},
        {"AUTOSTARTER sets/q.cal", here + "/AUTOSTARTER sets/q.cal"},
    };
    for (const auto& [argument, whole] : cases) EXPECT_EQ(ParseCommandLine({argument}).rest, whole) << argument;
}

TEST(CommandLine, ABareStoredFileIsLookedAt)
{
    const std::string here = std::filesystem::current_path().string();
    for (const char* ending : {"img", "seq", "buf", "sdv", "flt", "gai", "off", "noi", "bad", "dcm", "IMG", "Seq"}) {
        const std::string name = std::string("a.") + ending;
        const CommandLine line = ParseCommandLine({name});
        EXPECT_THAT(line.viewFiles, ElementsAre(here + "/" + name));
        EXPECT_EQ(line.rest, "");
    }
    for (const char* other : {"a.cal", "a.tif", "aimgx", "img", "a.img/b", "AUTOSTART a.img"}) {
        EXPECT_THAT(ParseCommandLine({other}).viewFiles, ElementsAre()) << other;
    }
    const CommandLine both = ParseCommandLine({"AUTOSTART", "b.seq", "last.cal", "/c.img"});
    EXPECT_THAT(both.viewFiles, ElementsAre(here + "/b.seq", "/c.img"));
    EXPECT_EQ(both.rest, "AUTOSTART last.cal");
}

TEST(CommandLine, BesideViewANameNeedsNoEnding)
{
    const CommandLine line =
        ParseCommandLine({"/1", "--view", "/2", "/3.dat", "--view=/4", "autostart", "set.cal", "AUTOSTART q.cal"});
    EXPECT_THAT(line.viewFiles, ElementsAre("/2", "/4", "/1", "/3.dat"));
    EXPECT_EQ(line.rest, "autostart set.cal AUTOSTART q.cal");
}

TEST(CommandLine, KeepsTheBytesOfAName)
{
    const std::string name = "/\xFF\xC3\xA4 b.img";
    EXPECT_THAT(ParseCommandLine({name}).viewFiles, ElementsAre(name));
    EXPECT_EQ(ParseCommandLine({"--data=" + name}).dataDirectory, name);
}

// Fewer than five characters mean nothing, however long the path is that they would stand for.
TEST(CommandLine, CountsWhatWasTyped)
{
    const std::string here = std::filesystem::current_path().string();
    EXPECT_EQ(ParseCommandLine({"a/b"}).rest, "a/b");
    EXPECT_EQ(ParseCommandLine({"./ab"}).rest, "./ab");
    EXPECT_EQ(ParseCommandLine({"./abc"}).rest, here + "/./abc");
    EXPECT_EQ(ParseCommandLine({"a/b", "c"}).rest, here + "/a/b c");
    EXPECT_EQ(ParseCommandLine({"a", "b"}).rest, "a b");
}

TEST(CommandLine, TellsWhatIsWrong)
{
    const struct {
        std::vector<std::string> arguments;
        const char* text;
    } cases[] = {
        {{"--colour"}, "unknown option --colour"},
        {{"-x"}, "unknown option -x"},
        {{"--data"}, "--data needs a value"},
        {{"--view="}, "--view needs a value"},
        {{"--scale", "0.4"}, "--scale"},
        {{"--scale", "4.1"}, "--scale"},
        {{"--scale", "nan"}, "--scale"},
        {{"--scale", "2x"}, "--scale"},
        {{"--theme", "pink"}, "--theme"},
        {{"--offscreen=1"}, "--offscreen takes no value"},
        {{"--scale", ""}, "--scale needs a value"},
        {{"--view", "a.img", "--data"}, "--data needs a value"},
        {{"--data", "--", "x"}, "--data needs a value"},
        {{"--help=no"}, "--help takes no value"},
    };
    for (const auto& [arguments, text] : cases) {
        EXPECT_THAT(ParseCommandLine(arguments).error, HasSubstr(text)) << arguments[0];
    }
}

TEST(CommandLine, TakesTheLimitsOfScale)
{
    EXPECT_EQ(ParseCommandLine({"--scale", "0.5"}).scale, 0.5);
    EXPECT_EQ(ParseCommandLine({"--scale", "4"}).scale, 4.0);
}

TEST(CommandLine, AsksForVersionAndHelp)
{
    EXPECT_TRUE(ParseCommandLine({"--version"}).showVersion);
    EXPECT_TRUE(ParseCommandLine({"--help"}).showHelp);
    EXPECT_TRUE(ParseCommandLine({"-h"}).showHelp);
    EXPECT_THAT(CommandLineHelp(), HasSubstr("Exit codes:"));
    for (const char* option : {"--data", "--view", "--script", "--transcript", "--offscreen", "--scale",
                               "--virtual-time", "--theme", "--version", "--help"}) {
        EXPECT_THAT(CommandLineHelp(), HasSubstr(option));
    }
}

TEST(ShippedFiles, AreCopiedWhereTheyAreMissing)
{
    TestOperator op;
    const TempDirectory directory;
    EXPECT_THAT(CopyShippedFiles(directory.Path()), ElementsAre());
    std::size_t copied = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory.Path())) {
        if (!entry.is_regular_file()) continue;
        ++copied;
        const std::string name = entry.path().lexically_relative(directory.Path()).string();
        EXPECT_EQ(FileContents(entry.path().string()), ResourceText("defaults/" + name)) << name;
    }
    EXPECT_GT(copied, 1U);
    EXPECT_TRUE(std::filesystem::exists(directory / "kelvo220.bmp"));
}

TEST(ShippedFiles, LeaveExistingOnesAlone)
{
    TestOperator op;
    const TempDirectory directory;
    PutFile(directory / "KELVO220.BMP", "mine");  // in another case too
    EXPECT_THAT(CopyShippedFiles(directory.Path()), ElementsAre());
    EXPECT_EQ(FileContents(directory / "KELVO220.BMP"), "mine");
    EXPECT_FALSE(std::filesystem::exists(directory / "kelvo220.bmp"));
}

TEST(ShippedFiles, AreReportedWhereTheyCannotBeMade)
{
    TestOperator op;
    const TempDirectory directory;
    PutFile(directory / "file", "");
    EXPECT_FALSE(CopyShippedFiles(directory / "file").empty());
}

TEST(Resources, AreEmptyWhereThereIsNone)
{
    TestOperator op;
    EXPECT_EQ(ResourceText("no/such/file"), "");
    EXPECT_NE(ResourceText("dialogs/DISPLAY.ui"), "");
}

// Relative luminance and contrast as the accessibility guidelines of the web define them.
double Luminance(const QColor& color)
{
    const auto part = [](double value) {
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(color.redF()) + 0.7152 * part(color.greenF()) + 0.0722 * part(color.blueF());
}

double Contrast(const QColor& a, const QColor& b)
{
    const double bright = std::max(Luminance(a), Luminance(b));
    const double dark = std::min(Luminance(a), Luminance(b));
    return (bright + 0.05) / (dark + 0.05);
}

void ExpectReadable(Theme theme)
{
    TestOperator op(OffscreenAt(1, theme));
    const QPalette palette = QApplication::palette();
    const auto color = [&](QPalette::ColorRole role) { return palette.color(QPalette::Active, role); };
    EXPECT_GE(Contrast(color(QPalette::WindowText), color(QPalette::Window)), 11);
    EXPECT_GE(Contrast(color(QPalette::Text), color(QPalette::Base)), 11);
    EXPECT_GE(Contrast(color(QPalette::ButtonText), color(QPalette::Button)), 9);
    EXPECT_GE(Contrast(color(QPalette::HighlightedText), color(QPalette::Highlight)), 4);
    EXPECT_GE(Contrast(color(QPalette::Link), color(QPalette::Base)), 4.5);
    EXPECT_GE(Contrast(palette.color(QPalette::Disabled, QPalette::Text), color(QPalette::Window)), 3);
    EXPECT_EQ(DarkTheme(), theme == Theme::kDark);
}

// The outline of an empty control stands out from the window; 3 to 1 is what the same guidelines ask for.
void ExpectOutlined(QWidget& control)
{
    control.resize(control.sizeHint());
    const QImage picture = control.grab().toImage();
    const QColor window = control.palette().color(QPalette::Window);
    double best = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) best = std::max(best, Contrast(picture.pixelColor(x, y), window));
    }
    EXPECT_GE(best, 2.9) << control.metaObject()->className();
}

TEST(Theme, DarkOutlinesItsControls)
{
    TestOperator op(OffscreenAt(2, Theme::kDark));
    QRadioButton radio;
    ExpectOutlined(radio);
    QCheckBox box;
    ExpectOutlined(box);
    QLineEdit edit;
    ExpectOutlined(edit);
    QSpinBox spin;
    spin.setSpecialValueText(QStringLiteral(" "));
    spin.setButtonSymbols(QAbstractSpinBox::NoButtons);
    ExpectOutlined(spin);
}

TEST(Theme, LightIsReadable)
{
    ExpectReadable(Theme::kLight);
}

TEST(Theme, DarkIsReadable)
{
    ExpectReadable(Theme::kDark);
}

TEST(ApplicationPaths, KeepTheirBytesThroughTheToolkit)
{
    const std::string paths[] = {"/tmp/plain.img",
                                 "/tmp/\xC3\xA4\xE2\x82\xAC.img",
                                 "/tmp/\xFF\x80\xB0.img",
                                 "/tmp/\xF0\x9F\x98\x80",
                                 "/tmp/\xED\xB2\x80",
                                 "/\xC3",
                                 "\xE2\x82"};
    for (const std::string& path : paths) EXPECT_EQ(FromQPath(ToQPath(path)), path);
    EXPECT_EQ(ToQPath("/tmp/\xC3\xA4"), QString::fromUtf8("/tmp/\xC3\xA4"));
    EXPECT_EQ(ToQString("20\xB0"), QString::fromUtf8("20\xC2\xB0"));
    EXPECT_EQ(FromQString(QString::fromUtf8("\xC3\xA4")), "\xC3\xA4");
}

TEST(Keys, AreKnownByTheirNames)
{
    EXPECT_EQ(ParseKey("F12")->key, Qt::Key_F12);
    EXPECT_EQ(ParseKey("Shift+PgUp")->key, Qt::Key_PageUp);
    EXPECT_EQ(ParseKey("Shift+PgUp")->modifiers, Qt::ShiftModifier);
    EXPECT_EQ(ParseKey("Ctrl+Q")->key, Qt::Key_Q);
    EXPECT_EQ(ParseKey("Ctrl+Shift+Z")->key, Qt::Key_Z);
    EXPECT_EQ(ParseKey("Ctrl+Shift+Z")->modifiers, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(ParseKey("+")->key, Qt::Key_Plus);
    EXPECT_EQ(ParseKey("Ctrl++")->key, Qt::Key_Plus);
    EXPECT_EQ(ParseKey("-")->key, Qt::Key_Minus);
    EXPECT_EQ(ParseKey("a")->key, Qt::Key_A);
    EXPECT_EQ(ParseKey("a")->text, "a");
    for (const char* name : {"", "F0", "F36", "F1x", "Shift+", "ab"}) EXPECT_FALSE(ParseKey(name)) << name;
}

}  // namespace
}  // namespace kelvo
