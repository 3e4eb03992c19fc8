#pragma once

#include "spec/clsSpecFile.h"

#include <QString>

namespace ondrel {

// A spec of `destinations` destination paths: 10 source paths of 10 file groups each, every
// group with destinations / 100 of them.
inline void buildBenchSpec(clsSpecFile& spec, int destinations) {
    const int perGroup = destinations / 100;
    for (int i = 0; i < 10; ++i) {
        auto sp = spec.SPs().Add(QStringLiteral("/projects/site%1").arg(i));
        sp->setInclSubDirs(i % 2 == 0);
        for (int j = 0; j < 10; ++j) {
            auto fg = sp->FGs().Add(QStringLiteral("*.t%1;*.u%1").arg(j));
            for (int k = 0; k < perGroup; ++k)
                fg->DPs().Add(
                    QStringLiteral("/stage/mirror%1/site%2/group%3").arg(k).arg(i).arg(j));
        }
    }
}

} // namespace ondrel
