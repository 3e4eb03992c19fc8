#pragma once

#include "platform/FileNameCase.h"
#include "spec/KeyedCollection.h"
#include "spec/clsSourcePath.h"

namespace ondrel {

// The source paths of a spec, in order, keyed as the file system compares paths.
class clsSourcePaths : public KeyedCollection<clsSourcePath, kFileNameCase> {
public:
    // A deep copy, for editing a spec without touching it until the edit is accepted.
    std::shared_ptr<clsSourcePaths> Clone() const {
        auto copy = std::make_shared<clsSourcePaths>();
        cloneInto(*copy);
        return copy;
    }

protected:
    QString sourceName() const override { return QStringLiteral("clsSourcePaths"); }
};

} // namespace ondrel
