#pragma once

#include "spec/KeyedCollection.h"
#include "spec/clsFileGroup.h"

namespace ondrel {

// The file groups of one source path, in order, keyed without regard to case, as masks match. A
// group added without masks takes every file.
class clsFileGroups : public KeyedCollection<clsFileGroup, Qt::CaseInsensitive> {
public:
    ItemPtr Add(const QString& Name) {
        return KeyedCollection::Add(Name.isEmpty() ? QStringLiteral("*.*") : Name);
    }

    std::shared_ptr<clsFileGroups> Clone() const {
        auto copy = std::make_shared<clsFileGroups>();
        cloneInto(*copy);
        return copy;
    }

protected:
    QString sourceName() const override { return QStringLiteral("clsFileGroups"); }
};

} // namespace ondrel
