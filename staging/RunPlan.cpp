#include "staging/RunPlan.h"

#include "platform/DirectoryHandles.h"
#include "platform/NativePath.h"
#include "platform/Volumes.h"
#include "spec/clsSpecFile.h"

#include <QDir>
#include <QFile>
#include <QHash>

namespace ondrel {

RunPlan::RunPlan(const clsSpecFile& spec) {
    QHash<QByteArray, const PlannedDestination*> byPath;
    const auto destination = [&](const QString& name) {
        const QByteArray base = nativePath(spec, name);
        if (const PlannedDestination* known = byPath.value(base))
            return known;
        const PlannedDestination* made =
            &m_destinations.emplace_back(PlannedDestination{base, Volumes::mountPointOf(base)});
        byPath.insert(base, made);
        return made;
    };

    m_sources.reserve(size_t(spec.SPs().Count()));
    for (const auto& sp : spec.SPs()) {
        PlannedSource& source = m_sources.emplace_back();
        source.path = sp.get();
        source.various = sp->Name() == QLatin1String("<various>");
        if (!source.various) {
            source.root = nativePath(spec, sp->Name());
            source.relativeAt = source.root.size() + (source.root.endsWith('/') ? 0 : 1);
        }
        for (const auto& fg : sp->FGs()) {
            PlannedGroup& group = source.groups.emplace_back();
            group.group = fg.get();
            group.source = &source;
            for (const auto& dp : fg->DPs())
                group.destinations.push_back(destination(dp->Name()));
        }
    }
}

QByteArray RunPlan::nativePath(const clsSpecFile& spec, const QString& specPath) {
    QString path = specPath;
    if (QDir::isRelativePath(path))
        path = QDir(spec.Path().isEmpty() ? QDir::currentPath() : spec.Path()).filePath(path);
    return NativePath::withoutTrailingSeparator(QFile::encodeName(path));
}

void RunPlan::addRoots() const {
    for (const PlannedSource& source : m_sources)
        if (!source.various)
            DirectoryHandles::addRoot(source.root);
    for (const PlannedDestination& destination : m_destinations)
        DirectoryHandles::addRoot(destination.base);
}

} // namespace ondrel
