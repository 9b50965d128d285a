// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

class Card;

/// For a repository: a table of the groups, then what does not hold with its evidence, then what was refused or not
/// tried.
QByteArray toMarkdown(const Card &card);
