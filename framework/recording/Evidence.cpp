// SPDX-License-Identifier: MIT
#include "Evidence.h"

#include "KelvoEvidenceSource.h"
#include "KelvoPlaylist.h"
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "KelvoSource.h"
#include "UserFolders.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPixmap>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QScreen>
#include <QSysInfo>
#include <QWindow>

#include <algorithm>
#include <array>

namespace {
// Plain text: this is done at each start, and an expression takes longer to compile than all of it.
constexpr std::array beginningsOfInterest = {"KELVO_", "QKELVO_", "QT_", "QML", "QSG_", "GST_", "G_", "GDK_",
    "GIO_", "LC_", "LANG", "XDG_", "DBUS_SESSION_BUS_ADDRESS", "PULSE_", "PIPEWIRE_", "ALSA_", "LIBVA_",
    "VDPAU_", "MESA_", "LD_", "ASAN_", "UBSAN_", "LSAN_", "TSAN_"};
constexpr std::array namesOfInterest = {"DISPLAY", "WAYLAND_DISPLAY", "PATH", "TZ", "TERM"};
constexpr std::array partsOfSecrets
    = {"PASS", "SECRET", "TOKEN", "KEY", "CREDENTIAL", "COOKIE", "AUTH", "SESSION_ID"};

bool isOfInterest(const QString &name)
{
    const auto isBeginning = [&name](const char *text) {
        return name.startsWith(QLatin1String(text));
    };
    const auto isName = [&name](const char *text) {
        return name == QLatin1String(text);
    };
    return std::any_of(beginningsOfInterest.begin(), beginningsOfInterest.end(), isBeginning)
        || std::any_of(namesOfInterest.begin(), namesOfInterest.end(), isName);
}

bool isSecretName(const QString &name)
{
    const auto isPart = [&name](const char *text) {
        return name.contains(QLatin1String(text));
    };
    return std::any_of(partsOfSecrets.begin(), partsOfSecrets.end(), isPart);
}

/// Passwords in addresses, and who and where the user is.
QString withoutUser(QString value)
{
    if (value.contains(QLatin1String("://"))) {
        static const QRegularExpression password(QStringLiteral("(://[^:/@\\s]*):[^@/\\s]*@"));
        value.replace(password, QStringLiteral("\\1@"));
    }
    const QString home = QDir::homePath();
    if (home.size() > 1)
        value.replace(home, QStringLiteral("~"));
    for (const char *variable : {"USER", "LOGNAME"}) {
        const QString name = qEnvironmentVariable(variable);
        if (!name.isEmpty() && value.contains(name)) {
            const QRegularExpression word(QStringLiteral("\\b%1\\b").arg(QRegularExpression::escape(name)));
            value.replace(word, QStringLiteral("USER"));
        }
    }
    return value;
}

template <typename Object> QJsonArray listOf(const QList<Object *> &objects)
{
    QJsonArray list;
    for (const Object *object : objects)
        list.append(
            QJsonObject{{QStringLiteral("uuid"), object->uuid()}, {QStringLiteral("name"), object->name()}});
    return list;
}

QJsonArray pluginsOf(const KelvoRegistry &registry)
{
    QJsonArray list;
    for (const QString &fileName : registry.availablePlugins()) {
        const KelvoPluginStatus status = registry.pluginLoader()->status(fileName);
        list.append(QJsonObject{{QStringLiteral("file"), fileName}, {QStringLiteral("name"), status.name},
            {QStringLiteral("version"), status.version}, {QStringLiteral("state"), status.stateText()},
            {QStringLiteral("error"), status.error}});
    }
    return list;
}

/// @return what went wrong; empty when nothing did
QString saveFile(const QString &path, const char *bytes, qsizetype size)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly) || file.write(bytes, size) != size
        || !file.flush())
        return QStringLiteral("%1: %2").arg(path, file.errorString());
    return {};
}
} // namespace

