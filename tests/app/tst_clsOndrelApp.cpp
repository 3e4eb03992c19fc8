#include "app/Module1.h"
#include "app/ProgramDirectory.h"
#include "app/clsOndrelApp.h"
#include "platform/WholeFile.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace ondrel;

namespace {

// A main window that only remembers what was done to it.
class FakeMainWindow : public MainWindowInterface {
public:
    double top = 0, left = 0, height = 0, width = 0, splitter = 0;
    WindowState state = WindowState::Maximized;
    bool toolbar = true, statusBar = true, stageOpts = true;
    QStringList calls;
    static QString loaded() { return QString(" loaded=%1").arg(bFormLoaded); }

    double Top() const override { return top; }
    void setTop(double v) override { top = v, calls << "Top"; }
    double Left() const override { return left; }
    void setLeft(double v) override { left = v, calls << "Left"; }
    double Height() const override { return height; }
    void setHeight(double v) override { height = v, calls << "Height" + loaded(); }
    double Width() const override { return width; }
    void setWidth(double v) override { width = v, calls << "Width" + loaded(); }
    WindowState windowState() const override { return state; }
    void setWindowState(WindowState s) override { state = s; }
    double splitterLeft() const override { return splitter; }
    void SizeControls(double x) override { calls << QString("SizeControls %1").arg(x); }
    bool toolbarVisible() const override { return toolbar; }
    bool statusBarVisible() const override { return statusBar; }
    bool stageOptsVisible() const override { return stageOpts; }
    void ShowToolbar() override { toolbar = true, calls << "ShowToolbar"; }
    void ShowStatusBar() override { statusBar = true, calls << "ShowStatusBar"; }
    void ShowStageOpts() override { stageOpts = true, calls << "ShowStageOpts"; }
};

const FixedScreen kScreen(9600, 7200);

QByteArray fixtureBytes(const char* name) {
    return WholeFile::read(QStringLiteral(ONDREL_TEST_DATA "/") + name).value();
}

// Top, Left, Height, Width and SplitterLoc.
QList<qint32> geometry(const clsOndrelApp& app) {
    return {app.Top(), app.Left(), app.Height(), app.Width(), app.SplitterLoc()};
}
const QList<qint32> kDefaultGeometry = {848, 1298, 5505, 7005, 3400};

} // namespace

class tst_clsOndrelApp : public QObject {
    Q_OBJECT

    QTemporaryDir m_empty; // for the tests that write no options file

private Q_SLOTS:
    void defaults() {
        clsOndrelApp app(kScreen, m_empty.path());
        QCOMPARE(geometry(app), kDefaultGeometry);
        QCOMPARE(app.DefaultPath(), QString("/"));
        QVERIFY(!app.SaveSettings() && !app.CreateLog() && !app.DelSource());
        QVERIFY(app.CreateDirs() && app.ShowErrMsgs() && app.InclSys() && app.ShowToolbar());
        QCOMPARE(app.Overwrite(), qint16(0));
        app.ReadOPTFile(); // no options file: nothing changes
        QCOMPARE(geometry(app), kDefaultGeometry);
        clsOndrelApp odd(FixedScreen(1001, 999), m_empty.path());
        QCOMPARE(odd.Left(), 500 - 3502);
        QCOMPARE(odd.Top(), 499 - 2752);
    }

    void overwriteModeText() {
        const QStringList texts = {"", "If Older", "Prompt", "Always", "Never", ""};
        for (int mode = -1; mode <= 4; ++mode)
            QCOMPARE(OverwriteModeText(qint16(mode)), texts[mode + 1]);
    }

    void optionsFileName() {
        QCOMPARE(OptionsFileName("/"), QString("/ONDREL.OPT"));
        QCOMPARE(OptionsFileName("/opt/tools"), QString("/opt/tools/ONDREL.OPT"));
        QCOMPARE(OptionsFileName("/opt/tools/"), QString("/opt/tools/ONDREL.OPT"));
    }

