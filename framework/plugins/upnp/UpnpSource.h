// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoAnswer.h"
#include "KelvoSource.h"
#include "UpnpTypes.h"

#include <optional>
#include <vector>

/// A media server of the network.
///
/// Its properties are what its description says; what that leaves out, the source does not know. "supportQuery"
/// is answered once the server has told whether it can be searched.
class UpnpSource : public KelvoSource
{
    Q_OBJECT
public:
    explicit UpnpSource(const Upnp::Description &description, QObject *parent = nullptr);
    ~UpnpSource() override;

    QString uuid() const override { return m_description.key.udn; }
    QString name() const override { return m_description.name; }
    void setKelvoProperty(const QString &key, const QVariant &value) override;
    bool kelvoProperty(const QString &key, QObject *receiver, const char *slot) override;

    void describe(const Upnp::Description &description) { m_description = description; }
    void setSearchable(bool canSearch);

private:
    void answerSearchable(const KelvoAnswer &answer) const;

    Upnp::Description m_description;
    std::optional<bool> m_canSearch;
    std::vector<KelvoAnswer> m_waiting; // to hear whether it can be searched
};
