#include "ui/editor/FileGroupsPage.h"

#include "app/FileGroupMasks.h"
#include "platform/MsgBox.h"
#include "platform/SlotBarrier.h"
#include "spec/clsSourcePaths.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/editor/frmCESpecs.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QCoreApplication>
#include <QFocusEvent>
#include <QGridLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTableWidget>
#include <QVBoxLayout>

#include <cmath>

namespace ondrel {

namespace {

// The grid's measures, in twips: the row-header column and each mask cell.
constexpr int kHeaderColumnTwips = 500;
constexpr int kCellTwips = 1750;

const QString kTitle = QStringLiteral("Create/Edit File Groups");

int twipsToPixels(const QWidget* widget, int twips) {
    return static_cast<int>(std::lround(twips * widget->logicalDpiX() / 1440.0));
}

QPushButton* makeButton(const QString& caption, const QString& name, QWidget* parent) {
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(name);
    return button;
}

} // namespace

FileGroupsPage::FileGroupsPage(frmCESpecs& editor, QWidget* parent) : EditorPage(editor, parent) {
    setObjectName(QStringLiteral("FileGroupsPage"));

    lblFGGrid = new QLabel(QStringLiteral("File &Masks:"), this);
    lblFGGrid->setObjectName(QStringLiteral("lblFGGrid"));
    grdFGGrid = new QTableWidget(1, FileGroupMasks::CellCount, this);
    grdFGGrid->setObjectName(QStringLiteral("grdFGGrid"));
    grdFGGrid->setAccessibleName(QStringLiteral("File masks"));
    grdFGGrid->setAccessibleDescription(
        QStringLiteral("One file mask per cell; type to edit the current cell"));
    lblFGGrid->setBuddy(grdFGGrid);
    QStringList numbers;
    for (int c = 1; c <= FileGroupMasks::CellCount; ++c) {
        numbers.append(QString::number(c));
        auto* item = new QTableWidgetItem;
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        grdFGGrid->setItem(0, c - 1, item);
    }
    grdFGGrid->setHorizontalHeaderLabels(numbers);
    grdFGGrid->setVerticalHeaderItem(0, new QTableWidgetItem);
    grdFGGrid->horizontalHeader()->setDefaultAlignment(Qt::AlignCenter);
    grdFGGrid->verticalHeader()->setDefaultAlignment(Qt::AlignCenter);
    grdFGGrid->horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    grdFGGrid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    grdFGGrid->setCornerButtonEnabled(false);
    // The empty header cell above the row header is a button of the view's own.
    if (auto* corner = grdFGGrid->findChild<QAbstractButton*>())
        corner->setAccessibleName(QStringLiteral("Masks header"));
    // Cells change only through the cell editor below, never through the view's own editors.
    grdFGGrid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grdFGGrid->setSelectionMode(QAbstractItemView::SingleSelection);
    grdFGGrid->setTabKeyNavigation(false);
    grdFGGrid->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    grdFGGrid->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    txtFileMask = new QLineEdit(grdFGGrid->viewport());
    txtFileMask->setObjectName(QStringLiteral("txtFileMask"));
    txtFileMask->setAccessibleName(QStringLiteral("File mask"));
    txtFileMask->hide();

    cmdFGClearGrid =
        makeButton(QStringLiteral("&Clear Grid"), QStringLiteral("cmdFGClearGrid"), this);

    lblFGList = new QLabel(QStringLiteral("File &Groups:"), this);
    lblFGList->setObjectName(QStringLiteral("lblFGList"));
    lstFGList = new QListWidget(this);
    lstFGList->setObjectName(QStringLiteral("lstFGList"));
    lstFGList->setAccessibleName(QStringLiteral("File groups"));
    lblFGList->setBuddy(lstFGList);

    cmdFGAdd = makeButton(QStringLiteral("&Add"), QStringLiteral("cmdFGAdd"), this);
    cmdFGEdit = makeButton(QStringLiteral("&Edit"), QStringLiteral("cmdFGEdit"), this);
    cmdFGDelete = makeButton(QStringLiteral("&Delete"), QStringLiteral("cmdFGDelete"), this);

    auto* buttons = new QVBoxLayout;
    buttons->addWidget(cmdFGAdd);
    buttons->addWidget(cmdFGEdit);
    buttons->addWidget(cmdFGDelete);
    buttons->addStretch(1);
    auto* layout = new QGridLayout(this);
    layout->addWidget(lblFGGrid, 0, 0);
    layout->addWidget(grdFGGrid, 1, 0, Qt::AlignLeft | Qt::AlignTop);
    layout->addWidget(cmdFGClearGrid, 1, 1, Qt::AlignTop);
    layout->addWidget(lblFGList, 2, 0);
    layout->addWidget(lstFGList, 3, 0);
    layout->addLayout(buttons, 3, 1);
    layout->setRowStretch(3, 1);
    layout->setColumnStretch(0, 1);

    // Tab goes from the masks (the grid, or the cell editor open on it) to Clear Grid, then to
    // the list and its buttons.
    setTabOrder(grdFGGrid, txtFileMask);
    setTabOrder(txtFileMask, cmdFGClearGrid);
    setTabOrder(cmdFGClearGrid, lstFGList);
    setTabOrder(lstFGList, cmdFGAdd);
    setTabOrder(cmdFGAdd, cmdFGEdit);
    setTabOrder(cmdFGEdit, cmdFGDelete);

    grdFGGrid->installEventFilter(this);
    txtFileMask->installEventFilter(this);
    lstFGList->viewport()->installEventFilter(this);
    connect(grdFGGrid, &QTableWidget::cellClicked, this,
            guarded(QStringLiteral("grdFGGrid_Click"), [this] { grdFGGrid_Click(); }));
    connect(grdFGGrid, &QTableWidget::currentCellChanged, this,
            guarded(QStringLiteral("grdFGGrid_EnterCell"),
                    [this](int, int column) { grdFGGrid_EnterCell(column + 1); }));
    for (QScrollBar* bar : {grdFGGrid->horizontalScrollBar(), grdFGGrid->verticalScrollBar()})
        connect(bar, &QScrollBar::valueChanged, txtFileMask, &QWidget::hide);
    connect(
        txtFileMask, &QLineEdit::textEdited, this,
        guarded(QStringLiteral("txtFileMask_Change"), this, &FileGroupsPage::txtFileMask_Change));
    connect(lstFGList, &QListWidget::currentRowChanged, this,
            guarded(QStringLiteral("lstFGList_Click"), this, &FileGroupsPage::lstFGList_Click));
    connect(cmdFGAdd, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdFGAdd_Click"), this, &FileGroupsPage::cmdFGAdd_Click));
    connect(cmdFGEdit, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdFGEdit_Click"), this, &FileGroupsPage::cmdFGEdit_Click));
    connect(cmdFGDelete, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdFGDelete_Click"), this, &FileGroupsPage::cmdFGDelete_Click));
    connect(cmdFGClearGrid, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdFGClearGrid_Click"), this,
                    &FileGroupsPage::cmdFGClearGrid_Click));

    sizeGrid();
    ResetFGGrid();
}

void FileGroupsPage::sizeGrid() {
    const int header = twipsToPixels(this, kHeaderColumnTwips);
    const int width = twipsToPixels(this, kCellTwips);
    grdFGGrid->verticalHeader()->setFixedWidth(header);
    for (int c = 0; c < FileGroupMasks::CellCount; ++c)
        grdFGGrid->setColumnWidth(c, width);
    // The grid shows its one row whole, without scrolling.
    const int frame = 2 * grdFGGrid->frameWidth();
    grdFGGrid->setFixedSize(header + FileGroupMasks::CellCount * width + frame,
                            grdFGGrid->horizontalHeader()->sizeHint().height() +
                                grdFGGrid->rowHeight(0) + frame);
}

clsSourcePath& FileGroupsPage::chosenSP() const {
    return *m_editor.WorkingSPs->Item(m_editor.cboSPs->currentText());
}

QString FileGroupsPage::cell(int column) const {
    return grdFGGrid->item(0, column - 1)->text();
}

void FileGroupsPage::setCell(int column, const QString& text) {
    grdFGGrid->item(0, column - 1)->setText(text);
}

QStringList FileGroupsPage::cells() const {
    QStringList texts;
    for (int c = 1; c <= FileGroupMasks::CellCount; ++c)
        texts.append(cell(c));
    return texts;
}

void FileGroupsPage::setRowHeader(const QString& text) {
    grdFGGrid->verticalHeaderItem(0)->setText(text);
}

void FileGroupsPage::setCurrentColumn(int column) {
    grdFGGrid->setCurrentCell(0, column - 1);
}

void FileGroupsPage::rebuild() {
    ResetFGGrid();
    const QSignalBlocker quiet(lstFGList);
    lstFGList->clear();
    try {
        QStringList names;
        for (const auto& group : chosenSP().FGs())
            names.append(group->Name());
        lstFGList->addItems(names);
    } catch (const Error& error) {
        ShowErrorReport(error, QStringLiteral("tdgCESpecs_Click"));
    }
}

void FileGroupsPage::ResetFGGrid() {
    if (m_editor.EditMode == 2)
        m_editor.EndEditMode();
    for (int c = 1; c <= FileGroupMasks::CellCount; ++c)
        setCell(c, QString());
    sizeGrid();
    setRowHeader(QStringLiteral("New"));
    setCurrentColumn(1);
    if (grdFGGrid->isVisible())
        grdFGGrid->setFocus();
    txtFileMask->clear();
    txtFileMask->hide();
}

void FileGroupsPage::grdFGGrid_EnterCell(int column) {
    if (column >= 1 && column <= FileGroupMasks::CellCount)
        GridCol = column;
}

void FileGroupsPage::grdFGGrid_Click() {
    if (grdFGGrid->currentColumn() < 0)
        return;
    txtFileMask->hide();
    if (!FileGroupMasks::canOpen(cells(), GridCol))
        return;
    EditGridCell();
}

void FileGroupsPage::EditGridCell() {
    txtFileMask->setText(cell(GridCol).toUpper());
    txtFileMask->end(false);
    txtFileMask->setGeometry(grdFGGrid->visualItemRect(grdFGGrid->item(0, GridCol - 1)));
    txtFileMask->setAccessibleName(QStringLiteral("File mask ") + QString::number(GridCol));
    txtFileMask->show();
    txtFileMask->raise();
    txtFileMask->setFocus();
}

void FileGroupsPage::txtFileMask_Change(const QString& text) {
    // Only what the user types reaches the cell: opening the editor on a cell read from a spec
    // file in lower case shows it upper-cased, but leaves the cell as it was until it is edited.
    const QString mask = FileGroupMasks::typed(text);
    if (mask != text) {
        const int caret = FileGroupMasks::typed(text.left(txtFileMask->cursorPosition())).size();
        txtFileMask->setText(mask);
        txtFileMask->setCursorPosition(caret);
    }
    if (cell(GridCol) != mask)
        setCell(GridCol, mask);
}

bool FileGroupsPage::txtFileMask_KeyPress(int key) {
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        grdFGGrid->setFocus();
        txtFileMask->hide();
        setCurrentColumn(FileGroupMasks::nextColumn(GridCol));
        return true;
    case Qt::Key_Escape:
        // What was typed stays in the cell.
        grdFGGrid->setFocus();
        txtFileMask->hide();
        return true;
    default:
        return false;
    }
}

bool FileGroupsPage::grdFGGrid_KeyPress(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_F2:
        grdFGGrid_Click();
        return true;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        txtFileMask->hide();
        return false;
    default:
        break;
    }
    // Typing on the grid opens the cell editor on the current cell and types there.
    const QString text = event->text();
    if (text.isEmpty() || !text.at(0).isPrint() ||
        (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)))
        return false;
    if (txtFileMask->isHidden())
        grdFGGrid_Click();
    if (txtFileMask->isVisible())
        QCoreApplication::sendEvent(txtFileMask, event);
    return true;
}

