#include "ui/help/HelpSearchPane.h"
#include "platform/SlotBarrier.h"

#include <QAction>
#include <QHelpSearchEngine>
#include <QHelpSearchResult>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace ondrel {

HelpSearchPane::HelpSearchPane(QHelpSearchEngine* engine, QWidget* parent)
    : QWidget(parent), m_engine(engine), m_words(new QLineEdit(this)),
      m_searchButton(new QPushButton(QStringLiteral("&Find"), this)),
      m_results(new QListWidget(this)), m_status(new QLabel(this)) {
    auto* label = new QLabel(QStringLiteral("&Words to find:"), this);
    label->setBuddy(m_words);
    m_words->setObjectName(QStringLiteral("txtHelpSearchWords"));
    m_words->setAccessibleName(QStringLiteral("Words to find"));
    m_words->setClearButtonEnabled(true);
    // Qt leaves the clear button without a name; its action gives it one.
    if (auto* clear = m_words->findChild<QAction*>(QStringLiteral("_q_qlineeditclearaction")))
        clear->setText(QStringLiteral("Clear"));
    m_searchButton->setObjectName(QStringLiteral("cmdHelpSearch"));
    m_searchButton->setAccessibleName(QStringLiteral("Find topics"));
    auto* resultsLabel = new QLabel(QStringLiteral("&Topics found:"), this);
    resultsLabel->setBuddy(m_results);
    m_results->setObjectName(QStringLiteral("lstHelpSearchResults"));
    m_results->setAccessibleName(QStringLiteral("Topics found"));
    m_status->setObjectName(QStringLiteral("lblHelpSearchStatus"));
    m_status->setWordWrap(true);

    auto* wordsRow = new QHBoxLayout;
    wordsRow->addWidget(m_words, 1);
    wordsRow->addWidget(m_searchButton);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addLayout(wordsRow);
    layout->addWidget(resultsLabel);
    layout->addWidget(m_results, 1);
    layout->addWidget(m_status);

    connect(m_words, &QLineEdit::returnPressed, this,
            guarded(QStringLiteral("search"), this, &HelpSearchPane::search));
    connect(m_searchButton, &QPushButton::clicked, this,
            guarded(QStringLiteral("search"), this, &HelpSearchPane::search));
    connect(m_results, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
        Q_EMIT topicChosen(item->data(Qt::UserRole).toUrl());
    });
    connect(m_engine, &QHelpSearchEngine::indexingStarted, this, [this] { m_indexing = true; });
    connect(m_engine, &QHelpSearchEngine::indexingFinished, this,
            guarded(QStringLiteral("indexReady"), this, &HelpSearchPane::indexReady));
    connect(m_engine, &QHelpSearchEngine::searchingFinished, this,
            guarded(QStringLiteral("showResults"), this, &HelpSearchPane::showResults));
    // The index is built in the background while the user reads; a search typed before it is
    // ready runs when it is.
    m_indexing = true;
    m_engine->scheduleIndexDocumentation();
}

void HelpSearchPane::search() {
    if (m_words->text().trimmed().isEmpty())
        return;
    if (m_indexing) {
        m_searchWaiting = true;
        m_status->setText(QStringLiteral("Preparing the search..."));
        return;
    }
    m_status->setText(QStringLiteral("Searching..."));
    m_engine->search(m_words->text());
}

void HelpSearchPane::indexReady() {
    m_indexing = false;
    if (std::exchange(m_searchWaiting, false))
        search();
}

void HelpSearchPane::showResults(int count) {
    m_results->clear();
    for (const QHelpSearchResult& result : m_engine->searchResults(0, count)) {
        auto* item = new QListWidgetItem(result.title(), m_results);
        item->setData(Qt::UserRole, result.url());
    }
    if (count == 0)
        m_status->setText(QStringLiteral("No topic contains these words."));
    else if (count == 1)
        m_status->setText(QStringLiteral("1 topic found."));
    else
        m_status->setText(QStringLiteral("%1 topics found.").arg(count));
    if (count > 0)
        m_results->setCurrentRow(0);
    Q_EMIT searchFinished();
}

} // namespace ondrel
