#pragma once

#include <QApplication>
#include <QTimer>

#include <functional>

namespace ondrel {

// Runs then(window) once a modal window of type T is up and has the keyboard, polling the modal
// stack, as a user waits for it to appear before answering it.
template <typename T> void whenModal(std::function<void(T*)> then) {
    auto* timer = new QTimer;
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, then] {
        auto* window = qobject_cast<T*>(QApplication::activeModalWidget());
        if (window != nullptr && window->isActiveWindow()) {
            timer->stop();
            timer->deleteLater();
            then(window);
        }
    });
    timer->start();
}

} // namespace ondrel
