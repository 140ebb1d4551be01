#include "platform/qt_window.h"
#include "platform/text.h"

namespace kelvo {

namespace {

// A byte of a path that isn't UTF-8 travels as a lone low surrogate, which no valid UTF-8 gives.
constexpr char16_t kByteBase = 0xDC00;

bool CarriesByte(QChar c)
{
    return c.unicode() >= kByteBase + 0x80 && c.unicode() <= kByteBase + 0xFF;
}

// The length of the valid UTF-8 sequence at the front of the text: 0 if there is none. Its first byte is beyond ASCII.
std::size_t Utf8Length(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
    // What ToUtf8 leaves as it is was valid.
    const std::string_view sequence = text.substr(0, length);
    return ToUtf8(sequence) == sequence ? length : 0;
}

}  // namespace

QString ToQString(std::string_view text)
{
    return QString::fromStdString(ToUtf8(text));
}

std::string FromQString(const QString& text)
{
    return text.toStdString();
}

QString ToQPath(std::string_view path)
{
    QString result;
    while (!path.empty()) {
        const auto byte = static_cast<unsigned char>(path.front());
        std::size_t length = 1;
        if (byte < 0x80) {
            result += QChar(byte);
        } else if (const std::size_t sequence = Utf8Length(path)) {
            length = sequence;
            result += QString::fromUtf8(path.data(), static_cast<qsizetype>(length));
        } else {
            result += QChar(static_cast<char16_t>(kByteBase + byte));
        }
        path.remove_prefix(length);
    }
    return result;
}

std::string FromQPath(const QString& path)
{
    std::string result;
    for (qsizetype i = 0; i < path.size(); ++i) {
        if (path[i].isHighSurrogate() && i + 1 < path.size() && path[i + 1].isLowSurrogate()) {
            result += path.mid(i++, 2).toStdString();
        } else if (CarriesByte(path[i])) {
            result += static_cast<char>(path[i].unicode() - kByteBase);
        } else {
            result += QString(path[i]).toStdString();
        }
    }
    return result;
}

}  // namespace kelvo
