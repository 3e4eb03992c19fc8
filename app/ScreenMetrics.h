#pragma once

#include <functional>
#include <utility>

namespace ondrel {

// The size of the screen in twips, which the default window placement is centred on. It is
// asked anew each time, so that a reset of the settings centres the window on the screen as it
// is now; a copy asks the same screen.
class ScreenMetrics {
public:
    struct Size {
        int widthTwips = 0;
        int heightTwips = 0;
    };
    using Reader = std::function<Size()>;

    explicit ScreenMetrics(Reader read) : m_read(std::move(read)) {}

    int widthTwips() const { return m_read().widthTwips; }
    int heightTwips() const { return m_read().heightTwips; }

private:
    Reader m_read;
};

// A screen of a fixed size: for programs and tests without a display.
class FixedScreen : public ScreenMetrics {
public:
    FixedScreen(int widthTwips, int heightTwips)
        : ScreenMetrics([widthTwips, heightTwips] {
              return Size{widthTwips, heightTwips};
          }) {}
};

} // namespace ondrel
