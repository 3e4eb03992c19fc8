#pragma once

#include <QDialog>
#include <QString>

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace ondrel {

// The summary of a staging run: a title line ("Staging Complete!" or "Staging Aborted!") over
// the times, the outcome, the problem files and the counts; OK closes it.
class frmStageInfo : public QDialog {
    Q_OBJECT

public:
    // text has CR LF line breaks and TABs between a count's label and its value.
    frmStageInfo(const QString& title, const QString& text, QWidget* parent = nullptr);

private Q_SLOTS:
    void cmdOK_Click();

private:
    QLabel* lblTitle = nullptr;
    QPlainTextEdit* txtInfo = nullptr;
    QPushButton* cmdOK = nullptr;
};

} // namespace ondrel
