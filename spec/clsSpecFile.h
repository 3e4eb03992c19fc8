#pragma once

#include "spec/clsSourcePaths.h"

#include <QString>

#include <memory>

namespace ondrel {

class ProfileFile;

// The current spec: a copying job as a tree of source paths, file groups and destination paths,
// with the file it is kept in.
class clsSpecFile {
public:
    // File name without directory (Web.spc); empty until the spec is named.
    const QString& Name() const { return m_name; }
    void setName(const QString& Name) { m_name = Name; }
    // Directory of the spec file, with its trailing separator: Path + Name is the full name.
    const QString& Path() const { return m_path; }
    void setPath(const QString& Path) { m_path = Path; }
    bool Dirty() const { return m_dirty; }
    void setDirty(bool Dirty) { m_dirty = Dirty; }

    // The source paths; an empty collection is created on first use, so a reader never sees none.
    clsSourcePaths& SPs();
    const clsSourcePaths& SPs() const;
    void setSPs(std::shared_ptr<clsSourcePaths> SPs) { m_sps = std::move(SPs); }

    // Offers to save unsaved changes, then empties the tree; false when the user cancelled.
    bool NewSpecFile();
    // Replaces the tree with the spec file FileName (a full path); reports its own failures.
    bool LoadSpecFile(const QString& FileName);
    // Writes the tree to Path + Name; reports its own failures.
    void SaveSpecFile();

private:
    void readTree(const ProfileFile& file);

    QString m_name;
    QString m_path;
    bool m_dirty = false;
    std::shared_ptr<clsSourcePaths> m_sps;
};

} // namespace ondrel
