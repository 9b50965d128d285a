// SPDX-License-Identifier: MIT
#include "BusAddress.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QFile>
#include <QStringList>
#include <QUrl>

#include <cerrno>
#include <cstring>
#include <optional>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {
class FileDescriptor
{
public:
    explicit FileDescriptor(int fd = -1)
        : m_fd(fd)
    {
    }
    ~FileDescriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Q_DISABLE_COPY_MOVE(FileDescriptor)
    int get() const { return m_fd; }

private:
    int m_fd;
};

/// The socket name within sockaddr_un (a leading zero byte for abstract ones), or nothing for other kinds.
std::optional<QByteArray> unixSocketName(const QString &address)
{
    const QString prefix = QStringLiteral("unix:");
    if (!address.startsWith(prefix))
        return std::nullopt;
    const QStringList pairs = address.mid(prefix.size()).split(u',');
    for (const QString &pair : pairs) {
        const QByteArray value = QByteArray::fromPercentEncoding(pair.section(u'=', 1).toUtf8());
        if (pair.startsWith(u"path="))
            return value;
        if (pair.startsWith(u"abstract="))
            return QByteArray(1, '\0') + value;
    }
    return std::nullopt;
}

/// 0 or the errno of a connect() that does not wait.
int connectTo(int fd, const QByteArray &name)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.isEmpty() || size_t(name.size()) >= sizeof address.sun_path)
        return ENOENT;
    std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
    const bool abstract = name.front() == '\0';
    const auto length = offsetof(sockaddr_un, sun_path) + size_t(name.size()) + (abstract ? 0 : 1);
    const int result = ::connect(fd, reinterpret_cast<const sockaddr *>(&address), socklen_t(length));
    return result == 0 ? 0 : errno;
}

int openSocket()
{
    return ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
}

/// False on time-out and when called off.
bool waitFor(int fd, int wakeUp, const QDeadlineTimer &deadline)
{
    pollfd fds[2] = {{fd, POLLIN, 0}, {wakeUp, POLLIN, 0}};
    while (!deadline.hasExpired()) {
        const int ready = ::poll(fds, 2, int(deadline.remainingTime()));
        if (ready < 0 && errno != EINTR)
            return false;
        if (ready > 0)
            return fds[1].revents == 0;
    }
    return false;
}

/// EAGAIN means that the listener's backlog is full: it exists and may come to its senses.
bool connectInTime(int fd, const QByteArray &name, int wakeUp, const QDeadlineTimer &deadline)
{
    constexpr int pause = 50;
    for (;;) {
        const int error = connectTo(fd, name);
        if (error != EAGAIN)
            return error == 0;
        pollfd calledOff{wakeUp, POLLIN, 0};
        if (deadline.hasExpired() || ::poll(&calledOff, 1, pause) > 0)
            return false;
    }
}

bool greetingAnswered(const QByteArray &name, int timeout, int wakeUp)
{
    const QDeadlineTimer deadline(timeout);
    const FileDescriptor fd(openSocket());
    if (fd.get() < 0 || !connectInTime(fd.get(), name, wakeUp, deadline))
        return false;
    // Authentication begins with a zero byte; any answer, also a refusal, shows that somebody serves.
    const QByteArray greeting
        = QByteArray(1, '\0') + "AUTH EXTERNAL " + QByteArray::number(::getuid()).toHex() + "\r\n";
    if (::send(fd.get(), greeting.constData(), size_t(greeting.size()), MSG_NOSIGNAL) != greeting.size())
        return false;
    if (!waitFor(fd.get(), wakeUp, deadline))
        return false;
    char answer = 0;
    return ::recv(fd.get(), &answer, 1, 0) == 1;
}
} // namespace

QString BusAddress::ofSession()
{
    const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (!address.isEmpty())
        return address;
    const QString runtimeFolder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QString path = runtimeFolder + QStringLiteral("/bus");
    if (runtimeFolder.isEmpty() || !QFile::exists(path))
        return {};
    return QStringLiteral("unix:path=") + QString::fromLatin1(QUrl::toPercentEncoding(path, "/"));
}

bool BusAddress::mayListen(const QString &address)
{
    const QStringList candidates = address.split(u';', Qt::SkipEmptyParts);
    return std::any_of(candidates.begin(), candidates.end(), [](const QString &candidate) {
        const auto name = unixSocketName(candidate);
        if (!name)
            return true;
        const FileDescriptor fd(openSocket());
        const int error = fd.get() < 0 ? errno : connectTo(fd.get(), *name);
        return error == 0 || error == EAGAIN;
    });
}

bool BusAddress::answers(const QString &address, int timeout, int wakeUp)
{
    const QStringList candidates = address.split(u';', Qt::SkipEmptyParts);
    return std::any_of(candidates.begin(), candidates.end(), [=](const QString &candidate) {
        const auto name = unixSocketName(candidate);
        return !name || greetingAnswered(*name, timeout, wakeUp);
    });
}
