#pragma once

#include <QString>

#include <vector>

namespace ondrel {

class clsSourcePaths;

// One node of the spec tree as the main window adds it: its position in the order of adding
// (from 1), its parent's position (0 at the top level), key, text, image and tag.
struct SpecTreeNode {
    int index = 0;
    int parentIndex = 0;
    QString key;
    QString text;
    int image = 0;
    QString tag;
};

// The tree images by their index in the tree's image list.
namespace SpecTreeImage {
inline constexpr int SourcePath = 1;
inline constexpr int SourcePathSelected = 2;
inline constexpr int FileGroup = 3;
inline constexpr int DestPath = 4;
} // namespace SpecTreeImage

// The nodes that show SPs, in the order they are added: each source path, then its file groups,
// each followed by its destination paths. A child's key begins with its parent's index, so that
// like-named file groups of two source paths still have keys of their own.
std::vector<SpecTreeNode> specTreeNodes(const clsSourcePaths& SPs);

} // namespace ondrel
