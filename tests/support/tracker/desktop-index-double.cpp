// SPDX-License-Identifier: MIT
// desktop-index-double FOLDER
// Stands in for the desktop's index: serves a store under its bus name, as files and what they hold in the way of that
// index. Each line of the standard input is an update that it runs; it answers each with "done".
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

#include <libtracker-sparql/tracker-sparql.h>

namespace {
void die(GError *error)
{
    if (error) {
        std::cerr << error->message << std::endl;
        std::exit(1);
    }
}
} // namespace

int main(int argc, char *argv[])
{
    GError *error = nullptr;
    if (argc < 2)
        return 2;
    GFile *folder = g_file_new_for_path(argv[1]);
    GFile *ontology = tracker_sparql_get_ontology_nepomuk();
    TrackerSparqlConnection *store = tracker_sparql_connection_new(
        TRACKER_SPARQL_CONNECTION_FLAGS_NONE, folder, ontology, nullptr, &error);
    die(error);
    GDBusConnection *bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
    die(error);
    const TrackerEndpointDBus *endpoint = tracker_endpoint_dbus_new(store, bus, nullptr, nullptr, &error);
    die(error);
    const auto owned = +[](GDBusConnection *, const char *, gpointer) {
        std::cout << "ready" << std::endl;
    };
    g_bus_own_name_on_connection(bus, "org.freedesktop.Tracker3.Miner.Files", G_BUS_NAME_OWNER_FLAGS_NONE,
        owned, nullptr, nullptr, nullptr);
    std::thread([store] {
        for (std::string line; std::getline(std::cin, line);) {
            GError *failure = nullptr;
            tracker_sparql_connection_update(store, line.c_str(), nullptr, &failure);
            std::cout << (failure ? failure->message : "done") << std::endl;
        }
        std::_Exit(0);
    }).detach();
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
    return endpoint ? 0 : 1;
}
