// SPDX-License-Identifier: MIT
#include "CallGate.h"

#include "KelvoMessageHandler.h"
#include "Playlist1Description.h"
#include "PlaylistProtocol.h"

#include <QDBusVirtualObject>
#include <QHash>

#include <algorithm>
#include <deque>
#include <mutex>
#include <utility>

using namespace PlaylistProtocol;

namespace {
// An orderly reader has some requests under way for the playlists that it shows.
constexpr int maxCallsOfCaller = 64;
constexpr size_t maxCalls = 2048;

constexpr char objectManagerDescription[] = R"xml(  <interface name="org.freedesktop.DBus.ObjectManager">
    <method name="GetManagedObjects">
      <arg name="objects" type="a{oa{sa{sv}}}" direction="out"/>
    </method>
    <signal name="InterfacesAdded">
      <arg name="path" type="o"/>
      <arg name="interfaces" type="a{sa{sv}}"/>
    </signal>
    <signal name="InterfacesRemoved">
      <arg name="path" type="o"/>
      <arg name="interfaces" type="as"/>
    </signal>
  </interface>
)xml";

struct Method
{
    QLatin1String interface;
    QLatin1String name;
    QLatin1String signature;
};
constexpr Method methods[] = {
    {PlaylistProtocol::interface, getItems, QLatin1String("uu")},
    {PlaylistProtocol::interface, openItems, QLatin1String("")},
    {objectManagerInterface, getManagedObjects, QLatin1String("")},
    {propertiesInterface, getProperty, QLatin1String("ss")},
    {propertiesInterface, getAllProperties, QLatin1String("s")},
};

/// By D-Bus a call need not say which interface it means.
bool isKnown(const QDBusMessage &call)
{
    return std::any_of(std::begin(methods), std::end(methods), [&call](const Method &method) {
        return call.member() == method.name && call.signature() == method.signature
            && (call.interface().isEmpty() || call.interface() == method.interface);
    });
}

/// Those that every object has: QtDBus answers them, from what introspect() tells.
bool isOfEveryObject(const QDBusMessage &call)
{
    return call.interface() == QLatin1String("org.freedesktop.DBus.Introspectable")
        || call.interface() == QLatin1String("org.freedesktop.DBus.Peer");
}
} // namespace

/// What was let in. Any thread.
class CallGate::Queue
{
public:
    enum class Fate { Refused, Waits, WaitsAlone };

    Fate put(const QDBusMessage &call)
    {
        const std::scoped_lock lock(m_mutex);
        int &ofCaller = m_ofCaller[call.service()];
        if (ofCaller >= maxCallsOfCaller || m_calls.size() >= maxCalls)
            return Fate::Refused;
        ++ofCaller;
        m_calls.push_back(call);
        return m_calls.size() == 1 ? Fate::WaitsAlone : Fate::Waits;
    }
    std::optional<QDBusMessage> take()
    {
        const std::scoped_lock lock(m_mutex);
        if (m_calls.empty())
            return std::nullopt;
        QDBusMessage call = m_calls.front();
        m_calls.pop_front();
        const auto ofCaller = m_ofCaller.find(call.service());
        if (--*ofCaller == 0)
            m_ofCaller.erase(ofCaller);
        return call;
    }
    void setChildren(const QStringList &names)
    {
        const std::scoped_lock lock(m_mutex);
        m_children = names;
    }
    QStringList children() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_children;
    }

private:
    mutable std::mutex m_mutex;
    std::deque<QDBusMessage> m_calls;
    QHash<QString, int> m_ofCaller;
    QStringList m_children;
};

/// Lives on the thread.
class CallGate::Door : public QDBusVirtualObject
{
public:
    Door(std::shared_ptr<Queue> queue, std::function<void()> isWaiting)
        : m_queue(std::move(queue))
        , m_isWaiting(std::move(isWaiting))
    {
    }

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &call, const QDBusConnection &connection) override;

private:
    const std::shared_ptr<Queue> m_queue;
    const std::function<void()> m_isWaiting;
};

QString CallGate::Door::introspect(const QString &path) const
{
    const QStringList children = m_queue->children();
    if (path != rootPath) {
        const QString name = path.mid(rootPath.size() + 1);
        return children.contains(name) ? QString::fromUtf8(playlist1Description) : QString();
    }
    QString text = QString::fromUtf8(objectManagerDescription);
    for (const QString &name : children)
        text += QStringLiteral("  <node name=\"%1\"/>\n").arg(name);
    return text;
}

bool CallGate::Door::handleMessage(const QDBusMessage &call, const QDBusConnection &connection)
{
    if (isOfEveryObject(call))
        return false;
    // All of them are questions.
    if (!call.isReplyRequired())
        return true;
    if (!isKnown(call)) {
        connection.send(call.createErrorReply(QDBusError::UnknownMethod,
            QStringLiteral("There is no %1 here that takes these arguments").arg(call.member())));
        return true;
    }
    switch (m_queue->put(call)) {
    case Queue::Fate::Refused:
        connection.send(
            call.createErrorReply(QDBusError::LimitsExceeded, QStringLiteral("Too many requests under way")));
        break;
    case Queue::Fate::WaitsAlone:
        m_isWaiting();
        break;
    case Queue::Fate::Waits:
        break;
    }
    return true;
}

CallGate::CallGate(const QDBusConnection &connection, std::function<void()> isWaiting)
    : m_connection(connection)
    , m_queue(std::make_shared<Queue>())
    , m_mailbox(std::make_shared<Mailbox>(&m_receiver))
{
    auto door = std::make_unique<Door>(
        m_queue, [mailbox = m_mailbox, isWaiting = std::move(isWaiting)] { mailbox->post(isWaiting); });
    // Before it moves to its thread: QtDBus gives it a child.
    if (!m_connection.registerVirtualObject(rootPath, door.get(), QDBusConnection::SubPath))
        qCWarning(lcKelvo) << "Nothing can be offered at" << rootPath;
    m_thread = std::make_unique<WorkerThread>(std::move(door), QStringLiteral("kelvo-bus-calls"));
}

CallGate::~CallGate()
{
    m_connection.unregisterObject(rootPath, QDBusConnection::UnregisterTree);
    m_mailbox->close();
}

void CallGate::setChildren(const QStringList &names)
{
    m_queue->setChildren(names);
}

std::optional<QDBusMessage> CallGate::take()
{
    return m_queue->take();
}
