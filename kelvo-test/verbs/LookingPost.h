// SPDX-License-Identifier: MIT
#pragma once

#include "Eye.h"

class Session;

/// Where a verb looks at what renderers show. GUI thread.
class LookingPost
{
public:
    /// Looks from now on; waits until it does. False, with the reason, where nothing can be seen.
    /// @param place  as of Eye::look()
    bool look(const QString &place, Session &session, QString *error);
    const Eye &eye() const { return m_eye; }

private:
    Eye m_eye;
};
