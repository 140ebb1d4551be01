#include "platform/help.h"

#include "platform/beside.h"
#include "platform/help_pages.h"
#include "platform/qt_window.h"
#include "platform/transcript.h"

#include <QAction>
#include <QEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QScreen>
#include <QSplitter>
#include <QTextBrowser>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace kelvo {

namespace {

constexpr QSize kWindowSize(920, 640);
constexpr int kTreeWidth = 280;
constexpr int kTextMargin = 20;
constexpr int kRowHeight = 20;

QUrl PageUrl(int context)
{
    return QUrl(QStringLiteral("qrc:/help/%1.html").arg(context));
}

int ContextOf(const QUrl& url)
{
    return url.fileName().section(QLatin1Char('.'), 0, 0).toInt();
}

// The pages bear no colours of their own: they follow the theme.
QString PageStyle(const QPalette& palette)
{
    const QString accent = palette.color(QPalette::Link).name();
    const QString shade = palette.color(QPalette::AlternateBase).name();
    const QString line = palette.color(QPalette::Mid).name();
    return QStringLiteral(
               "h1 { font-size: 20pt; font-weight: 600; margin-top: 0px; margin-bottom: 10px; }"
               "h2 { font-size: 13pt; font-weight: 600; margin-top: 18px; margin-bottom: 6px; }"
               "p, li { margin-top: 4px; margin-bottom: 6px; line-height: 135%; }"
               "a { color: %1; text-decoration: none; }"
               "table { margin-top: 4px; margin-bottom: 8px; border-collapse: collapse; }"
               "th { text-align: left; padding: 5px 10px; background-color: %2; }"
               "td { padding: 5px 10px; border-bottom: 1px solid %3; }"
               "ul { margin-left: -16px; }"
               "td.code { padding: 8px 12px; background-color: %2; border-bottom: none; }"
               "pre { margin: 0px; }")
        .arg(accent, shade, line);
}

// Shows the pages with what the program filled in.
class PageView : public QTextBrowser {
  public:
    QVariant loadResource(int type, const QUrl& url) override
    {
        const int context = ContextOf(url);
        if (type == QTextDocument::HtmlResource && HasHelpPage(context)) return HelpPageHtml(context);
        return QTextBrowser::loadResource(type, url);
    }

    // In the theme's colour of a selection.
    void Mark(const QStringList& words)
    {
        QList<ExtraSelection> marks;
        for (const QString& word : words) {
            for (QTextCursor place = document()->find(word); !place.isNull(); place = document()->find(word, place)) {
                ExtraSelection mark;
                mark.cursor = place;
                mark.format.setBackground(palette().color(QPalette::Highlight));
                mark.format.setForeground(palette().color(QPalette::HighlightedText));
                marks.push_back(mark);
            }
        }
        setExtraSelections(marks);
    }
};

QList<QRect> ScreenAreas()
{
    QList<QRect> areas;
    for (const QScreen* const screen : QGuiApplication::screens()) areas.push_back(screen->availableGeometry());
    return areas;
}

class HelpWindow : public QWidget {
  public:
    HelpWindow()
    {
        setWindowTitle(QStringLiteral("Kelvo help"));
        setWindowIcon(IconNamed("1_LN2DEWAR"));
        // The program's end doesn't wait for this window.
        setAttribute(Qt::WA_QuitOnClose, false);
        BuildSide();
        BuildText();
        auto* splitter = new QSplitter(this);
        splitter->addWidget(side_);
        splitter->addWidget(page_);
        splitter->setStretchFactor(1, 1);
        splitter->setSizes({kTreeWidth, kWindowSize.width() - kTreeWidth});
        splitter->setChildrenCollapsible(false);
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(splitter);
        FillTree(QString());
        resize(kWindowSize);
    }

    void ShowContext(int context)
    {
        const int page = HasHelpPage(context) ? context : kHelpContentsPage;
        text_->setSource(PageUrl(page));
        context_ = context;
        if (isVisible()) {
            raise();
        } else {
            StandBesideMainWindow();
        }
        show();
        activateWindow();
    }

    void Search(const QString& key)
    {
        search_->setText(key);
        FillTree(key);
        search_->setFocus();
        search_->selectAll();
    }

    int Context() const { return isVisible() ? context_ : 0; }
    QString Text() const { return isVisible() ? text_->toPlainText() : QString(); }

