#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

// Ends the event loop at the first paint of the widget it watches: the moment a start-up is over
// for the user. The rest of that frame is still painted and put on the screen before the loop
// ends. Only the loop ends: no window is closed, so nothing is saved on the way out.
class FirstPaintQuitter : public QObject {
public:
    bool painted() const { return m_painted; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && !m_painted) {
            m_painted = true;
            QCoreApplication::exit(0);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    bool m_painted = false;
};
