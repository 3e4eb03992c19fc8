#include "spec/clsSpecFile.h"

#include <QtTest>

using namespace ondrel;

namespace {

enum Kind { SourcePaths, FileGroups, DestPaths };
const char* const kKindNames[] = {"source paths", "file groups", "destination paths"};

// Runs check on a new, empty collection of the kind: the three share one interface.
template <typename F> void withCollection(int kind, F check) {
    if (kind == SourcePaths)
        return check(clsSourcePaths{});
    if (kind == FileGroups)
        return check(clsFileGroups{});
    check(clsDestPaths{});
}

// Masks match names without regard to case everywhere; paths compare as the file system does.
bool ignoresCase(int kind) {
#ifdef Q_OS_WIN
    return true;
#else
    return kind == FileGroups;
#endif
}

template <typename C> QStringList names(const C& c) {
    QStringList out;
    for (const auto& item : c.NewEnum())
        out << item->Name();
    return out;
}

template <typename F> int errorOf(F f) {
    try {
        f();
    } catch (const Error& e) {
        return e.number();
    }
    return 0;
}

} // namespace

class tst_KeyedCollection : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void lookupAndErrors_data() {
        QTest::addColumn<int>("kind");
        for (int kind = SourcePaths; kind <= DestPaths; ++kind)
            QTest::addRow("%s", kKindNames[kind]) << kind;
    }
    void lookupAndErrors() {
        QFETCH(int, kind);
        const bool ignores = ignoresCase(kind);
        withCollection(kind, [&](auto c) {
            auto data = c.Add("/Data");
            c.Add("/Web");
            QCOMPARE(c.Count(), 2);
            QCOMPARE(c.Item(2)->Name(), QString("/Web"));
            QCOMPARE(c.Item("/Data"), data);
            QCOMPARE(errorOf([&] { c.Add("/Data"); }), 457);
            QCOMPARE(errorOf([&] { c.Item("/DATA"); }), ignores ? 0 : 5);
            QCOMPARE(errorOf([&] { c.Item("/none"); }), 5);
            QCOMPARE(errorOf([&] { c.Item(0); }), 9);
            QCOMPARE(errorOf([&] { c.Item(3); }), 9);
            QCOMPARE(errorOf([&] { c.Remove("/none"); }), 5);
            QCOMPARE(errorOf([&] { c.Remove(-1); }), 9);
            QCOMPARE(names(c), (QStringList{"/Data", "/Web"}));
            c.Remove("/Web");
            c.Remove(1);
            QCOMPARE(c.Count(), 0);
            // A removed key can be used again; one differing only in case is another key where
            // keys keep case.
            c.Add("/Web");
            QCOMPARE(errorOf([&] { c.Add("/WEB"); }), ignores ? 457 : 0);
            QCOMPARE(names(c), (ignores ? QStringList{"/Web"} : QStringList{"/Web", "/WEB"}));
        });
    }

    // Items "a" and "b", then a Rename of "a"'s entry (old and new name): a renamed item moves to
    // the end; a name another entry holds is refused with nothing changed.
    void rename_data() {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QStringList>("oldNew");
        QTest::addColumn<int>("error");
        QTest::addColumn<QStringList>("after");
        const QStringList kept{"a", "b"};
        for (int kind = SourcePaths; kind <= DestPaths; ++kind) {
            const bool ignores = ignoresCase(kind);
            auto row = [kind](const char* name, const QString& from,
                              const QString& to) -> QTestData& {
                return QTest::addRow("%s: %s", kKindNames[kind], name)
                       << kind << QStringList{from, to};
            };
            row("moves to the end", "a", "z") << 0 << QStringList{"b", "z"};
            row("onto a taken name", "a", "b") << 457 << kept;
            row("onto a taken name in another case", "a", "B")
                << (ignores ? 457 : 0) << (ignores ? kept : QStringList{"b", "B"});
            row("own name in another case", "a", "A") << 0 << QStringList{"b", "A"};
            row("old name in another case", "A", "z")
                << (ignores ? 0 : 5) << (ignores ? QStringList{"b", "z"} : kept);
            row("unknown old name", "x", "b") << 5 << kept;
        }
    }
    void rename() {
        QFETCH(int, kind);
        QFETCH(QStringList, oldNew);
        QFETCH(int, error);
        QFETCH(QStringList, after);
        withCollection(kind, [&](auto c) {
            auto a = c.Add("a");
            c.Add("b");
            QCOMPARE(errorOf([&] { c.Rename(oldNew[0], oldNew[1], a); }), error);
            QCOMPARE(names(c), after);
            QCOMPARE(a->Key(), error ? QString("a") : oldNew[1]);
            QCOMPARE(c.Item(a->Key()), a);
        });
    }

    void emptyNames() {
        clsFileGroups groups;
        QCOMPARE(groups.Add("")->Name(), QString("*.*"));
        QCOMPARE(errorOf([&] { groups.Add(""); }), 457);
        QCOMPARE(groups.Item("*.*")->Key(), QString("*.*"));
        clsDestPaths dps;
        QCOMPARE(dps.Add("")->Name(), QString());
        QCOMPARE(dps.Item("")->Name(), QString());
        // Rename does not put in the "*.*" of Add.
        auto g = groups.Item(1);
        groups.Rename("*.*", "", g);
        QCOMPARE(groups.Item(1)->Name(), QString());
    }

    void removingReleasesTheSubtree() {
        clsSourcePaths sps;
        std::weak_ptr<clsDestPath> dp;
        std::weak_ptr<clsFileGroup> fg;
        {
            auto sp = sps.Add("/src");
            fg = sp->FGs().Add("*.htm");
            dp = fg.lock()->DPs().Add("/dst");
        }
        QVERIFY(!dp.expired());
        sps.Remove(1);
        QVERIFY(fg.expired());
        QVERIFY(dp.expired());
    }

    void cloneIsDeepAndIndependent() {
        clsSourcePaths sps;
        auto sp = sps.Add("/src");
        sp->setInclSubDirs(true);
        sp->FGs().Add("*.gif")->DPs().Add("/a");
        auto copy = sps.Clone();
        copy->Item(1)->FGs().Item(1)->DPs().Add("/b");
        copy->Item(1)->setInclSubDirs(false);
        QCOMPARE(sp->FGs().Item(1)->DPs().Count(), 1);
        QVERIFY(sp->InclSubDirs());
        QCOMPARE(copy->Item("/src")->FGs().Item("*.GIF")->DPs().Count(), 2);
    }

    void specFileCreatesItsSourcePathsOnce() {
        clsSpecFile spec;
        QCOMPARE(spec.SPs().Count(), 0);
        spec.SPs().Add("<various>");
        QCOMPARE(&spec.SPs(), &spec.SPs());
        QCOMPARE(spec.SPs().Count(), 1);
    }
};

QTEST_GUILESS_MAIN(tst_KeyedCollection)
#include "tst_KeyedCollection.moc"
