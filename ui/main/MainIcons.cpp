#include "ui/main/MainIcons.h"

#include "ui/main/BitmapIconEngine.h"
#include "ui/main/SpecTreeNodes.h"

namespace ondrel {

namespace {

struct IconNames {
    const char* theme;   // freedesktop icon name
    const char* drawing; // name of the drawing shipped with the program
};

// A drawing shipped with the program, rendered to bitmaps when the program was built: 16 pixels
// for the tool bar and the tree, 32 for a screen of twice the density (both drawn from the SVG at
// their own size, so neither is blurred by scaling).
QIcon drawing(const char* name, const QList<int>& sizes = {16, 32}) {
    return QIcon(new BitmapIconEngine(
        QStringLiteral(":/ondrel/icons/%1-").arg(QLatin1String(name)) + QStringLiteral("%1.png"),
        sizes));
}

// The desktop's icon theme comes first, so the window matches the desktop; the drawing stands in
// where there is no theme (a fresh machine, a virtual display) or the theme lacks the name.
// "hicolor", what a desktop without a theme of its own reports, is the shared fallback of
// applications' own icons and holds none of the standard names asked for here: looking them up
// in it would read its index of several hundred folders at every start for nothing.
QIcon themedIcon(const IconNames& names) {
    const QString theme = QIcon::themeName();
    if (theme.isEmpty() || theme == QLatin1String("hicolor"))
        return drawing(names.drawing);
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
    return drawing("program", {16, 32, 48, 64});
}

} // namespace ondrel
