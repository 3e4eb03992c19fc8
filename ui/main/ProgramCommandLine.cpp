#include "ui/main/ProgramCommandLine.h"

namespace ondrel {

ProgramCommandLine ProgramCommandLine::parse(const QStringList& arguments) {
    ProgramCommandLine line;
    bool help = false;
    bool version = false;
    bool optionsEnded = false;
    QStringList files;
    for (const QString& argument : arguments) {
        if (optionsEnded || !argument.startsWith(u'-') || argument == QLatin1String("-")) {
            files << argument;
        } else if (argument == QLatin1String("--")) {
            optionsEnded = true;
        } else if (argument == QLatin1String("--help") || argument == QLatin1String("-h")) {
            help = true;
        } else if (argument == QLatin1String("--version")) {
            version = true;
        } else if (line.error.isEmpty()) {
            line.error = QStringLiteral("unknown option ") + argument;
        }
    }
    if (help || version) {
        line.action = help ? Action::Help : Action::Version;
        line.error.clear();
        return line;
    }
    if (line.error.isEmpty() && files.size() > 1)
        line.error = QStringLiteral("one spec file at a time: ") + files.join(u' ');
    if (line.error.isEmpty())
        line.specFile = files.value(0);
    return line;
}

QString ProgramCommandLine::usage() {
    return QStringLiteral(
        "Usage: ondrel [SPECFILE]\n"
        "Starts File Ondrel, the customizable file copying utility, with a new spec, and\n"
        "opens SPECFILE as File, Open Spec File does when one is given.\n"
        "\n"
        "  --help     show this help and exit\n"
        "  --version  show the version and exit\n"
        "\n"
        "Settings, window placement and the recent files are kept in ONDREL.OPT, never\n"
        "taken from the command line. Stage a spec without a window with ondrel-stage.\n"
        "More in ondrel(1) and in the program's Help menu.\n");
}

} // namespace ondrel
