#include "platform/theme.h"

#include <QApplication>
#include <QColor>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>

#include <memory>

namespace kelvo {

namespace {

// Neutral grays and one calm accent. Text stands at a contrast of 11 to 1 or more on its ground, disabled text at 3 to
// 1 or more.
struct Colors {
    QRgb window;
    QRgb base;
    QRgb alternateBase;
    QRgb button;
    QRgb text;
    QRgb disabledText;
    QRgb placeholder;
    QRgb accent;
    QRgb accentText;
    QRgb link;
    QRgb toolTip;
    QRgb light;
    QRgb midlight;
    QRgb mid;
    QRgb dark;
    QRgb shadow;
};
constexpr Colors kLight{.window = 0xFFF3F4F6,
                        .base = 0xFFFFFFFF,
                        .alternateBase = 0xFFF8F9FA,
                        .button = 0xFFFBFBFC,
                        .text = 0xFF1F2328,
                        .disabledText = 0xFF888D94,
                        .placeholder = 0xFF7A8088,
                        .accent = 0xFF2F6FAB,
                        .accentText = 0xFFFFFFFF,
                        .link = 0xFF1F5F9B,
                        .toolTip = 0xFFFFFFFF,
                        .light = 0xFFFFFFFF,
                        .midlight = 0xFFE9EBEE,
                        .mid = 0xFFC9CDD2,
                        .dark = 0xFFA7ACB3,
                        .shadow = 0xFF6B7077};
constexpr Colors kDark{.window = 0xFF25282C,
                       .base = 0xFF1C1E21,
                       .alternateBase = 0xFF222529,
                       .button = 0xFF33373C,
                       .text = 0xFFE6E8EA,
                       .disabledText = 0xFF7F858C,
                       .placeholder = 0xFF8B9199,
                       .accent = 0xFF3F7DB8,
                       .accentText = 0xFFFFFFFF,
                       .link = 0xFF7CB7EC,
                       .toolTip = 0xFF33373C,
                       .light = 0xFF4A4F56,
                       .midlight = 0xFF3B4046,
                       .mid = 0xFF2C3035,
                       .dark = 0xFF17191B,
                       .shadow = 0xFF0E0F10};

QPalette PaletteOf(const Colors& colors)
{
    QPalette palette;
    const auto set = [&palette](QPalette::ColorRole role, QRgb color) { palette.setColor(role, QColor(color)); };
    set(QPalette::Window, colors.window);
    set(QPalette::WindowText, colors.text);
    set(QPalette::Base, colors.base);
    set(QPalette::AlternateBase, colors.alternateBase);
    set(QPalette::Button, colors.button);
    set(QPalette::ButtonText, colors.text);
    set(QPalette::Text, colors.text);
    set(QPalette::BrightText, colors.accentText);
    set(QPalette::PlaceholderText, colors.placeholder);
    set(QPalette::Highlight, colors.accent);
    set(QPalette::HighlightedText, colors.accentText);
    set(QPalette::Link, colors.link);
    set(QPalette::LinkVisited, colors.link);
    set(QPalette::ToolTipBase, colors.toolTip);
    set(QPalette::ToolTipText, colors.text);
    set(QPalette::Light, colors.light);
    set(QPalette::Midlight, colors.midlight);
    set(QPalette::Mid, colors.mid);
    set(QPalette::Dark, colors.dark);
    set(QPalette::Shadow, colors.shadow);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text}) {
        palette.setColor(QPalette::Disabled, role, QColor(colors.disabledText));
    }
    palette.setColor(QPalette::Disabled, QPalette::Base,
                     QColor(colors.window));  // an empty field too is seen to be grey
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(colors.mid));
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, QColor(colors.disabledText));
    return palette;
}

// The style draws outlines in the window's colour, a third darker: on a dark window nothing of them is left. From this
// colour they come out at a contrast of 3 to 1 or more on the dark window.
constexpr QRgb kWindowForOutlines = 0xFFA4ACB6;

