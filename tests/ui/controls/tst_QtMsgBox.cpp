#include "ui/controls/QtMsgBox.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

using namespace ondrel;

Q_DECLARE_METATYPE(ondrel::MsgButtons)
Q_DECLARE_METATYPE(ondrel::MsgIcon)
Q_DECLARE_METATYPE(ondrel::MsgAnswer)

namespace {

// What the user saw in the box before clicking.
struct Seen {
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QStringList buttons;
    QString defaultButton;
    Qt::TextFormat format = Qt::AutoText;
};

} // namespace

class tst_QtMsgBox : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { installQtMsgBoxHandler(); }

    // Each button set shows its buttons, and the button clicked is the answer; each icon shows.
    void boxShowsRequestAndReturnsClick_data() {
        QTest::addColumn<MsgButtons>("buttons");
        QTest::addColumn<MsgIcon>("icon");
        QTest::addColumn<QStringList>("shown");
        QTest::addColumn<QString>("click");
        QTest::addColumn<MsgAnswer>("answer");
        QTest::addColumn<QMessageBox::Icon>("qtIcon");
        QTest::newRow("OK, no icon") << MsgButtons::OK << MsgIcon::None << QStringList{"OK"} << "OK"
                                     << MsgAnswer::OK << QMessageBox::NoIcon;
        QTest::newRow("OK/Cancel, exclamation")
            << MsgButtons::OKCancel << MsgIcon::Exclamation << QStringList{"OK", "Cancel"}
            << "Cancel" << MsgAnswer::Cancel << QMessageBox::Warning;
        QTest::newRow("Abort/Retry/Ignore, critical")
            << MsgButtons::AbortRetryIgnore << MsgIcon::Critical
            << QStringList{"Abort", "Retry", "Ignore"} << "Ignore" << MsgAnswer::Ignore
            << QMessageBox::Critical;
        QTest::newRow("Yes/No/Cancel, question")
            << MsgButtons::YesNoCancel << MsgIcon::Question << QStringList{"Yes", "No", "Cancel"}
            << "No" << MsgAnswer::No << QMessageBox::Question;
        QTest::newRow("Yes/No, information")
            << MsgButtons::YesNo << MsgIcon::Information << QStringList{"Yes", "No"} << "Yes"
            << MsgAnswer::Yes << QMessageBox::Information;
        QTest::newRow("Retry/Cancel, exclamation")
            << MsgButtons::RetryCancel << MsgIcon::Exclamation << QStringList{"Retry", "Cancel"}
            << "Retry" << MsgAnswer::Retry << QMessageBox::Warning;
    }
    void boxShowsRequestAndReturnsClick() {
        QFETCH(MsgButtons, buttons);
        QFETCH(MsgIcon, icon);
        QFETCH(QStringList, shown);
        QFETCH(QString, click);
        QFETCH(MsgAnswer, answer);
        QFETCH(QMessageBox::Icon, qtIcon);

        Seen seen;
        QTimer::singleShot(0, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box);
            seen.title = box->windowTitle();
            seen.text = box->text();
            seen.icon = box->icon();
            seen.format = box->textFormat();
            QAbstractButton* toClick = nullptr;
            for (QAbstractButton* button : box->buttons()) {
                const QString text = button->text().remove(QLatin1Char('&'));
                seen.buttons << text;
                if (text == click)
                    toClick = button;
            }
            if (box->defaultButton())
                seen.defaultButton = box->defaultButton()->text().remove(QLatin1Char('&'));
            QVERIFY(toClick);
            toClick->click();
        });
        const MsgAnswer got = MsgBox(QStringLiteral("Unable to copy <b>x</b>.\r\nSecond line"),
                                     buttons, icon, QStringLiteral("StageFile Error"));

        QCOMPARE(got, answer);
        QCOMPARE(seen.title, QStringLiteral("StageFile Error"));
        // Shown as plain text, the line break as a line break.
        QCOMPARE(seen.text, QStringLiteral("Unable to copy <b>x</b>.\nSecond line"));
        QCOMPARE(seen.format, Qt::PlainText);
        QCOMPARE(seen.icon, qtIcon);
        const QString first = shown.first();
        seen.buttons.sort();
        shown.sort();
        QCOMPARE(seen.buttons, shown);
        // Enter takes the first button of the set.
        QCOMPARE(seen.defaultButton, first);
    }
};

QTEST_MAIN(tst_QtMsgBox)
#include "tst_QtMsgBox.moc"
