// The spec tree: drawing the spec, clicks and right-clicks on its nodes, expanding and
// contracting, and the commands that open the spec editor and the other dialogs from it.
#include "ui/main/frmMain.h"

#include "platform/Help.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/editor/frmCESpecs.h"
#include "ui/main/MainIcons.h"
#include "ui/main/SpecTreeNodes.h"
#include "ui/main/frmAbout.h"
#include "ui/options/frmFSOptions.h"
#include "ui/select/frmVarFileSelect.h"

#include <QComboBox>
#include <QHash>
#include <QIcon>
#include <QMenu>
#include <QTabWidget>
#include <QTreeWidget>

namespace ondrel {

namespace {

constexpr int kKeyRole = Qt::UserRole;
constexpr int kTagRole = Qt::UserRole + 1;
constexpr int kIndexRole = Qt::UserRole + 2;

const QTreeWidgetItem* rootOf(const QTreeWidgetItem* node) {
    while (node->parent() != nullptr)
        node = node->parent();
    return node;
}

} // namespace

void frmMain::UpdtSpecList() {
    m_rebuildingTree = true;
    tvwSpecs->clear();
    std::vector<QTreeWidgetItem*> added;
    const std::vector<SpecTreeNode> nodes = specTreeNodes(spec().SPs());
    added.reserve(nodes.size());
    // Each image is made once per drawing and shared by its nodes: making an icon reads its
    // drawing, which for every node of a large spec costs many times the spec's own load.
    QHash<int, QIcon> images;
    auto image = [&images](int index) {
        auto found = images.constFind(index);
        if (found == images.cend())
            found = images.insert(index, treeImage(index));
        return *found;
    };
    QList<QTreeWidgetItem*> topLevel;
    for (const SpecTreeNode& n : nodes) {
        QTreeWidgetItem* item =
            n.parentIndex == 0 ? new QTreeWidgetItem()
                               : new QTreeWidgetItem(added[static_cast<size_t>(n.parentIndex - 1)]);
        item->setText(0, n.text);
        item->setIcon(0, image(n.image));
        item->setData(0, kKeyRole, n.key);
        item->setData(0, kTagRole, n.tag);
        item->setData(0, kIndexRole, n.index);
        if (n.parentIndex == 0)
            topLevel.append(item);
        added.push_back(item);
    }
    tvwSpecs->addTopLevelItems(topLevel);
    // Selecting the first node is part of drawing the tree, not a click on it.
    tvwSpecs->setCurrentItem(tvwSpecs->topLevelItem(0));
    m_rebuildingTree = false;
    // The redrawn tree's selection was not clicked, and the source path last clicked may have
    // changed under the editor: the next click on any node shows its source path's setting.
    strCurrentSP.clear();
}

void frmMain::tvwSpecs_NodeClick(QTreeWidgetItem* Node) {
    if (Node == nullptr || m_rebuildingTree)
        return;
    // The node's source path is its root node, read from the item itself: a path may hold the
    // "|" that a node's full path puts between its levels, so the path cannot be cut out of it.
    const QString name = rootOf(Node)->text(0);
    if (name == strCurrentSP)
        return;
    strCurrentSP = name;
    UpdtISD(spec().SPs().Item(name)->InclSubDirs());
}

void frmMain::tvwSpecs_MouseUp(Qt::MouseButton Button, const QPoint& at) {
    if (Button != Qt::RightButton)
        return;
    const QTreeWidgetItem* selected = tvwSpecs->currentItem();
    if (selected == nullptr)
        return;
    const bool sourcePath = selected->data(0, kTagRole).toString() == QLatin1String("SP");
    if (sourcePath) {
        strCurrentSP = selected->text(0);
        mnuTVContextISD->setChecked(spec().SPs().Item(strCurrentSP)->InclSubDirs());
    }
    mnuTVContextBar1->setVisible(sourcePath);
    mnuTVContextISD->setVisible(sourcePath);
    mnuTVContext->popup(tvwSpecs->viewport()->mapToGlobal(at));
}

void frmMain::mnuViewExpandTVW_Click() {
    setAllExpanded(true);
}

void frmMain::mnuViewContractTVW_Click() {
    setAllExpanded(false);
}

void frmMain::setAllExpanded(bool expanded) {
    for (QTreeWidgetItemIterator it(tvwSpecs); *it != nullptr; ++it)
        (*it)->setExpanded(expanded);
}

int frmMain::selectedRootIndex() const {
    // The position of the selected node's source path among the source paths, from 1: the
    // chooser lists the source paths alone, so the node's index among all nodes would point
    // past a source path with file groups.
    const QTreeWidgetItem* selected = tvwSpecs->currentItem();
    if (selected == nullptr)
        return 1;
    return tvwSpecs->indexOfTopLevelItem(const_cast<QTreeWidgetItem*>(rootOf(selected))) + 1;
}

void frmMain::LoadEditorSpecs(int RootIndex) {
    frmCESpecs& editor = *m_program.CESpecs;
    editor.WorkingSPs = spec().SPs().Clone();
    editor.cboSPs->clear();
    for (const auto& sp : *editor.WorkingSPs)
        editor.cboSPs->addItem(sp->Name());
    // The chooser counts from 0, the source paths of the tree from 1.
    editor.cboSPs->setCurrentIndex(RootIndex - 1);
}

void frmMain::openEditor(int page) {
    LoadEditorSpecs(selectedRootIndex());
    m_program.CESpecs->tdgCESpecs->setCurrentIndex(page);
    m_program.CESpecs->exec();
}

void frmMain::mnuEditSpecs_Click() {
    openEditor(0);
}

void frmMain::mnuTVContextCESPs_Click() {
    openEditor(0);
}

void frmMain::mnuTVContextCEFGs_Click() {
    openEditor(1);
}

void frmMain::mnuTVContextCEDPs_Click() {
    openEditor(2);
}

void frmMain::mnuTVContextISD_Click() {
    const bool include = !mnuTVContextISD->isChecked();
    mnuTVContextISD->setChecked(include);
    UpdtISD(include);
    spec().SPs().Item(strCurrentSP)->setInclSubDirs(include);
    spec().setDirty(true);
}

void frmMain::openOptions(int page) {
    frmFSOptions dialog(m_program, this);
    dialog.tdgOptions->setCurrentIndex(page);
    dialog.exec();
}

void frmMain::mnuEditFSOptionsUser_Click() {
    openOptions(0);
}

void frmMain::mnuEditFSOptionsStaging_Click() {
    openOptions(1);
}

void frmMain::mnuEditVarFileSelect_Click() {
    frmVarFileSelect dialog(m_program, this);
    dialog.exec();
}

void frmMain::mnuHelpContents_Click() {
    ShowHelp(0, HelpCommand::Contents);
}

void frmMain::mnuHelpSearch_Click() {
    ShowHelp(0, HelpCommand::PartialKey);
}

void frmMain::mnuHelpMainScreen_Click() {
    ShowHelp(5, HelpCommand::Context);
}

void frmMain::mnuHelpAbout_Click() {
    frmAbout about(this);
    about.exec();
}

} // namespace ondrel