    // An install (its desktop entry beside the bin folder) keeps its options in the user's
    // configuration directory; any other copy beside itself.
    void programDirectory_data() {
        QTest::addColumn<bool>("installed");
        QTest::newRow("installed: $XDG_CONFIG_HOME/ondrel") << true;
        QTest::newRow("build tree or portable folder: beside itself") << false;
    }

    void programDirectory() {
        QFETCH(bool, installed);
        QTemporaryDir root;
        const QString bin = root.filePath("usr/bin");
        QVERIFY(QDir().mkpath(bin));
        if (installed) {
            const QString entry = QDir::cleanPath(bin + "/" ONDREL_INSTALLED_MARKER);
            QVERIFY(QDir().mkpath(QFileInfo(entry).path()));
            QVERIFY(WholeFile::write(entry, "[Desktop Entry]\n").ok());
        }
        const QByteArray saved = qgetenv("XDG_CONFIG_HOME");
        qputenv("XDG_CONFIG_HOME", root.filePath("config").toUtf8());
        const QString dir = ProgramDirectoryFor(bin);
        saved.isNull() ? qunsetenv("XDG_CONFIG_HOME") : qputenv("XDG_CONFIG_HOME", saved);
        QCOMPARE(IsInstalledProgramDirectory(bin), installed);
        QCOMPARE(dir, installed ? root.filePath("config/ondrel") : bin);
        QVERIFY(QFileInfo(dir).isDir());
    }

    void writing_data() {
        QTest::addColumn<bool>("saveSettings");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("defaults, line for line") << true << fixtureBytes("options-example.opt");
        QTest::newRow("SaveSettings off: only the flag")
            << false << QByteArray("[FSOptions]\r\nSaveSettings=False\r\n");
    }

    void writing() {
        QFETCH(bool, saveSettings);
        QFETCH(QByteArray, expected);
        QTemporaryDir dir;
        clsOndrelApp app(kScreen, dir.path());
        app.setSaveSettings(saveSettings);
        app.WriteOPTFile();
        QCOMPARE(WholeFile::read(dir.filePath("ONDREL.OPT")).value(), expected);
    }

    void turningSaveSettingsOffKeepsWhatWasSaved() {
        QTemporaryDir dir;
        QVERIFY(
            WholeFile::write(dir.filePath("ONDREL.OPT"), "[MRUList]\r\nMRU0File=a.spc\r\n").ok());
        for (const bool save : {true, false}) { // a run that saves, then one that does not
            clsOndrelApp app(kScreen, dir.path());
            if (!save)
                app.ReadOPTFile();
            app.setSaveSettings(save);
            app.setTop(save ? 100 : 200);
            app.setOverwrite(save ? 3 : 1);
            app.WriteOPTFile();
        }
        clsOndrelApp app(kScreen, dir.path());
        app.ReadOPTFile();
        QCOMPARE(app.Top(), 100);
        QCOMPARE(app.Overwrite(), qint16(3));
        QVERIFY(!app.SaveSettings());
        QCOMPARE(app.ReadINIFile("mru0file", "mrulist", app.OptionsFile()), QString("a.spc"));
    }

    // Texts ending in NULs: the reading rule drops one, writing writes none, so what is read
    // back is the text without them and a second write changes nothing more.
    void trailingNulsAreNotWrittenBack() {
        QTemporaryDir dir;
        QVERIFY(
            WholeFile::write(dir.filePath("ONDREL.OPT"), fixtureBytes("trailing-nuls.opt")).ok());
        {
            clsOndrelApp app(kScreen, dir.path());
            app.ReadOPTFile();
            app.setSaveSettings(true);
            app.WriteOPTFile();
        }
        const QByteArray once = WholeFile::read(dir.filePath("ONDREL.OPT")).value();
        QVERIFY(!once.contains('\0'));
        clsOndrelApp app(kScreen, dir.path());
        app.ReadOPTFile();
        QCOMPARE(app.DefaultPath(), QString("/home/user/My Documents"));
        QCOMPARE(app.DefaultDrive(), QString("/mnt/usb"));
        QCOMPARE(app.SplitterLoc(), 2000);
        app.WriteOPTFile();
        QCOMPARE(WholeFile::read(dir.filePath("ONDREL.OPT")).value(), once);
    }

