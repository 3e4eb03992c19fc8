#include "cli/TerminalHost.h"

#include "platform/FileSystem.h"
#include "platform/NativeText.h"
#include "staging/StagingRun.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <vector>

namespace ondrel {

namespace {

volatile std::sig_atomic_t g_interrupts = 0;

extern "C" void onInterrupt(int signal) {
    if (g_interrupts) {
        // The second one: the program ends as the signal ends it. Copies are written to
        // temporary files and renamed, so no destination is left half written.
        std::signal(signal, SIG_DFL);
        std::raise(signal);
        return;
    }
    g_interrupts = 1;
}

// How often the progress line is redrawn at most: ten times a second.
constexpr long kRedrawNanoseconds = 100'000'000;
// How often an answer that names no button is asked for again before the default is taken.
constexpr int kAttempts = 3;

struct Choice {
    const char* word;
    MsgAnswer answer;
};

std::vector<Choice> choicesFor(MsgButtons buttons) {
    switch (buttons) {
    case MsgButtons::OK:
        return {{"ok", MsgAnswer::OK}};
    case MsgButtons::OKCancel:
        return {{"ok", MsgAnswer::OK}, {"cancel", MsgAnswer::Cancel}};
    case MsgButtons::AbortRetryIgnore:
        return {{"abort", MsgAnswer::Abort},
                {"retry", MsgAnswer::Retry},
                {"ignore", MsgAnswer::Ignore}};
    case MsgButtons::YesNoCancel:
        return {{"yes", MsgAnswer::Yes}, {"no", MsgAnswer::No}, {"cancel", MsgAnswer::Cancel}};
    case MsgButtons::YesNo:
        return {{"yes", MsgAnswer::Yes}, {"no", MsgAnswer::No}};
    case MsgButtons::RetryCancel:
        return {{"retry", MsgAnswer::Retry}, {"cancel", MsgAnswer::Cancel}};
    }
    return {{"ok", MsgAnswer::OK}};
}

QString answerName(MsgAnswer answer) {
    switch (answer) {
    case MsgAnswer::OK:
        return QStringLiteral("OK");
    case MsgAnswer::Cancel:
        return QStringLiteral("Cancel");
    case MsgAnswer::Abort:
        return QStringLiteral("Abort");
    case MsgAnswer::Retry:
        return QStringLiteral("Retry");
    case MsgAnswer::Ignore:
        return QStringLiteral("Ignore");
    case MsgAnswer::Yes:
        return QStringLiteral("Yes");
    case MsgAnswer::No:
        return QStringLiteral("No");
    }
    return {};
}

// The button that stops the run, for a question asked while Ctrl-C is pending.
MsgAnswer cancelAnswer(MsgButtons buttons) {
    switch (buttons) {
    case MsgButtons::OK:
        return MsgAnswer::OK;
    case MsgButtons::AbortRetryIgnore:
        return MsgAnswer::Abort;
    case MsgButtons::YesNo:
        return MsgAnswer::No;
    default:
        return MsgAnswer::Cancel;
    }
}

void put(FILE* stream, const QString& text) {
    std::fputs(text.toUtf8().constData(), stream);
}

long long nanosecondsBetween(const timespec& from, const timespec& to) {
    return (to.tv_sec - from.tv_sec) * 1'000'000'000LL + (to.tv_nsec - from.tv_nsec);
}

// A size in the binary units, with one decimal from KiB on.
QString byteText(double bytes) {
    static const char* const units[] = {"KiB", "MiB", "GiB", "TiB"};
    if (bytes < 1024)
        return QString::number(qint64(bytes)) + QStringLiteral(" B");
    int unit = -1;
    while (bytes >= 1024 && unit < 3) {
        bytes /= 1024;
        ++unit;
    }
    return QString::number(bytes, 'f', 1) + u' ' + QLatin1String(units[unit]);
}

int terminalWidth() {
    winsize size{};
    if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    return 80;
}

} // namespace

TerminalHost::TerminalHost(Answers answers, Asking asking, Progress progress)
    : m_answers(answers), m_asking(asking), m_progress(progress),
      m_stdoutIsTerminal(::isatty(STDOUT_FILENO)) {}

void TerminalHost::installInterruptHandlers() {
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    // Interrupted system calls resume, so no copy fails halfway because of Ctrl-C; a question
    // waits in poll(), which an interrupt always ends.
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

bool TerminalHost::interrupted() {
    return g_interrupts != 0;
}

QString TerminalHost::terminalText(const QString& text) {
    // The message boxes' texts break lines with CR LF; the terminal wants LF. Tabs line up the
    // summary's values.
    QStringList lines = text.split(QStringLiteral("\r\n"));
    for (QString& line : lines)
        line = NativeText::display(line, NativeText::Tabs::Kept);
    return lines.join(u'\n');
}

void TerminalHost::printLine(const QString& line) {
    // Only a line on the same terminal has to make way for the progress line.
    if (m_stdoutIsTerminal)
        clearProgress();
    put(stdout, terminalText(line) + u'\n');
}

void TerminalHost::reportFailure(const QString& text, const QByteArray& path) {
    clearProgress();
    std::fflush(stdout);
    const QString shownPath = path.isEmpty() ? QString() : FileSystem::displayPath(path);
    put(stderr, QStringLiteral("ondrel-stage: ") + terminalText(text) +
                    (shownPath.isEmpty() || text.contains(shownPath)
                         ? QString()
                         : QStringLiteral("  path: ") + shownPath) +
                    u'\n');
}

MsgAnswer TerminalHost::ask(const QString& prompt, MsgButtons buttons, MsgIcon icon,
                            const QString& title) {
    return askAbout({}, prompt, buttons, icon, title);
}

MsgAnswer TerminalHost::askAbout(const QByteArray& path, const QString& prompt, MsgButtons buttons,
                                 MsgIcon icon, const QString& title) {
    (void)icon;
    clearProgress();
    std::fflush(stdout);
    // The texts of the boxes stay as they are; which file or directory they are about follows
    // on a line of its own.
    const QString pathLine =
        path.isEmpty() ? QString() : QStringLiteral("  path: ") + FileSystem::displayPath(path);
    const auto printed = [&](const QString& text) {
        put(stderr, title + QStringLiteral(": ") + terminalText(prompt) + text + u'\n' +
                        (pathLine.isEmpty() ? QString() : pathLine + u'\n'));
    };
    if (buttons == MsgButtons::OK) {
        printed({});
        return MsgAnswer::OK;
    }
    if (interrupted())
        return cancelAnswer(buttons);
    if (m_asking == Asking::OnTerminal)
        return askOnTerminal(prompt, pathLine, buttons, title);
    const MsgAnswer answer = answerFromOptions(buttons);
    printed(QStringLiteral(" (answered ") + answerName(answer) + u')');
    return answer;
}

MsgAnswer TerminalHost::answerFromOptions(MsgButtons buttons) const {
    switch (buttons) {
    case MsgButtons::OK:
        return MsgAnswer::OK;
    case MsgButtons::OKCancel:
        return m_answers.onQuestion;
    case MsgButtons::AbortRetryIgnore:
        return m_answers.onError;
    case MsgButtons::YesNoCancel:
        return m_answers.overwrite;
    case MsgButtons::YesNo:
        return m_answers.overwrite == MsgAnswer::Yes ? MsgAnswer::Yes : MsgAnswer::No;
    case MsgButtons::RetryCancel:
        // Retrying without anyone to change what failed would only fail again.
        return MsgAnswer::Cancel;
    }
    return MsgAnswer::OK;
}

MsgAnswer TerminalHost::askOnTerminal(const QString& prompt, const QString& pathLine,
                                      MsgButtons buttons, const QString& title) {
    const std::vector<Choice> choices = choicesFor(buttons);
    const MsgAnswer fallback = answerFromOptions(buttons);
    QStringList offered;
    for (const Choice& c : choices) {
        const QString word = QLatin1String(c.word);
        offered << u'[' + word.left(1) + u']' + word.mid(1);
    }
    const QString question = offered.join(QStringLiteral(", ")) + QStringLiteral(" (Enter: ") +
                             answerName(fallback) + QStringLiteral(")? ");
    put(stderr, u'\n' + title + u'\n' + terminalText(prompt) + u'\n' +
                    (pathLine.isEmpty() ? QString() : pathLine + u'\n'));
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        put(stderr, question);
        std::fflush(stderr);
        const Reply reply = readLine();
        if (reply.kind == Reply::Kind::Interrupted) {
            put(stderr, QStringLiteral("\n"));
            return cancelAnswer(buttons);
        }
        if (reply.kind == Reply::Kind::EndOfInput) {
            put(stderr,
                QStringLiteral("\n(end of input: ") + answerName(fallback) + QStringLiteral(")\n"));
            return fallback;
        }
        const QString typed = reply.line.trimmed().toLower();
        if (typed.isEmpty())
            return fallback;
        for (const Choice& c : choices) {
            const QString word = QLatin1String(c.word);
            if (typed == word || typed == word.left(1))
                return c.answer;
        }
    }
    put(stderr,
        QStringLiteral("(no answer understood: ") + answerName(fallback) + QStringLiteral(")\n"));
    return fallback;
}

TerminalHost::Reply TerminalHost::readLine() {
    QByteArray bytes;
    for (;;) {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        const int ready = ::poll(&input, 1, -1);
        if (ready < 0) {
            if (errno == EINTR && interrupted())
                return {Reply::Kind::Interrupted, {}};
            if (errno == EINTR)
                continue;
            return {Reply::Kind::EndOfInput, {}};
        }
        char c = 0;
        const ssize_t n = ::read(STDIN_FILENO, &c, 1);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            if (bytes.isEmpty())
                return {Reply::Kind::EndOfInput, {}};
            break;
        }
        if (c == '\n')
            break;
        bytes.append(c);
    }
    return {Reply::Kind::Line, QString::fromUtf8(bytes)};
}

