#include "ui/controls/AccessibleComboBox.h"

#include <QAbstractItemView>
#include <QAccessibleWidget>
#include <QComboBox>
#include <QLineEdit>

namespace ondrel {

namespace {

// A combo box as a screen reader meets it: its caption as its name, its current entry as its
// value and, when it cannot be typed into, as its text (an editable one has its line edit for
// that); its entries are its first child, the list that drops down.
class AccessibleComboBox : public QAccessibleWidget, public QAccessibleTextInterface {
public:
    explicit AccessibleComboBox(QComboBox* box) : QAccessibleWidget(box, QAccessible::ComboBox) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::TextInterface && !box()->isEditable())
            return static_cast<QAccessibleTextInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QString text(QAccessible::Text t) const override {
        return t == QAccessible::Value ? value() : QAccessibleWidget::text(t);
    }

    int childCount() const override { return box()->isEditable() ? 2 : 1; }
    QAccessibleInterface* child(int index) const override {
        if (index == 0)
            return QAccessible::queryAccessibleInterface(box()->view());
        if (index == 1 && box()->isEditable())
            return QAccessible::queryAccessibleInterface(box()->lineEdit());
        return nullptr;
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        if (child->object() == box()->view())
            return 0;
        if (box()->isEditable() && child->object() == box()->lineEdit())
            return 1;
        return -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        QLineEdit* edit = box()->lineEdit();
        if (edit != nullptr && QRect(edit->mapToGlobal(QPoint(0, 0)), edit->size()).contains(x, y))
            return child(1);
        return nullptr;
    }

    QStringList actionNames() const override { return {showMenuAction(), pressAction()}; }
    void doAction(const QString& action) override {
        if (action != showMenuAction() && action != pressAction())
            return;
        if (box()->view()->isVisible())
            box()->hidePopup();
        else
            box()->showPopup();
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

    // The current entry as read-only text.
    QString text(int startOffset, int endOffset) const override {
        return value().mid(startOffset, endOffset - startOffset);
    }
    int characterCount() const override { return int(value().size()); }
    int cursorPosition() const override { return 0; }
    void setCursorPosition(int) override {}
    int selectionCount() const override { return 0; }
    void selection(int, int* startOffset, int* endOffset) const override {
        *startOffset = *endOffset = 0;
    }
    void addSelection(int, int) override {}
    void removeSelection(int) override {}
    void setSelection(int, int, int) override {}
    QRect characterRect(int) const override { return {}; }
    int offsetAtPoint(const QPoint&) const override { return -1; }
    void scrollToSubstring(int, int) override {}
    QString attributes(int offset, int* startOffset, int* endOffset) const override {
        *startOffset = *endOffset = offset;
        return {};
    }

private:
    QComboBox* box() const { return static_cast<QComboBox*>(widget()); }
    QString value() const {
        return box()->isEditable() ? box()->lineEdit()->text() : box()->currentText();
    }
};

// Answers for a combo box at its own class's level, before any factory of a class it derives
// from (Qt's own among them) is asked.
QAccessibleInterface* comboBoxFactory(const QString& className, QObject* object) {
    auto* box = qobject_cast<QComboBox*>(object);
    if (box == nullptr || className != QLatin1String(object->metaObject()->className()))
        return nullptr;
    return new AccessibleComboBox(box);
}

} // namespace

void installAccessibleComboBoxes() {
    QAccessible::installFactory(comboBoxFactory);
}

} // namespace ondrel
