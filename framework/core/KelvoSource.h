// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QObject>
#include <QVariant>

/// A source of content: the tracker store, a media server of the network. Lives on the GUI thread; owned by its
/// back end, which takes it out of the registry before it deletes it.
class KELVO_CORE_EXPORT KelvoSource : public QObject
{
    Q_OBJECT
public:
    /// The parent, if there is one, owns it.
    explicit KelvoSource(QObject *parent = nullptr);
    ~KelvoSource() override;

    /// Identity, unique in the registry and unchanging; not empty.
    virtual QString uuid() const = 0;
    /// What users read; may be empty.
    virtual QString name() const = 0;

    /// Sets a property, for instance "signIn" to true or false. A key that the source does not have is ignored
    /// with a warning.
    virtual void setKelvoProperty(const QString &key, const QVariant &value) = 0;

    /// Asks for a property. True: the answer (key, value) will come through the slot, for instance
    /// "sourcePropertyCallback(QString&,QVariant&)" (see KelvoAnswer). False: the source does not know the key,
    /// and nothing will come.
    virtual bool kelvoProperty(const QString &key, QObject *receiver, const char *slot) = 0;
};