  protected:
    // The lists and the text would take these keys for themselves.
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::KeyPress) return QWidget::eventFilter(watched, event);
        return CloseBy(static_cast<QKeyEvent&>(*event));
    }

    void keyPressEvent(QKeyEvent* event) override
    {
        if (!CloseBy(*event)) QWidget::keyPressEvent(event);
    }

    void changeEvent(QEvent* event) override
    {
        QWidget::changeEvent(event);
        if (event->type() == QEvent::PaletteChange && text_ != nullptr) {
            text_->document()->setDefaultStyleSheet(PageStyle(palette()));
            text_->reload();
            MarkHits();
        }
    }

  private:
    // Where it stood before, once the operator has seen it.
    void StandBesideMainWindow()
    {
        const HWND main = MainWindow();
        if (placed_ || main == nullptr || main->frame == nullptr || !main->frame->isVisible()) return;
        placed_ = true;
        const QRect frame = main->frame->frameGeometry();
        move(PlaceBeside(frame, size(), ScreenAreas()));
    }

    bool CloseBy(const QKeyEvent& key)
    {
        const bool closes =
            key.key() == Qt::Key_Escape || (key.key() == Qt::Key_W && key.modifiers() == Qt::ControlModifier);
        if (closes) close();
        return closes;
    }

    void MarkHits() { text_->Mark(SearchWords(search_->text())); }

    // The first page found comes up; the list keeps all of them.
    void OpenFirstHit()
    {
        for (QTreeWidgetItemIterator item(tree_); *item != nullptr; ++item) {
            if ((*item)->data(0, Qt::UserRole).toInt() == 0) continue;
            tree_->setCurrentItem(*item);
            return;
        }
    }

    void BuildSide()
    {
        side_ = new QWidget;
        search_ = new QLineEdit;
        search_->setObjectName(QStringLiteral("helpSearch"));
        search_->setPlaceholderText(QStringLiteral("Search"));
        search_->setClearButtonEnabled(true);
        search_->addAction(IconNamed("search"), QLineEdit::LeadingPosition);
        tree_ = new QTreeWidget;
        tree_->setObjectName(QStringLiteral("helpTree"));
        tree_->setHeaderHidden(true);
        tree_->setFrameShape(QFrame::NoFrame);
        tree_->setRootIsDecorated(false);
        tree_->setIndentation(14);
        tree_->viewport()->setAutoFillBackground(false);
        auto* layout = new QVBoxLayout(side_);
        layout->setContentsMargins(10, 10, 4, 10);
        layout->setSpacing(8);
        layout->addLayout(BuildButtons());
        layout->addWidget(search_);
        layout->addWidget(tree_, 1);

        search_->installEventFilter(this);
        tree_->installEventFilter(this);
        connect(search_, &QLineEdit::returnPressed, this, [this] {
            if (!search_->text().trimmed().isEmpty()) OpenFirstHit();
        });
        connect(search_, &QLineEdit::textChanged, this, [this](const QString& words) {
            FillTree(words);
            MarkHits();
        });
        connect(tree_, &QTreeWidget::currentItemChanged, this, [this](const QTreeWidgetItem* item) {
            const int context = item == nullptr ? 0 : item->data(0, Qt::UserRole).toInt();
            if (context != 0) text_->setSource(PageUrl(context));
        });
    }

    QLayout* BuildButtons()
    {
        back_ = AddButton("left", QStringLiteral("Back"));
        forward_ = AddButton("right", QStringLiteral("Forward"));
        auto* home = AddButton("home", QStringLiteral("Contents"));
        auto* row = new QHBoxLayout;
        row->setSpacing(2);
        row->addWidget(back_);
        row->addWidget(forward_);
        row->addWidget(home);
        row->addStretch(1);
        back_->setEnabled(false);
        forward_->setEnabled(false);
        connect(back_, &QToolButton::clicked, this, [this] { text_->backward(); });
        connect(forward_, &QToolButton::clicked, this, [this] { text_->forward(); });
        connect(home, &QToolButton::clicked, this, [this] { text_->setSource(PageUrl(kHelpContentsPage)); });
        return row;
    }

    QToolButton* AddButton(std::string_view icon, const QString& name)
    {
        auto* button = new QToolButton(side_);
        button->setIcon(IconNamed(icon));
        button->setIconSize(QSize(18, 18));
        button->setAutoRaise(true);
        button->setToolTip(name);
        button->setAccessibleName(name);
        return button;
    }

    void BuildText()
    {
        text_ = new PageView;
        text_->installEventFilter(this);
        text_->setObjectName(QStringLiteral("helpText"));
        text_->setFrameShape(QFrame::NoFrame);
        text_->setOpenLinks(true);
        text_->document()->setDefaultStyleSheet(PageStyle(palette()));
        text_->document()->setDocumentMargin(kTextMargin);
        page_ = text_;
        connect(text_, &QTextBrowser::sourceChanged, this, [this](const QUrl& url) { ShowsPage(ContextOf(url)); });
        connect(text_, &QTextBrowser::backwardAvailable, back_, &QWidget::setEnabled);
        connect(text_, &QTextBrowser::forwardAvailable, forward_, &QWidget::setEnabled);
    }

    // The page came up, by whatever way: the tree shows where it stands.
    void ShowsPage(int context)
    {
        context_ = context;
        setWindowTitle(QStringLiteral("%1 - Kelvo help").arg(HelpPageTitle(context)));
        const QSignalBlocker quiet(tree_);
        tree_->setCurrentItem(nullptr);
        for (QTreeWidgetItemIterator item(tree_); *item != nullptr; ++item) {
            if ((*item)->data(0, Qt::UserRole).toInt() == context) tree_->setCurrentItem(*item);
        }
        MarkHits();
    }

    void FillTree(const QString& words)
    {
        const QSignalBlocker quiet(tree_);
        tree_->clear();
        if (words.trimmed().isEmpty()) {
            FillWithContents();
        } else {
            for (const HelpTopic& topic : FindHelpTopics(words)) AddTopic(nullptr, topic);
            if (tree_->topLevelItemCount() == 0) AddHeading(QStringLiteral("No page holds these words."));
        }
        tree_->expandAll();
    }

    void FillWithContents()
    {
        AddTopic(nullptr, {QString(), HelpPageTitle(kHelpContentsPage), kHelpContentsPage});
        QTreeWidgetItem* heading = nullptr;
        for (const HelpTopic& topic : HelpTopics()) {
            if (heading == nullptr || heading->text(0) != topic.heading) heading = AddHeading(topic.heading);
            AddTopic(heading, topic);
        }
    }

    QTreeWidgetItem* AddHeading(const QString& text)
    {
        auto* item = new QTreeWidgetItem(tree_, {text});
        item->setFlags(Qt::ItemIsEnabled);
        QFont bold = tree_->font();
        bold.setWeight(QFont::DemiBold);
        item->setFont(0, bold);
        item->setSizeHint(0, QSize(0, kRowHeight + 4));
        return item;
    }

    void AddTopic(QTreeWidgetItem* heading, const HelpTopic& topic)
    {
        auto* item = heading != nullptr ? new QTreeWidgetItem(heading, {topic.title})
                                        : new QTreeWidgetItem(tree_, {topic.title});
        item->setData(0, Qt::UserRole, topic.context);
        item->setSizeHint(0, QSize(0, kRowHeight));
    }

    QWidget* side_ = nullptr;
    QWidget* page_ = nullptr;
    QLineEdit* search_ = nullptr;
    QTreeWidget* tree_ = nullptr;
    PageView* text_ = nullptr;
    QToolButton* back_ = nullptr;
    QToolButton* forward_ = nullptr;
    int context_ = 0;
    bool placed_ = false;
};

QPointer<HelpWindow> helpWindow;

HelpWindow& OpenHelp(int context)
{
    Transcribe("help", {{"context", std::int64_t{context}}});
    if (helpWindow == nullptr) helpWindow = new HelpWindow;
    helpWindow->ShowContext(context);
    return *helpWindow;
}

}  // namespace

void ShowHelpContext(int context)
{
    OpenHelp(context);
}

void ShowHelpContents()
{
    OpenHelp(kHelpContentsPage);
}

void ShowHelpSearch(std::string_view key)
{
    OpenHelp(kHelpSearchPage).Search(ToQString(key));
}

void ShowHelpOnHelp()
{
    OpenHelp(kHelpOnHelpPage);
}

void QuitHelp()
{
    delete helpWindow.data();
}

int CurrentHelpContext()
{
    return helpWindow == nullptr ? 0 : helpWindow->Context();
}

std::string CurrentHelpText()
{
    return helpWindow == nullptr ? std::string() : helpWindow->Text().toStdString();
}

}  // namespace kelvo
