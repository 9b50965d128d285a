// SPDX-License-Identifier: MIT
#pragma once

#include "StoreError.h"

#include <libtracker-sparql/tracker-sparql.h>

class ForeignLibrary;

/// The functions of libtracker-sparql that are used here, and those of GIO that go with them. It is loaded by the thread that
/// opens the first store, not with the program: with all that it needs it is ten libraries, none of which shows a window or
/// plays anything.
struct SparqlLibrary
{
    /// The functions, the same ones each time; null, with *error set, when they are not to be had. Any thread; the
    /// first call takes as long as loading does.
    static const SparqlLibrary *load(StoreError *error);

    decltype(&::g_cancellable_new) newCancellable = nullptr;
    decltype(&::g_cancellable_cancel) cancel = nullptr;
    decltype(&::g_cancellable_is_cancelled) isCancelled = nullptr;
    decltype(&::g_file_new_for_path) newFile = nullptr;

    decltype(&::tracker_sparql_error_quark) errorDomain = nullptr;
    decltype(&::tracker_sparql_get_ontology_nepomuk) ontology = nullptr;
    decltype(&::tracker_sparql_connection_new) newConnection = nullptr;
    decltype(&::tracker_sparql_connection_bus_new) newBusConnection = nullptr;
    decltype(&::tracker_sparql_connection_close) closeConnection = nullptr;
    decltype(&::tracker_sparql_connection_query_statement) newStatement = nullptr;
    decltype(&::tracker_sparql_connection_create_batch) newBatch = nullptr;
    decltype(&::tracker_sparql_statement_bind_string) bindText = nullptr;
    decltype(&::tracker_sparql_statement_execute) runStatement = nullptr;
    decltype(&::tracker_batch_add_sparql) addToBatch = nullptr;
    decltype(&::tracker_batch_execute) runBatch = nullptr;
    decltype(&::tracker_sparql_cursor_next) next = nullptr;
    decltype(&::tracker_sparql_cursor_close) closeCursor = nullptr;
    decltype(&::tracker_sparql_cursor_get_n_columns) columnCount = nullptr;
    decltype(&::tracker_sparql_cursor_get_value_type) type = nullptr;
    decltype(&::tracker_sparql_cursor_get_string) text = nullptr;
    decltype(&::tracker_sparql_cursor_get_integer) integer = nullptr;
    decltype(&::tracker_sparql_cursor_get_variable_name) variable = nullptr;

private:
    void resolve(ForeignLibrary &library);
};
