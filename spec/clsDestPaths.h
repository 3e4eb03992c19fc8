#pragma once

#include "platform/FileNameCase.h"
#include "spec/KeyedCollection.h"
#include "spec/clsDestPath.h"

namespace ondrel {

// The destination paths of one file group, in order, keyed as the file system compares paths.
class clsDestPaths : public KeyedCollection<clsDestPath, kFileNameCase> {
public:
    std::shared_ptr<clsDestPaths> Clone() const {
        auto copy = std::make_shared<clsDestPaths>();
        cloneInto(*copy);
        return copy;
    }

protected:
    QString sourceName() const override { return QStringLiteral("clsDestPaths"); }
};

} // namespace ondrel
