#include "ui/main/MainIcons.h"

#include "ui/main/SpecTreeNodes.h"

// The drawings are compiled into this static library; a program that links it pulls the resource
// in only when something calls its initialiser, which must be called outside any namespace.
static void initMainIcons() {
    Q_INIT_RESOURCE(MainIcons);
}

namespace ondrel {

namespace {

struct IconNames {
    const char* theme;   // freedesktop icon name
    const char* drawing; // file name, without ".svg", of the drawing shipped with the program
};

QIcon drawing(const char* name) {
    static const bool loaded = (initMainIcons(), true);
    Q_UNUSED(loaded);
    return QIcon(QStringLiteral(":/ondrel/icons/%1.svg").arg(QLatin1String(name)));
}

// The desktop's icon theme comes first, so the window matches the desktop; the drawing stands in
// where there is no theme (a fresh machine, a virtual display) or the theme lacks the name.
QIcon themedIcon(const IconNames& names) {
    return QIcon::fromTheme(QLatin1String(names.theme), drawing(names.drawing));
}

} // namespace

QIcon mainIcon(const QString& toolBarKey) {
    static const struct {
        const char* key;
        IconNames names;
    } kIcons[] = {
        {"New", {"document-new", "new"}},
        {"Open", {"document-open", "open"}},
        {"Save", {"document-save", "save"}},
        {"Stage", {"go-jump", "stage"}},
        {"EditSpecs", {"document-edit", "edit_specs"}},
        {"VarFileSelect", {"edit-select-all", "var_file_select"}},
        {"Options", {"preferences-system", "options"}},
        {"Copy", {"edit-copy", "copy"}},
        {"Paste", {"edit-paste", "paste"}},
        {"Delete", {"edit-delete", "delete"}},
        {"ExpandTVW", {"zoom-in", "expand_tvw"}},
        {"ContractTVW", {"zoom-out", "contract_tvw"}},
        {"Properties", {"view-list-details", "properties"}},
        {"What'sThis", {"help-whatsthis", "whats_this"}},
    };
    for (const auto& icon : kIcons) {
        if (toolBarKey == QLatin1String(icon.key))
            return themedIcon(icon.names);
    }
    return QIcon();
}

QIcon treeImage(int index) {
    switch (index) {
    case SpecTreeImage::SourcePath:
        return themedIcon({"folder", "source_path"});
    case SpecTreeImage::SourcePathSelected:
        return themedIcon({"folder-open", "source_path_selected"});
    case SpecTreeImage::FileGroup:
        return themedIcon({"text-x-generic", "file_group"});
    default:
        return themedIcon({"folder-download", "destination_path"});
    }
}

QIcon programIcon() {
    // Always the program's own drawing: it is what tells this program's windows apart.
    return drawing("program");
}

} // namespace ondrel
