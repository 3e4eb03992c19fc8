#pragma once

#include "spec/clsFileGroups.h"

#include <QString>

#include <memory>

namespace ondrel {

// One source directory of a spec (or "<various>", the individually selected files), with the
// flag that takes its sub-directories in and its file groups.
class clsSourcePath {
public:
    clsSourcePath() : m_fgs(std::make_shared<clsFileGroups>()) {}

    const QString& Key() const { return m_key; }
    const QString& Name() const { return m_name; }
    void setName(const QString& Name) { m_name = m_key = Name; }
    bool InclSubDirs() const { return m_inclSubDirs; }
    void setInclSubDirs(bool InclSubDirs) { m_inclSubDirs = InclSubDirs; }
    clsFileGroups& FGs() const { return *m_fgs; }

    std::shared_ptr<clsSourcePath> Clone() const {
        auto copy = std::make_shared<clsSourcePath>(*this);
        copy->m_fgs = m_fgs->Clone();
        return copy;
    }

private:
    QString m_key;
    QString m_name;
    bool m_inclSubDirs = false;
    std::shared_ptr<clsFileGroups> m_fgs;
};

} // namespace ondrel
