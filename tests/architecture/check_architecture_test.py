#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The architecture check must see the faults it exists for."""
import unittest

from check_architecture import class_faults, include_faults, link_faults, load_faults, name_faults, plan_faults, run_path_faults

OWNERS = {"KelvoRegistry.h": {"framework/core"}, "GstEngine.h": {"framework/plugins/gst-renderer"},
          "KelvoMainWindow.h": {"src"}, "RemotePlayer.h": {"framework/playback/remote"}, "ItemRenderer.h": {"framework/playback"},
          "MprisTransport.h": {"framework/plugins/mpris"}, "Recorder.h": {"framework/recording"},
          "EventRing.h": {"framework/recording"},
          "Statement.h": {"conformance"}}


class Classes(unittest.TestCase):
    def test_two_of_one_name_are_found(self):
        one = "class PausePoint : public QObject\n{\n};\n"
        other = "struct KELVO_EXPORT PausePoint {};\n"
        self.assertEqual(len(class_faults({"playback/a.h": one, "gst-renderer/b.h": other})), 1)
        self.assertEqual(len(class_faults({"playback/a.h": one, "gst-renderer/b.h": "class PausePoint final {\n"})), 1)

    def test_names_of_other_headers_may_be_announced_and_held(self):
        one = "class PausePoint\n{\n};\n"
        inner = "class Clock\n{\n    struct PausePoint {};\n};\n"
        self.assertEqual(class_faults({"a.h": one, "b.h": "class PausePoint;\nclass Other\n{\n};\n", "c.h": inner}), [])


