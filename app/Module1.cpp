#include "app/Module1.h"

namespace ondrel {

QString OverwriteModeText(qint16 Mode) {
    switch (Mode) {
    case OverwriteMode::IfOlder:
        return QStringLiteral("If Older");
    case OverwriteMode::Prompt:
        return QStringLiteral("Prompt");
    case OverwriteMode::Always:
        return QStringLiteral("Always");
    case OverwriteMode::Never:
        return QStringLiteral("Never");
    default:
        return QString();
    }
}

} // namespace ondrel
