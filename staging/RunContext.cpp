#include "staging/RunContext.h"

#include "app/clsOndrelApp.h"
#include "platform/Error.h"
#include "platform/FileSystem.h"
#include "platform/NativeText.h"
#include "staging/StagingHost.h"
#include "staging/StagingLog.h"

namespace ondrel {

RunContext::RunContext(const clsSpecFile& spec, const clsOndrelApp& settings,
                       const QStringList& VariousFiles, StagingHost& host, StagingFileOps& ops,
                       StagingLog* log)
    : m_spec(spec), m_settings(settings), m_variousFiles(VariousFiles), m_host(host), m_ops(ops),
      m_log(log && log->isOpen() ? log : nullptr) {}

bool RunContext::showErrMsgs() const {
    return m_settings.ShowErrMsgs();
}

void RunContext::log(const QString& line) {
    if (!logging())
        return;
    // The tabs are the log's own: they line up its values.
    const Result<void> written =
        m_log->writeLine(NativeText::display(line, NativeText::Tabs::Kept));
    if (!written.ok())
        logFailed(written.error());
}

void RunContext::closeLog() {
    if (!m_log)
        return;
    const Result<void> closed = m_log->close();
    if (!closed.ok())
        logFailed(closed.error());
    m_log = nullptr;
}

void RunContext::logFailed(const Error& error) {
    if (m_logFailed)
        return;
    m_logFailed = true;
    m_state.errorReported = true;
    // Asked whatever ShowErrMsgs says: the log cannot tell it, so nothing else would.
    m_host.ask(QStringLiteral("Unable to write the staging log ") +
                   NativeText::display(m_log->fileName()) + QStringLiteral(".  ") +
                   error.description(),
               MsgButtons::OK, MsgIcon::Exclamation, QStringLiteral("Staging Log Error"));
}

void RunContext::logError(const QString& text, const QByteArray& path) {
    m_state.errorReported = true;
    log(QStringLiteral("***") + text);
    m_host.reportFailure(NativeText::display(text), path);
}

MsgAnswer RunContext::ask(const QByteArray& path, const QString& prompt, MsgButtons buttons,
                          MsgIcon icon, const QString& title) {
    if (path.isEmpty())
        return m_host.ask(prompt, buttons, icon, title);
    return m_host.askAbout(path, prompt, buttons, icon, title);
}

MsgAnswer RunContext::reportError(const Error& error, const QString& stage, const QString& routine,
                                  MsgButtons buttons, const QByteArray& path) {
    logError(QStringLiteral("Error ") + QString::number(error.number()) + QStringLiteral(", ") +
                 error.description() + stage,
             path);
    if (!showErrMsgs())
        return MsgAnswer::OK;
    return ask(path, ErrorReportText(error), buttons, MsgIcon::None,
               routine + QStringLiteral(" Error"));
}

void RunContext::addProblemFile(const QByteArray& path) {
    if (m_state.problemPaths.contains(path))
        return;
    m_state.problemPaths.insert(path);
    m_state.ProblemFiles += FileSystem::displayPath(path) + QStringLiteral("\r\n");
}

} // namespace ondrel
