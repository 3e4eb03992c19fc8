#include "ui/main/BitmapIconEngine.h"

#include <QApplication>
#include <QImageReader>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>

#include <algorithm>

namespace ondrel {

BitmapIconEngine::BitmapIconEngine(const QString& filePattern, const QList<int>& sizes)
    : m_filePattern(filePattern) {
    for (int size : sizes)
        m_bitmaps.append({size, QPixmap()});
    std::sort(m_bitmaps.begin(), m_bitmaps.end(),
              [](const Bitmap& a, const Bitmap& b) { return a.size < b.size; });
}

BitmapIconEngine::Bitmap& BitmapIconEngine::bitmapFor(int pixels) {
    auto it = std::find_if(m_bitmaps.begin(), m_bitmaps.end(),
                           [pixels](const Bitmap& b) { return b.size >= pixels; });
    Bitmap& bitmap = it != m_bitmaps.end() ? *it : m_bitmaps.last();
    if (bitmap.pixmap.isNull()) {
        // Named as PNG, so that no image plugin is loaded to guess the format.
        QImageReader reader(m_filePattern.arg(bitmap.size), "png");
        bitmap.pixmap = QPixmap::fromImage(reader.read());
    }
    return bitmap;
}

QPixmap BitmapIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) {
    Q_UNUSED(state);
    if (m_bitmaps.isEmpty() || size.isEmpty())
        return QPixmap();
    QPixmap pixmap = bitmapFor(std::max(size.width(), size.height())).pixmap;
    if (pixmap.width() > size.width() || pixmap.height() > size.height())
        pixmap = pixmap.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    if (mode != QIcon::Normal && qobject_cast<QApplication*>(QCoreApplication::instance())) {
        // Disabled and selected looks as the style draws them for any other icon.
        QStyleOption option;
        option.palette = QApplication::palette();
        pixmap = QApplication::style()->generatedIconPixmap(mode, pixmap, &option);
    }
    return pixmap;
}

void BitmapIconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
                             QIcon::State state) {
    const qreal ratio = painter->device() != nullptr ? painter->device()->devicePixelRatio() : 1.0;
    QPixmap drawn = pixmap(rect.size() * ratio, mode, state);
    drawn.setDevicePixelRatio(ratio);
    painter->drawPixmap(rect, drawn);
}

QSize BitmapIconEngine::actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) {
    Q_UNUSED(mode);
    Q_UNUSED(state);
    if (m_bitmaps.isEmpty())
        return QSize();
    // Never larger than asked for, nor than the largest bitmap: bitmaps are not scaled up.
    const int largest = m_bitmaps.last().size;
    return QSize(std::min(size.width(), largest), std::min(size.height(), largest));
}

QList<QSize> BitmapIconEngine::availableSizes(QIcon::Mode mode, QIcon::State state) {
    Q_UNUSED(mode);
    Q_UNUSED(state);
    QList<QSize> sizes;
    for (const Bitmap& b : m_bitmaps)
        sizes.append(QSize(b.size, b.size));
    return sizes;
}

QIconEngine* BitmapIconEngine::clone() const {
    return new BitmapIconEngine(*this);
}

QString BitmapIconEngine::key() const {
    return QStringLiteral("ondrel.bitmaps");
}

} // namespace ondrel
