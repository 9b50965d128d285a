// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QObject>
#include <QString>

class EventWriter;

/// Writes down the signals of one object, as reports.
///
/// No Q_OBJECT here: signals are connected to numbers behind QObject's own methods, which qt_metacall() takes with
/// whatever arguments they have.
class SignalTap : public QObject
{
public:
    /// Hears from then on.
    /// @param scope  the class whose signals are heard, without those of its bases and of what derives from it
    /// @param writer  not owned, must outlive this object
    SignalTap(
        const QObject *object, const QMetaObject &scope, const QString &uuid, const EventWriter &writer);

    int qt_metacall(QMetaObject::Call call, int method, void **arguments) override;

private:
    struct Signal
    {
        QByteArray name;
        QList<QMetaType> types;
    };

    const QString m_uuid;
    const EventWriter &m_writer;
    QList<Signal> m_signals;
};
