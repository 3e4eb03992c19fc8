#include "cli/StageOptions.h"

#include <optional>
#include <utility>

namespace ondrel {

namespace {

struct AnswerWord {
    const char* word;
    MsgAnswer answer;
};

constexpr AnswerWord kOverwriteWords[] = {
    {"yes", MsgAnswer::Yes}, {"no", MsgAnswer::No}, {"cancel", MsgAnswer::Cancel}};
constexpr AnswerWord kErrorWords[] = {{"abort", MsgAnswer::Abort}, {"ignore", MsgAnswer::Ignore}};
constexpr AnswerWord kQuestionWords[] = {{"ok", MsgAnswer::OK}, {"cancel", MsgAnswer::Cancel}};
// More threads than this only wait on the same disks.
constexpr int kMaxJobs = 64;

template <std::size_t N>
std::optional<MsgAnswer> answerFor(const AnswerWord (&words)[N], const QString& value) {
    for (const AnswerWord& w : words) {
        if (value.compare(QLatin1String(w.word), Qt::CaseInsensitive) == 0)
            return w.answer;
    }
    return std::nullopt;
}

template <std::size_t N> QString wordList(const AnswerWord (&words)[N]) {
    QStringList list;
    for (const AnswerWord& w : words)
        list << QLatin1String(w.word);
    return list.join(u'|');
}

// Walks the arguments; an option's value may follow it ("--log FILE") or be joined to it
// ("--log=FILE").
class Parser {
public:
    explicit Parser(const QStringList& arguments) : m_args(arguments) {}

    StageOptions run() {
        bool optionsEnded = false;
        // The whole line is read even after an error: a --help further on still wins.
        while (m_next < m_args.size()) {
            const QString arg = m_args[m_next++];
            if (optionsEnded || arg == QLatin1String("-") || !arg.startsWith(u'-'))
                addSpecFile(arg);
            else if (arg == QLatin1String("--"))
                optionsEnded = true;
            else
                option(arg);
        }
        if (m_help || m_version) {
            // Asking for help or the version is never an error, whatever else was given.
            m_options.action = m_help ? StageOptions::Action::Help : StageOptions::Action::Version;
            m_options.error.clear();
            return m_options;
        }
        if (m_options.error.isEmpty() && m_options.specFile.isEmpty())
            m_options.error = QStringLiteral("no spec file given");
        if (m_options.error.isEmpty() && m_logFile && m_noLog)
            m_options.error = QStringLiteral("--log and --no-log exclude each other");
        return m_options;
    }

private:
    void addSpecFile(const QString& arg) {
        if (!m_options.specFile.isEmpty())
            fail(QStringLiteral("only one spec file can be staged at a time (got \"") +
                 m_options.specFile + QStringLiteral("\" and \"") + arg + QStringLiteral("\")"));
        else if (arg.isEmpty())
            fail(QStringLiteral("the spec file name is empty"));
        else
            m_options.specFile = arg;
    }

    void option(const QString& arg) {
        const qsizetype eq = arg.indexOf(u'=');
        const QString name = eq < 0 ? arg : arg.left(eq);
        std::optional<QString> joined;
        if (eq >= 0)
            joined = arg.mid(eq + 1);

        if (name == QLatin1String("--help") || name == QLatin1String("-h")) {
            noValue(name, joined);
            m_help = true;
        } else if (name == QLatin1String("--version")) {
            noValue(name, joined);
            m_version = true;
        } else if (name == QLatin1String("--dry-run")) {
            noValue(name, joined);
            m_options.dryRun = true;
        } else if (name == QLatin1String("--batch")) {
            noValue(name, joined);
            m_options.batch = true;
        } else if (name == QLatin1String("--quiet")) {
            noValue(name, joined);
            m_options.quiet = true;
        } else if (name == QLatin1String("--no-log")) {
            noValue(name, joined);
            m_noLog = true;
            m_options.log = StageOptions::LogChoice::None;
        } else if (name == QLatin1String("--jobs")) {
            jobsValue(name, joined);
        } else if (name == QLatin1String("--options")) {
            m_options.optionsFile = fileValue(name, joined);
        } else if (name == QLatin1String("--log")) {
            m_options.logFile = fileValue(name, joined);
            m_logFile = true;
            m_options.log = StageOptions::LogChoice::File;
        } else if (name == QLatin1String("--various")) {
            m_options.variousFile = fileValue(name, joined);
        } else if (name == QLatin1String("--overwrite")) {
            answerValue(name, joined, kOverwriteWords, m_options.overwriteAnswer);
        } else if (name == QLatin1String("--on-error")) {
            answerValue(name, joined, kErrorWords, m_options.errorAnswer);
        } else if (name == QLatin1String("--on-question")) {
            answerValue(name, joined, kQuestionWords, m_options.questionAnswer);
        } else {
            fail(QStringLiteral("unknown option ") + name);
        }
    }

    void noValue(const QString& name, const std::optional<QString>& joined) {
        if (joined)
            fail(name + QStringLiteral(" takes no value"));
    }

