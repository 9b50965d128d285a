// SPDX-License-Identifier: MIT
#include "BusFlood.h"

#include <QByteArray>
#include <QDBusMessage>

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {
/// Bytes of D-Bus, of this machine's order.
class Marshaller
{
public:
    void align(int size)
    {
        while (m_bytes.size() % size)
            m_bytes += '\0';
    }
    void byte(int value) { m_bytes += char(value); }
    void number(quint32 value)
    {
        align(4);
        m_bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
    }
    void text(const QByteArray &value)
    {
        number(quint32(value.size()));
        m_bytes += value + '\0';
    }
    void signature(const QByteArray &value)
    {
        byte(int(value.size()));
        m_bytes += value + '\0';
    }
    void field(int code, char type, const QByteArray &value)
    {
        align(8);
        byte(code);
        signature(QByteArray(1, type));
        if (type == 'g')
            signature(value);
        else
            text(value);
    }
    void setNumber(qsizetype at, quint32 value) { std::memcpy(m_bytes.data() + at, &value, sizeof value); }
    qsizetype size() const { return m_bytes.size(); }
    const QByteArray &bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

constexpr qsizetype serialPlace = 8;
constexpr quint32 callsOfConnection = 5000;

/// Without a serial number.
QByteArray marshalled(const QDBusMessage &message)
{
    Marshaller body;
    QByteArray signature;
    for (const QVariant &argument : message.arguments()) {
        if (argument.typeId() == QMetaType::QString) {
            body.text(argument.toString().toUtf8());
            signature += 's';
        } else {
            body.number(argument.toUInt());
            signature += 'u';
        }
    }
    Marshaller head;
    for (const int value : {int(Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? 'l' : 'B'), 1, 0, 1})
        head.byte(value);
    head.number(quint32(body.size()));
    head.number(0);
    const qsizetype fields = head.size();
    head.number(0);
    const qsizetype begin = head.size();
    head.field(1, 'o', message.path().toUtf8());
    head.field(2, 's', message.interface().toUtf8());
    head.field(3, 's', message.member().toUtf8());
    head.field(6, 's', message.service().toUtf8());
    if (!signature.isEmpty())
        head.field(8, 'g', signature);
    head.setNumber(fields, quint32(head.size() - begin));
    head.align(8);
    return head.bytes() + body.bytes();
}

class Connection
{
public:
    Connection()
        : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
    }
    ~Connection() { ::close(m_socket); }
    Q_DISABLE_COPY_MOVE(Connection)

    bool open()
    {
        const QByteArray place = qgetenv("DBUS_SESSION_BUS_ADDRESS").split(',').first();
        const bool isAbstract = place.startsWith("unix:abstract=");
        const QByteArray name
            = (isAbstract ? QByteArray(1, '\0') : QByteArray()) + place.mid(place.indexOf('=') + 1);
        struct sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        if (!place.startsWith("unix:") || size_t(name.size()) >= sizeof address.sun_path)
            return false;
        std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
        const auto size = socklen_t(offsetof(struct sockaddr_un, sun_path) + size_t(name.size()));
        return ::connect(m_socket, reinterpret_cast<const struct sockaddr *>(&address), size) == 0 && greet();
    }

    /// Reads what comes meanwhile, as who does not is thrown off.
    bool write(const QByteArray &bytes)
    {
        for (qsizetype at = 0; at < bytes.size();) {
            struct pollfd state = {m_socket, POLLIN | POLLOUT, 0};
            if (::poll(&state, 1, 10'000) <= 0)
                return false;
            char thrownAway[65536];
            if ((state.revents & POLLIN)
                && ::recv(m_socket, thrownAway, sizeof thrownAway, MSG_DONTWAIT) == 0)
                return false;
            if (!(state.revents & POLLOUT))
                continue;
            const ssize_t sent = ::send(
                m_socket, bytes.constData() + at, size_t(bytes.size() - at), MSG_DONTWAIT | MSG_NOSIGNAL);
            if (sent < 0 && errno != EAGAIN)
                return false;
            at += sent > 0 ? sent : 0;
        }
        return true;
    }

private:
    bool greet()
    {
        const QByteArray user = QByteArray::number(::getuid()).toHex();
        const QByteArray begin = QByteArray(1, '\0') + "AUTH EXTERNAL " + user + "\r\n";
        char answer[256];
        return ::send(m_socket, begin.constData(), size_t(begin.size()), MSG_NOSIGNAL) == begin.size()
            && ::recv(m_socket, answer, sizeof answer, 0) > 2 && std::memcmp(answer, "OK", 2) == 0
            && write("BEGIN\r\n");
    }

    const int m_socket;
};

QByteArray numbered(QByteArray message, quint32 serial)
{
    std::memcpy(message.data() + serialPlace, &serial, sizeof serial);
    return message;
}
} // namespace

int BusFlood::send(const QDBusMessage &message, int count)
{
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    const QByteArray hello = marshalled(
        QDBusMessage::createMethodCall(bus, QStringLiteral("/org/freedesktop/DBus"), bus, "Hello"));
    const QByteArray call = marshalled(message);
    int sent = 0;
    while (sent < count) {
        // The bus gets slow about many calls of one connection that are not answered yet.
        Connection connection;
        if (!connection.open() || !connection.write(numbered(hello, 1)))
            return sent;
        for (quint32 serial = 2; serial < callsOfConnection && sent < count; ++serial, ++sent) {
            if (!connection.write(numbered(call, serial)))
                return sent;
        }
    }
    return sent;
}
