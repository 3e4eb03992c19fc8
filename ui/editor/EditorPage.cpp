#include "ui/editor/EditorPage.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>

namespace ondrel {

QHBoxLayout* EditorPage::makeEntryButtons(const QString& prefix, QPushButton*& add,
                                          QPushButton*& edit, QPushButton*& remove) {
    auto* row = new QHBoxLayout;
    const auto make = [&](const QString& caption, const QString& name) {
        auto* button = new QPushButton(caption, this);
        button->setObjectName(QStringLiteral("cmd") + prefix + name);
        button->setAutoDefault(false);
        row->addWidget(button);
        return button;
    };
    add = make(QStringLiteral("&Add"), QStringLiteral("Add"));
    edit = make(QStringLiteral("&Edit"), QStringLiteral("Edit"));
    remove = make(QStringLiteral("&Delete"), QStringLiteral("Delete"));
    return row;
}

int EditorPage::selectedRow(const QListWidget* list) {
    const QListWidgetItem* item = list->currentItem();
    return item != nullptr && item->isSelected() ? list->row(item) : -1;
}

} // namespace ondrel
