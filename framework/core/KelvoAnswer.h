// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QVariantList>

#include <memory>

class QObject;

/// The promise to answer one asynchronous request.
///
/// A caller of the boundary names a receiver and the plain text of one of its slots, for example
/// "rendererStatusChanged(QString, uint, int, QString)" (blanks and "const &" are tolerated, no SLOT() macro).
/// The back end keeps the KelvoAnswer for as long as the answer takes and then calls deliver().
///
/// The answer arrives as a call of that slot on the GUI thread, always from the event loop, never inside the
/// request itself, and at most once, however often copies of this object are told to deliver. A receiver that
/// has been destroyed in the meantime gets nothing. A slot that the receiver does not have gives a warning that
/// begins with "No such slot" at once, when the request is made.
class KELVO_CORE_EXPORT KelvoAnswer
{
public:
    /// GUI thread. Does not take ownership of the receiver. Where there is none, or no slot, nobody waits: deliver() does
    /// nothing.
    KelvoAnswer(QObject *receiver, const char *slot);

    /// Any thread. The values are converted to the slot's parameter types; a number that does not match or a
    /// value that cannot be converted gives a warning and no call. Parameters of type QVariant take any value.
    void deliver(const QVariantList &arguments) const;

private:
    struct State;
    std::shared_ptr<State> m_state;
};
