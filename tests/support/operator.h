// The operator at a unit test: the application runs offscreen with virtual time, boxes are answered and written down.
//
//     TestOperator op;
//     op.Answer({Button::kNo});            // the first box; all others get their default button
//     EXPECT_EQ(LoadNothing(), 0);
//     EXPECT_EQ(op.Boxes().at(0).text, "Nothing to load");
//
// What is to happen while a dialog or box is open, or while the message loop waits, is given beforehand:
//
//     op.Do([] { OperateKey("F3"); });     // one step each time the program waits with no box in front
//     op.AtNextBox([](const FrontBox& box) { SaveScreenshot("box.png"); });
#pragma once

#include "platform/application.h"
#include "platform/box.h"
#include "platform/front.h"
#include "platform/transcript.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

class TestOperator {
  public:
    TestOperator();
    explicit TestOperator(const CommandLine& commandLine);  // another scale or theme; the first of a test counts
    ~TestOperator();
    TestOperator(const TestOperator&) = delete;
    TestOperator& operator=(const TestOperator&) = delete;

    // For the boxes to come, in order. One that lacks the button fails the test and gets its default.
    void Answer(std::initializer_list<Button> answers);
    // Seen before the next box is answered.
    void AtNextBox(std::function<void(const FrontBox&)> look);
    void Do(std::function<void()> step);
    bool AllDone() const { return answers_.empty() && steps_.empty() && looks_.empty(); }

    struct Box {
        std::string text;  // UTF-8, as the transcript has it
        std::string caption;
        std::string icon;  // "exclamation"
        std::vector<std::string> buttons;
        std::string defaultButton;
        std::string answer;  // empty while it is open
    };
    std::vector<Box> Boxes() const;  // since this operator came

    // The field of each line of that kind since then: Texts("status", "text").
    std::vector<std::string> Texts(std::string_view kind, std::string_view field) const;

  private:
    void Waits();
    void AnswerBox();

    std::size_t firstLine_;
    std::deque<Button> answers_;
    std::deque<std::function<void()>> steps_;
    std::deque<std::function<void(const FrontBox&)>> looks_;
};

}  // namespace kelvo
