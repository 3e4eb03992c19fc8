#pragma once

#include <QIconEngine>
#include <QList>
#include <QPixmap>
#include <QString>

namespace ondrel {

// An icon made of bitmaps rendered at several sizes when the program was built (files named by a
// pattern with "%1" for the size), each read only when a window first draws the icon at a size
// it serves: a start-up reads the few it shows. A size between two bitmaps is drawn from the next
// larger one, scaled down smoothly.
class BitmapIconEngine : public QIconEngine {
public:
    BitmapIconEngine(const QString& filePattern, const QList<int>& sizes);

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override;
    QIconEngine* clone() const override;
    QString key() const override;

private:
    struct Bitmap {
        int size = 0;
        QPixmap pixmap; // null until first read
    };
    // The bitmap that serves a request of this many pixels: the smallest that is not smaller,
    // or the largest.
    Bitmap& bitmapFor(int pixels);

    QString m_filePattern;
    QList<Bitmap> m_bitmaps; // by size, smallest first
};

} // namespace ondrel
