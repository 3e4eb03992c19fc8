#pragma once

#include <QString>

#include <memory>

namespace ondrel {

// One destination directory of a file group.
class clsDestPath {
public:
    // The name the item was last given; the main window builds its tree keys from it.
    const QString& Key() const { return m_key; }
    const QString& Name() const { return m_name; }
    void setName(const QString& Name) { m_name = m_key = Name; }

    std::shared_ptr<clsDestPath> Clone() const { return std::make_shared<clsDestPath>(*this); }

private:
    QString m_key;
    QString m_name;
};

} // namespace ondrel
