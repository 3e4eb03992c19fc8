#pragma once

#include "platform/Result.h"

#include <QString>
#include <QWidget>

class QHBoxLayout;
class QListWidget;
class QPushButton;

namespace ondrel {

class frmCESpecs;

// One page of the spec editor. Each page shows one level of the working copy the editor holds
// (frmCESpecs::WorkingSPs) and changes it only there; the frame switches between the pages,
// keeps the edit state they share and hands the copy to the spec on OK.
class EditorPage : public QWidget {
    Q_OBJECT

public:
    EditorPage(frmCESpecs& editor, QWidget* parent) : QWidget(parent), m_editor(editor) {}

    // Fills the page again from the working copy (each time the page comes to the front, the
    // chooser's source path changes or the dialog is shown).
    virtual void rebuild() = 0;

    // The page's Edit button, whose caption is bold while an entry of this page is under edit.
    virtual QPushButton* editButton() const = 0;

    // Pages that browse directories: open the browser at the default drive and path (when the
    // dialog is made), fall back to a drive when that failed, and read the drives and
    // directories again (the refresh gesture).
    virtual Result<void> browseTo(const QString& drive, const QString& path) {
        (void)drive;
        (void)path;
        return {};
    }
    virtual void fallBackTo(const QString& drive) { (void)drive; }
    virtual void refreshBrowser() {}

protected:
    // The page's Add, Edit and Delete buttons (cmd + prefix + "Add", ...), in a row, none of them
    // taking Enter from the dialog's OK.
    QHBoxLayout* makeEntryButtons(const QString& prefix, QPushButton*& add, QPushButton*& edit,
                                  QPushButton*& remove);

    // The row of the list's selected entry; -1 when none is selected.
    static int selectedRow(const QListWidget* list);

    frmCESpecs& m_editor;
};

} // namespace ondrel
