// SPDX-License-Identifier: MIT
#include "FolderWatch.h"

#include "KelvoMessageHandler.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {
// Not IN_MODIFY: a file that grows is read when it is closed, not at every write.
constexpr uint32_t wanted = IN_CLOSE_WRITE | IN_MOVED_FROM | IN_MOVED_TO | IN_CREATE | IN_DELETE
    | IN_DELETE_SELF | IN_MOVE_SELF | IN_ATTRIB | IN_ONLYDIR;
} // namespace

FolderWatch::FolderWatch()
    : m_inotify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    , m_wakeUp(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
    m_complete = m_inotify >= 0;
    if (!m_complete)
        qCWarning(lcKelvo) << "Media folders are not watched, only looked through again and again:"
                           << std::strerror(errno);
}

FolderWatch::~FolderWatch()
{
    if (m_inotify >= 0)
        ::close(m_inotify);
    ::close(m_wakeUp);
}

void FolderWatch::add(const QByteArray &folder)
{
    if (m_inotify < 0)
        return;
    const int watch = ::inotify_add_watch(m_inotify, folder.constData(), wanted);
    if (watch >= 0) {
        m_folders.insert(watch, folder);
    } else if (errno == ENOSPC && m_complete) {
        m_complete = false;
        qCWarning(lcKelvo)
            << "There are more media folders than the system can watch (fs.inotify.max_user_watches):"
            << "they are looked through again and again";
    }
}

FolderWatch::Changes FolderWatch::wait(int milliseconds)
{
    pollfd events[] = {{m_wakeUp, POLLIN, 0}, {m_inotify, POLLIN, 0}};
    ::poll(events, m_inotify >= 0 ? 2 : 1, milliseconds);
    uint64_t count = 0;
    if (events[0].revents && ::read(m_wakeUp, &count, sizeof count) < 0)
        qCWarning(lcKelvo) << "Cannot read the wake-up event:" << std::strerror(errno);
    Changes changes;
    if (m_inotify >= 0)
        read(&changes);
    return changes;
}

void FolderWatch::wake()
{
    const uint64_t one = 1;
    if (::write(m_wakeUp, &one, sizeof one) < 0)
        qCWarning(lcKelvo) << "Cannot write the wake-up event:" << std::strerror(errno);
}

void FolderWatch::read(Changes *changes)
{
    alignas(inotify_event) char buffer[16 * 1024];
    for (ssize_t size = 0; (size = ::read(m_inotify, buffer, sizeof buffer)) > 0;) {
        for (const char *place = buffer; place < buffer + size;) {
            const auto *event = reinterpret_cast<const inotify_event *>(place);
            place += sizeof(inotify_event) + event->len;
            changes->overflow = changes->overflow || (event->mask & IN_Q_OVERFLOW);
            const auto folder = m_folders.constFind(event->wd);
            if (folder == m_folders.constEnd())
                continue;
            changes->folders.insert(*folder);
            // The kernel has dropped this watch; its number may come again for another folder.
            if (event->mask & IN_IGNORED)
                m_folders.erase(folder);
        }
    }
}
