#pragma once

namespace ondrel {

// The size of the screen in twips, which the default window placement is centred on.
class ScreenMetrics {
public:
    virtual ~ScreenMetrics() = default;
    virtual int widthTwips() const = 0;
    virtual int heightTwips() const = 0;
};

// A screen of a fixed size: for programs and tests without a display.
class FixedScreen : public ScreenMetrics {
public:
    FixedScreen(int widthTwips, int heightTwips) : m_width(widthTwips), m_height(heightTwips) {}
    int widthTwips() const override { return m_width; }
    int heightTwips() const override { return m_height; }

private:
    int m_width;
    int m_height;
};

} // namespace ondrel
