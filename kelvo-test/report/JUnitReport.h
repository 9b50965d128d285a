// SPDX-License-Identifier: MIT
#pragma once

#include "TestResult.h"

#include <QDateTime>
#include <QList>

class QIODevice;

/// Results as the XML that CI systems read: one suite for each group.
namespace JUnitReport {
/// @param name  of all suites together
/// @param began  when the first was tried
/// @return whether all could be written
bool write(QIODevice &device, const QString &name, const QDateTime &began, const QList<TestResult> &results);
} // namespace JUnitReport
