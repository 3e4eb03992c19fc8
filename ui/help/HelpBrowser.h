#pragma once

#include <QTextBrowser>

class QHelpEngineCore;

namespace ondrel {

// Shows help topics: reads pages, style sheets and pictures from the help engine, follows links
// between topics, and hands links that lead out of the help to the desktop.
class HelpBrowser : public QTextBrowser {
    Q_OBJECT

public:
    explicit HelpBrowser(QHelpEngineCore* engine, QWidget* parent = nullptr);

    QVariant loadResource(int type, const QUrl& name) override;

protected:
    void doSetSource(const QUrl& url, QTextDocument::ResourceType type) override;

private:
    QHelpEngineCore* m_engine;
};

} // namespace ondrel
