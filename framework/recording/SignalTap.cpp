// SPDX-License-Identifier: MIT
#include "SignalTap.h"

#include "EventWriter.h"
#include "KelvoPlaylist.h"

#include <QMetaMethod>

#include <utility>

namespace {
QList<QMetaType> parameterTypes(const QMetaMethod &method)
{
    QList<QMetaType> types;
    for (int i = 0; i < method.parameterCount(); ++i) {
        const QMetaType type = method.parameterMetaType(i);
        // Where a class is only declared beside the signal, moc knows its pointers by their name.
        types.append(type.isValid() ? type : QMetaType::fromName(method.parameterTypeName(i)));
    }
    return types;
}
} // namespace

SignalTap::SignalTap(
    const QObject *object, const QMetaObject &scope, const QString &uuid, const EventWriter &writer)
    : m_uuid(uuid)
    , m_writer(writer)
{
    qRegisterMetaType<KelvoPlaylist *>();
    for (int index = scope.methodOffset(); index < scope.methodCount(); ++index) {
        const QMetaMethod method = scope.method(index);
        if (method.methodType() != QMetaMethod::Signal || (method.attributes() & QMetaMethod::Cloned))
            continue;
        const int number = QObject::staticMetaObject.methodCount() + int(m_signals.size());
        m_signals.append({method.name(), parameterTypes(method)});
        // At once, whichever thread it comes from: it has to be written down before what follows from it.
        QMetaObject::connect(object, index, this, number, Qt::DirectConnection);
    }
}

int SignalTap::qt_metacall(QMetaObject::Call call, int method, void **arguments)
{
    method = QObject::qt_metacall(call, method, arguments);
    if (method < 0 || call != QMetaObject::InvokeMetaMethod)
        return method;
    if (method < m_signals.size()) {
        const Signal &signal = std::as_const(m_signals).at(method);
        EventLine line
            = m_writer.begin(m_uuid, "report", {signal.name.constData(), size_t(signal.name.size())});
        for (qsizetype i = 0; i < signal.types.size(); ++i)
            line.add(signal.types.at(i), arguments[i + 1]);
        m_writer.append(line);
    }
    return method - int(m_signals.size());
}
