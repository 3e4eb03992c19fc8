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

    double Top() const override { return top; }
    void setTop(double v) override { top = v, calls << "Top"; }
    double Left() const override { return left; }
    void setLeft(double v) override { left = v, calls << "Left"; }
    double Height() const override { return height; }
    void setHeight(double v) override {
        height = v, calls << QString("Height loaded=%1").arg(bFormLoaded);
    }
    double Width() const override { return width; }
    void setWidth(double v) override {
        width = v, calls << QString("Width loaded=%1").arg(bFormLoaded);
    }
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

} // namespace

class tst_clsOndrelApp : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void defaults() {
        QTemporaryDir dir;
        clsOndrelApp app(kScreen, dir.path());
        QCOMPARE(app.Top(), 848);
        QCOMPARE(app.Left(), 1298);
        QCOMPARE(app.Height(), 5505);
        QCOMPARE(app.Width(), 7005);
        QCOMPARE(app.SplitterLoc(), 3400);
        QCOMPARE(app.DefaultPath(), QString("/"));
        QVERIFY(!app.SaveSettings() && !app.CreateLog() && !app.DelSource());
        QVERIFY(app.CreateDirs() && app.ShowErrMsgs() && app.InclSys() && app.ShowToolbar());
        QCOMPARE(app.Overwrite(), qint16(0));
        // No options file: reading it changes nothing.
        app.ReadOPTFile();
        QCOMPARE(app.Top(), 848);
        clsOndrelApp odd(FixedScreen(1001, 999), dir.path());
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
        WholeFile::write(dir.filePath("ONDREL.OPT"), "[MRUList]\r\nMRU0File=a.spc\r\n").ok();
        {
            clsOndrelApp app(kScreen, dir.path());
            app.setSaveSettings(true);
            app.setTop(100);
            app.setOverwrite(3);
            app.WriteOPTFile();
        }
        {
            clsOndrelApp app(kScreen, dir.path());
            app.ReadOPTFile();
            QCOMPARE(app.Top(), 100);
            app.setSaveSettings(false);
            app.setTop(200);
            app.setOverwrite(1);
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

    void reading_data() {
        QTest::addColumn<QByteArray>("lines");
        QTest::addColumn<QString>("property");  // "error": reading throws
        QTest::addColumn<QVariant>("expected"); // or the error's number

        QTest::newRow("Top") << QByteArray("Top=-120") << "Top" << QVariant(-120);
        QTest::newRow("empty Top keeps default") << QByteArray("Top=") << "Top" << QVariant(848);
        QTest::newRow("blank Top keeps default") << QByteArray("Top=   ") << "Top" << QVariant(848);
        QTest::newRow("key case ignored")
            << QByteArray("ShowToolbar=False") << "ShowToolbar" << QVariant(false);
        QTest::newRow("flag as number")
            << QByteArray("CreateDirs=0") << "CreateDirs" << QVariant(false);
        QTest::newRow("flag any case")
            << QByteArray("DelSource=TRUE") << "DelSource" << QVariant(true);
        QTest::newRow("half to even down")
            << QByteArray("SplitterLoc=2000.5") << "SplitterLoc" << QVariant(2000);
        QTest::newRow("half to even up")
            << QByteArray("SplitterLoc=2001.5") << "SplitterLoc" << QVariant(2002);
        QTest::newRow("Overwrite out of range kept")
            << QByteArray("Overwrite=7") << "Overwrite" << QVariant(7);
        QTest::newRow("path as it is")
            << QByteArray("DefaultPath=/home/me/web ") << "DefaultPath" << QVariant("/home/me/web");
        QTest::newRow("abc for Top") << QByteArray("Top=abc") << "error" << QVariant(13);
        QTest::newRow("maybe for CreateDirs")
            << QByteArray("CreateDirs=maybe") << "error" << QVariant(13);
        QTest::newRow("Top out of range") << QByteArray("Top=3000000000") << "error" << QVariant(6);
        QTest::newRow("Overwrite out of range")
            << QByteArray("Overwrite=40000") << "error" << QVariant(6);
    }

    void reading() {
        QFETCH(QByteArray, lines);
        QFETCH(QString, property);
        QFETCH(QVariant, expected);
        QTemporaryDir dir;
        QVERIFY(WholeFile::write(dir.filePath("ONDREL.OPT"), "[fsoptions]\n" + lines + "\n").ok());
        clsOndrelApp app(kScreen, dir.path());
        try {
            app.ReadOPTFile();
        } catch (const Error& e) {
            QCOMPARE(property, QString("error"));
            QCOMPARE(QVariant(e.number()), expected);
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
        QCOMPARE(values.value(property), expected);
    }

    void locateMainScreen() {
        QTemporaryDir dir;
        clsOndrelApp app(kScreen, dir.path());
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
        QTemporaryDir dir;
        clsOndrelApp app(kScreen, dir.path());
        FakeMainWindow window;
        window.top = 10.5;
        window.left = 11.5;
        window.height = 4000.4;
        window.width = 6000.6;
        window.splitter = 2999.5;
        app.StoreLocSize(window);
        QCOMPARE(app.Top(), 10);
        QCOMPARE(app.Left(), 12);
        QCOMPARE(app.Height(), 4000);
        QCOMPARE(app.Width(), 6001);
        QCOMPARE(app.SplitterLoc(), 3000);
    }

    void restoreDefaults() {
        QTemporaryDir dir;
        clsOndrelApp app(kScreen, dir.path());
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
        QCOMPARE(app.Top(), 848);
    }
};

QTEST_GUILESS_MAIN(tst_clsOndrelApp)
#include "tst_clsOndrelApp.moc"
