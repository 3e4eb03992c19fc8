#include "ui/help/HelpViewer.h"

#include "platform/SlotBarrier.h"
#include "ui/help/HelpBrowser.h"
#include "ui/help/HelpIndexPane.h"
#include "ui/help/HelpSearchPane.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHelpContentModel>
#include <QHelpContentWidget>
#include <QHelpEngine>
#include <QHelpLink>
#include <QHelpSearchEngine>
#include <QLineEdit>
#include <QScreen>
#include <QShortcut>
#include <QSplitter>
#include <QStyle>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace ondrel {

namespace {

// The help project marks the page of each context number with an index keyword of this id.
QString contextId(int context) {
    return QStringLiteral("context-") + QString::number(context);
}

QToolButton* navigationButton(QStyle::StandardPixmap icon, const QString& text,
                              const QString& accessibleName, const QString& name, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setObjectName(name);
    button->setIcon(parent->style()->standardIcon(icon));
    button->setText(text);
    button->setAccessibleName(accessibleName);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setAutoRaise(true);
    // Tool buttons are left out of the Tab chain by default; here they are the only way back.
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

} // namespace

HelpViewer::HelpViewer(const QString& collectionFile, QWidget* parent)
    : QWidget(parent, Qt::Window), m_engine(std::make_unique<QHelpEngine>(collectionFile)) {
    setObjectName(QStringLiteral("frmHelp"));
    setWindowTitle(QStringLiteral("File Ondrel Help"));
    setAccessibleName(windowTitle());
    // Help stays open beside the program but never keeps it running once its last window is
    // closed.
    setAttribute(Qt::WA_QuitOnClose, false);
    if (!m_engine->setupData())
        qWarning("Help: %s", qPrintable(m_engine->error()));

    m_back = navigationButton(QStyle::SP_ArrowBack, QStringLiteral("&Back"), QStringLiteral("Back"),
                              QStringLiteral("cmdHelpBack"), this);
    m_forward = navigationButton(QStyle::SP_ArrowForward, QStringLiteral("F&orward"),
                                 QStringLiteral("Forward"), QStringLiteral("cmdHelpForward"), this);
    m_home = navigationButton(QStyle::SP_DirHomeIcon, QStringLiteral("&Home"),
                              QStringLiteral("Contents page"), QStringLiteral("cmdHelpHome"), this);
    m_back->setEnabled(false);
    m_forward->setEnabled(false);

    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setObjectName(QStringLiteral("splHelp"));
    m_splitter->setChildrenCollapsible(false);
    m_tabs = new QTabWidget(m_splitter);
    m_tabs->setObjectName(QStringLiteral("tabHelp"));
    m_tabs->setAccessibleName(QStringLiteral("Help navigation"));
    m_contents = m_engine->contentWidget();
    m_contents->setObjectName(QStringLiteral("tvwHelpContents"));
    m_contents->setAccessibleName(QStringLiteral("Contents"));
    m_contents->setHeaderHidden(true);
    m_indexPane = new HelpIndexPane(m_engine.get());
    m_indexPane->setAccessibleName(QStringLiteral("Index"));
    m_searchPane = new HelpSearchPane(m_engine->searchEngine());
    m_searchPane->setAccessibleName(QStringLiteral("Search"));
    m_tabs->addTab(m_contents, QStringLiteral("&Contents"));
    m_tabs->addTab(m_indexPane, QStringLiteral("&Index"));
    m_tabs->addTab(m_searchPane, QStringLiteral("&Search"));
    for (int i = 0; i < m_tabs->count(); ++i)
        m_tabs->tabBar()->setAccessibleTabName(i, m_tabs->widget(i)->accessibleName());
    m_browser = new HelpBrowser(m_engine.get(), m_splitter);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 3);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_back);
    buttons->addWidget(m_forward);
    buttons->addWidget(m_home);
    buttons->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(buttons);
    layout->addWidget(m_splitter, 1);

    connect(m_contents, &QHelpContentWidget::linkActivated, this,
            guarded(QStringLiteral("showTopic"), this, &HelpViewer::showTopic));
    // One click on a title opens its topic, whatever the desktop's setting for activating items.
    connect(m_contents, &QHelpContentWidget::clicked, this,
            guarded(QStringLiteral("showTopic"), [this](const QModelIndex& index) {
                if (const QHelpContentItem* item = m_engine->contentModel()->contentItemAt(index))
                    showTopic(item->url());
            }));
    connect(m_indexPane, &HelpIndexPane::topicChosen, this,
            guarded(QStringLiteral("showTopic"), this, &HelpViewer::showTopic));
    connect(m_searchPane, &HelpSearchPane::topicChosen, this,
            guarded(QStringLiteral("showFoundTopic"), this, &HelpViewer::showFoundTopic));
    connect(m_back, &QToolButton::clicked, m_browser, &QTextBrowser::backward);
    connect(m_forward, &QToolButton::clicked, m_browser, &QTextBrowser::forward);
    connect(m_home, &QToolButton::clicked, this,
            guarded(QStringLiteral("showTopic"), [this] { showTopic(topicFor(0)); }));
    connect(m_browser, &QTextBrowser::backwardAvailable, m_back, &QWidget::setEnabled);
    connect(m_browser, &QTextBrowser::forwardAvailable, m_forward, &QWidget::setEnabled);
    connect(m_browser, &QTextBrowser::sourceChanged, this,
            guarded(QStringLiteral("selectInContents"), this, &HelpViewer::selectInContents));
    // The contents are read in the background; once there, they open on the page shown.
    connect(m_engine->contentModel(), &QHelpContentModel::contentsCreated, this,
            guarded(QStringLiteral("selectInContents"), [this] {
                m_contents->expandAll();
                selectInContents(currentPage());
            }));
    buildShortcuts();

    // Sized in lines and characters of the user's font, so it suits any screen resolution.
    const QFontMetrics metrics = fontMetrics();
    QSize size(metrics.averageCharWidth() * 150, metrics.height() * 46);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        size = size.boundedTo(screen->availableSize() * 9 / 10);
    resize(size);
    // The navigation side is wide enough for its three tabs.
    const int navigation = std::max(size.width() / 4, m_tabs->tabBar()->sizeHint().width() +
                                                          metrics.averageCharWidth() * 4);
    m_tabs->setMinimumWidth(m_tabs->tabBar()->sizeHint().width());
    m_splitter->setSizes({navigation, size.width() - navigation});
}

