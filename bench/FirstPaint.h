#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QMainWindow>
#include <QObject>
#include <QSize>

// Ends the event loop at the first paint of a main window: the moment a start-up is over for the
// user. Installed on the window itself, or on the application when the window is made out of
// reach (inside the program's own start). The rest of that frame is still painted and put on the
// screen before the loop ends. Only the loop ends: no window is closed, so nothing is saved on
// the way out.
class FirstPaintQuitter : public QObject {
public:
    bool painted() const { return m_painted; }
    // The painted window's size in pixels, as it was at its first paint.
    QSize windowSize() const { return m_size; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && !m_painted) {
            if (auto* window = qobject_cast<QMainWindow*>(watched)) {
                m_painted = true;
                m_size = window->size();
                QCoreApplication::exit(0);
            }
        }
        return QObject::eventFilter(watched, event);
    }

private:
    bool m_painted = false;
    QSize m_size;
};
