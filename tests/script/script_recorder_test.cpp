// What the operator does, as lines of a script.
#include "script/script_recorder.h"

#include "platform/box.h"
#include "platform/dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelvo {
namespace {

using Kind = OperatorAct::Kind;

TEST(ScriptLine, IsTheCallThatDoesTheSame)
{
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kCommand, .id = 169}), "command(169)");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kPress, .id = 1}), "press(1)");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kPress, .id = 312, .value = kDirectionUp, .window = "PANEL"}),
              R"(press("panel", 312, "up"))");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kPress, .id = 1001, .window = "BENCH"}), R"(press("BENCH", 1001))");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kCheck, .id = 7, .value = 1}), "check(7, true)");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kCheck, .id = 7, .window = "PLAYBAR"}), R"(check("player", 7, false))");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kPress, .id = 1, .window = "REGIONS"}), R"(press("regions", 1))");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kPick, .id = 1256, .value = 2}), "pick(1256, 2)");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kScroll, .id = 1242, .value = 600}), "scroll(1242, 600)");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kAnswer, .value = static_cast<int>(Button::kReport)}), R"(answer("report"))");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kChoose, .paths = {"/a/b.img", "/c d"}}), R"(choose("/a/b.img", "/c d"))");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kCancel}), "cancel()");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kClose}), "close()");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kMouse, .value = 6, .place = {100, 200}}),
              R"(mouse(100, 200, "wheel down"))");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kKey, .text = "Escape"}), R"(key("Escape"))");
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kDrop, .paths = {"/x.seq"}}), R"(drop("/x.seq"))");
}

TEST(ScriptLine, QuotesTextsSoThatEachByteComesBack)
{
    EXPECT_EQ(ScriptLineOf({.kind = Kind::kSet, .id = 5, .text = "a \"b\" \\ \n\t2\xC2\xB0"}),
              "set(5, \"a \\\"b\\\" \\\\ \\010\\0092\xC2\xB0\")");
}

std::vector<RecordedAct> Joined(const std::vector<OperatorAct>& acts)
{
    std::vector<RecordedAct> joined;
    for (const OperatorAct& act : acts) JoinAct(joined, {act, 0, 0});
    return joined;
}

TEST(RecordedActs, LastTextOfAFieldStands)
{
    const auto acts = Joined({{.kind = Kind::kSet, .id = 5, .text = "2"},
                              {.kind = Kind::kSet, .id = 5, .text = "20"},
                              {.kind = Kind::kSet, .id = 6, .text = "1"},
                              {.kind = Kind::kSet, .id = 5, .text = "25"}});
    ASSERT_EQ(acts.size(), 3U);
    EXPECT_EQ(acts[0].act.text, "20");
    EXPECT_EQ(acts[2].act.text, "25");
}

TEST(RecordedActs, PausesBetweenJoinedActsStay)
{
    std::vector<RecordedAct> acts;
    JoinAct(acts, {{.kind = Kind::kMouse, .value = 0, .place = {1, 1}}, 150, 7});
    JoinAct(acts, {{.kind = Kind::kMouse, .value = 0, .place = {2, 2}}, 400, 20});
    JoinAct(acts, {{.kind = Kind::kMouse, .value = 0, .place = {3, 3}}, 99, 4});  // too short to be one
    ASSERT_EQ(acts.size(), 1U);
    EXPECT_EQ(acts[0].act.place, (Point{3, 3}));
    EXPECT_EQ(ScriptOf(acts).substr(ScriptOf(acts).find('\n')), "\nframes(27)\nmouse(3, 3, \"move\")\n");
    JoinAct(acts, {{.kind = Kind::kMouse, .value = 9, .place = {3, 3}}, 0, 0});
    JoinAct(acts, {{.kind = Kind::kMouse, .value = 10, .place = {3, 3}}, 200, 0});
    ASSERT_EQ(acts.size(), 2U);
    EXPECT_EQ(acts[1].pauseMs, 200);
}

TEST(RecordedActs, OneFieldOfTwoWindowsIsTwoFields)
{
    EXPECT_EQ(Joined({{.kind = Kind::kScroll, .id = 5, .value = 1},
                      {.kind = Kind::kScroll, .id = 5, .value = 2, .window = "PANEL"}})
                  .size(),
              2U);
}

TEST(RecordedActs, MotionOfThePointerIsItsLastPlace)
{
    const auto acts = Joined({{.kind = Kind::kMouse, .value = 0, .place = {1, 1}},
                              {.kind = Kind::kMouse, .value = 0, .place = {2, 2}},
                              {.kind = Kind::kMouse, .value = 1, .place = {2, 2}},
                              {.kind = Kind::kMouse, .value = 1, .place = {2, 2}}});
    ASSERT_EQ(acts.size(), 3U);
    EXPECT_EQ(acts[0].act.place, (Point{2, 2}));
}

TEST(RecordedActs, APressAndItsReleaseInOnePlaceAreAClick)
{
    const auto acts = Joined({{.kind = Kind::kMouse, .value = 9, .place = {2, 2}},
                              {.kind = Kind::kMouse, .value = 10, .place = {2, 2}},
                              {.kind = Kind::kMouse, .value = 4, .place = {2, 2}},
                              {.kind = Kind::kMouse, .value = 10, .place = {2, 2}}});
    ASSERT_EQ(acts.size(), 2U);
    EXPECT_EQ(ScriptLineOf(acts[0].act), R"(mouse(2, 2, "left"))");
    EXPECT_EQ(ScriptLineOf(acts[1].act), R"(mouse(2, 2, "double"))");
}

TEST(RecordedActs, ADragKeepsBothItsEnds)
{
    const auto acts = Joined({{.kind = Kind::kMouse, .value = 9, .place = {2, 2}},
                              {.kind = Kind::kMouse, .value = 0, .place = {5, 6}},
                              {.kind = Kind::kMouse, .value = 10, .place = {5, 6}}});
    ASSERT_EQ(acts.size(), 3U);
    EXPECT_EQ(ScriptLineOf(acts[0].act), R"(mouse(2, 2, "left down"))");
    EXPECT_EQ(ScriptLineOf(acts[2].act), R"(mouse(5, 6, "left up"))");
}

TEST(RecordedScript, WaitsWhereThePauseIsLongEnough)
{
    const std::vector<RecordedAct> acts = {{{.kind = Kind::kCommand, .id = 1}, kShortestWaitMs - 1, 9},
                                           {{.kind = Kind::kCommand, .id = 2}, kShortestWaitMs, 0},
                                           {{.kind = Kind::kCommand, .id = 3}, 1500, 75}};
    const std::string script = ScriptOf(acts);
    EXPECT_EQ(script.substr(script.find('\n') + 1), "command(1)\nwait(100)\ncommand(2)\nframes(75)\ncommand(3)\n");
    EXPECT_EQ(script.substr(0, 3), "-- ");
}

TEST(RecordedScript, IsWithoutTheCommandThatEndsIt)
{
    EXPECT_FALSE(EndScriptRecording(9));
    BeginScriptRecording();
    EXPECT_TRUE(ScriptIsRecorded());
    for (const int id : {9, 8, 9}) TellOperatorAct({.kind = Kind::kCommand, .id = id});
    const std::string script = EndScriptRecording(9).value_or("");
    EXPECT_THAT(script, testing::EndsWith("\ncommand(9)\ncommand(8)\n"));
    EXPECT_FALSE(ScriptIsRecorded());
    TellOperatorAct({.kind = Kind::kCommand, .id = 7});  // nobody listens
    EXPECT_FALSE(EndScriptRecording(9));
}

}  // namespace
}  // namespace kelvo
