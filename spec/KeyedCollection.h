#pragma once

#include "platform/Error.h"

#include <QHash>
#include <QString>

#include <memory>
#include <vector>

namespace ondrel {

// The ordered collection, keyed by name, that each level of the spec tree keeps its children in.
// KeyCase says how two keys compare: the path levels compare as the file system does, the masks
// of the file groups always without regard to case. Positions count from 1. Failures are thrown
// to the caller as Error: 457 for a key already present, 5 for an unknown key, 9 for a position
// out of range.
template <typename T, Qt::CaseSensitivity KeyCase> class KeyedCollection {
public:
    using ItemPtr = std::shared_ptr<T>;

private:
    struct Entry {
        QString key;
        ItemPtr item;
    };

public:
    virtual ~KeyedCollection() = default;

    // Creates an item named Name and appends it under that key.
    ItemPtr Add(const QString& Name) {
        auto item = std::make_shared<T>();
        item->setName(Name);
        append(Name, item);
        return item;
    }

    ItemPtr Item(int Index) const { return m_items[positionOf(Index)].item; }
    ItemPtr Item(const QString& Name) const {
        const auto it = m_byKey.constFind(foldKey(Name));
        if (it == m_byKey.constEnd())
            throw Error(ErrNo::InvalidCall, sourceName());
        return *it;
    }

    qint32 Count() const { return static_cast<qint32>(m_items.size()); }

    void Remove(int Index) { eraseAt(positionOf(Index)); }
    void Remove(const QString& Name) {
        const QString key = foldKey(Name);
        for (std::size_t i = 0; i < m_items.size(); ++i) {
            if (m_items[i].key == key) {
                eraseAt(i);
                return;
            }
        }
        throw Error(ErrNo::InvalidCall, sourceName());
    }

    // Takes the entry keyed OldName out, renames Item and appends it again under NewName: a
    // renamed item always moves to the end of its collection. A NewName that another entry holds
    // is refused (457) before anything changes; one that is OldName's own key, also spelt in
    // another case where keys ignore case, is no clash.
    void Rename(const QString& OldName, const QString& NewName, const ItemPtr& Item) {
        const QString oldKey = foldKey(OldName);
        const QString newKey = foldKey(NewName);
        if (!m_byKey.contains(oldKey))
            throw Error(ErrNo::InvalidCall, sourceName());
        if (newKey != oldKey && m_byKey.contains(newKey))
            throw Error(ErrNo::DuplicateKey, sourceName());
        Remove(OldName);
        Item->setName(NewName);
        append(NewName, Item);
    }

    // The items in collection order, for range-for.
    struct Iterator {
        typename std::vector<Entry>::const_iterator it;
        const ItemPtr& operator*() const { return it->item; }
        Iterator& operator++() {
            ++it;
            return *this;
        }
        bool operator!=(const Iterator& other) const { return it != other.it; }
        bool operator==(const Iterator& other) const { return it == other.it; }
    };
    Iterator begin() const { return Iterator{m_items.begin()}; }
    Iterator end() const { return Iterator{m_items.end()}; }
    const KeyedCollection& NewEnum() const { return *this; }

protected:
    virtual QString sourceName() const = 0;

    void append(const QString& Name, const ItemPtr& item) {
        const QString key = foldKey(Name);
        if (m_byKey.contains(key))
            throw Error(ErrNo::DuplicateKey, sourceName());
        m_byKey.insert(key, item);
        m_items.push_back(Entry{key, item});
    }

    // Copies every item and its subtree into other, in order.
    void cloneInto(KeyedCollection& other) const {
        for (const Entry& e : m_items)
            other.append(e.item->Key(), e.item->Clone());
    }

private:
    static QString foldKey(const QString& name) {
        return KeyCase == Qt::CaseInsensitive ? name.toCaseFolded() : name;
    }

    std::size_t positionOf(int Index) const {
        if (Index < 1 || Index > Count())
            throw Error(ErrNo::SubscriptOutOfRange, sourceName());
        return static_cast<std::size_t>(Index - 1);
    }

    void eraseAt(std::size_t i) {
        m_byKey.remove(m_items[i].key);
        m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(i));
    }

    std::vector<Entry> m_items;
    QHash<QString, ItemPtr> m_byKey;
};

} // namespace ondrel