    // One line of [FSOptions] and the property it names afterwards, or "error N": reading throws.
    void reading_data() {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QVariant>("expected");
        auto row = [](const char* name, const char* line, const QVariant& expected) {
            QTest::newRow(name) << QByteArray(line) << expected;
        };
        row("Top", "Top=-120", -120);
        row("empty Top keeps default", "Top=", 848);
        row("blank Top keeps default", "Top=   ", 848);
        row("key case ignored", "ShowToolbar=False", false);
        row("flag as number", "CreateDirs=0", false);
        row("flag any case", "DelSource=TRUE", true);
        row("half to even down", "SplitterLoc=2000.5", 2000);
        row("half to even up", "SplitterLoc=2001.5", 2002);
        row("Overwrite out of range kept", "Overwrite=7", 7);
        row("path as it is", "DefaultPath=/home/me/web ", "/home/me/web");
        row("abc for Top", "Top=abc", "error 13");
        row("maybe for CreateDirs", "CreateDirs=maybe", "error 13");
        row("Top out of range", "Top=3000000000", "error 6");
        row("Overwrite out of range", "Overwrite=40000", "error 6");
    }

    void reading() {
        QFETCH(QByteArray, line);
        QFETCH(QVariant, expected);
        QTemporaryDir dir;
        QVERIFY(WholeFile::write(dir.filePath("ONDREL.OPT"), "[fsoptions]\n" + line + "\n").ok());
        clsOndrelApp app(kScreen, dir.path());
        try {
            app.ReadOPTFile();
        } catch (const Error& e) {
            QCOMPARE(QVariant("error " + QString::number(e.number())), expected);
            return;
        }
        const QHash<QString, QVariant> values = {
            {"Top", app.Top()},
            {"ShowToolbar", app.ShowToolbar()},
            {"CreateDirs", app.CreateDirs()},
            {"DelSource", app.DelSource()},
            {"SplitterLoc", app.SplitterLoc()},
            {"Overwrite", int(app.Overwrite())},
            {"DefaultPath", app.DefaultPath()},
        };
        QCOMPARE(values.value(QString(line.left(line.indexOf('=')))), expected);
    }

    void locateMainScreen() {
        clsOndrelApp app(kScreen, m_empty.path());
        FakeMainWindow window;
        bFormLoaded = true;
        app.LocateMainScreen(window);
        QCOMPARE(window.calls, (QStringList{"Top", "Left", "Height loaded=0", "Width loaded=0",
                                            "SizeControls 3400"}));
        QVERIFY(bFormLoaded);
        QCOMPARE(window.top, 848.0);
        QCOMPARE(window.width, 7005.0);
    }

    void storeLocSizeRounds() {
        clsOndrelApp app(kScreen, m_empty.path());
        FakeMainWindow window;
        window.top = 10.5;
        window.left = 11.5;
        window.height = 4000.4;
        window.width = 6000.6;
        window.splitter = 2999.5;
        app.StoreLocSize(window); // to the nearest, half to even
        QCOMPARE(geometry(app), (QList<qint32>{10, 12, 4000, 6001, 3000}));
    }

    void restoreDefaults() {
        clsOndrelApp app(kScreen, m_empty.path());
        app.setShowToolbar(false);
        app.setOverwrite(3);
        app.setTop(-5);
        FakeMainWindow window;
        window.toolbar = false;
        window.stageOpts = false;
        app.RestoreDefaults(window);
        QCOMPARE(window.calls, (QStringList{"ShowToolbar", "ShowStageOpts"}));
        QCOMPARE(window.state, WindowState::Normal);
        QVERIFY(app.ShowToolbar());
        QCOMPARE(app.Overwrite(), qint16(0));
        QCOMPARE(geometry(app), kDefaultGeometry);
    }
};

QTEST_GUILESS_MAIN(tst_clsOndrelApp)
#include "tst_clsOndrelApp.moc"
