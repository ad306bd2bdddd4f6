// SPDX-License-Identifier: MIT
#pragma once

#include "host/HostInterface.h"

#include <QAction>
#include <QMap>
#include <QObject>
#include <QRegularExpression>
#include <QString>
#include <QVector>

#include <functional>

class QMenu;
class QToolBar;

namespace xv::form {

// Every control and toolbar button may carry a Tag, as the form's procedures expect.
QString tagOf(const QObject* object);
void setTag(QObject* object, const QString& tag);

// A toolbar whose buttons are addressed by 1-based index (separators count) and carry a Key and a Tag.
class KeyedToolBar
{
public:
    explicit KeyedToolBar(QToolBar* bar = nullptr) : m_bar(bar) {}
    QToolBar* bar() const { return m_bar; }
    QAction* button(int index) const; // throws when there is no such button
    QAction* byKey(const QString& key) const;
    static QString keyOf(const QAction* action);
    int indexOf(const QAction* action) const;

private:
    QToolBar* m_bar;
};

// The elements named name_0, name_1, ... below a parent, by index.
template <class T>
QMap<int, T*> controlArray(QObject* parent, const QString& name)
{
    QMap<int, T*> items;
    const QRegularExpression pattern(QStringLiteral("^%1_(\\d+)$").arg(QRegularExpression::escape(name)));
    for (T* child : parent->findChildren<T*>()) {
        const auto match = pattern.match(child->objectName());
        if (match.hasMatch())
            items.insert(match.captured(1).toInt(), child);
    }
    return items;
}

// A pop-up menu's item array: item 0 exists from the start, further items are created on demand.
class MenuItemArray : public host::MenuArray
{
public:
    MenuItemArray(QMenu* menu, const QString& name, std::function<void(int)> onClick);
    int count() const { return static_cast<int>(m_items.size()); }
    QAction* item(int index) const;
    void load(int index);
    void clearItems() override;
    void setItem(int index, const QString& caption, const QString& tag) override;
    QMenu* menu() const { return m_menu; }

private:
    QMenu* m_menu;
    QString m_name;
    std::function<void(int)> m_onClick;
    QVector<QAction*> m_items;
};

} // namespace xv::form
