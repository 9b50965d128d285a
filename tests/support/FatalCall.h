// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>

/// The fatal message by which the call ends the program; empty when it returns. It is made in a copy of the process, so
/// it has the calling thread only, and nothing that it does is seen here.
QString fatalMessage(const std::function<void()> &call);