void TerminalHost::showDirectory(const QString& text) {
    m_current = text;
    m_currentIsDirectory = true;
}

void TerminalHost::showSourceFile(const QByteArray& path) {
    m_currentFile = path;
    m_currentIsDirectory = false;
}

void TerminalHost::yield() {
    if (g_interrupts && m_run) {
        if (!m_cancelNoted) {
            m_cancelNoted = true;
            // Over the progress line, or over the ^C the terminal echoed.
            if (m_progress == Progress::Shown)
                put(stderr, QStringLiteral("\r\x1b[K"));
            m_progressShown = false;
            put(stderr, QStringLiteral("ondrel-stage: interrupted; the run stops now (press "
                                       "Ctrl-C again to end at once)\n"));
        }
        m_run->Cancel();
    }
    if (m_progress == Progress::Hidden)
        return;
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    if (nanosecondsBetween(m_lastDrawn, now) < kRedrawNanoseconds)
        return;
    m_lastDrawn = now;
    drawProgress(now);
}

QString TerminalHost::progressHead(qint64 files, qint64 bytes, double seconds) {
    QString head = StagingRun::formatCount(files) +
                   (files == 1 ? QStringLiteral(" file  ") : QStringLiteral(" files  ")) +
                   byteText(double(bytes)) + QStringLiteral("  ");
    // No rate until there is time enough to tell one.
    if (seconds >= 0.5)
        head += byteText(double(bytes) / seconds) + QStringLiteral("/s  ");
    return head;
}

