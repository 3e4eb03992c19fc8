#include "ui/main/QtScreenMetrics.h"

#include "ui/main/TwipsScale.h"

#include <QGuiApplication>
#include <QScreen>

namespace ondrel {

ScreenMetrics primaryScreenMetrics() {
    return ScreenMetrics([] {
        const QScreen* screen = QGuiApplication::primaryScreen();
        if (screen == nullptr)
            return ScreenMetrics::Size{9600, 7200};
        const TwipsScale scale = TwipsScale::of(nullptr);
        const QSize size = screen->geometry().size();
        return ScreenMetrics::Size{static_cast<int>(scale.toTwips(size.width())),
                                   static_cast<int>(scale.toTwips(size.height()))};
    });
}

} // namespace ondrel
