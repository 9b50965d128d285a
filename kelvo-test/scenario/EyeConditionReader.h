// SPDX-License-Identifier: MIT
#pragma once

#include "EyeCondition.h"
#include "Medium.h"

#include <QList>
#include <QStringList>

class YamlNode;

/// Reads what a scenario expects to be seen. What is wrong is thrown as a ScenarioFault.
namespace EyeConditionReader {
/// The keys that expectations have for it.
const QStringList &keys();
/// Takes the entry of one of these keys. Others are left alone.
/// @param media  that it may name
void take(EyeCondition &condition, const YamlNode &entry, const QList<Medium> &media);
} // namespace EyeConditionReader
