// SPDX-License-Identifier: MIT
#pragma once

#include <span>

class QDialog;

/// One widget of a form whose layout is a grid named "gridLayout".
struct FormCell
{
    const char *name;
    const char *kind;
    const char *text; ///< null: has none, but an accessible name
    int points; ///< 0: not checked
    int row, column, rowSpan, columnSpan;
};

/// Compares the dialog with the table, and every control without a text with having an accessible name.
void compareForm(const QDialog &dialog, std::span<const FormCell> cells);
