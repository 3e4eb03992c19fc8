#include "ui/main/TwipsScale.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace ondrel {

TwipsScale TwipsScale::of(const QWidget* widget) {
    const QScreen* screen = widget != nullptr ? widget->screen() : nullptr;
    if (screen == nullptr)
        screen = QGuiApplication::primaryScreen();
    const double dpi = screen != nullptr ? screen->logicalDotsPerInchX() : 96.0;
    return TwipsScale(dpi > 0 ? 1440.0 / dpi : 15.0);
}

} // namespace ondrel