QString Evidence::home()
{
    const QString named = qEnvironmentVariable("KELVO_EVIDENCE_DIR");
    if (!named.isEmpty())
        return QDir(named).absolutePath();
    return UserFolders::state(QStringLiteral("evidence"));
}

QString Evidence::folderOf(const RecordingHeader &header, const QDateTime &time)
{
    return QStringLiteral("%1/%2-%3-%4")
        .arg(home(), header.program, time.toUTC().toString(QStringLiteral("yyyyMMdd'T'HHmmsszzz'Z'")))
        .arg(header.pid);
}

QByteArray Evidence::describe(const RecordingHeader &header, const KelvoRegistry *registry)
{
    QJsonObject about{{QStringLiteral("program"), header.program},
        {QStringLiteral("version"), header.version}, {QStringLiteral("revision"), header.revision},
        {QStringLiteral("pid"), header.pid},
        {QStringLiteral("started"), header.started.toUTC().toString(Qt::ISODateWithMs)},
        {QStringLiteral("system"), QSysInfo::prettyProductName()},
        {QStringLiteral("kernel"), QSysInfo::kernelVersion()},
        {QStringLiteral("processor"), QSysInfo::currentCpuArchitecture()},
        {QStringLiteral("qt"), QString::fromLatin1(qVersion())},
        {QStringLiteral("platform"), QGuiApplication::platformName()}};
    if (registry) {
        about.insert(QStringLiteral("plug-ins"), pluginsOf(*registry));
        about.insert(QStringLiteral("renderers"), listOf(registry->renderers()));
        about.insert(QStringLiteral("sources"), listOf(registry->sources()));
        about.insert(QStringLiteral("playlists"), listOf(registry->allPlaylists()));
    }
    return QJsonDocument(about).toJson();
}

std::string Evidence::describeEnvironment()
{
    const QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QStringList lines;
    for (const QString &name : environment.keys()) {
        if (!isOfInterest(name))
            continue;
        const bool isSecret = isSecretName(name);
        lines.append(
            name + u'=' + (isSecret ? QStringLiteral("(left out)") : withoutUser(environment.value(name))));
    }
    lines.sort();
    return (lines.join(u'\n') + u'\n').toStdString();
}

QList<QImage> Evidence::pictureWindows()
{
    QList<QImage> pictures;
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return pictures;
    for (QWindow *window : QGuiApplication::topLevelWindows()) {
        if (!window->isExposed() || !window->screen())
            continue;
        const QImage picture = window->screen()->grabWindow(window->winId()).toImage();
        // Not every platform lets a program look at the screen.
        if (!picture.isNull())
            pictures.append(picture);
    }
    return pictures;
}

QString Evidence::save() const
{
    if (!UserFolders::makePrivate(folder))
        return QStringLiteral("%1: the folder cannot be made").arg(folder);
    const auto path = [this](const char *name) {
        return folder + u'/' + QString::fromLatin1(name);
    };
    QStringList problems{saveFile(path(RecordingName), recording.data(), qsizetype(recording.size())),
        saveFile(path(LogName), log.data(), qsizetype(log.size())),
        saveFile(path(AboutName), about.constData(), about.size()),
        saveFile(path(EnvironmentName), environment.data(), qsizetype(environment.size()))};
    for (const KelvoEvidenceSource::File &file : KelvoEvidenceSource::readAll()) {
        const QByteArray contents = withoutUser(QString::fromUtf8(file.contents)).toUtf8();
        problems.append(saveFile(path(qPrintable(file.name)), contents.constData(), contents.size()));
    }
    for (qsizetype i = 0; i < windows.size(); ++i) {
        const QString picture = path(qPrintable(QStringLiteral("window-%1.png").arg(i + 1)));
        if (!windows.at(i).save(picture, "PNG"))
            problems.append(QStringLiteral("%1: the picture cannot be saved").arg(picture));
    }
    problems.removeAll(QString());
    return problems.value(0);
}
