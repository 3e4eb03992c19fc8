#include "ui/help/HelpBrowser.h"

#include <QDesktopServices>
#include <QHelpEngineCore>

namespace ondrel {

namespace {

const QString kHelpScheme = QStringLiteral("qthelp");

} // namespace

HelpBrowser::HelpBrowser(QHelpEngineCore* engine, QWidget* parent)
    : QTextBrowser(parent), m_engine(engine) {
    setObjectName(QStringLiteral("txtHelpTopic"));
    setAccessibleName(QStringLiteral("Help topic"));
    // The user reads topics with the keyboard too: arrows and Page keys scroll, Tab walks the
    // links and Enter follows one.
    setTextInteractionFlags(Qt::TextBrowserInteraction | Qt::LinksAccessibleByKeyboard);
    setOpenLinks(true);
}

QVariant HelpBrowser::loadResource(int type, const QUrl& name) {
    if (name.scheme() == kHelpScheme)
        return m_engine->fileData(name);
    return QTextBrowser::loadResource(type, name);
}

void HelpBrowser::doSetSource(const QUrl& url, QTextDocument::ResourceType type) {
    if (url.scheme() != kHelpScheme && !url.isRelative()) {
        QDesktopServices::openUrl(url);
        return;
    }
    QTextBrowser::doSetSource(url, type);
}

} // namespace ondrel
