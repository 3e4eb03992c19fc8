#include "ui/main/MainIcons.h"

#include "ui/main/SpecTreeNodes.h"

#include <QHash>

namespace ondrel {

QIcon mainIcon(const QString& toolBarKey) {
    static const QHash<QString, QString> kThemeNames = {
        {QStringLiteral("New"), QStringLiteral("document-new")},
        {QStringLiteral("Open"), QStringLiteral("document-open")},
        {QStringLiteral("Save"), QStringLiteral("document-save")},
        {QStringLiteral("Stage"), QStringLiteral("go-jump")},
        {QStringLiteral("EditSpecs"), QStringLiteral("document-edit")},
        {QStringLiteral("VarFileSelect"), QStringLiteral("edit-select-all")},
        {QStringLiteral("Options"), QStringLiteral("preferences-system")},
        {QStringLiteral("Copy"), QStringLiteral("edit-copy")},
        {QStringLiteral("Paste"), QStringLiteral("edit-paste")},
        {QStringLiteral("Delete"), QStringLiteral("edit-delete")},
        {QStringLiteral("ExpandTVW"), QStringLiteral("zoom-in")},
        {QStringLiteral("ContractTVW"), QStringLiteral("zoom-out")},
        {QStringLiteral("Properties"), QStringLiteral("view-list-details")},
        {QStringLiteral("What'sThis"), QStringLiteral("help-whatsthis")},
    };
    return QIcon::fromTheme(kThemeNames.value(toolBarKey));
}

QIcon treeImage(int index) {
    switch (index) {
    case SpecTreeImage::SourcePath:
        return QIcon::fromTheme(QStringLiteral("folder"));
    case SpecTreeImage::SourcePathSelected:
        return QIcon::fromTheme(QStringLiteral("folder-open"));
    case SpecTreeImage::FileGroup:
        return QIcon::fromTheme(QStringLiteral("text-x-generic"));
    default:
        return QIcon::fromTheme(QStringLiteral("folder-download"));
    }
}

QIcon programIcon() {
    return QIcon::fromTheme(QStringLiteral("edit-copy"));
}

} // namespace ondrel
