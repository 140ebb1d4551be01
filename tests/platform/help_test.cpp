#include "platform/help.h"

#include "platform/dialog_fixture.h"
#include "platform/help_pages.h"

#include <QApplication>
#include <QDirIterator>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTextBrowser>
#include <QTextDocumentFragment>
#include <QTreeWidget>

#include <set>

namespace kelvo {

namespace {

using testing::HasSubstr;

// The pages of everything that has one; the contexts of what comes later show the contents.
constexpr int kPages[] = {258, 265, 266, 267, 268, 288, 352, 354, 363, 768, 769, 770, 771, 772, 773};

QWidget* HelpWindowWidget()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && widget->findChild<QTextBrowser*>(QStringLiteral("helpText"))) return widget;
    }
    return nullptr;
}

QTextBrowser* Text()
{
    return HelpWindowWidget()->findChild<QTextBrowser*>(QStringLiteral("helpText"));
}

std::vector<int> PagesInResources()
{
    std::vector<int> pages;
    for (QDirIterator it(QStringLiteral(":/help"), {QStringLiteral("*.html")}); it.hasNext();) {
        pages.push_back(QFileInfo(it.next()).completeBaseName().toInt());
    }
    return pages;
}

}  // namespace

TEST_F(DialogFixture, HelpShowsThePageOfAContext)
{
    EXPECT_EQ(CurrentHelpContext(), 0);
    ShowHelpContext(288);
    EXPECT_EQ(CurrentHelpContext(), 288);
    EXPECT_EQ(Text()->source(), QUrl("qrc:/help/288.html"));
    EXPECT_THAT(Text()->toPlainText().toStdString(), HasSubstr("Display brightness"));
    ASSERT_EQ(TranscriptOf("help").size(), 1U);
    EXPECT_THAT(TranscriptOf("help")[0], HasSubstr(R"("context":288)"));
}

TEST_F(DialogFixture, HelpWithoutAPageShowsTheContents)
{
    ShowHelpContext(512);
    EXPECT_EQ(Text()->source(), QUrl("qrc:/help/769.html"));
    EXPECT_EQ(CurrentHelpContext(), 512);
    EXPECT_THAT(TranscriptOf("help")[0], HasSubstr(R"("context":512)"));
}

TEST_F(DialogFixture, HelpCallsOpenTheirPages)
{
    ShowHelpContents();
    EXPECT_EQ(CurrentHelpContext(), 769);
    ShowHelpOnHelp();
    EXPECT_EQ(CurrentHelpContext(), 772);
    ShowHelpSearch("");
    EXPECT_EQ(CurrentHelpContext(), 768);
    EXPECT_EQ(TranscriptOf("help").size(), 3U);
}

TEST_F(DialogFixture, HelpQuits)
{
    ShowHelpContents();
    QuitHelp();
    EXPECT_EQ(CurrentHelpContext(), 0);
    EXPECT_EQ(HelpWindowWidget(), nullptr);
    QuitHelp();
}

TEST_F(DialogFixture, HelpStaysUsableBesideADialog)
{
    ShowHelpContents();
    Then([] {
        EXPECT_FALSE(HelpWindowWidget()->isModal());
        EXPECT_EQ(HelpWindowWidget()->parentWidget(), nullptr);
        EXPECT_EQ(QApplication::activeModalWidget()->windowModality(), Qt::WindowModal);
        EndDialog(DialogInFront(), 1);
    });
    EXPECT_EQ(DialogBox("DISPLAY", mainWindow, DialogTestProc), 1);
}

TEST_F(DialogFixture, EveryHelpPageHasATitleAndItsPlaceInTheContents)
{
    std::set<int> listed = {kHelpContentsPage};
    for (const HelpTopic& topic : HelpTopics()) {
        EXPECT_TRUE(HasHelpPage(topic.context)) << topic.context;
        EXPECT_EQ(topic.title, HelpPageTitle(topic.context)) << topic.context;
        EXPECT_FALSE(topic.heading.isEmpty()) << topic.context;
        listed.insert(topic.context);
    }
    const std::vector<int> pages = PagesInResources();
    EXPECT_EQ(listed, std::set<int>(pages.begin(), pages.end()));
    for (const int page : kPages) EXPECT_TRUE(listed.contains(page)) << page;
}

