#include "app/MainWindowLayout.h"

#include <QtTest>

using namespace ondrel;

namespace {

MainWindowLayout::Window window(bool toolbar) {
    return {.outerWidth = 7005,
            .innerHeight = 4800,
            .toolbarVisible = toolbar,
            .toolbarHeight = 420,
            .titleTop = toolbar ? 420.0 : 0.0,
            .titleHeight = 300,
            .splitter = {3390, 420, 90, 4500}};
}

} // namespace

class tst_MainWindowLayout : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sizeControls_data() {
        QTest::addColumn<double>("x");
        QTest::addColumn<bool>("toolbar");
        QTest::addColumn<double>("splitter");
        QTest::addColumn<double>("listLeft");
        QTest::addColumn<double>("treeTop");
        QTest::addColumn<double>("treeHeight");
        // Rounded to a whole number (half to even), then down to the 30-twip grid.
        QTest::newRow("1519 snaps to 1500")
            << 1519.0 << true << 1500.0 << 1530.0 << 720.0 << 4080.0;
        QTest::newRow("3400 snaps to 3390")
            << 3400.0 << true << 3390.0 << 3420.0 << 720.0 << 4080.0;
        QTest::newRow("1529.5 rounds to 1530")
            << 1529.5 << true << 1530.0 << 1560.0 << 720.0 << 4080.0;
        QTest::newRow("tool bar hidden: panes move up")
            << 3400.0 << false << 3390.0 << 3420.0 << 300.0 << 4500.0;
    }

    void sizeControls() {
        QFETCH(double, x);
        QFETCH(bool, toolbar);
        const MainWindowLayout::Panes p = MainWindowLayout::SizeControls(x, window(toolbar));
        QFETCH(double, splitter);
        QCOMPARE(p.splitter.left, splitter);
        QCOMPARE(p.tree.width, p.splitter.left);
        QCOMPARE(p.treeCaption.width, p.tree.width);
        QFETCH(double, listLeft);
        QCOMPARE(p.list.left, listLeft);
        QCOMPARE(p.list.width, 7005 - (p.list.left + 100));
        QCOMPARE(p.optionColumnWidth, (p.list.width - 650) * 0.75);
        QCOMPARE(p.settingColumnWidth, (p.list.width - 650) * 0.25);
        QCOMPARE(p.listCaption.left, p.list.left + 10);
        QCOMPARE(p.listCaption.width, p.list.width - 30);
        QFETCH(double, treeTop);
        QCOMPARE(p.tree.top, treeTop);
        QCOMPARE(p.list.top, p.tree.top);
        QFETCH(double, treeHeight);
        QCOMPARE(p.tree.height, treeHeight);
        QCOMPARE(p.list.height, p.tree.height);
        // The drag bar is readied from the splitter as it stood; the splitter spans title and tree.
        QCOMPARE(p.dragBar, (TwipsRect{p.splitter.left, 420, 45, 4480}));
        QCOMPARE(p.splitter.top, toolbar ? 420.0 : 0.0);
        QCOMPARE(p.splitter.height, p.tree.height + 300);
    }

    void limits_data() {
        QTest::addColumn<double>("x");
        QTest::addColumn<double>("drag");
        QTest::addColumn<double>("resize");
        // Window 7005 twips wide: the splitter keeps 1500 from either edge while dragged; a resize
        // only pulls a stored position back from the right edge.
        QTest::newRow("dragged to 200") << 200.0 << 1500.0 << 200.0;
        QTest::newRow("inside") << 3400.0 << 3400.0 << 3400.0;
        QTest::newRow("right edge") << 5505.0 << 5505.0 << 5505.0;
        QTest::newRow("past the right limit") << 6000.0 << 5505.0 << 5505.0;
    }

    void limits() {
        QFETCH(double, x);
        QFETCH(double, drag);
        QCOMPARE(MainWindowLayout::dragPosition(x, 7005), drag);
        QFETCH(double, resize);
        QCOMPARE(MainWindowLayout::resizedSplitter(x, 7005), resize);
        QCOMPARE(MainWindowLayout::hiddenPaneSplitter(7005), 6885.0);
    }

    void columnWidths_data() {
        QTest::addColumn<double>("listWidth");
        QTest::addColumn<double>("option");
        QTest::addColumn<double>("setting");
        // The longest label needs 3045 twips, the longest value 810; the list's frame takes 30.
        QTest::newRow("wide: the shares divide what the texts leave")
            << 7000.0 << 3045 + (7000 - 650 - 3855) * 0.75 << 810 + (7000 - 650 - 3855) * 0.25;
        QTest::newRow("exactly wide enough with the reserve") << 4505.0 << 3045.0 << 810.0;
        QTest::newRow("default width: the reserve given up, labels first")
            << 3485.0 << 3045.0 << 3485 - 30 - 3045.0;
        QTest::newRow("narrower than a label") << 2000.0 << 1970.0 << 0.0;
    }

    void columnWidths() {
        QFETCH(double, listWidth);
        MainWindowLayout::Window w = window(true);
        w.optionColumnNeeds = 3045;
        w.settingColumnNeeds = 810;
        w.listFrame = 30;
        const MainWindowLayout::Columns c = MainWindowLayout::columnWidths(listWidth, w);
        QFETCH(double, option);
        QCOMPARE(c.option, option);
        QFETCH(double, setting);
        QCOMPARE(c.setting, setting);
    }
};

QTEST_GUILESS_MAIN(tst_MainWindowLayout)
#include "tst_MainWindowLayout.moc"
