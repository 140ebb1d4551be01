#include "platform/box.h"

#include "platform/end_request.h"
#include "platform/icons.h"
#include "platform/operator_acts.h"
#include "platform/qt_window.h"
#include "platform/text.h"
#include "platform/transcript.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>
#include <cstdio>
#include <span>

namespace kelvo {

namespace {

constexpr Button kOkOnly[] = {Button::kOk};
constexpr Button kOkAndCancel[] = {Button::kOk, Button::kCancel};
constexpr Button kYesAndNo[] = {Button::kYes, Button::kNo};
constexpr Button kYesNoAndCancel[] = {Button::kYes, Button::kNo, Button::kCancel};
constexpr Button kOkAndReport[] = {Button::kOk, Button::kReport};

std::span<const Button> ButtonsOf(BoxButtons buttons)
{
    switch (buttons) {
        case BoxButtons::kOkCancel:
            return kOkAndCancel;
        case BoxButtons::kYesNo:
            return kYesAndNo;
        case BoxButtons::kYesNoCancel:
            return kYesNoAndCancel;
        case BoxButtons::kOkReport:
            return kOkAndReport;
        case BoxButtons::kOk:
            break;
    }
    return kOkOnly;
}

struct ButtonLook {
    Button button;
    const char* name;  // in the transcript and for scripts
    const char* text;
    QMessageBox::ButtonRole role;
};
constexpr ButtonLook kButtonLooks[] = {
    {Button::kOk, "ok", "OK", QMessageBox::AcceptRole},
    {Button::kCancel, "cancel", "Cancel", QMessageBox::RejectRole},
    {Button::kYes, "yes", "&Yes", QMessageBox::YesRole},
    {Button::kNo, "no", "&No", QMessageBox::NoRole},
    {Button::kReport, "report", "&Report...", QMessageBox::ActionRole},
};

const ButtonLook& LookOf(Button button)
{
    const auto* const found = std::ranges::find(kButtonLooks, button, &ButtonLook::button);
    return found == std::end(kButtonLooks) ? kButtonLooks[0] : *found;
}

struct IconLook {
    BoxIcon icon;
    const char* name;
    QMessageBox::Icon picture;
    bool sounds;  // mere information comes in silence
};
constexpr IconLook kIconLooks[] = {
    {BoxIcon::kNone, "none", QMessageBox::NoIcon, false},
    {BoxIcon::kInformation, "information", QMessageBox::Information, false},
    {BoxIcon::kExclamation, "exclamation", QMessageBox::Warning, true},
    {BoxIcon::kQuestion, "question", QMessageBox::Question, true},
    {BoxIcon::kStop, "stop", QMessageBox::Critical, true},
};

const IconLook& LookOf(BoxIcon icon)
{
    const auto* const found = std::ranges::find(kIconLooks, icon, &IconLook::icon);
    return found == std::end(kIconLooks) ? kIconLooks[0] : *found;
}

// What closing the box and Escape mean.
Button EscapeButton(const FrontBox& box)
{
    for (const Button button : {Button::kCancel, Button::kNo}) {
        if (std::ranges::find(box.buttons, button) != box.buttons.end()) return button;
    }
    return Button::kOk;
}

void TranscribeBox(const FrontBox& box)
{
    std::vector<std::string> names;
    names.reserve(box.buttons.size());
    for (const Button button : box.buttons) names.emplace_back(LookOf(button).name);
    Transcribe("box", {{"text", box.text},
                       {"caption", box.caption},
                       {"icon", std::string(LookOf(box.icon).name)},
                       {"sound", LookOf(box.icon).sounds ? std::string(LookOf(box.icon).name) : std::string("none")},
                       {"buttons", names},
                       {"default", std::string(LookOf(box.defaultButton).name)}});
}

constexpr int kIconSize = 40;  // logical pixels

class Box {
  public:
    Box(QWidget* owner, const FrontBox& box)
        : dialog_(LookOf(box.icon).picture, ToQString(box.caption), QString(), QMessageBox::NoButton, owner)
    {
        dialog_.setTextFormat(Qt::PlainText);
        dialog_.setText(ToQString(box.text));
        if (box.icon != BoxIcon::kNone) {
            const std::string picture = "box-" + std::string(LookOf(box.icon).name);
            dialog_.setIconPixmap(IconPixmap(picture, kIconSize, dialog_.palette().color(QPalette::WindowText),
                                             dialog_.devicePixelRatioF()));
        }
        for (const Button button : box.buttons) {
            QPushButton* const pushButton =
                dialog_.addButton(QString::fromLatin1(LookOf(button).text), LookOf(button).role);
            buttons_.emplace_back(button, pushButton);
        }
        dialog_.setDefaultButton(Find(box.defaultButton));
        dialog_.setEscapeButton(Find(EscapeButton(box)));
        // With an owner only its windows are blocked: what stands beside them stays usable.
        dialog_.setWindowModality(owner ? Qt::WindowModal : Qt::ApplicationModal);
    }

