// SPDX-License-Identifier: MIT
#include "Announcer.h"

#include <QAccessibleObject>
#include <QTimer>
#include <QWidget>

#include <chrono>

using namespace std::chrono_literals;

namespace {
// Screen readers fetch the text when they hear of the notification, however busy they are.
constexpr auto lifetime = 30s;
// Nobody listens to more: the oldest go when a renderer floods the console.
constexpr int mostAtOnce = 20;
const auto partName = QStringLiteral("announcement");

/// A notification or the label in it, which follow the tree of their objects.
///
/// Of all that the bridge to assistive technology passes on, this is what screen readers speak by themselves: a
/// notification that begins to show. They look for its words in labels inside of it that are not its name. Each text has a
/// notification of its own, since of two reports on one object the readers drop the first.
class Part : public QAccessibleObject
{
public:
    Part(QObject *object, QAccessible::Role role, QString words = {})
        : QAccessibleObject(object)
        , m_role(role)
        , m_words(std::move(words))
    {
    }

    QAccessibleInterface *parent() const override
    {
        return QAccessible::queryAccessibleInterface(object()->parent());
    }
    int childCount() const override { return int(object()->children().size()); }
    QAccessibleInterface *child(int index) const override
    {
        QObject *child = object()->children().value(index);
        return child ? QAccessible::queryAccessibleInterface(child) : nullptr;
    }
    int indexOfChild(const QAccessibleInterface *child) const override
    {
        return int(object()->children().indexOf(child->object()));
    }
    QRect rect() const override { return parent() ? parent()->rect() : QRect(); }
    QAccessible::Role role() const override { return m_role; }
    QAccessible::State state() const override { return {}; }
    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Name ? m_words : QString();
    }

private:
    QAccessible::Role m_role;
    QString m_words;
};

void makeRoom(const QWidget *window)
{
    const auto alive = window->findChildren<QObject *>(partName, Qt::FindDirectChildrenOnly);
    if (alive.size() >= mostAtOnce)
        delete alive.constFirst();
}
} // namespace

void Announcer::say(const QWidget *source, const QString &text)
{
    if (!QAccessible::isActive() || text.isEmpty())
        return;
    makeRoom(source->window());
    auto *notification = new QObject(source->window());
    notification->setObjectName(partName);
    auto *label = new QObject(notification);
    QAccessible::registerAccessibleInterface(new Part(notification, QAccessible::Notification));
    QAccessible::registerAccessibleInterface(new Part(label, QAccessible::StaticText, text));
    QAccessibleEvent shows(notification, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shows);
    QTimer::singleShot(lifetime, notification, &QObject::deleteLater);
}
