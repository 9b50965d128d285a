// SPDX-License-Identifier: MIT
#pragma once

#include "Statement.h"

// The groups of the contract, one source file each (two for the states).
QList<Statement> stateStatements();
QList<Statement> stateCommandStatements();
QList<Statement> seekStatements();
QList<Statement> pauseAtStatements();
QList<Statement> playlistStatements();
QList<Statement> playlistEditStatements();
QList<Statement> errorStatements();
QList<Statement> propertyStatements();
QList<Statement> lifetimeStatements();
QList<Statement> tellingStatements();
