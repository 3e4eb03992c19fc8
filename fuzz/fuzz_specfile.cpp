// Spec file loading: any file loads or is refused with a message; a loaded tree saved and loaded
// again is the same tree, once the reading rule (values cut to 254 characters, blanks trimmed, a
// trailing NUL dropped) has had its say.
#include "fuzz/FuzzSupport.h"
#include "spec/clsSpecFile.h"

#include <QStringList>

using namespace ondrel;
using fuzz::require;

namespace {

// The tree as one line per node, each tagged with its kind, so equal lists are equal trees.
QStringList outline(clsSpecFile& spec) {
    QStringList out;
    for (const auto& sp : spec.SPs()) {
        out << QStringLiteral("SP ") + sp->Name();
        out << QStringLiteral("ISD ") + (sp->InclSubDirs() ? u'1' : u'0');
        for (const auto& fg : sp->FGs()) {
            out << QStringLiteral("FG ") + fg->Name();
            for (const auto& dp : fg->DPs())
                out << QStringLiteral("DP ") + dp->Name();
        }
    }
    return out;
}

// Whether a name reads back as it is written: not cut, trimmed or shortened by the reading rule.
bool readsBackAsWritten(const QString& name) {
    auto blank = [](QChar c) { return c == u' ' || c == u'\t'; };
    return !name.isEmpty() && name.size() <= 254 && !name.contains(QChar(u'\0')) &&
           !blank(name.front()) && !blank(name.back());
}

bool allReadBackAsWritten(clsSpecFile& spec) {
    for (const auto& sp : spec.SPs()) {
        if (!readsBackAsWritten(sp->Name()))
            return false;
        for (const auto& fg : sp->FGs()) {
            if (!readsBackAsWritten(fg->Name()))
                return false;
            for (const auto& dp : fg->DPs())
                if (!readsBackAsWritten(dp->Name()))
                    return false;
        }
    }
    return true;
}

QString saveAs(clsSpecFile& spec, const QString& name) {
    spec.setPath(fuzz::scratchDirectory() + QLatin1Char('/'));
    spec.setName(name);
    spec.setDirty(true);
    spec.SaveSpecFile();
    require(!spec.Dirty(), "SaveSpecFile failed in the scratch directory");
    return spec.Path() + spec.Name();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::answerMessageBoxes();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString input = fuzz::scratchFile(QStringLiteral("input.spc"));
    fuzz::writeFile(input, fuzz::bytesOf(data, size));

    clsSpecFile first;
    if (!first.LoadSpecFile(input))
        return 0;
    const QStringList firstTree = outline(first);
    const QString firstSaved = saveAs(first, QStringLiteral("first.spc"));

    clsSpecFile second;
    const bool secondLoaded = second.LoadSpecFile(firstSaved);
    if (allReadBackAsWritten(first))
        require(secondLoaded && outline(second) == firstTree,
                "a loaded spec saved and loaded again gave another tree");
    // Names the reading rule changed may now collide or end the numbering; what loads is stable.
    if (!secondLoaded)
        return 0;
    const QString secondSaved = saveAs(second, QStringLiteral("second.spc"));
    clsSpecFile third;
    require(third.LoadSpecFile(secondSaved) && outline(third) == outline(second),
            "a spec saved from a saved spec did not load back the same");
    return 0;
}
