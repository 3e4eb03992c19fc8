#pragma once

#include <QtGlobal>

#include <cmath>

class QWidget;

namespace ondrel {

// Converts between the twips the settings and the layout count in and the pixels of the screen
// a window is on: twips per pixel = 1440 / the screen's logical DPI (15 at 96 DPI).
class TwipsScale {
public:
    explicit TwipsScale(double twipsPerPixel = 15.0) : m_twipsPerPixel(twipsPerPixel) {}
    // The scale of the screen the widget is on (the primary screen before it is shown).
    static TwipsScale of(const QWidget* widget);

    double twipsPerPixel() const { return m_twipsPerPixel; }
    int toPixels(double twips) const {
        return static_cast<int>(std::lround(twips / m_twipsPerPixel));
    }
    double toTwips(int pixels) const { return pixels * m_twipsPerPixel; }

private:
    double m_twipsPerPixel;
};

} // namespace ondrel
