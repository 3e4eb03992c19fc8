#include "platform/ScriptedMsgBox.h"
#include "platform/WholeFile.h"
#include "spec/clsSpecFile.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace ondrel;

namespace {

const QString kNotFoundTitle = "Spec File Not Found or Invalid";
const QString kNotFoundText = "The selected file does not exist or does not contain staging "
                              "specifications in the required format.";

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

} // namespace

class tst_clsSpecFile : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString write(const QString& name, const QByteArray& text) {
        const QString path = m_dir.filePath(name);
        if (!WholeFile::write(path, text).ok())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

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
        const QByteArray saved = saveAs(spec, "Web.spc");
        QVERIFY(!spec.Dirty());
        QCOMPARE(saved, WholeFile::read(fixture("worked-example.spc")).value());
        QVERIFY(boxes.shown().isEmpty());
    }

    void loading_data() {
        QTest::addColumn<QByteArray>("text"); // kNoFile: nothing on disk
        QTest::addColumn<QStringList>("tree");
        QTest::addColumn<QString>("title"); // empty: loads without a message
        QTest::addColumn<int>("error");     // number in "Error N occurred while loading"

        QTest::newRow("SP2 without SP1")
            << crlf("[SourcePaths]\nSP2=/a\n") << QStringList() << kNotFoundTitle << 0;
        QTest::newRow("empty file") << QByteArray() << QStringList() << kNotFoundTitle << 0;
        QTest::newRow("no file") << kNoFile << QStringList() << kNotFoundTitle << 0;
        QTest::newRow("order, case and blank lines ignored")
            << WholeFile::read(fixture("shuffled-lf.spc")).value()
            << QStringList{"/projects/web +sub", "  *.htm", "    /stage/web"} << QString() << 0;
        const QString exact = "/" + QString(253, u'e');
        const QString longer = "/" + QString(300, u'l');
        QTest::newRow("values cut at 254")
            << ("[SourcePaths]\r\nSP1=" + exact + "\r\nSP2=" + longer + "\r\n").toUtf8()
            << QStringList{exact, longer.left(254)} << QString() << 0;
        QByteArray big = "[SourcePaths]\r\nSP1=/a\r\n[SP1FGs]\r\nFG1=*.*\r\n[SP1FG1DPs]\r\n";
        QStringList bigTree{"/a", "  *.*"};
        for (int k = 1; k <= 32768; ++k) {
            big += "DP" + QByteArray::number(k) + "=/d" + QByteArray::number(k) + "\r\n";
            if (k <= 32767)
                bigTree << "    /d" + QString::number(k);
        }
        QTest::newRow("more than 32767 entries overflow")
            << big << bigTree << "Error Loading Spec File" << 6;
        QTest::newRow("entries after a gap are ignored")
            << crlf("[SourcePaths]\nSP1=/a\nSP3=/c\n[SP1FGs]\nFG1=*.*\nFG3=*.x\n")
            << QStringList{"/a", "  *.*"} << QString() << 0;
        QTest::newRow("ISD missing means no sub-directories")
            << crlf("[SourcePaths]\nSP1=/a\n") << QStringList{"/a"} << QString() << 0;
        QTest::newRow("numeric ISD") << crlf("[SourcePaths]\nSP1=/a\n[ISD]\nSP1=-1\n")
                                     << QStringList{"/a +sub"} << QString() << 0;
        QTest::newRow("ISD yes stops after the source path was added")
            << crlf("[SourcePaths]\nSP1=/a\nSP2=/b\n[ISD]\nSP1=yes\n") << QStringList{"/a"}
            << "Error Loading Spec File" << 13;
        // Paths differing only in case are two directories where file names keep case.
        const QByteArray twoCases =
            crlf("[SourcePaths]\nSP1=/Data\nSP2=/DATA\n[SP1FGs]\nFG1=*.c\n[SP1FG1DPs]\nDP1=/x\n"
                 "DP2=/X\n");
#ifdef Q_OS_WIN
        QTest::newRow("paths differing only in case: what came before the duplicate")
            << twoCases << QStringList{"/Data", "  *.c", "    /x"} << "Error Loading Spec File"
            << 457;
#else
        QTest::newRow("paths differing only in case are two entries")
            << twoCases << QStringList{"/Data", "  *.c", "    /x", "    /X", "/DATA"} << QString()
            << 0;
#endif
        QTest::newRow("masks differing only in case: what came before the duplicate")
            << crlf("[SourcePaths]\nSP1=/a\n[SP1FGs]\nFG1=*.c\nFG2=*.C\nFG3=*.h\n")
            << QStringList{"/a", "  *.c"} << "Error Loading Spec File" << 457;
        QTest::newRow("unreached sections ignored")
            << crlf("[SourcePaths]\nSP1=/a\n[SP2FGs]\nFG1=*.*\n[SP1FG2DPs]\nDP1=/x\n")
            << QStringList{"/a"} << QString() << 0;
    }

    void loading() {
        QFETCH(QByteArray, text);
        QFETCH(QStringList, tree);
        QFETCH(QString, title);
        QFETCH(int, error);
        const QString path =
            text == kNoFile ? m_dir.filePath("absent.spc") : write("load.spc", text);
        ScriptedMsgBox boxes;
        clsSpecFile spec;
        spec.setName("keep.spc");
        const bool loaded = spec.LoadSpecFile(path);
        QCOMPARE(loaded, title.isEmpty());
        QCOMPARE(outline(spec), tree);
        QVERIFY(!spec.Dirty());
        QCOMPARE(spec.Name(), QString("keep.spc"));
        if (title.isEmpty()) {
            QVERIFY(boxes.shown().isEmpty());
            return;
        }
        QCOMPARE(boxes.shown().size(), 1);
        const MsgBoxRequest& box = boxes.shown().first();
        QCOMPARE(box.title, title);
        QCOMPARE(box.buttons, MsgButtons::OK);
        QCOMPARE(box.icon, MsgIcon::Exclamation);
        if (error)
            QCOMPARE(box.prompt,
                     QString("Error %1 occurred while loading Spec File %2.").arg(error).arg(path));
        else
            QCOMPARE(box.prompt, kNotFoundText);
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

    void renamedSourcePathIsWrittenLast() {
        clsSpecFile spec;
        auto first = spec.SPs().Add("/one");
        spec.SPs().Add("/two");
        spec.SPs().Rename("/one", "/uno", first);
        QCOMPARE(saveAs(spec, "renamed.spc"),
                 crlf("[SourcePaths]\nSP1=/two\nSP2=/uno\n[ISD]\nSP1=False\nSP2=False\n"));
    }

    // What it saves does not load: the "empty file" row of loading.
    void emptyTreeSavesAnEmptyFile() {
        write("empty.spc", "[SourcePaths]\r\nSP1=/old\r\n");
        clsSpecFile spec;
        QCOMPARE(saveAs(spec, "empty.spc"), QByteArray());
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
        QCOMPARE(boxes.shown().size(), 1);
        const MsgBoxRequest& box = boxes.shown().first();
        QCOMPARE(box.prompt, QString("Error 76 occurred while saving Spec File %1.")
                                 .arg(m_dir.path() + "/no/such/x.spc"));
        QCOMPARE(box.title, QString("Error Saving Spec File"));
        QCOMPARE(box.icon, MsgIcon::Exclamation);
    }

    void newSpecFile_data() {
        QTest::addColumn<bool>("dirty");
        QTest::addColumn<int>("answer"); // MsgAnswer, or -1 for no question
        QTest::addColumn<bool>("result");
        QTest::addColumn<bool>("saved");
        QTest::addColumn<int>("remaining");

        QTest::newRow("clean: nothing asked") << false << -1 << true << false << 0;
        QTest::newRow("dirty, Cancel") << true << int(MsgAnswer::Cancel) << false << false << 1;
        QTest::newRow("dirty, No") << true << int(MsgAnswer::No) << true << false << 0;
        QTest::newRow("dirty, Yes") << true << int(MsgAnswer::Yes) << true << true << 0;
    }

    void newSpecFile() {
        QFETCH(bool, dirty);
        QFETCH(int, answer);
        QFETCH(bool, result);
        QFETCH(bool, saved);
        QFETCH(int, remaining);
        QTemporaryDir dir;
        ScriptedMsgBox boxes;
        if (answer >= 0)
            boxes.queue(MsgAnswer(answer));
        clsSpecFile spec;
        spec.setPath(dir.path() + "/");
        spec.setName("Spec1.spc");
        spec.SPs().Add("<various>");
        spec.setDirty(dirty);
        QCOMPARE(spec.NewSpecFile(), result);
        QCOMPARE(spec.SPs().Count(), remaining);
        QCOMPARE(spec.Dirty(), dirty && !result);
        QCOMPARE(spec.Name(), QString("Spec1.spc"));
        QCOMPARE(QFile::exists(dir.filePath("Spec1.spc")), saved);
        QCOMPARE(boxes.shown().size(), answer >= 0 ? 1 : 0);
        if (answer >= 0) {
            QCOMPARE(boxes.shown().first().prompt, QString("Save changes to Spec1.spc?"));
            QCOMPARE(boxes.shown().first().title, QString("Save Spec File?"));
            QCOMPARE(boxes.shown().first().buttons, MsgButtons::YesNoCancel);
            QCOMPARE(boxes.shown().first().icon, MsgIcon::Question);
        }
    }

    void cancelledSavePromptKeepsTheTree() {
        ScriptedMsgBox boxes;
        boxes.queue(MsgAnswer::Cancel);
        clsSpecFile spec;
        spec.SPs().Add("/mine");
        spec.setDirty(true);
        QVERIFY(!spec.LoadSpecFile(fixture("worked-example.spc")));
        QCOMPARE(outline(spec), QStringList{"/mine"});
        QVERIFY(spec.Dirty());
    }
};

QTEST_GUILESS_MAIN(tst_clsSpecFile)
#include "tst_clsSpecFile.moc"