bool FileGroupsPage::eventFilter(QObject* watched, QEvent* event) {
    if (watched == txtFileMask) {
        if (event->type() == QEvent::KeyPress) {
            bool handled = true;
            runBehindBarrier(QStringLiteral("txtFileMask_KeyPress"), [&] {
                handled = txtFileMask_KeyPress(static_cast<QKeyEvent*>(event)->key());
            });
            return handled;
        }
        // The editor's own context menu takes the focus for a moment without ending the edit.
        if (event->type() == QEvent::FocusOut &&
            static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason)
            txtFileMask->hide();
    } else if (watched == grdFGGrid && event->type() == QEvent::KeyPress) {
        bool handled = true;
        runBehindBarrier(QStringLiteral("grdFGGrid_KeyPress"),
                         [&] { handled = grdFGGrid_KeyPress(static_cast<QKeyEvent*>(event)); });
        return handled;
    } else if (watched == lstFGList->viewport() && event->type() == QEvent::MouseButtonPress) {
        runBehindBarrier(QStringLiteral("lstFGList_Click"), [this] { lstFGList_Click(); });
    }
    return EditorPage::eventFilter(watched, event);
}

void FileGroupsPage::lstFGList_Click() {
    if (m_editor.EditMode == 0)
        return;
    // The masks stay in the grid, now for a new group; the row header is left as it was until
    // the next reset of the grid.
    m_editor.EndEditMode();
}

