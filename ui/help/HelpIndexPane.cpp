#include "ui/help/HelpIndexPane.h"
#include "platform/SlotBarrier.h"

#include <QAction>
#include <QCoreApplication>
#include <QHelpEngine>
#include <QHelpIndexWidget>
#include <QHelpLink>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace ondrel {

HelpIndexPane::HelpIndexPane(QHelpEngine* engine, QWidget* parent)
    : QWidget(parent), m_keyword(new QLineEdit(this)), m_list(engine->indexWidget()) {
    auto* label = new QLabel(QStringLiteral("&Look for:"), this);
    label->setBuddy(m_keyword);
    m_keyword->setObjectName(QStringLiteral("txtHelpIndexKeyword"));
    m_keyword->setAccessibleName(QStringLiteral("Index word"));
    m_keyword->setClearButtonEnabled(true);
    // Qt leaves the clear button without a name; its action gives it one.
    if (auto* clear = m_keyword->findChild<QAction*>(QStringLiteral("_q_qlineeditclearaction")))
        clear->setText(QStringLiteral("Clear"));
    m_list->setParent(this);
    m_list->setObjectName(QStringLiteral("lstHelpIndex"));
    m_list->setAccessibleName(QStringLiteral("Index words"));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(m_keyword);
    layout->addWidget(m_list, 1);

    connect(m_keyword, &QLineEdit::textChanged, m_list,
            [this](const QString& text) { m_list->filterIndices(text); });
    connect(m_keyword, &QLineEdit::returnPressed, m_list, &QHelpIndexWidget::activateCurrentItem);
    connect(m_list, &QHelpIndexWidget::documentActivated, this,
            [this](const QHelpLink& document) { Q_EMIT topicChosen(document.url); });
    connect(m_list, &QHelpIndexWidget::documentsActivated, this,
            guarded(QStringLiteral("chooseAmong"), this, &HelpIndexPane::chooseAmong));
    // The arrow keys in the word field move through the list, so the user need not leave the
    // field to pick a neighbouring word.
    m_keyword->installEventFilter(this);
}

void HelpIndexPane::focusKeywordField() {
    m_keyword->setFocus(Qt::OtherFocusReason);
    m_keyword->selectAll();
}

bool HelpIndexPane::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_keyword && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp ||
            key == Qt::Key_PageDown) {
            QCoreApplication::sendEvent(m_list, event);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void HelpIndexPane::chooseAmong(const QList<QHelpLink>& documents, const QString& keyword) {
    QStringList titles;
    for (const QHelpLink& document : documents)
        titles.append(document.title);
    bool chosen = false;
    const QString title = QInputDialog::getItem(this, QStringLiteral("Choose Topic"),
                                                QStringLiteral("Topics for \"%1\":").arg(keyword),
                                                titles, 0, false, &chosen);
    if (chosen)
        Q_EMIT topicChosen(documents.at(titles.indexOf(title)).url);
}

} // namespace ondrel
