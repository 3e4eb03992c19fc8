#include "staging/frmStageInfo.h"
#include "platform/SlotBarrier.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyle>
#include <QTextDocument>
#include <QVBoxLayout>

#include <algorithm>

namespace ondrel {

namespace {

// The summary's values follow a TAB after their labels ("# of Files Copied:", "End Date/Time:").
// One tab stop just past the widest such label puts all values in one column, whatever the font.
qreal tabStopFor(const QString& text, const QFontMetrics& metrics) {
    int widest = 0;
    for (const QStringView line : QStringView(text).split(u'\n')) {
        const qsizetype tab = line.indexOf(u'\t');
        if (tab > 0)
            widest = std::max(widest, metrics.horizontalAdvance(line.left(tab).toString()));
    }
    return widest + metrics.horizontalAdvance(QStringLiteral("MM"));
}

// Room for the text without scrolling where that fits on a screen: a short summary gets a small
// window, a long list of problem files a tall one that scrolls.
QSize textAreaFor(const QString& text, const QFontMetrics& metrics, qreal tabStop) {
    constexpr int kMinLines = 8;
    constexpr int kMaxLines = 24;
    constexpr int kMeasuredLines = 1000; // enough to find the usual width of a long list
    int lines = 0;
    int widest = 0;
    for (const QStringView line : QStringView(text).split(u'\n')) {
        if (lines++ < kMeasuredLines) {
            const qsizetype tab = line.indexOf(u'\t');
            const int width =
                tab < 0 ? metrics.horizontalAdvance(line.toString())
                        : int(tabStop) + metrics.horizontalAdvance(line.mid(tab + 1).toString());
            widest = std::max(widest, width);
        }
    }
    return {std::clamp(widest, 380, 720),
            std::clamp(lines, kMinLines, kMaxLines) * metrics.lineSpacing()};
}

} // namespace

frmStageInfo::frmStageInfo(const QString& title, const QString& text, QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("frmStageInfo"));
    setWindowTitle(title);
    setModal(true);

    lblTitle = new QLabel(title);
    lblTitle->setObjectName(QStringLiteral("lblTitle"));
    lblTitle->setTextFormat(Qt::PlainText);
    QFont titleFont = lblTitle->font();
    titleFont.setBold(true);
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.25);
    lblTitle->setFont(titleFont);

    // The summary lists every problem file, which may be thousands: it scrolls, and a long path
    // stays on one line rather than breaking into the next entry.
    const QString lines = QString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    txtInfo = new QPlainTextEdit;
    txtInfo->setObjectName(QStringLiteral("txtInfo"));
    txtInfo->setReadOnly(true);
    txtInfo->setLineWrapMode(QPlainTextEdit::NoWrap);
    const qreal tabStop = tabStopFor(lines, txtInfo->fontMetrics());
    txtInfo->setTabStopDistance(tabStop);
    txtInfo->setPlainText(lines);
    // The title is the summary's caption, and so its name for a screen reader.
    lblTitle->setBuddy(txtInfo);

    cmdOK = new QPushButton(QStringLiteral("OK"));
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    connect(cmdOK, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdOK_Click"), this, &frmStageInfo::cmdOK_Click));

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdOK);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblTitle);
    layout->addWidget(txtInfo, 1);
    layout->addLayout(buttons);

    // The text area plus the frame, document margins and scroll bar around it, and the title
    // and the button row above and below.
    const QSize area = textAreaFor(lines, txtInfo->fontMetrics(), tabStop);
    const int chrome = 2 * (txtInfo->frameWidth() + int(txtInfo->document()->documentMargin())) +
                       style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    const QMargins margins = layout->contentsMargins();
    resize(margins.left() + margins.right() + area.width() + chrome,
           margins.top() + margins.bottom() + lblTitle->sizeHint().height() +
               cmdOK->sizeHint().height() + 2 * layout->spacing() + area.height() + chrome);
    cmdOK->setFocus();
}

void frmStageInfo::cmdOK_Click() {
    accept();
}

} // namespace ondrel