TEST_F(DialogFixture, EveryHelpLinkLeadsToAPage)
{
    static const QRegularExpression link(QStringLiteral("href=\"([^\"]*)\""));
    int links = 0;
    for (const int page : PagesInResources()) {
        for (auto it = link.globalMatch(HelpPageHtml(page)); it.hasNext(); ++links) {
            const QString target = it.next().captured(1);
            EXPECT_TRUE(QFile::exists(QStringLiteral(":/help/") + target)) << page << " " << target.toStdString();
        }
    }
    EXPECT_GT(links, 30);
}

TEST_F(DialogFixture, KeysPageNamesEveryKey)
{
    const QString text = QTextDocumentFragment::fromHtml(HelpPageHtml(770)).toPlainText();
    for (const char* key :
         {"F1",         "F2",        "F3",         "Shift+F3",   "F4",       "Shift+F4",    "F5",
          "F6",         "F7",        "Shift+F7",   "F8",         "Shift+F8", "F9",          "F10",
          "F11",        "Ctrl+Q",    "Ctrl+D",     "Ctrl+V",     "Ctrl+I",   "Ctrl+C",      "Shift+PrintScrn",
          "+",          "-",         "Right",      "Left",       "Up",       "Down",        "Home",
          "End",        "PgUp",      "PgDn",       "Shift+Left", "Shift+Up", "Shift+Right", "Shift+Down",
          "Shift+Home", "Shift+End", "Shift+PgUp", "Shift+PgDn"}) {
        EXPECT_TRUE(text.contains(QStringLiteral("\n%1\n").arg(QLatin1String(key)))) << key;
    }
}

TEST_F(DialogFixture, HelpSearchFindsAllWordsInAnyCaseTitlesFirst)
{
    const auto contextsOf = [](const char* words) {
        std::vector<int> contexts;
        for (const HelpTopic& topic : FindHelpTopics(QString::fromLatin1(words))) contexts.push_back(topic.context);
        return contexts;
    };
    const std::vector<int> cursor = contextsOf("IMAGE Cursor");
    ASSERT_FALSE(cursor.empty());
    for (const int context : cursor) {
        const QString text = QTextDocumentFragment::fromHtml(HelpPageHtml(context)).toPlainText().toLower();
        EXPECT_TRUE(text.contains("image") && text.contains("cursor")) << context;
    }
    EXPECT_THAT(cursor, testing::Contains(363));
    EXPECT_EQ(contextsOf("matrox"), std::vector<int>{354});
    EXPECT_EQ(contextsOf("matrox zeppelin"), std::vector<int>{});
    EXPECT_EQ(contextsOf("").size(), HelpTopics().size());
    EXPECT_EQ(contextsOf("exit").front(), 268);
}

// A heading has a heavier font than the titles below it.
TEST_F(DialogFixture, HelpContentsHaveRoomForTheirRows)
{
    ShowHelpSearch("");
    const auto* tree = HelpWindowWidget()->findChild<QTreeWidget*>(QStringLiteral("helpTree"));
    int headings = 0;
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* const heading = tree->topLevelItem(i);
        if (heading->childCount() == 0) continue;
        ++headings;
        EXPECT_GT(heading->sizeHint(0).height(), heading->child(0)->sizeHint(0).height());
        EXPECT_GE(heading->child(0)->sizeHint(0).height(), QFontMetrics(tree->font()).height());
    }
    EXPECT_GT(headings, 2);
}

TEST_F(DialogFixture, HelpSearchFieldFillsTheTree)
{
    ShowHelpSearch("matrox");
    const auto* tree = HelpWindowWidget()->findChild<QTreeWidget*>(QStringLiteral("helpTree"));
    ASSERT_EQ(tree->topLevelItemCount(), 1);
    EXPECT_EQ(tree->topLevelItem(0)->text(0), "Color maps");
    auto* field = HelpWindowWidget()->findChild<QLineEdit*>(QStringLiteral("helpSearch"));
    field->clear();
    EXPECT_GT(tree->topLevelItemCount(), 4);
}

}  // namespace kelvo