class Includes(unittest.TestCase):
    def faults(self, file, include):
        return include_faults(file, f"#include {include}\n", OWNERS)

    def test_downward_arrows_are_fine(self):
        self.assertEqual(self.faults("src/main.cpp", '"KelvoRegistry.h"'), [])
        self.assertEqual(self.faults("framework/plugins/gst-renderer/a.cpp", '"KelvoRegistry.h"'), [])
        self.assertEqual(self.faults("framework/plugins/gst-renderer/a.cpp", "<gst/gst.h>"), [])

    def test_the_console_knows_no_back_end(self):
        self.assertTrue(self.faults("src/main.cpp", '"GstEngine.h"'))
        self.assertTrue(self.faults("src/main.cpp", '"../framework/plugins/gst-renderer/GstEngine.h"'))
        self.assertTrue(self.faults("src/main.cpp", "<gst/gst.h>"))
        self.assertTrue(self.faults("src/main.cpp", "<glib.h>"))

    def test_the_program_without_a_window_knows_no_back_end_and_no_window(self):
        self.assertEqual(self.faults("kelvo-test/verbs/a.cpp", '"KelvoRegistry.h"'), [])
        for include in ('"GstEngine.h"', '"KelvoMainWindow.h"', "<QWidget>", "<gst/gst.h>"):
            self.assertTrue(self.faults("kelvo-test/verbs/a.cpp", include))

    def test_scenario_files_are_read_in_one_place(self):
        self.assertEqual(self.faults("kelvo-test/scenario/a.cpp", "<yaml-cpp/yaml.h>"), [])
        for folder in ("kelvo-test/verbs", "framework/core", "src"):
            self.assertTrue(self.faults(folder + "/a.cpp", "<yaml-cpp/yaml.h>"))

    def test_nothing_below_knows_the_console(self):
        self.assertTrue(self.faults("framework/core/a.cpp", '"KelvoMainWindow.h"'))
        self.assertTrue(self.faults("framework/core/a.cpp", "<QWidget>"))
        self.assertTrue(self.faults("framework/plugins/simulator/a.cpp", "<QMessageBox>"))

    def test_back_ends_do_not_know_each_other(self):
        self.assertTrue(self.faults("framework/plugins/simulator/a.cpp", '"GstEngine.h"'))
        self.assertTrue(self.faults("framework/plugins/simulator/a.cpp", "<gst/gst.h>"))

    def test_what_renderers_of_remote_players_share(self):
        self.assertEqual(self.faults("framework/plugins/mpris/a.cpp", '"RemotePlayer.h"'), [])
        self.assertEqual(self.faults("framework/plugins/upnp/a.cpp", '"RemotePlayer.h"'), [])
        self.assertEqual(self.faults("framework/playback/remote/a.cpp", '"KelvoRegistry.h"'), [])
        self.assertEqual(self.faults("framework/playback/remote/a.cpp", '"ItemRenderer.h"'), [])
        self.assertTrue(self.faults("framework/plugins/simulator/a.cpp", '"RemotePlayer.h"'))
        self.assertTrue(self.faults("framework/playback/a.cpp", '"RemotePlayer.h"'))
        self.assertTrue(self.faults("framework/playback/remote/a.cpp", '"MprisTransport.h"'))
        self.assertTrue(self.faults("framework/plugins/upnp/a.cpp", '"MprisTransport.h"'))
        self.assertTrue(self.faults("framework/playback/a.cpp", "<QDBusConnection>"))
        self.assertTrue(self.faults("framework/core/a.cpp", '"RemotePlayer.h"'))


    def test_only_programs_record(self):
        self.assertEqual(self.faults("src/main.cpp", '"Recorder.h"'), [])
        self.assertTrue(self.faults("src/main.cpp", '"EventRing.h"'))
        for folder in ("framework/core", "framework/playback", "framework/shared", "framework/plugins/simulator"):
            self.assertTrue(self.faults(folder + "/a.cpp", '"Recorder.h"'))
        self.assertEqual(self.faults("framework/recording/a.cpp", '"KelvoRegistry.h"'), [])
        self.assertTrue(self.faults("framework/recording/a.cpp", '"ItemRenderer.h"'))
        self.assertTrue(self.faults("framework/recording/a.cpp", "<QApplication>"))

    def test_the_contract_knows_no_renderer(self):
        self.assertEqual(self.faults("conformance/statements/a.cpp", '"KelvoRegistry.h"'), [])
        self.assertEqual(self.faults("conformance/a.cpp", '"Statement.h"'), [])
        for header in ('"ItemRenderer.h"', '"GstEngine.h"', '"KelvoMainWindow.h"', "<gst/gst.h>", "<QDBusConnection>"):
            self.assertTrue(self.faults("conformance/a.cpp", header), header)
        # Nor does any of them know the contract: what they do is not made for it.
        for folder in ("framework/plugins/simulator", "framework/playback", "framework/core", "src"):
            self.assertTrue(self.faults(folder + "/a.cpp", '"Statement.h"'), folder)

    def test_the_store_reads_no_media(self):
        self.assertEqual(self.faults("framework/tracker/store/a.cpp", "<libtracker-sparql/tracker-sparql.h>"), [])
        for header in ("<gst/gst.h>", "<fileref.h>", "<uchardet/uchardet.h>"):
            self.assertTrue(self.faults("framework/tracker/a.cpp", header))
            self.assertEqual(self.faults("framework/plugins/tracker-source/index/a.cpp", header), [])
        self.assertTrue(self.faults("framework/plugins/tracker-source/a.cpp", "<libtracker-sparql/tracker-sparql.h>"))

    def test_playlist_files_are_read_in_one_place(self):
        self.assertEqual(self.faults("framework/media/a.cpp", "<totem-pl-parser.h>"), [])
        for folder in ("framework/plugins/gst-renderer", "framework/plugins/tracker-source", "framework/tracker"):
            self.assertTrue(self.faults(folder + "/a.cpp", "<totem-pl-parser.h>"))

    def test_reports_are_made_of_recordings_alone(self):
        owners = OWNERS | {"RecordingReader.h": {"framework/recording"}, "Timeline.h": {"kelvo-test/report"}}
        self.assertEqual(include_faults("kelvo-test/report/a.cpp", '#include "RecordingReader.h"\n', owners), [])
        self.assertTrue(include_faults("kelvo-test/report/a.cpp", '#include "KelvoRegistry.h"\n', owners))
        self.assertTrue(include_faults("framework/recording/a.cpp", '#include "Timeline.h"\n', owners))
        self.assertTrue(include_faults("src/main.cpp", '#include "Timeline.h"\n', owners))

    def test_one_family_of_locks(self):
        self.assertEqual(self.faults("framework/core/a.cpp", "<mutex>"), [])
        self.assertTrue(self.faults("framework/core/a.cpp", "<QMutex>"))
        self.assertTrue(self.faults("src/a.cpp", "<QWaitCondition>"))


    def test_the_console_knows_the_boundary_only(self):
        owners = OWNERS | {"KelvoPlayQueue.h": {"framework/core"}}
        self.assertTrue(include_faults("src/main.cpp", '#include "KelvoPlayQueue.h"\n', owners))
        self.assertEqual(include_faults("framework/plugins/simulator/a.cpp", '#include "KelvoPlayQueue.h"\n', owners), [])


class Names(unittest.TestCase):
    def test_only_window_and_controllers_have_files_by_role(self):
        self.assertEqual(name_faults("src/KelvoMainWindow_wiring.cpp"), [])
        self.assertEqual(name_faults("src/KelvoRendererController_reports.cpp"), [])
        self.assertTrue(name_faults("src/RowCopier_ending.cpp"))
        self.assertEqual(name_faults("framework/core/KelvoPlaylist.cpp"), [])
        self.assertTrue(name_faults("framework/core/KelvoPlaylist_sorting.cpp"))
        self.assertTrue(name_faults("framework/core/KelvoPlaylist_p.h"))
        self.assertTrue(name_faults("kelvo-test/report/Timeline_lanes.cpp"))


