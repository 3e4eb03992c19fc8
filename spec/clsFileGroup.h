#pragma once

#include "spec/clsDestPaths.h"

#include <QString>

#include <memory>

namespace ondrel {

// One group of file masks (joined with ";") of a source path, with its destination paths.
class clsFileGroup {
public:
    clsFileGroup() : m_dps(std::make_shared<clsDestPaths>()) {}

    const QString& Key() const { return m_key; }
    const QString& Name() const { return m_name; }
    void setName(const QString& Name) { m_name = m_key = Name; }
    clsDestPaths& DPs() const { return *m_dps; }

    std::shared_ptr<clsFileGroup> Clone() const {
        auto copy = std::make_shared<clsFileGroup>(*this);
        copy->m_dps = m_dps->Clone();
        return copy;
    }

private:
    QString m_key;
    QString m_name;
    std::shared_ptr<clsDestPaths> m_dps;
};

} // namespace ondrel
