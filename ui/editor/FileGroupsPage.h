#pragma once

#include "ui/editor/EditorPage.h"

#include <QStringList>

class QLabel;
class QLineEdit;
class QListWidget;
class QTableWidget;

namespace ondrel {

class clsSourcePath;

// The editor's page of the file groups of the source path chosen above. A group's masks are
// typed into a one-row grid of five cells, one mask per cell, through a cell editor that floats
// over the current cell; Add joins them into the group's name.
class FileGroupsPage : public EditorPage {
    Q_OBJECT

public:
    FileGroupsPage(frmCESpecs& editor, QWidget* parent);

    // Empties the grid and lists the groups of the chosen source path in their order.
    void rebuild() override;
    QPushButton* editButton() const override { return cmdFGEdit; }

    void grdFGGrid_Click();
    void cmdFGAdd_Click();
    void cmdFGEdit_Click();
    void cmdFGDelete_Click();
    void cmdFGClearGrid_Click() { ResetFGGrid(); }
    void lstFGList_Click();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void ResetFGGrid();
    void EditGridCell();
    void grdFGGrid_EnterCell(int column);
    void txtFileMask_Change(const QString& text);
    bool txtFileMask_KeyPress(int key);
    bool grdFGGrid_KeyPress(QKeyEvent* event);

    // The mask cells, numbered 1 to 5 as their headers read.
    QString cell(int column) const;
    void setCell(int column, const QString& text);
    QStringList cells() const;
    void setRowHeader(const QString& text);
    void setCurrentColumn(int column);
    void sizeGrid();
    clsSourcePath& chosenSP() const;

    QLabel* lblFGGrid = nullptr;
    QTableWidget* grdFGGrid = nullptr;
    QLineEdit* txtFileMask = nullptr;
    QLabel* lblFGList = nullptr;
    QListWidget* lstFGList = nullptr;
    QPushButton* cmdFGAdd = nullptr;
    QPushButton* cmdFGEdit = nullptr;
    QPushButton* cmdFGDelete = nullptr;
    QPushButton* cmdFGClearGrid = nullptr;

    // The mask cell last entered (1 to 5).
    int GridCol = 1;
};

} // namespace ondrel