class Plan(unittest.TestCase):
    PLAN = "| folder | holds |\n|---|---|\n| `src`, `ui` | x |\n| `framework/core` | `framework/other` |\n| `tests` | x |\n"

    def test_each_folder_has_a_row(self):
        self.assertEqual(plan_faults(self.PLAN, ["src", "framework/core"]), [])
        self.assertEqual(plan_faults(self.PLAN, ["src", "framework/core", "framework/new"]),
                         ["ARCHITECTURE.md: no row for framework/new"])

    def test_no_row_outlives_its_folder(self):
        self.assertEqual(plan_faults(self.PLAN, ["src"]), ["ARCHITECTURE.md: framework/core, which is not built"])
        self.assertEqual(plan_faults("| `kelvo-test/old` | x |\n", []),
                         ["ARCHITECTURE.md: kelvo-test/old, which is not built"])


class Links(unittest.TestCase):
    def test_rules(self):
        self.assertEqual(link_faults("lib/libkelvo-core.so", ["libQt6Core.so.6", "libstdc++.so.6"]), [])
        self.assertTrue(link_faults("lib/libkelvo-core.so", ["libQt6Widgets.so.6"]))
        self.assertTrue(link_faults("bin/kelvo-test-gui", ["libgstreamer-1.0.so.0"]))
        self.assertTrue(link_faults("lib/kelvo/plugins/simulator.so", ["libQt6Widgets.so.6"]))

    def test_the_store_links_nothing_that_reads_media_nor_its_database(self):
        store = "lib/libkelvo-tracker.so"
        self.assertEqual(link_faults(store, ["libgobject-2.0.so.0", "libglib-2.0.so.0"]), [])
        self.assertTrue(link_faults(store, ["libtracker-sparql-3.0.so.0"]))
        for library in ("libgstreamer-1.0.so.0", "libtag.so.1", "libuchardet.so.0"):
            self.assertTrue(link_faults(store, [library]))
            self.assertEqual(link_faults("lib/kelvo/plugins/tracker-source.so", [library]), [])

    def test_nobody_links_what_reads_playlist_files(self):
        for binary in ("lib/libkelvo-tracker.so", "lib/kelvo/plugins/gst-renderer.so", "lib/kelvo/plugins/tracker-source.so"):
            self.assertTrue(link_faults(binary, ["libtotem-plparser.so.18"]), binary)

    def test_what_back_ends_need_comes_with_them(self):
        self.assertEqual(load_faults("bin/kelvo-test-gui", ["libQt6Core.so.6", "libglib-2.0.so.0"]), [])
        for library in ("libgstreamer-1.0.so.0", "libtag.so.1", "libtotem-plparser.so.18", "libuchardet.so.0",
                        "libgupnp-1.6.so.0"):
            self.assertTrue(load_faults("bin/kelvo-test-gui", [library]))

    def test_what_is_needed_later_is_loaded_later(self):
        for library in ("libtracker-sparql-3.0.so.0", "libgio-2.0.so.0", "libsqlite3.so.0", "libcurl-gnutls.so.4"):
            for binary in ("bin/kelvo-test-gui", "bin/kelvo-test", "lib/libkelvo-tracker.so"):
                self.assertTrue(load_faults(binary, [library]), (binary, library))

    def test_the_program_without_a_window_links_no_widgets(self):
        self.assertEqual(link_faults("bin/kelvo-test", ["libQt6Core.so.6", "libkelvo-shared.so.0"]), [])
        self.assertTrue(link_faults("bin/kelvo-test", ["libQt6Widgets.so.6"]))

    def test_each_kind_has_one_run_path(self):
        kinds = {"bin/kelvo-test": "$ORIGIN/../lib", "lib/libkelvo-core.so": "$ORIGIN",
                 "lib/kelvo/plugins/upnp.so": "$ORIGIN/../.."}
        for binary, wanted in kinds.items():
            self.assertEqual(run_path_faults(binary, wanted), [])
            for wrong in (None, "", wanted + ":", f"{wanted}:$ORIGIN/..", "/a/build/lib", "::::"):
                self.assertTrue(run_path_faults(binary, wrong), (binary, wrong))

    def test_an_unknown_binary_is_a_fault(self):
        self.assertTrue(link_faults("lib/kelvo/plugins/new.so", []))


if __name__ == "__main__":
    unittest.main()
