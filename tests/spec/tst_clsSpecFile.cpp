#include "platform/ScriptedMsgBox.h"
#include "platform/WholeFile.h"
#include "spec/clsSpecFile.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace ondrel;

namespace {

const QString kNotFound = "[!] Spec File Not Found or Invalid: The selected file does not exist or "
                          "does not contain staging specifications in the required format.";

// The box a load that failed with error number shows; "~" is the file's name.
QString loadError(int number) {
    return QString("[!] Error Loading Spec File: Error %1 occurred while loading Spec File ~.")
        .arg(number);
}

const QByteArray kNoFile = "<no file>";

QString fixture(const char* name) {
    return QStringLiteral(ONDREL_TEST_DATA "/") + name;
}

QByteArray crlf(QByteArray text) {
    return text.replace("\n", "\r\n");
}

// Every path of the tree, one line per node, indented by level.
QStringList outline(clsSpecFile& spec) {
    QStringList out;
    for (const auto& sp : spec.SPs()) {
        out << sp->Name() + (sp->InclSubDirs() ? " +sub" : "");
        for (const auto& fg : sp->FGs()) {
            out << "  " + fg->Name();
            for (const auto& dp : fg->DPs())
                out << "    " + dp->Name();
        }
    }
    return out;
}

// The message boxes as the user sees them: [!] exclamation with OK, [?] question with Yes, No
// and Cancel.
QStringList shown(const ScriptedMsgBox& boxes) {
    QStringList all;
    for (const MsgBoxRequest& box : boxes.shown()) {
        const bool ok = box.icon == MsgIcon::Exclamation && box.buttons == MsgButtons::OK;
        const bool ask = box.icon == MsgIcon::Question && box.buttons == MsgButtons::YesNoCancel;
        all << QString(ok ? "[!] " : ask ? "[?] " : "[bad] ") + box.title + ": " + box.prompt;
    }
    return all;
}

} // namespace

class tst_clsSpecFile : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    // Saves the spec in the test's directory under name; returns what was written.
    QByteArray saveAs(clsSpecFile& spec, const QString& name) {
        spec.setPath(m_dir.path() + "/");
        spec.setName(name);
        spec.SaveSpecFile();
        return WholeFile::read(m_dir.filePath(name)).value();
    }

