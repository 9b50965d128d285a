// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>

/// The fatal message by which the call ends the program; empty when it returns. It is made in a copy of the process, so
/// it has the calling thread only, and nothing that it does is seen here.
QString fatalMessage(const std::function<void()> &call);

/// Whether a fatal message is that of an assertion of this condition, in a source file whose name begins so.
bool isAssertion(const QString &message, const QString &condition, const QString &file);