    QString value(const QString& name, const std::optional<QString>& joined) {
        if (joined)
            return *joined;
        if (m_next >= m_args.size()) {
            fail(name + QStringLiteral(" needs a value"));
            return {};
        }
        return m_args[m_next++];
    }

    QString fileValue(const QString& name, const std::optional<QString>& joined) {
        QString file = value(name, joined);
        if (file.isEmpty() && m_options.error.isEmpty())
            fail(name + QStringLiteral(" needs a file name"));
        return file;
    }

    template <std::size_t N>
    void answerValue(const QString& name, const std::optional<QString>& joined,
                     const AnswerWord (&words)[N], MsgAnswer& answer) {
        const QString word = value(name, joined);
        if (!m_options.error.isEmpty())
            return;
        if (const auto a = answerFor(words, word))
            answer = *a;
        else
            fail(name + QStringLiteral(" must be one of ") + wordList(words) +
                 QStringLiteral(", not \"") + word + QStringLiteral("\""));
    }

    void jobsValue(const QString& name, const std::optional<QString>& joined) {
        const QString word = value(name, joined);
        if (!m_options.error.isEmpty())
            return;
        bool ok = false;
        const int jobs = word.toInt(&ok);
        if (ok && jobs >= 1 && jobs <= kMaxJobs)
            m_options.jobs = jobs;
        else
            fail(name + QStringLiteral(" must be a number from 1 to ") + QString::number(kMaxJobs) +
                 QStringLiteral(", not \"") + word + QStringLiteral("\""));
    }

    void fail(const QString& message) {
        if (m_options.error.isEmpty())
            m_options.error = message;
    }

    const QStringList& m_args;
    qsizetype m_next = 0;
    StageOptions m_options;
    bool m_help = false;
    bool m_version = false;
    bool m_logFile = false;
    bool m_noLog = false;
};

} // namespace

StageOptions StageOptions::parse(const QStringList& arguments) {
    return Parser(arguments).run();
}

QString StageOptions::usage() {
    return QStringLiteral(
        "Usage: ondrel-stage [OPTIONS] SPECFILE\n"
        "Stages the files that the spec file SPECFILE selects, without a window.\n"
        "\n"
        "  --options FILE   read the staging options from this options file (section\n"
        "                   \"FSOptions\", read as the windowed program reads it);\n"
        "                   default: ONDREL.OPT in the program directory; missing keys\n"
        "                   keep their defaults\n"
        "  --log FILE       write the staging log to FILE\n"
        "  --no-log         write no log\n"
        "                   (neither: a log only when the options say CreateLog, to\n"
        "                   Staging.log in the current directory; a dry run writes a\n"
        "                   log only with --log)\n"
        "  --various FILE   the individually selected files of \"<various>\": a file\n"
        "                   list, one absolute path per line or comma-separated, double\n"
        "                   quotes removed; other items, and repeated paths, are skipped\n"
        "  --dry-run        decide everything as a real run would, print what would be\n"
        "                   copied, made and deleted, and change nothing on disk\n"
        "  --batch          never ask on the terminal; answer every question as below\n"
        "  --overwrite=yes|no|cancel   answer to \"Overwrite Existing File?\" (default no)\n"
        "  --on-error=abort|ignore     answer to Abort/Retry/Ignore questions\n"
        "                              (default ignore)\n"
        "  --on-question=ok|cancel     answer to OK/Cancel questions (default ok)\n"
        "  --jobs N         copy with N threads (1 to 64; default: one per processor,\n"
        "                   at most 8): files are copied ahead of the run and each\n"
        "                   takes its name in the run's order, so the log, the\n"
        "                   questions and the result are those of --jobs 1; a dry run,\n"
        "                   a move, attribute filters and the Archive reset copy one\n"
        "                   file at a time\n"
        "  --quiet          no progress line (it is shown only when standard error\n"
        "                   is a terminal: files and bytes copied, the rate, the\n"
        "                   current file)\n"
        "  --help           show this help and exit\n"
        "  --version        show the version and exit\n"
        "\n"
        "Questions are asked on the terminal when standard input is one and --batch is\n"
        "not given; otherwise, and when input ends, the answers above are used (on the\n"
        "terminal they are the answer to Enter). A Retry/Cancel question is answered\n"
        "Cancel unless it is asked on the terminal. Messages with only an OK button are\n"
        "printed to standard error.\n"
        "\n"
        "Ctrl-C cancels the run as its Cancel button does: no source is deleted, the\n"
        "log is finished and the summary printed. A second Ctrl-C ends it at once.\n"
        "\n"
        "Exit status: 0 nothing went wrong; 1 something did (an error message, a\n"
        "problem file, a source that was not deleted: the path follows each message);\n"
        "2 cancelled; 64 bad command line, or an options, file-list or log file that\n"
        "cannot be used; 65 the spec file did not load.\n"
        "\n"
        "How to write a spec file, the keys of the options file and how masks match:\n"
        "see WRITING A JOB in ondrel-stage(1) (\"man ondrel-stage\").\n");
}

} // namespace ondrel