void FileGroupsPage::cmdFGAdd_Click() {
    txtFileMask->hide();
    const bool editing = m_editor.EditMode == 2;
    if (cell(1).isEmpty()) {
        if (editing)
            MsgBox(QStringLiteral("You cannot add a File Group that does not contain any file "
                                  "masks."),
                   MsgButtons::OK, MsgIcon::Exclamation, QStringLiteral("Create/Edit FileGroups"));
        return;
    }
    const QString name = FileGroupMasks::groupName(cells());
    try {
        clsFileGroups& groups = chosenSP().FGs();
        if (editing) {
            QListWidgetItem* entry = lstFGList->item(m_editor.EditIndex);
            const auto group = groups.Item(entry != nullptr ? entry->text() : QString());
            groups.Rename(group->Name(), name, group);
            entry->setText(name);
        } else {
            groups.Add(name);
            lstFGList->addItem(name);
        }
        ResetFGGrid();
    } catch (const Error& error) {
        if (error.number() == ErrNo::DuplicateKey)
            MsgBox(QStringLiteral("File Group '") + name +
                       QStringLiteral("' already exists for this Source Path."),
                   MsgButtons::OK, MsgIcon::Exclamation, kTitle);
        else
            ShowErrorReport(error, QStringLiteral("Form_Unload"));
    }
}

