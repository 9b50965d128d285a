// SPDX-License-Identifier: MIT
#pragma once

/// Options of a QSparqlConnection. The driver "QTRACKER" needs none.
class QSparqlConnectionOptions
{
};
