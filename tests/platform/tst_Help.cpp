#include "platform/Help.h"
#include "platform/ScriptedHelp.h"

#include <QtTest>

#include <stdexcept>

using namespace ondrel;

class tst_Help : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // What a window asks for reaches the installed handler unchanged, in order.
    void requestsReachHandler() {
        ScriptedHelp help;
        ShowHelp(0, HelpCommand::Contents);
        ShowHelp(0, HelpCommand::PartialKey);
        ShowHelp(5, HelpCommand::Context);
        const QList<HelpRequest> expected{
            {0, HelpCommand::Contents}, {0, HelpCommand::PartialKey}, {5, HelpCommand::Context}};
        QCOMPARE(help.requests(), expected);
        QCOMPARE(static_cast<int>(HelpCommand::PartialKey), 261);
    }

    // A scoped handler serves only while it lives, also when its task ends by an exception,
    // and the handler before it serves again afterwards.
    void scopedHandlerRestoresPrevious() {
        ScriptedHelp outer;
        QList<int> inner;
        {
            ScopedHelpHandler scoped([&](const HelpRequest& r) { inner.append(r.context); });
            ShowHelp(11, HelpCommand::Context);
        }
        try {
            ScopedHelpHandler scoped([&](const HelpRequest& r) { inner.append(r.context); });
            ShowHelp(12, HelpCommand::Context);
            throw std::runtime_error("task failed");
        } catch (const std::runtime_error&) {
        }
        ShowHelp(13, HelpCommand::Context);
        QCOMPARE(inner, (QList<int>{11, 12}));
        QCOMPARE(outer.requests(), (QList<HelpRequest>{{13, HelpCommand::Context}}));
    }

    // Installing no handler puts the fallback back rather than leaving help without one.
    void emptyHandlerRestoresFallback() {
        int calls = 0;
        const HelpHandler before = setHelpHandler([&](const HelpRequest&) { ++calls; });
        const HelpHandler mine = setHelpHandler({});
        QVERIFY(mine);
        ShowHelp(0, HelpCommand::Contents); // the fallback: one line on standard error
        QCOMPARE(calls, 0);
        setHelpHandler(before);
    }
};

QTEST_GUILESS_MAIN(tst_Help)
#include "tst_Help.moc"
