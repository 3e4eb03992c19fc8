#pragma once

#include "platform/Help.h"

#include <QUrl>
#include <QWidget>

#include <memory>

class QHelpContentWidget;
class QHelpEngine;
class QSplitter;
class QTabWidget;
class QToolButton;

namespace ondrel {

class HelpBrowser;
class HelpIndexPane;
class HelpSearchPane;

// The help window: the contents, the index and the full-text search on the left, the topic on
// the right. It stays open beside the program's windows, and each help request turns it to the
// page asked for.
class HelpViewer : public QWidget {
    Q_OBJECT

public:
    // The tabs on the left, in their order.
    enum class Tab { Contents, Index, Search };

    explicit HelpViewer(const QString& collectionFile, QWidget* parent = nullptr);
    ~HelpViewer() override;

    // Turns the window to the request: the contents page, the index ready for a word, or the
    // topic of a context number (the contents page for a number without a topic of its own).
    void showRequest(const HelpRequest& request);

    // The page of a context number, or of the contents when the number has none.
    QUrl topicFor(int context) const;

    QUrl currentPage() const;
    Tab currentTab() const;
    HelpIndexPane* indexPane() const { return m_indexPane; }
    HelpSearchPane* searchPane() const { return m_searchPane; }

private:
    void showTopic(const QUrl& url);
    void showFoundTopic(const QUrl& url);
    void selectInContents(const QUrl& url);
    void buildShortcuts();

    std::unique_ptr<QHelpEngine> m_engine;
    QSplitter* m_splitter;
    QTabWidget* m_tabs;
    QHelpContentWidget* m_contents;
    HelpIndexPane* m_indexPane;
    HelpSearchPane* m_searchPane;
    HelpBrowser* m_browser;
    QToolButton* m_back;
    QToolButton* m_forward;
    QToolButton* m_home;
};

} // namespace ondrel
