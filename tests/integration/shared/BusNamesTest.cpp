// SPDX-License-Identifier: MIT
#include "BusNames.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QSignalSpy>
#include <QTest>

namespace {
const QString first = QStringLiteral("org.example.Kind.first");
const QString second = QStringLiteral("org.example.Kind.second");

bool isOfKind(const QString &name)
{
    return name.startsWith(u"org.example.Kind.");
}

/// Another process on the bus, as far as the bus can tell. Goes off it with this object.
class Other
{
public:
    explicit Other(const QString &name)
        : m_connection(QDBusConnection::connectToBus(QDBusConnection::SessionBus, name))
        , m_name(name)
    {
    }
    ~Other() { QDBusConnection::disconnectFromBus(m_name); }
    Q_DISABLE_COPY_MOVE(Other)

    QString owner() const { return m_connection.baseService(); }
    bool take(const QString &name,
        QDBusConnectionInterface::ServiceReplacementOptions replacing
        = QDBusConnectionInterface::AllowReplacement)
    {
        return m_connection.interface()->registerService(
                   name, QDBusConnectionInterface::ReplaceExistingService, replacing)
            == QDBusConnectionInterface::ServiceRegistered;
    }
    void release(const QString &name) { m_connection.unregisterService(name); }
    void send(const QDBusMessage &message) { m_connection.send(message); }

private:
    QDBusConnection m_connection;
    const QString m_name;
};

/// What a watcher tells, in one line each.
class Told
{
public:
    explicit Told(BusNames *names)
    {
        QObject::connect(names, &BusNames::appeared, names,
            [this](const QString &owner, const QString &name) { lines.append("+ " + owner + ' ' + name); });
        QObject::connect(
            names, &BusNames::vanished, names, [this](const QString &owner) { lines.append("- " + owner); });
    }
    QStringList lines;
};
} // namespace

class BusNamesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QDBusConnection::connectToBus(QDBusConnection::SessionBus, "watching").isConnected());
    }

    void tellsOfThoseWhoWereThereBefore()
    {
        Other other("other");
        QVERIFY(other.take(first));
        QVERIFY(other.take("org.example.Kin"));
        BusNames names(watching(), isOfKind, 5000);
        const Told told(&names);
        QTRY_COMPARE(told.lines, QStringList("+ " + other.owner() + ' ' + first));
    }

    void tellsOfAProcessOnceForAllItsNames()
    {
        BusNames names(watching(), isOfKind, 5000);
        const Told told(&names);
        Other other("other");
        QVERIFY(other.take(first));
        QVERIFY(other.take(second));
        other.release(first);
        QVERIFY(other.take(first));
        Other last("last");
        QVERIFY(last.take("org.example.Kind.last"));
        QTRY_COMPARE(told.lines.size(), 2);
        QCOMPARE(told.lines.first(), "+ " + other.owner() + ' ' + first);
        QVERIFY(told.lines.last().contains(last.owner()));
        other.release(second);
        other.release(first);
        QTRY_COMPARE(told.lines.size(), 3);
        QCOMPARE(told.lines.last(), "- " + other.owner());
    }

    void tellsOfACrash()
    {
        BusNames names(watching(), isOfKind, 5000);
        const Told told(&names);
        QString owner;
        {
            Other other("other");
            owner = other.owner();
            QVERIFY(other.take(first));
            QVERIFY(other.take(second));
        }
        QTRY_COMPARE(told.lines, QStringList({"+ " + owner + ' ' + first, "- " + owner}));
    }

    void endsOneBeforeItBeginsTheNext()
    {
        BusNames names(watching(), isOfKind, 5000);
        const Told told(&names);
        Other before("before");
        Other after("after");
        QVERIFY(before.take(first));
        QVERIFY(after.take(first));
        QTRY_COMPARE(told.lines,
            QStringList({"+ " + before.owner() + ' ' + first, "- " + before.owner(),
                "+ " + after.owner() + ' ' + first}));
    }

    void isNotToldOfItself()
    {
        BusNames names(watching(), isOfKind, 5000);
        const Told told(&names);
        Other other("other");
        QVERIFY(other.take(first));
        QTRY_COMPARE(told.lines.size(), 1);
        // Taking the name over ends the other one.
        QCOMPARE(watching()
                     .interface()
                     ->registerService(first, QDBusConnectionInterface::ReplaceExistingService)
                     .value(),
            QDBusConnectionInterface::ServiceRegistered);
        QTRY_COMPARE(told.lines.size(), 2);
        QCOMPARE(told.lines.last(), "- " + other.owner());
        watching().unregisterService(first);
    }

    void believesOnlyTheBus()
    {
        BusNames names(watching(), isOfKind, 5000);
        const Told told(&names);
        Other liar("liar");
        auto lie
            = QDBusMessage::createSignal("/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged");
        lie << first << QString() << liar.owner();
        liar.send(lie);
        QVERIFY(liar.take(second));
        QTRY_COMPARE(told.lines, QStringList("+ " + liar.owner() + ' ' + second));
    }

    void mayGoWhileItTells()
    {
        auto names = std::make_unique<BusNames>(watching(), isOfKind, 5000);
        connect(names.get(), &BusNames::vanished, this, [&names] { names.reset(); });
        const QSignalSpy appeared(names.get(), &BusNames::appeared);
        Other before("before");
        Other after("after");
        QVERIFY(before.take(first));
        QVERIFY(after.take(first)); // one ends and the next begins
        QTRY_VERIFY(!names);
        QCOMPARE(appeared.size(), 1);
    }

private:
    static QDBusConnection watching() { return QDBusConnection(QStringLiteral("watching")); }
};

KELVO_TEST(BusNamesTest)
#include "BusNamesTest.moc"
