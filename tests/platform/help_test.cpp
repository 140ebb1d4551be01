#include "platform/help.h"

#include "platform/dialog_fixture.h"
#include "platform/help_pages.h"
#include "platform/qt_window.h"

#include <QApplication>
#include <QDirIterator>
#include <QLineEdit>
#include <QMainWindow>
#include <QRegularExpression>
#include <QScreen>
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

TEST_F(DialogFixture, APageIsFilledWithWhatTheProgramKnows)
{
    FillHelpPage(770, "<p>Ctrl+Zebra</p>");
    ShowHelpContext(770);
    EXPECT_THAT(CurrentHelpText(), HasSubstr("Ctrl+Zebra"));
    const std::vector<HelpTopic> found = FindHelpTopics(QStringLiteral("zebra"));
    ASSERT_EQ(found.size(), 1U) << "the search reads it too";
    EXPECT_EQ(found.front().context, 770);
    ForgetFilledPages();
    EXPECT_TRUE(FindHelpTopics(QStringLiteral("zebra")).empty());
}

TEST_F(DialogFixture, HelpClosesByItsKeysWhereverTheFocusIs)
{
    for (const char* const key : {"Esc", "Ctrl+W"}) {
        for (const char* const part : {"helpSearch", "helpTree", "helpText", ""}) {
            ShowHelpSearch("");
            QWidget* const window = HelpWindowWidget();
            auto* const focused = *part ? window->findChild<QWidget*>(QLatin1String(part)) : window;
            StrikeKey(focused, *ParseKey(key));
            EXPECT_FALSE(window->isVisible()) << key << " in " << part;
            EXPECT_EQ(CurrentHelpContext(), 0);
        }
    }
}

TEST_F(DialogFixture, ReturnOpensTheFirstPageFound)
{
    ShowHelpSearch("");
    auto* field = HelpWindowWidget()->findChild<QLineEdit*>(QStringLiteral("helpSearch"));
    field->setText(QStringLiteral("exit"));
    EXPECT_EQ(CurrentHelpContext(), 768);
    StrikeKey(field, *ParseKey("Return"));
    EXPECT_EQ(CurrentHelpContext(), 268);
    field->setText(QStringLiteral("zebra"));
    StrikeKey(field, *ParseKey("Return"));
    EXPECT_EQ(CurrentHelpContext(), 268) << "nothing found: the page stays";
    field->clear();
    StrikeKey(field, *ParseKey("Return"));
    EXPECT_EQ(CurrentHelpContext(), 268);
}

TEST_F(DialogFixture, TheWordsFoundAreMarked)
{
    ShowHelpSearch("");
    auto* field = HelpWindowWidget()->findChild<QLineEdit*>(QStringLiteral("helpSearch"));
    EXPECT_TRUE(Text()->extraSelections().isEmpty());
    field->setText(QStringLiteral("exit kelvo"));
    StrikeKey(field, *ParseKey("Return"));
    std::set<QString> marked;
    for (const QTextEdit::ExtraSelection& mark : Text()->extraSelections()) {
        marked.insert(mark.cursor.selectedText().toLower());
        EXPECT_EQ(mark.format.background().color(), Text()->palette().color(QPalette::Highlight));
    }
    EXPECT_EQ(marked, (std::set<QString>{QStringLiteral("exit"), QStringLiteral("kelvo")}));
    const QString words = Text()->toPlainText();
    EXPECT_EQ(Text()->extraSelections().size(), words.count(QStringLiteral("exit"), Qt::CaseInsensitive) +
                                                    words.count(QStringLiteral("kelvo"), Qt::CaseInsensitive));
    field->clear();
    EXPECT_TRUE(Text()->extraSelections().isEmpty());
}

TEST_F(DialogFixture, HelpOpensBesideTheMainWindow)
{
    QMainWindow& frame = *MainWindow()->frame;
    const QRect screen = frame.screen()->availableGeometry();
    frame.showNormal();
    frame.setGeometry(screen.left(), screen.top(), 640, 480);
    ShowHelpContents();
    // No room for it to the right: the picture's left stays in sight (beside_test.cpp has the other places).
    const QRect help = HelpWindowWidget()->frameGeometry();
    EXPECT_EQ(help.topRight(), screen.topRight());
    EXPECT_GT(help.left(), screen.left() + 300);

    // Where the operator has put it, it comes back.
    HelpWindowWidget()->move(12, 34);
    StrikeKey(HelpWindowWidget(), *ParseKey("Esc"));
    ShowHelpContents();
    EXPECT_EQ(HelpWindowWidget()->pos(), QPoint(12, 34));
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
    EXPECT_EQ(contextsOf("faults of the board").front(), 2082) << "more words in the title than page 41";
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
