#include "platform/help_pages.h"

#include "platform/help.h"

#include <QFile>
#include <QRegularExpression>
#include <QTextDocumentFragment>

#include <algorithm>
#include <map>

namespace kelvo {

namespace {

constexpr auto kFilledHere = "<!-- filled by the program -->";

std::map<int, QString> filledPages;

QString PageFile(int context)
{
    return QStringLiteral(":/help/%1.html").arg(context);
}

QString PlainText(const QString& html)
{
    return QTextDocumentFragment::fromHtml(html).toPlainText();
}

std::vector<HelpTopic> ReadContents()
{
    static const QRegularExpression part(
        QStringLiteral("<h2>(?<heading>.*?)</h2>|<a href=\"(?<page>\\d+)\\.html\">(?<title>.*?)</a>"));
    std::vector<HelpTopic> topics;
    QString heading;
    QRegularExpressionMatchIterator match = part.globalMatch(HelpPageHtml(kHelpContentsPage));
    while (match.hasNext()) {
        const QRegularExpressionMatch found = match.next();
        if (found.hasCaptured(QStringLiteral("heading"))) {
            heading = PlainText(found.captured(QStringLiteral("heading")));
        } else {
            topics.push_back({heading, PlainText(found.captured(QStringLiteral("title"))),
                              found.captured(QStringLiteral("page")).toInt()});
        }
    }
    return topics;
}

bool HoldsAll(const QString& text, const QStringList& words)
{
    return std::all_of(words.begin(), words.end(),
                       [&text](const QString& word) { return text.contains(word, Qt::CaseInsensitive); });
}

std::ptrdiff_t CountHeld(const QString& text, const QStringList& words)
{
    return std::count_if(words.begin(), words.end(),
                         [&text](const QString& word) { return text.contains(word, Qt::CaseInsensitive); });
}

}  // namespace

bool HasHelpPage(int context)
{
    return QFile::exists(PageFile(context));
}

QString HelpPageHtml(int context)
{
    QFile file(PageFile(context));
    if (!file.open(QIODevice::ReadOnly)) return {};
    QString html = QString::fromUtf8(file.readAll());
    const auto filled = filledPages.find(context);
    if (filled != filledPages.end()) html.replace(QLatin1String(kFilledHere), filled->second);
    return html;
}

void FillHelpPage(int context, std::string_view html)
{
    filledPages[context] = QString::fromUtf8(html.data(), static_cast<qsizetype>(html.size()));
}

void ForgetFilledPages()
{
    filledPages.clear();
}

QString HelpPageTitle(int context)
{
    static const QRegularExpression title(QStringLiteral("<title>(.*?)</title>"));
    return PlainText(title.match(HelpPageHtml(context)).captured(1));
}

const std::vector<HelpTopic>& HelpTopics()
{
    static const std::vector<HelpTopic> topics = ReadContents();
    return topics;
}

std::vector<HelpTopic> FindHelpTopics(const QString& words)
{
    const QStringList wanted = SearchWords(words);
    std::vector<HelpTopic> found;
    for (const HelpTopic& topic : HelpTopics()) {
        if (HoldsAll(PlainText(HelpPageHtml(topic.context)), wanted)) found.push_back(topic);
    }
    std::stable_sort(found.begin(), found.end(), [&wanted](const HelpTopic& one, const HelpTopic& other) {
        return CountHeld(one.title, wanted) > CountHeld(other.title, wanted);
    });
    return found;
}

QStringList SearchWords(const QString& words)
{
    return words.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
}

}  // namespace kelvo
