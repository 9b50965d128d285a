// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

class Card;

/// For people: one page that opens without a network or scripts, in the dark, on small screens and in print.
QByteArray toHtml(const Card &card);