HelpViewer::~HelpViewer() {
    // The engine's views read its models, so they go before it.
    delete m_splitter;
}

void HelpViewer::buildShortcuts() {
    const auto onKeys = [this](const QKeySequence& keys, auto slot) {
        auto* shortcut = new QShortcut(keys, this);
        shortcut->setContext(Qt::WindowShortcut);
        connect(shortcut, &QShortcut::activated, this, slot);
    };
    onKeys(QKeySequence(Qt::Key_Escape), [this] { close(); });
    onKeys(QKeySequence(Qt::CTRL | Qt::Key_W), [this] { close(); });
    onKeys(QKeySequence(Qt::ALT | Qt::Key_Left), [this] { m_browser->backward(); });
    onKeys(QKeySequence(Qt::ALT | Qt::Key_Right), [this] { m_browser->forward(); });
}

QUrl HelpViewer::topicFor(int context) const {
    QList<QHelpLink> links = m_engine->documentsForIdentifier(contextId(context));
    if (links.isEmpty() && context != 0)
        links = m_engine->documentsForIdentifier(contextId(0));
    return links.isEmpty() ? QUrl() : links.constFirst().url;
}

QUrl HelpViewer::currentPage() const {
    return m_browser->source();
}

HelpViewer::Tab HelpViewer::currentTab() const {
    return static_cast<Tab>(m_tabs->currentIndex());
}

void HelpViewer::showRequest(const HelpRequest& request) {
    switch (request.command) {
    case HelpCommand::PartialKey:
        m_tabs->setCurrentWidget(m_indexPane);
        if (currentPage().isEmpty())
            showTopic(topicFor(0));
        break;
    case HelpCommand::Context:
        m_tabs->setCurrentWidget(m_contents);
        showTopic(topicFor(request.context));
        break;
    case HelpCommand::Contents:
    default:
        m_tabs->setCurrentWidget(m_contents);
        showTopic(topicFor(0));
        break;
    }
    if (isMinimized())
        showNormal();
    else
        show();
    raise();
    activateWindow();
    if (request.command == HelpCommand::PartialKey)
        m_indexPane->focusKeywordField();
    else
        m_browser->setFocus(Qt::OtherFocusReason);
}

void HelpViewer::showTopic(const QUrl& url) {
    if (url.isValid() && url != currentPage())
        m_browser->setSource(url);
}

void HelpViewer::showFoundTopic(const QUrl& url) {
    showTopic(url);
    // Brings the first of the words searched for into view, selected, where the user reads on.
    const QString word = m_searchPane->wordsField()->text().section(QLatin1Char(' '), 0, 0,
                                                                    QString::SectionSkipEmpty);
    m_browser->moveCursor(QTextCursor::Start);
    m_browser->find(word);
}

void HelpViewer::selectInContents(const QUrl& url) {
    const QModelIndex index = m_contents->indexOf(url.adjusted(QUrl::RemoveFragment));
    if (index.isValid())
        m_contents->setCurrentIndex(index);
}

} // namespace ondrel
