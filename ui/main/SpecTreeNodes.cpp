#include "ui/main/SpecTreeNodes.h"

#include "spec/clsSourcePaths.h"

namespace ondrel {

std::vector<SpecTreeNode> specTreeNodes(const clsSourcePaths& SPs) {
    std::vector<SpecTreeNode> nodes;
    auto add = [&nodes](int parent, const QString& key, const QString& text, int image,
                        const QString& tag) {
        const int index = static_cast<int>(nodes.size()) + 1;
        nodes.push_back(SpecTreeNode{index, parent, key, text, image, tag});
        return index;
    };
    for (const auto& sp : SPs) {
        const int spIndex =
            add(0, sp->Key(), sp->Name(), SpecTreeImage::SourcePath, QStringLiteral("SP"));
        for (const auto& fg : sp->FGs()) {
            const int fgIndex = add(spIndex, QString::number(spIndex) + fg->Key(), fg->Name(),
                                    SpecTreeImage::FileGroup, QString());
            for (const auto& dp : fg->DPs())
                add(fgIndex, QString::number(fgIndex) + dp->Key(), dp->Name(),
                    SpecTreeImage::DestPath, QString());
        }
    }
    return nodes;
}

} // namespace ondrel
