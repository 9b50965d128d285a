// SPDX-License-Identifier: MIT
#include "KelvoAnswer.h"

#include "HandOver.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QMetaMethod>
#include <QPointer>

#include <array>
#include <atomic>

namespace {
constexpr int maximumArguments = 10; // what a queued slot call can take

QByteArray plainType(QByteArray type)
{
    if (type.endsWith('&'))
        type.chop(1);
    return type;
}

/// A value of the slot's parameter type made from `value`; invalid when it cannot be converted.
QVariant converted(QVariant value, const QByteArray &typeName)
{
    const QMetaType type = QMetaType::fromName(typeName);
    if (!type.isValid() || (value.metaType() != type && !value.convert(type)))
        return {};
    return value;
}
} // namespace

struct KelvoAnswer::State
{
    QPointer<QObject> receiver;
    QMetaMethod method;
    std::atomic_bool delivered = false;

    void call(QVariantList arguments) const;
};

void KelvoAnswer::State::call(QVariantList arguments) const
{
    if (!receiver)
        return;
    // A slot parameter "QString&" has no metatype of its own, so the call is made directly with plain pointers
    // to the values, after their types have been checked here. Slot 0 of the array is the return value.
    std::array<void *, maximumArguments + 1> pointers{};
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QByteArray type = plainType(method.parameterTypeName(int(i)));
        if (type == "QVariant") {
            pointers[size_t(i) + 1] = &arguments[i];
            continue;
        }
        QVariant value = converted(arguments.at(i), type);
        if (!value.isValid()) {
            qWarning("An answer for %s does not fit its parameter %d", method.methodSignature().constData(),
                int(i));
            return;
        }
        arguments[i] = value;
        pointers[size_t(i) + 1] = arguments[i].data();
    }
    QMetaObject::metacall(receiver, QMetaObject::InvokeMetaMethod, method.methodIndex(), pointers.data());
}

KelvoAnswer::KelvoAnswer(QObject *receiver, const char *slot)
{
    if (!receiver || !slot)
        return;
    const QByteArray signature = QMetaObject::normalizedSignature(slot);
    const int index = receiver->metaObject()->indexOfMethod(signature.constData());
    if (index < 0) {
        qWarning("No such slot %s::%s", receiver->metaObject()->className(), signature.constData());
        return;
    }
    m_state = std::make_shared<State>();
    m_state->receiver = receiver;
    m_state->method = receiver->metaObject()->method(index);
}

void KelvoAnswer::deliver(const QVariantList &arguments) const
{
    if (!m_state || m_state->delivered.exchange(true))
        return;
    if (arguments.size() != m_state->method.parameterCount() || arguments.size() > maximumArguments) {
        qWarning("An answer for %s has %d values", m_state->method.methodSignature().constData(),
            int(arguments.size()));
        return;
    }
    // The application object lives on the GUI thread; the receiver itself may be gone by the time it runs.
    QMetaObject::invokeMethod(QCoreApplication::instance(),
        HandedCall([state = m_state, arguments] { state->call(arguments); }), Qt::QueuedConnection);
}
