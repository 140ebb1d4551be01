// The help pages in the resources: HTML files named by their context number. The contents page is the one list of
// them: its headings and links make the tree beside the text. A page whose contents the program knows better than its
// writer is filled in at start.
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace kelvo {

constexpr int kHelpSearchPage = 768;
constexpr int kHelpContentsPage = 769;
constexpr int kHelpOnHelpPage = 772;

struct HelpTopic {
    QString heading;  // of the contents page, under which the topic stands
    QString title;
    int context = 0;
};

bool HasHelpPage(int context);
// With what FillHelpPage (help.h) gave it; empty if there is no such page.
QString HelpPageHtml(int context);
QString HelpPageTitle(int context);  // what stands between <title> and </title>

void ForgetFilledPages();

// In the order of the contents page, which isn't among them.
const std::vector<HelpTopic>& HelpTopics();

// The topics in which each word occurs, in any letter case: those with most of the words in the title first, otherwise
// in the order of the contents. No word: all topics.
std::vector<HelpTopic> FindHelpTopics(const QString& words);

// The words that a search looks for.
QStringList SearchWords(const QString& words);

}  // namespace kelvo
