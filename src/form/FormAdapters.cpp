// SPDX-License-Identifier: MIT
#include "FormAdapters.h"

#include "common/RuntimeError.h"

#include <QMenu>
#include <QToolBar>
#include <QVariant>

namespace xv::form {

namespace {
const char* const kTag = "tag";
const char* const kKey = "key";
} // namespace

QString tagOf(const QObject* object)
{
    return object->property(kTag).toString();
}

void setTag(QObject* object, const QString& tag)
{
    object->setProperty(kTag, tag);
}

QAction* KeyedToolBar::button(int index) const
{
    const QList<QAction*> actions = m_bar->actions();
    if (index < 1 || index > actions.size())
        throw common::RuntimeError(35600, QStringLiteral("Indice del pulsante fuori dall'intervallo: %1").arg(index));
    return actions.at(index - 1);
}

QAction* KeyedToolBar::byKey(const QString& key) const
{
    for (QAction* action : m_bar->actions()) {
        if (keyOf(action) == key)
            return action;
    }
    return nullptr;
}

QString KeyedToolBar::keyOf(const QAction* action)
{
    return action ? action->property(kKey).toString() : QString();
}

int KeyedToolBar::indexOf(const QAction* action) const
{
    return static_cast<int>(m_bar->actions().indexOf(const_cast<QAction*>(action))) + 1;
}

MenuItemArray::MenuItemArray(QMenu* menu, const QString& name, std::function<void(int)> onClick)
    : m_menu(menu), m_name(name), m_onClick(std::move(onClick))
{
    load(0);
}

QAction* MenuItemArray::item(int index) const
{
    if (index < 0 || index >= m_items.size())
        throw common::RuntimeError(340, QStringLiteral("L'elemento %1 di %2 non esiste").arg(index).arg(m_name));
    return m_items.at(index);
}

void MenuItemArray::load(int index)
{
    if (index < m_items.size())
        throw common::RuntimeError(360, QStringLiteral("L'elemento %1 di %2 esiste già").arg(index).arg(m_name));
    while (m_items.size() <= index) {
        const int created = static_cast<int>(m_items.size());
        QAction* action = m_menu->addAction(QString());
        action->setObjectName(QStringLiteral("%1_%2").arg(m_name).arg(created));
        QObject::connect(action, &QAction::triggered, m_menu, [this, created] {
            if (m_onClick)
                m_onClick(created);
        });
        m_items.push_back(action);
    }
}

void MenuItemArray::clearItems()
{
    // Item 0 belongs to the design and stays; the rest go.
    while (m_items.size() > 1)
        delete m_items.takeLast();
    m_items.first()->setText(QString());
    setTag(m_items.first(), QString());
}

void MenuItemArray::setItem(int index, const QString& caption, const QString& tag)
{
    if (index >= m_items.size())
        load(index);
    m_items[index]->setText(caption);
    setTag(m_items[index], tag);
}

} // namespace xv::form
