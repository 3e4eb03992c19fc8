#pragma once

#include <QIcon>
#include <QString>

namespace ondrel {

// The icon of a tool-bar button by its key, or of a tree image by its index in the tree's image
// list.
QIcon mainIcon(const QString& toolBarKey);
QIcon treeImage(int index);
// The program's own icon.
QIcon programIcon();

} // namespace ondrel
