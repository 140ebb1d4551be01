#include "support/operator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

// The font library keeps what it has read until the process ends. Asked for by the leak check, where there is one.
extern "C" const char* __lsan_default_suppressions()  // NOLINT(bugprone-reserved-identifier)
{
    return "leak:libfontconfig\n";
}

namespace kelvo {

namespace {

CommandLine OffscreenInVirtualTime()
{
    CommandLine commandLine;
    commandLine.offscreen = true;
    commandLine.virtualTime = true;
    commandLine.theme = Theme::kLight;
    return commandLine;
}

const TranscriptValue* FieldOf(const TranscriptLine& line, std::string_view name)
{
    for (const auto& [field, value] : line.fields) {
        if (field == name) return &value;
    }
    return nullptr;
}

std::string TextOf(const TranscriptLine& line, std::string_view name)
{
    const TranscriptValue* const value = FieldOf(line, name);
    const auto* const text = value ? std::get_if<std::string>(value) : nullptr;
    return text ? *text : std::string();
}

std::vector<std::string> ListOf(const TranscriptLine& line, std::string_view name)
{
    const TranscriptValue* const value = FieldOf(line, name);
    const auto* const list = value ? std::get_if<std::vector<std::string>>(value) : nullptr;
    return list ? *list : std::vector<std::string>();
}

}  // namespace

TestOperator::TestOperator() : TestOperator(OffscreenInVirtualTime()) {}

TestOperator::TestOperator(const CommandLine& commandLine) : firstLine_(TranscriptLines().size())
{
    StartApplication(commandLine);
    SetIdleHook([this] { Waits(); });
}

TestOperator::~TestOperator()
{
    SetIdleHook(nullptr);
}

void TestOperator::Answer(std::initializer_list<Button> answers)
{
    answers_.insert(answers_.end(), answers);
}

void TestOperator::AtNextBox(std::function<void(const FrontBox&)> look)
{
    looks_.push_back(std::move(look));
}

void TestOperator::Do(std::function<void()> step)
{
    steps_.push_back(std::move(step));
}

void TestOperator::Waits()
{
    if (BoxInFront()) {
        PostAction([this] { AnswerBox(); });
    } else if (!steps_.empty()) {
        PostAction(std::move(steps_.front()));
        steps_.pop_front();
    }
}

void TestOperator::AnswerBox()
{
    const std::optional<FrontBox> box = BoxInFront();
    if (!box) return;
    if (!looks_.empty()) {
        const auto look = std::move(looks_.front());
        looks_.pop_front();
        look(*box);
        if (!BoxInFront()) return;
    }
    Button button = box->defaultButton;
    if (!answers_.empty()) {
        button = answers_.front();
        answers_.pop_front();
    }
    if (PressBoxButton(button)) return;
    ADD_FAILURE() << "no such button in the box \"" << box->text << '"';
    PressBoxButton(box->defaultButton);
}

std::vector<TestOperator::Box> TestOperator::Boxes() const
{
    const std::vector<TranscriptLine>& lines = TranscriptLines();
    std::vector<Box> boxes;
    std::vector<std::size_t> open;  // an answer belongs to the newest box without one
    for (std::size_t i = firstLine_; i < lines.size(); ++i) {
        const TranscriptLine& line = lines[i];
        if (line.kind == "box") {
            open.push_back(boxes.size());
            boxes.push_back({TextOf(line, "text"),
                             TextOf(line, "caption"),
                             TextOf(line, "icon"),
                             ListOf(line, "buttons"),
                             TextOf(line, "default"),
                             {}});
        } else if (line.kind == "answer" && !open.empty()) {
            boxes[open.back()].answer = TextOf(line, "button");
            open.pop_back();
        }
    }
    return boxes;
}

std::vector<std::string> TestOperator::Texts(std::string_view kind, std::string_view field) const
{
    std::vector<std::string> texts;
    for (std::size_t i = firstLine_; i < TranscriptLines().size(); ++i) {
        const TranscriptLine& line = TranscriptLines()[i];
        if (line.kind == kind) texts.push_back(TextOf(line, field));
    }
    return texts;
}

}  // namespace kelvo
