#include "spec/clsSpecFile.h"

#include <QtTest>

using namespace ondrel;

namespace {

// Runs a check against each of the three collections, which must all behave alike.
template <typename F> void forEachCollection(F check) {
    check(clsSourcePaths{});
    check(clsFileGroups{});
    check(clsDestPaths{});
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
    void lookupAndErrors() {
        forEachCollection([](auto c) {
            c.Add("/Data");
            c.Add("/Web");
            QCOMPARE(c.Count(), 2);
            QCOMPARE(c.Item(2)->Name(), QString("/Web"));
            QCOMPARE(c.Item("/DATA")->Name(), QString("/Data"));
            QCOMPARE(errorOf([&] { c.Add("/data"); }), 457);
            QCOMPARE(errorOf([&] { c.Item("/none"); }), 5);
            QCOMPARE(errorOf([&] { c.Item(0); }), 9);
            QCOMPARE(errorOf([&] { c.Item(3); }), 9);
            QCOMPARE(errorOf([&] { c.Remove("/none"); }), 5);
            QCOMPARE(errorOf([&] { c.Remove(-1); }), 9);
            QCOMPARE(names(c), (QStringList{"/Data", "/Web"}));
            c.Remove("/WEB");
            c.Remove(1);
            QCOMPARE(c.Count(), 0);
            // A removed key can be used again.
            c.Add("/Web");
            QCOMPARE(c.Item(1)->Name(), QString("/Web"));
        });
    }

    void renameMovesToTheEnd() {
        forEachCollection([](auto c) {
            auto first = c.Add("a");
            c.Add("b");
            c.Add("c");
            c.Rename("A", "z", first);
            QCOMPARE(names(c), (QStringList{"b", "c", "z"}));
            QCOMPARE(c.Item(3), first);
            QCOMPARE(first->Key(), QString("z"));
            QCOMPARE(c.Item("Z"), first);
            QCOMPARE(errorOf([&] { c.Item("a"); }), 5);
        });
    }

    void renameOntoTakenNameLosesTheItem() {
        forEachCollection([](auto c) {
            auto a = c.Add("a");
            c.Add("b");
            QCOMPARE(errorOf([&] { c.Rename("a", "B", a); }), 457);
            QCOMPARE(names(c), QStringList{"b"});
            QCOMPARE(a->Name(), QString("B"));
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
        QCOMPARE(copy->Item("/SRC")->FGs().Item("*.GIF")->DPs().Count(), 2);
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
