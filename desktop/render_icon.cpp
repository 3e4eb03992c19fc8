// render_icon SVG SIZE:PNG...: draws the SVG drawing as square PNG files of the given sizes,
// the bitmaps of the program icon that an icon theme offers desktops without SVG support.
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>

#include <cstdio>

int main(int argc, char* argv[]) {
    // Drawing needs no display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 3) {
        std::fputs("usage: render_icon SVG SIZE:PNG...\n", stderr);
        return 64;
    }
    for (const QString& target : arguments.mid(2)) {
        const qsizetype colon = target.indexOf(u':');
        const int size = target.left(colon).toInt();
        QImageReader reader(arguments[1], "svg");
        reader.setScaledSize(QSize(size, size));
        const QImage image = reader.read().convertToFormat(QImage::Format_ARGB32);
        if (colon < 1 || size < 1 || image.isNull() || !image.save(target.mid(colon + 1), "PNG")) {
            std::fprintf(stderr, "render_icon: cannot draw %s at %s: %s\n",
                         qPrintable(arguments[1]), qPrintable(target),
                         qPrintable(reader.errorString()));
            return 1;
        }
    }
    return 0;
}
