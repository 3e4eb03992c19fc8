// Renders the window's drawings to bitmaps at build time, so that the program reads small PNGs at
// start-up instead of parsing SVG. Usage: render_icons OUT_DIR SIZES DRAWING.svg...
// (SIZES: pixel sizes joined by commas). Writes OUT_DIR/NAME-SIZE.png for each drawing and size,
// drawn by Qt's SVG image plugin (libqt6svg6) at that size, not scaled from another size.
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>

#include <cstdio>

int main(int argc, char* argv[]) {
    // Nothing is shown: a build machine need not have a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc < 4) {
        std::fputs("usage: render_icons OUT_DIR SIZES DRAWING.svg...\n", stderr);
        return 2;
    }
    const QDir out(QString::fromLocal8Bit(argv[1]));
    if (!out.mkpath(QStringLiteral("."))) {
        std::fprintf(stderr, "render_icons: cannot make %s\n", argv[1]);
        return 1;
    }
    const QStringList sizes = QString::fromLatin1(argv[2]).split(u',');
    for (int i = 3; i < argc; ++i) {
        const QString drawing = QString::fromLocal8Bit(argv[i]);
        for (const QString& size : sizes) {
            const int pixels = size.toInt();
            QImageReader reader(drawing, "svg");
            reader.setScaledSize(QSize(pixels, pixels));
            const QImage image = reader.read();
            const QString png = out.filePath(QFileInfo(drawing).completeBaseName() + u'-' + size +
                                             QStringLiteral(".png"));
            if (image.isNull() || !image.save(png, "PNG")) {
                std::fprintf(stderr, "render_icons: %s at %d pixels: %s\n", argv[i], pixels,
                             qPrintable(reader.errorString()));
                return 1;
            }
        }
    }
    return 0;
}
