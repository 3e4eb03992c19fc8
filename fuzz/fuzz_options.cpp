// Options file reading: any file reads, or fails with error 13 or 6 as documented; the settings
// read are written back (SaveSettings on) into the same file, and read from it they are the
// same settings; read, written and read again once more, they do not change any further.
#include "app/ProgramDirectory.h"
#include "app/clsOndrelApp.h"
#include "fuzz/FuzzSupport.h"
#include "platform/Convert.h"
#include "platform/Error.h"

#include <QDir>
#include <QFile>
#include <QStringList>

using namespace ondrel;
using fuzz::require;

namespace {

const FixedScreen kScreen(9600, 7200);

// Every setting except the two texts, as text.
QStringList numbersAndFlags(const clsOndrelApp& a) {
    auto b = [](bool v) { return Convert::booleanText(v); };
    auto n = [](qint64 v) { return QString::number(v); };
    return {n(a.Top()),           n(a.Left()),          n(a.Height()),
            n(a.Width()),         b(a.ShowStageOpts()), b(a.ShowToolbar()),
            b(a.ShowStatusBar()), n(a.SplitterLoc()),   b(a.ShowConfirmMsgs()),
            b(a.SaveSettings()),  n(a.Overwrite()),     b(a.CreateDirs()),
            b(a.CreateLog()),     b(a.ShowErrMsgs()),   b(a.ResetArchive()),
            b(a.DelSource()),     b(a.InclArc()),       b(a.InclHid()),
            b(a.InclRO()),        b(a.InclSys())};
}

QStringList texts(const clsOndrelApp& a) {
    return {a.DefaultPath(), a.DefaultDrive()};
}

// Whether a text reads back as it is written: not trimmed or shortened by the reading rule.
bool readsBackAsWritten(const QString& text) {
    auto blank = [](QChar c) { return c == u' ' || c == u'\t'; };
    return !text.isEmpty() && !text.contains(QChar(u'\0')) && !blank(text.front()) &&
           !blank(text.back());
}

QString programDirectory(const QString& name) {
    const QString dir = fuzz::scratchFile(name);
    require(QDir().mkpath(dir), "cannot create a program directory");
    return dir;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const QString firstDir = programDirectory(QStringLiteral("first"));
    static const QString secondDir = programDirectory(QStringLiteral("second"));

    // The input is the first program's options file, so the write updates it in place.
    fuzz::writeFile(OptionsFileName(firstDir), fuzz::bytesOf(data, size));
    clsOndrelApp first(kScreen, firstDir);
    try {
        first.ReadOPTFile();
    } catch (const Error& error) {
        // A value that does not convert is passed to the caller; the values before it stay.
        require(error.number() == ErrNo::TypeMismatch || error.number() == ErrNo::Overflow,
                "ReadOPTFile threw an error other than 13 or 6");
    }
    first.setSaveSettings(true);
    first.WriteOPTFile();

    QFile::remove(OptionsFileName(secondDir));
    clsOndrelApp second(kScreen, secondDir);
    try {
        second.ReadOPTFile(OptionsFileName(firstDir));
    } catch (const Error&) {
        require(false, "options written with SaveSettings on did not read back");
    }
    require(numbersAndFlags(second) == numbersAndFlags(first),
            "a number or flag changed through WriteOPTFile and ReadOPTFile");
    const QStringList firstTexts = texts(first);
    const QStringList secondTexts = texts(second);
    for (qsizetype i = 0; i < firstTexts.size(); ++i) {
        if (readsBackAsWritten(firstTexts[i]))
            require(secondTexts[i] == firstTexts[i],
                    "a text changed through WriteOPTFile and ReadOPTFile");
    }

    // Written from the settings just read, into a new file, the settings stay as they are.
    second.WriteOPTFile();
    clsOndrelApp third(kScreen, secondDir);
    try {
        third.ReadOPTFile();
    } catch (const Error&) {
        require(false, "options written into a new file did not read back");
    }
    require(numbersAndFlags(third) == numbersAndFlags(second) && texts(third) == secondTexts,
            "settings read back from a new options file changed");
    return 0;
}
