// SPDX-License-Identifier: MIT
#include "SparqlLibrary.h"

#include "ForeignLibrary.h"

const SparqlLibrary *SparqlLibrary::load(StoreError *error)
{
    struct Loaded
    {
        Loaded()
        {
            ForeignLibrary library({"libtracker-sparql-3.0.so.0"});
            functions.resolve(library);
            problem = library.errorText();
        }
        SparqlLibrary functions;
        QString problem;
    };
    static const Loaded loaded;
    if (loaded.problem.isEmpty())
        return &loaded.functions;
    *error = {StoreError::Other, QStringLiteral("libtracker-sparql cannot be used: %1").arg(loaded.problem)};
    return nullptr;
}

void SparqlLibrary::resolve(ForeignLibrary &library)
{
    library.find(newCancellable, "g_cancellable_new");
    library.find(cancel, "g_cancellable_cancel");
    library.find(isCancelled, "g_cancellable_is_cancelled");
    library.find(newFile, "g_file_new_for_path");
    library.find(errorDomain, "tracker_sparql_error_quark");
    library.find(ontology, "tracker_sparql_get_ontology_nepomuk");
    library.find(newConnection, "tracker_sparql_connection_new");
    library.find(newBusConnection, "tracker_sparql_connection_bus_new");
    library.find(closeConnection, "tracker_sparql_connection_close");
    library.find(newStatement, "tracker_sparql_connection_query_statement");
    library.find(newBatch, "tracker_sparql_connection_create_batch");
    library.find(bindText, "tracker_sparql_statement_bind_string");
    library.find(runStatement, "tracker_sparql_statement_execute");
    library.find(addToBatch, "tracker_batch_add_sparql");
    library.find(runBatch, "tracker_batch_execute");
    library.find(next, "tracker_sparql_cursor_next");
    library.find(closeCursor, "tracker_sparql_cursor_close");
    library.find(columnCount, "tracker_sparql_cursor_get_n_columns");
    library.find(type, "tracker_sparql_cursor_get_value_type");
    library.find(text, "tracker_sparql_cursor_get_string");
    library.find(integer, "tracker_sparql_cursor_get_integer");
    library.find(variable, "tracker_sparql_cursor_get_variable_name");
}
