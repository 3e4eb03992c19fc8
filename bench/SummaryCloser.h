#pragma once

#include "staging/frmStageInfo.h"

#include <QEvent>
#include <QMetaObject>
#include <QObject>

namespace ondrel {

// Accepts the staging summary box the moment it is shown, as a user clicking OK at once would.
// Installed on the application, it watches every window.
class SummaryCloser : public QObject {
public:
    int shown = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Show) {
            if (auto* info = qobject_cast<frmStageInfo*>(watched)) {
                ++shown;
                QMetaObject::invokeMethod(info, &QDialog::accept, Qt::QueuedConnection);
            }
        }
        return QObject::eventFilter(watched, event);
    }
};

} // namespace ondrel
