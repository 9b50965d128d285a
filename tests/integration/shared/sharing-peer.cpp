// SPDX-License-Identifier: MIT
// Shares playlists with other processes, as told line by line on standard input; each line is answered by one.
#include "KelvoRegistry.h"
#include "KelvoShared.h"
#include "SharedLists.h"

#include <QCoreApplication>
#include <QHash>
#include <QSocketNotifier>
#include <QThread>

#include <cstdio>
#include <functional>
#include <unistd.h>

namespace {
using Words = QStringList;
using Command = std::function<QString(const Words &)>;

KelvoRegistry *registry()
{
    return KelvoRegistry::instance();
}

KelvoPlaylist *playlist(const Words &words)
{
    return registry()->findPlaylistByUuid(words.value(1));
}

/// publish <id> <count> <name>
QString publish(const Words &words)
{
    const QString name = words.mid(3).join(u' ');
    const bool done
        = KelvoShared::instance()->publishPlaylist(SharedLists::make(words[1], name, words[2].toInt()));
    return done ? "published" : "refused";
}

/// publish-many <prefix> <count>
QString publishMany(const Words &words)
{
    for (int number = 0; number < words[2].toInt(); ++number)
        publish({"publish", words[1] + QString::number(number), "1", "Many", QString::number(number)});
    return "published";
}

QString withdrawMany(const Words &words)
{
    for (int number = 0; number < words[2].toInt(); ++number)
        KelvoShared::instance()->unPublishPlaylist(words[1] + QString::number(number));
    return "withdrawn";
}

const QHash<QString, Command> &commands()
{
    static const QHash<QString, Command> table{
        {"publish", publish},
        {"publish-many", publishMany},
        {"withdraw-many", withdrawMany},
        {"withdraw",
            [](const Words &words) {
                KelvoShared::instance()->unPublishPlaylist(words[1]);
                return QStringLiteral("withdrawn");
            }},
        {"append", // <id> <count>
            [](const Words &words) {
                SharedLists::appendRows(SharedLists::modelOf(playlist(words)), words[2].toInt());
                return QStringLiteral("appended");
            }},
        {"remove", // <id> <from> <to>
            [](const Words &words) {
                playlist(words)->removeItems(words[2].toUInt(), words[3].toUInt());
                return QStringLiteral("removed");
            }},
        {"reverse", // <id>
            [](const Words &words) {
                playlist(words)->sort(KelvoPlaylist::SortKeyDuration, KelvoPlaylist::DurationDescending);
                return QStringLiteral("reversed");
            }},
        {"rework", // <id> <from> <to> <count>: without those, reversed, with so many more, told of at once
            [](const Words &words) {
                KelvoPlaylist *list = playlist(words);
                list->removeItems(words[2].toUInt(), words[3].toUInt());
                SharedLists::appendRows(SharedLists::modelOf(list), words[4].toInt());
                const bool reversed
                    = list->count() > 1 && list->mediaInfoAt(0).duration() > list->mediaInfoAt(1).duration();
                list->sort(KelvoPlaylist::SortKeyDuration,
                    reversed ? KelvoPlaylist::DurationAscending : KelvoPlaylist::DurationDescending);
                return QStringLiteral("reworked");
            }},
        {"names",
            [](const Words &) {
                QStringList names;
                for (KelvoPlaylist *each : registry()->allPlaylists())
                    names.append(each->name());
                return names.join(u'|');
            }},
        {"sleep", // <milliseconds>, as a program that is busy
            [](const Words &words) {
                QThread::msleep(words[1].toULong());
                return QStringLiteral("awake");
            }},
        {"quit",
            [](const Words &) {
                QCoreApplication::quit();
                return QStringLiteral("bye");
            }},
    };
    return table;
}

void obey(const QByteArray &line)
{
    const Words words = QString::fromUtf8(line).split(u' ');
    const Command command = commands().value(words.first());
    const QString answer = command ? command(words) : "unknown";
    std::printf("%s\n", qUtf8Printable(answer));
    std::fflush(stdout);
}

class Input : public QObject
{
public:
    Input()
        : m_notifier(STDIN_FILENO, QSocketNotifier::Read)
    {
        connect(&m_notifier, &QSocketNotifier::activated, this, &Input::read);
    }

private:
    void read()
    {
        char bytes[4096];
        const auto count = ::read(STDIN_FILENO, bytes, sizeof bytes);
        if (count <= 0) { // whoever started this has ended
            QCoreApplication::quit();
            return;
        }
        m_pending.append(bytes, qsizetype(count));
        for (qsizetype end = m_pending.indexOf('\n'); end >= 0; end = m_pending.indexOf('\n')) {
            obey(m_pending.left(end));
            m_pending.remove(0, end + 1);
        }
    }

    QSocketNotifier m_notifier;
    QByteArray m_pending;
};
} // namespace

int main(int argc, char *argv[])
{
    qputenv("KELVO_PLUGINS", "");
    QCoreApplication application(argc, argv);
    KelvoShared::instance()->initTracking(registry());
    Input input;
    return QCoreApplication::exec();
}
