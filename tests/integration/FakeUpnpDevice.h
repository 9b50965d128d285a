// SPDX-License-Identifier: MIT
#pragma once

#include "HttpTestServer.h"
#include "SearchListener.h"

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QTimer>
#include <QUdpSocket>
#include <QUrl>

#include <memory>

/// A media renderer or server on the loopback interface that tells of itself whatever a test wants. Several may have one
/// UDN. It is found by its announcements, and answers searches when it was told to.
class FakeUpnpDevice : public QObject
{
    Q_OBJECT
public:
    explicit FakeUpnpDevice(QByteArray udn = "uuid:fake", QByteArray name = "Fake");

    QByteArray udn;
    QByteArray name;
    QByteArray type = "MediaRenderer";
    QByteArray elements; ///< further ones of its description
    QByteArray urlBase; ///< empty: the description has none
    QByteArray controlUrl = "/control";
    QByteArray otherUrls; ///< of events and of the service's description; empty: sound ones
    QByteArray bootId; ///< empty: not announced
    QByteArray configId;
    QHash<QByteArray, QByteArray> results; ///< of every action, as they stand in the XML
    int maxAge = 1800; ///< seconds that an announcement or an answer counts
    int subscriptionDelay
        = 0; ///< milliseconds that it answers a subscription late, though not with its event
    bool hasVolume = false; ///< has a RenderingControl service, which sends no events
    bool isMute = false; ///< accepts subscriptions and sends no events
    bool isSlow = false; ///< sends its description when server() is released

    HttpTestServer &server() { return m_server; }
    HttpTestServer::Resource describe() const;
    /// From now on its description is there.
    void moveTo(const QString &path);
    /// @param news  "alive", "update" or "byebye"
    void announce(const QByteArray &news = "alive");
    /// Again and again.
    void keepAnnouncing() { m_announcements.start(); }
    void stopAnnouncing() { m_announcements.stop(); }
    /// From now on.
    void answerSearches();

    int requests(const QByteArray &path) const;
    /// How often it was asked to do that.
    int actions(const QByteArray &action) const;
    int subscriptions() const { return m_subscriptions; }
    /// Where they are sent.
    QUrl eventAddress() const { return QUrl(QString::fromLatin1(m_subscriber)); }
    bool areEventsSent() const { return m_events.isEmpty(); }
    /// Tells who subscribed of a change of its state. Those who subscribe are told of the present one.
    void sendState(const QByteArray &state);
    /// The same with any text in the place of the event, and in the place of what holds it.
    void sendLastChange(const QByteArray &text);
    void sendProperties(const QByteArray &xml);

    static QByteArray lastChange(const QByteArray &variables, const QByteArray &instance = "0");
    static QByteArray escaped(const QByteArray &xml);

private:
    QByteArray target() const { return "urn:schemas-upnp-org:device:" + type + ":1"; }
    QByteArray identity() const;
    HttpTestServer::Resource perform(const QByteArray &head);
    HttpTestServer::Resource subscribe(const QByteArray &head);
    void sendNext();

    HttpTestServer m_server;
    QUdpSocket m_socket;
    QTimer m_announcements;
    std::unique_ptr<SearchListener> m_searches;
    QString m_path;
    QList<QByteArray> m_performed;
    QByteArray m_state = "STOPPED";
    QByteArray m_subscriber; // address; empty: none
    int m_subscriptions = 0;
    int m_sequence = 0;
    QList<QByteArray> m_events; // the first one is under way
};