void FileGroupsPage::cmdFGEdit_Click() {
    if (m_editor.EditMode == 2) {
        m_editor.EndEditMode();
        ResetFGGrid();
        return;
    }
    const int row = selectedRow(lstFGList);
    if (row < 0)
        return;
    m_editor.beginEdit(2, row);
    setRowHeader(QStringLiteral("Edit"));
    const QStringList masks = FileGroupMasks::cellsOf(lstFGList->item(row)->text());
    for (int c = 1; c <= FileGroupMasks::CellCount; ++c)
        setCell(c, masks.at(c - 1));
    setCurrentColumn(1);
}

void FileGroupsPage::cmdFGDelete_Click() {
    const int position = selectedRow(lstFGList);
    if (position < 0)
        return;
    const QString name = lstFGList->item(position)->text();
    if (m_editor.program().Settings->ShowConfirmMsgs() &&
        MsgBox(QStringLiteral("OK to delete File Group '") + name +
                   QStringLiteral("'?\r\n\r\nNOTE:  All associated Destination Paths will also "
                                  "be deleted."),
               MsgButtons::OKCancel, MsgIcon::Question, kTitle) != MsgAnswer::OK)
        return;
    try {
        chosenSP().FGs().Remove(name);
    } catch (const Error& error) {
        ShowErrorReport(error, QStringLiteral("cmdFGDelete_Click"));
        return;
    }
    {
        // Nothing is selected afterwards, so a second Delete does not take the next group.
        const QSignalBlocker quiet(lstFGList);
        delete lstFGList->takeItem(position);
        lstFGList->setCurrentRow(-1);
    }
    if (m_editor.EditMode == 2)
        ResetFGGrid();
}

} // namespace ondrel
