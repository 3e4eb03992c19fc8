#pragma once

#include <QWidget>

class QHelpEngine;
class QHelpIndexWidget;
class QHelpLink;
class QLineEdit;

namespace ondrel {

// The Index tab: the user types the first letters of a word and the list of index words jumps
// to it; Enter or a double click opens the topic of the chosen word.
class HelpIndexPane : public QWidget {
    Q_OBJECT

public:
    explicit HelpIndexPane(QHelpEngine* engine, QWidget* parent = nullptr);

    // Gives the word field the keyboard focus with its text selected, ready for a new word.
    void focusKeywordField();

    QLineEdit* keywordField() const { return m_keyword; }
    QHelpIndexWidget* keywordList() const { return m_list; }

Q_SIGNALS:
    void topicChosen(const QUrl& url);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void chooseAmong(const QList<QHelpLink>& documents, const QString& keyword);

    QLineEdit* m_keyword;
    QHelpIndexWidget* m_list;
};

} // namespace ondrel