void TerminalHost::drawProgress(const timespec& now) {
    if (!m_startedKnown) {
        m_started = now;
        m_startedKnown = true;
    }
    const RunState* state = m_run ? &m_run->state() : nullptr;
    const QString head =
        progressHead(state ? state->CopiedCount : 0, state ? state->copiedBytes : 0,
                     double(nanosecondsBetween(m_started, now)) / 1e9) +
        (m_currentIsDirectory ? QStringLiteral("searching ") : QString());
    // One character short of the width, so the cursor never wraps to a new line.
    const qsizetype room = terminalWidth() - 1 - head.size();
    QString current = m_currentIsDirectory ? NativeText::display(m_current)
                                           : FileSystem::displayPath(m_currentFile);
    if (room <= 3)
        current.clear();
    else if (current.size() > room)
        current = QStringLiteral("...") + current.right(room - 3);
    put(stderr, u'\r' + head + current + QStringLiteral("\x1b[K"));
    std::fflush(stderr);
    m_progressShown = true;
}

void TerminalHost::clearProgress() {
    if (!m_progressShown)
        return;
    put(stderr, QStringLiteral("\r\x1b[K"));
    std::fflush(stderr);
    m_progressShown = false;
}

void TerminalHost::showSummary(const QString& title, const QString& text) {
    clearProgress();
    QString body = terminalText(text);
    if (!body.endsWith(u'\n'))
        body += u'\n';
    put(stdout, title + QStringLiteral("\n\n") + body);
    std::fflush(stdout);
}

} // namespace ondrel
