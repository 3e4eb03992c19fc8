#pragma once

#include <QWidget>

class QHelpSearchEngine;
class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QPushButton;

namespace ondrel {

// The Search tab: finds the topics that contain the words the user types, and lists them by
// title; Enter or a double click on a title opens the topic.
class HelpSearchPane : public QWidget {
    Q_OBJECT

public:
    explicit HelpSearchPane(QHelpSearchEngine* engine, QWidget* parent = nullptr);

    QLineEdit* wordsField() const { return m_words; }
    QListWidget* resultList() const { return m_results; }

    // Looks for the words of the field; waits for the index when it is still being built.
    void search();

Q_SIGNALS:
    void topicChosen(const QUrl& url);
    // The results of a search are in the list.
    void searchFinished();

private:
    void showResults(int count);
    void indexReady();

    QHelpSearchEngine* m_engine;
    QLineEdit* m_words;
    QPushButton* m_searchButton;
    QListWidget* m_results;
    QLabel* m_status;
    bool m_indexing = false;
    bool m_searchWaiting = false;
};

} // namespace ondrel
