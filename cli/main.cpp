#include <QCoreApplication>
#include <QTextStream>

namespace {

const char* const kUsage = "Usage: ondrel-stage [OPTIONS] SPECFILE\n"
                           "Stages the files that the spec file SPECFILE selects.\n"
                           "\n"
                           "  --help      show this help and exit\n"
                           "  --version   show the version and exit\n";

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    const QStringList args = app.arguments().mid(1);
    if (args.contains(QStringLiteral("--help"))) {
        out << kUsage;
        return 0;
    }
    if (args.contains(QStringLiteral("--version"))) {
        out << "ondrel-stage " << ONDREL_VERSION << "\n";
        return 0;
    }
    err << "ondrel-stage: staging is not built yet\n" << kUsage;
    return 64;
}