template <typename Option>
Option Outlined(const Option& option)
{
    Option outlined(option);
    outlined.palette.setColor(QPalette::Window, QColor(kWindowForOutlines));
    return outlined;
}

// Where the position of an upright slider counts from the top, the most stands there: it is filled from the bottom up
// to the hand.
QStyleOptionSlider FilledFromBelow(const QStyleOptionSlider& slider)
{
    QStyleOptionSlider filled = slider;
    filled.upsideDown = true;
    filled.sliderPosition = slider.minimum + slider.maximum - slider.sliderPosition;
    return filled;
}

// The style leaves little room around the words of a menu, and empty controls of a dark window without an outline.
class WorkstationStyle : public QProxyStyle {
  public:
    explicit WorkstationStyle(bool dark) : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))), dark_(dark) {}

    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override
    {
        const QSize plain = QProxyStyle::sizeFromContents(type, option, size, widget);
        if (type == CT_MenuBarItem) return plain + QSize(6, 6);
        const auto* const item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
        const bool isLine = item && item->menuItemType == QStyleOptionMenuItem::Separator;
        if (type == CT_MenuItem && !isLine) return plain + QSize(12, 3);
        return plain;
    }

    // As in all dialogs of ours.
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override
    {
        if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
        return QProxyStyle::styleHint(hint, option, widget, returned);
    }

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override
    {
        const auto* const button = qstyleoption_cast<const QStyleOptionButton*>(option);
        const auto* const frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        const bool isMark = element == PE_IndicatorCheckBox || element == PE_IndicatorRadioButton;
        if (dark_ && isMark && button) {
            const QStyleOptionButton outlined = Outlined(*button);
            QProxyStyle::drawPrimitive(element, &outlined, painter, widget);
        } else if (dark_ && element == PE_FrameLineEdit && frame) {
            const QStyleOptionFrame outlined = Outlined(*frame);
            QProxyStyle::drawPrimitive(element, &outlined, painter, widget);
        } else {
            QProxyStyle::drawPrimitive(element, option, painter, widget);
        }
    }

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override
    {
        const auto* const spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option);
        const auto* const slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
        const bool countsFromTop =
            control == CC_Slider && slider && slider->orientation == Qt::Vertical && !slider->upsideDown;
        if (countsFromTop) {
            const QStyleOptionSlider filled = FilledFromBelow(*slider);
            QProxyStyle::drawComplexControl(control, &filled, painter, widget);
        } else if (dark_ && control == CC_SpinBox && spin) {
            const QStyleOptionSpinBox outlined = Outlined(*spin);
            QProxyStyle::drawComplexControl(control, &outlined, painter, widget);
        } else {
            QProxyStyle::drawComplexControl(control, option, painter, widget);
        }
    }

  private:
    bool dark_;
};

QString foundStyle;  // the desktop's, as it was before the first theme of ours

bool StyleIsOurs()
{
    return dynamic_cast<const WorkstationStyle*>(QApplication::style()) != nullptr;
}

void ReturnToDesktop()
{
    if (!StyleIsOurs()) return;
    QApplication::setStyle(foundStyle);
    QApplication::setPalette(QPalette());  // the desktop's own
}

}  // namespace

void ApplyTheme(Theme theme)
{
    const bool hasDesktop = !RunsOffscreen() && !qEnvironmentVariableIsEmpty("XDG_CURRENT_DESKTOP");
    if (theme == Theme::kDesktop && hasDesktop) {
        ReturnToDesktop();
        return;
    }
    if (!StyleIsOurs()) foundStyle = QApplication::style()->name();
    const bool dark = theme == Theme::kDark;
    QApplication::setStyle(std::make_unique<WorkstationStyle>(dark).release());  // the application owns it
    QApplication::setPalette(PaletteOf(dark ? kDark : kLight));
}

}  // namespace kelvo