private Q_SLOTS:
    void workedExampleRoundTrip() {
        ScriptedMsgBox boxes;
        clsSpecFile spec;
        QVERIFY(spec.LoadSpecFile(fixture("worked-example.spc")));
        QCOMPARE(outline(spec),
                 (QStringList{"C:\\Projects\\Web +sub", "  *.htm;*.html", "    D:\\Stage\\Web",
                              "    E:\\Mirror\\Web", "  *.gif;*.jpg", "    D:\\Stage\\Web\\Images",
                              "<various>", "  *.*", "    D:\\Stage\\Misc"}));
        QVERIFY(!spec.Dirty());
        spec.setDirty(true);
        QCOMPARE(saveAs(spec, "Web.spc"), WholeFile::read(fixture("worked-example.spc")).value());
        QVERIFY(!spec.Dirty());
        QVERIFY(boxes.shown().isEmpty());
    }

    void loading_data() {
        QTest::addColumn<QByteArray>("text"); // kNoFile: nothing on disk
        QTest::addColumn<QStringList>("tree");
        QTest::addColumn<QString>("box"); // empty: loads without a message

        QTest::newRow("SP2 without SP1")
            << crlf("[SourcePaths]\nSP2=/a\n") << QStringList() << kNotFound;
        QTest::newRow("empty file") << QByteArray() << QStringList() << kNotFound;
        QTest::newRow("no file") << kNoFile << QStringList() << kNotFound;
        QTest::newRow("order, case and blank lines ignored")
            << WholeFile::read(fixture("shuffled-lf.spc")).value()
            << QStringList{"/projects/web +sub", "  *.htm", "    /stage/web"} << QString();
        const QString exact = "/" + QString(253, u'e');
        const QString longer = "/" + QString(300, u'l');
        QTest::newRow("values cut at 254")
            << ("[SourcePaths]\r\nSP1=" + exact + "\r\nSP2=" + longer + "\r\n").toUtf8()
            << QStringList{exact, longer.left(254)} << QString();
        QByteArray big = "[SourcePaths]\r\nSP1=/a\r\n[SP1FGs]\r\nFG1=*.*\r\n[SP1FG1DPs]\r\n";
        QStringList bigTree{"/a", "  *.*"};
        for (int k = 1; k <= 32768; ++k) {
            big += "DP" + QByteArray::number(k) + "=/d" + QByteArray::number(k) + "\r\n";
            if (k <= 32767)
                bigTree << "    /d" + QString::number(k);
        }
        QTest::newRow("more than 32767 entries overflow") << big << bigTree << loadError(6);
        QTest::newRow("entries after a gap are ignored")
            << crlf("[SourcePaths]\nSP1=/a\nSP3=/c\n[SP1FGs]\nFG1=*.*\nFG3=*.x\n")
            << QStringList{"/a", "  *.*"} << QString();
        QTest::newRow("numeric ISD") << crlf("[SourcePaths]\nSP1=/a\n[ISD]\nSP1=-1\n")
                                     << QStringList{"/a +sub"} << QString();
        QTest::newRow("ISD yes stops after the source path was added")
            << crlf("[SourcePaths]\nSP1=/a\nSP2=/b\n[ISD]\nSP1=yes\n") << QStringList{"/a"}
            << loadError(13);
        // Paths differing only in case are two directories where file names keep case.
        const QByteArray twoCases =
            crlf("[SourcePaths]\nSP1=/Data\nSP2=/DATA\n[SP1FGs]\nFG1=*.c\n[SP1FG1DPs]\nDP1=/x\n"
                 "DP2=/X\n");
#ifdef Q_OS_WIN
        QTest::newRow("paths differing only in case: what came before the duplicate")
            << twoCases << QStringList{"/Data", "  *.c", "    /x"} << loadError(457);
#else
        QTest::newRow("paths differing only in case are two entries")
            << twoCases << QStringList{"/Data", "  *.c", "    /x", "    /X", "/DATA"} << QString();
#endif
        QTest::newRow("masks differing only in case: what came before the duplicate")
            << crlf("[SourcePaths]\nSP1=/a\n[SP1FGs]\nFG1=*.c\nFG2=*.C\nFG3=*.h\n")
            << QStringList{"/a", "  *.c"} << loadError(457);
        QTest::newRow("unreached sections ignored")
            << crlf("[SourcePaths]\nSP1=/a\n[SP2FGs]\nFG1=*.*\n[SP1FG2DPs]\nDP1=/x\n")
            << QStringList{"/a"} << QString();
    }

    void loading() {
        QFETCH(QByteArray, text);
        QFETCH(QStringList, tree);
        QFETCH(QString, box);
        const QString path = m_dir.filePath(text == kNoFile ? "absent.spc" : "load.spc");
        if (text != kNoFile)
            QVERIFY(WholeFile::write(path, text).ok());
        ScriptedMsgBox boxes;
        clsSpecFile spec;
        spec.setName("keep.spc");
        QCOMPARE(spec.LoadSpecFile(path), box.isEmpty());
        QCOMPARE(outline(spec), tree);
        QVERIFY(!spec.Dirty());
        QCOMPARE(spec.Name(), QString("keep.spc"));
        QCOMPARE(shown(boxes),
                 box.isEmpty() ? QStringList() : QStringList{box.replace(u'~', path)});
    }

    // Values ending in NULs: the reading rule drops one, saving writes none, so the second save
    // writes what the first did.
    void trailingNulsSettleAfterOneSave() {
        ScriptedMsgBox boxes;
        const QByteArray clean = crlf("[SourcePaths]\nSP1=/data/src\n[ISD]\nSP1=True\n[SP1FGs]\n"
                                      "FG1=*.txt\n[SP1FG1DPs]\nDP1=/backup/text\n");
        QString from = fixture("trailing-nuls.spc");
        for (const char* name : {"once.spc", "twice.spc"}) {
            clsSpecFile spec;
            QVERIFY(spec.LoadSpecFile(from));
            QCOMPARE(saveAs(spec, name), clean);
            from = m_dir.filePath(name);
        }
        QVERIFY(boxes.shown().isEmpty());
    }

    // A renamed source path is written last; an empty tree then empties the file, which then
    // does not load (the "empty file" row of loading).
    void savingWritesTheTreeAsItIsNow() {
        clsSpecFile spec;
        auto first = spec.SPs().Add("/one");
        spec.SPs().Add("/two");
        spec.SPs().Rename("/one", "/uno", first);
        QCOMPARE(saveAs(spec, "renamed.spc"),
                 crlf("[SourcePaths]\nSP1=/two\nSP2=/uno\n[ISD]\nSP1=False\nSP2=False\n"));
        QVERIFY(spec.NewSpecFile());
        QCOMPARE(saveAs(spec, "renamed.spc"), QByteArray());
    }

    void saveFailureKeepsDirty() {
        ScriptedMsgBox boxes;
        clsSpecFile spec;
        spec.SPs().Add("/a");
        spec.setDirty(true);
        spec.setPath(m_dir.path() + "/no/such/");
        spec.setName("x.spc");
        spec.SaveSpecFile();
        QVERIFY(spec.Dirty());
        QCOMPARE(shown(boxes), QStringList{"[!] Error Saving Spec File: Error 76 occurred while "
                                           "saving Spec File " +
                                           m_dir.path() + "/no/such/x.spc."});
    }

    // NewSpecFile, and LoadSpecFile, which begins with it, on a spec with one source path: a
    // dirty one asks first; Cancel keeps everything, Yes saves before the tree is emptied.
    void newSpecFile_data() {
        QTest::addColumn<bool>("load");
        QTest::addColumn<int>("answer"); // MsgAnswer; -1: the spec is clean, nothing is asked

        QTest::newRow("clean: nothing asked") << false << -1;
        QTest::newRow("dirty, Cancel") << false << int(MsgAnswer::Cancel);
        QTest::newRow("dirty, No") << false << int(MsgAnswer::No);
        QTest::newRow("dirty, Yes") << false << int(MsgAnswer::Yes);
        QTest::newRow("load, dirty, Cancel: nothing is loaded") << true << int(MsgAnswer::Cancel);
    }

    void newSpecFile() {
        QFETCH(bool, load);
        QFETCH(int, answer);
        const bool cancel = answer == int(MsgAnswer::Cancel);
        QTemporaryDir dir;
        ScriptedMsgBox boxes;
        if (answer >= 0)
            boxes.queue(MsgAnswer(answer));
        clsSpecFile spec;
        spec.setPath(dir.path() + "/");
        spec.setName("Spec1.spc");
        spec.SPs().Add("<various>");
        spec.setDirty(answer >= 0);
        QCOMPARE(load ? spec.LoadSpecFile(fixture("worked-example.spc")) : spec.NewSpecFile(),
                 !cancel);
        QCOMPARE(outline(spec), cancel ? QStringList{"<various>"} : QStringList());
        QCOMPARE(spec.Dirty(), cancel);
        QCOMPARE(spec.Name(), QString("Spec1.spc"));
        QCOMPARE(QFile::exists(dir.filePath("Spec1.spc")), answer == int(MsgAnswer::Yes));
        QCOMPARE(shown(boxes), answer < 0 ? QStringList()
                                          : QStringList{"[?] Save Spec File?: Save changes to "
                                                        "Spec1.spc?"});
    }
};

QTEST_GUILESS_MAIN(tst_clsSpecFile)
#include "tst_clsSpecFile.moc"