    // nullopt: the program ends, nobody has answered.
    std::optional<Button> Run(const FrontBox& box)
    {
        ModalEntry entry;
        entry.widget = &dialog_;
        entry.box = box;
        entry.pressButton = [this](Button button) { return Press(button); };
        const ModalScope scope(std::move(entry));
        dialog_.exec();
        const auto pressed = std::ranges::find(buttons_, dialog_.clickedButton(), [](const auto& entryOf) {
            return static_cast<QAbstractButton*>(entryOf.second);
        });
        if (pressed == buttons_.end()) return std::nullopt;
        TellOperatorAct({.kind = OperatorAct::Kind::kAnswer, .value = static_cast<int>(pressed->first)});
        return pressed->first;
    }

  private:
    QPushButton* Find(Button button)
    {
        const auto found = std::ranges::find(buttons_, button, [](const auto& entry) { return entry.first; });
        return found == buttons_.end() ? nullptr : found->second;
    }

    bool Press(Button button)
    {
        QPushButton* const pushButton = Find(button);
        if (!pushButton) return false;
        pushButton->click();
        return true;
    }

    QMessageBox dialog_;
    std::vector<std::pair<Button, QPushButton*>> buttons_;
};

struct SoundLook {
    Sound sound;
    const char* name;
};
constexpr SoundLook kSoundLooks[] = {
    {Sound::kDefault, "default"},
    {Sound::kInformation, "information"},
    {Sound::kExclamation, "exclamation"},
    {Sound::kStop, "stop"},
};

}  // namespace

Button MessageBox(HWND owner, std::string_view text, std::string_view caption, BoxIcon icon, BoxButtons buttons)
{
    return MessageBox(owner, text, caption, icon, buttons, ButtonsOf(buttons).front());
}

Button MessageBox(HWND owner, std::string_view text, std::string_view caption, BoxIcon icon, BoxButtons buttons,
                  Button defaultButton)
{
    const std::span<const Button> offered = ButtonsOf(buttons);
    FrontBox box{std::string(text), std::string(caption), icon, {offered.begin(), offered.end()}, defaultButton};
    if (std::ranges::find(box.buttons, defaultButton) == box.buttons.end()) box.defaultButton = box.buttons.front();
    TranscribeBox(box);
    if (qApp && LookOf(icon).sounds) QApplication::beep();

    Button answer = EscapeButton(box);
    if (qApp && !EndIsAsked()) {
        answer = Box(OwnerWidget(owner), box).Run(box).value_or(answer);
    } else {
        // A program without windows, such as a converter, tells it on its error stream, and so does one whose end a
        // signal has asked for: nobody is there to answer.
        std::fprintf(stderr, "%s: %s\n", ToUtf8(caption).c_str(), ToUtf8(text).c_str());
    }
    Transcribe("answer", {{"button", std::string(LookOf(answer).name)}});
    return answer;
}

void MessageBeep(Sound sound)
{
    const auto* const look = std::ranges::find(kSoundLooks, sound, &SoundLook::sound);
    Transcribe("beep", {{"sound", std::string(look == std::end(kSoundLooks) ? "default" : look->name)}});
    if (qApp) QApplication::beep();
}

}  // namespace kelvo
