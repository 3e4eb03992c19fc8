#include "spec/clsSpecFile.h"

#include "platform/Convert.h"
#include "platform/MsgBox.h"
#include "platform/ProfileFile.h"

namespace ondrel {

namespace {

// Entries are counted with 16-bit counters: a level may hold at most this many.
constexpr int kMaxEntries = 32767;

const QString kSourcePaths = QStringLiteral("SourcePaths");
const QString kISD = QStringLiteral("ISD");

QString spKey(int i) {
    return QStringLiteral("SP") + QString::number(i);
}
QString fgKey(int j) {
    return QStringLiteral("FG") + QString::number(j);
}
QString dpKey(int k) {
    return QStringLiteral("DP") + QString::number(k);
}
QString fgsSection(int i) {
    return spKey(i) + QStringLiteral("FGs");
}
QString dpsSection(int i, int j) {
    return spKey(i) + fgKey(j) + QStringLiteral("DPs");
}

// Calls f(n, value) for the entries numbered 1, 2, ... of section/key prefix, up to the first
// missing or empty one.
template <typename KeyOf, typename F>
void forEachNumbered(const ProfileFile& file, const QString& section, KeyOf keyOf, F f) {
    for (int n = 1; n <= kMaxEntries; ++n) {
        const QString value = ReadProfileValue(file, section, keyOf(n));
        if (value.isEmpty())
            return;
        f(n, value);
    }
    if (!ReadProfileValue(file, section, keyOf(kMaxEntries + 1)).isEmpty())
        throw Error(ErrNo::Overflow, QStringLiteral("clsSpecFile"));
}

} // namespace

clsSourcePaths& clsSpecFile::SPs() {
    if (!m_sps)
        m_sps = std::make_shared<clsSourcePaths>();
    return *m_sps;
}

const clsSourcePaths& clsSpecFile::SPs() const {
    static const clsSourcePaths none;
    return m_sps ? *m_sps : none;
}

bool clsSpecFile::NewSpecFile() {
    if (m_dirty) {
        const MsgAnswer answer =
            MsgBox(QStringLiteral("Save changes to ") + m_name + QStringLiteral("?"),
                   MsgButtons::YesNoCancel, MsgIcon::Question, QStringLiteral("Save Spec File?"));
        if (answer == MsgAnswer::Cancel)
            return false;
        if (answer == MsgAnswer::Yes)
            SaveSpecFile();
    }
    m_dirty = false;
    m_sps = std::make_shared<clsSourcePaths>();
    return true;
}

bool clsSpecFile::LoadSpecFile(const QString& FileName) {
    if (!NewSpecFile())
        return false;
    try {
        const ProfileFile file = ProfileFile::read(FileName).valueOrThrow();
        if (ReadProfileValue(file, kSourcePaths, spKey(1)).isEmpty()) {
            MsgBox(QStringLiteral("The selected file does not exist or does not contain staging "
                                  "specifications in the required format."),
                   MsgButtons::OK, MsgIcon::Exclamation,
                   QStringLiteral("Spec File Not Found or Invalid"));
            return false;
        }
        readTree(file);
    } catch (const Error& error) {
        // What was read up to the error stays in the tree.
        m_dirty = false;
        MsgBox(QStringLiteral("Error ") + QString::number(error.number()) +
                   QStringLiteral(" occurred while loading Spec File ") + FileName +
                   QStringLiteral("."),
               MsgButtons::OK, MsgIcon::Exclamation, QStringLiteral("Error Loading Spec File"));
        return false;
    }
    m_dirty = false;
    return true;
}

void clsSpecFile::readTree(const ProfileFile& file) {
    clsSourcePaths& sps = SPs();
    forEachNumbered(file, kSourcePaths, spKey, [&](int i, const QString& spName) {
        sps.Add(spName);
        QString isd = ReadProfileValue(file, kISD, spKey(i));
        if (isd.isEmpty())
            isd = QStringLiteral("False");
        const auto sp = sps.Item(spName);
        sp->setInclSubDirs(Convert::toBoolean(isd).valueOrThrow());
        forEachNumbered(file, fgsSection(i), fgKey, [&](int j, const QString& fgName) {
            sp->FGs().Add(fgName);
            forEachNumbered(file, dpsSection(i, j), dpKey, [&](int, const QString& dpName) {
                sp->FGs().Item(fgName)->DPs().Add(dpName);
            });
        });
    });
}

void clsSpecFile::SaveSpecFile() {
    const QString fullName = m_path + m_name;
    // The new content replaces the file whole: nothing of an earlier content survives, and
    // until the new content is complete on disk the old file stays as it was.
    ProfileFile file;
    int i = 0;
    for (const auto& sp : SPs()) {
        ++i;
        file.writeString(kSourcePaths, spKey(i), sp->Name());
        file.writeString(kISD, spKey(i), Convert::booleanText(sp->InclSubDirs()));
        int j = 0;
        for (const auto& fg : sp->FGs()) {
            ++j;
            file.writeString(fgsSection(i), fgKey(j), fg->Name());
            int k = 0;
            for (const auto& dp : fg->DPs())
                file.writeString(dpsSection(i, j), dpKey(++k), dp->Name());
        }
    }
    const Result<void> written = file.write(fullName);
    if (!written.ok()) {
        MsgBox(QStringLiteral("Error ") + QString::number(written.error().number()) +
                   QStringLiteral(" occurred while saving Spec File ") + fullName +
                   QStringLiteral("."),
               MsgButtons::OK, MsgIcon::Exclamation, QStringLiteral("Error Saving Spec File"));
        return;
    }
    m_dirty = false;
}

} // namespace ondrel
