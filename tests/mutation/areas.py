# SPDX-License-Identifier: MIT
"""Which test programs can see a change of which folder: cheap and close ones first."""

# (beginning of the path, test programs in the order in which they are built and run); the first that fits counts.
AREAS = (
    ("src/", ("console-tests",)),
    ("kelvo-test/", ("kelvo-test-tests",)),
    ("conformance/", ("conformance-tests", "contract-simulator")),
    ("framework/core/playlist/", ("model-tests", "core-tests", "console-tests")),
    ("framework/core/KelvoGeneralSourcePlaylist", ("model-tests", "core-tests", "console-tests")),
    ("framework/core/KelvoPluginLoader", ("unit-plugin-loading", "unit-plugin-cycles")),
    ("framework/core/ElfCheck", ("unit-plugin-loading",)),
    ("framework/core/", ("core-tests", "model-tests", "console-tests", "simulator-tests", "unit-plugin-loading",
                         "contract-simulator")),
    ("framework/recording/", ("recording-tests", "unit-crash")),
    ("framework/screen-lock/", ("screen-lock-tests",)),
    ("framework/session-bus/", ("sharing-tests", "mpris-tests")),
    ("framework/glib/", ("gst-parts-tests", "upnp-tests", "integration-tracker-store", "tracker-plugin-tests")),
    ("framework/media/", ("media-tests", "tracker-tests", "gst-tests")),
    ("framework/shared/dbus/ForeignItemModel", ("model-tests", "sharing-tests")),
    ("framework/shared/", ("core-tests", "sharing-tests")),
    ("framework/tracker/", ("tracker-tests", "integration-tracker-store", "console-tests")),
    ("framework/plugins/simulator/", ("simulator-tests", "contract-simulator")),
    ("framework/playback/remote/", ("remote-tests", "contract-remote", "upnp-tests", "mpris-tests")),
    ("framework/playback/", ("playback-tests", "remote-tests", "simulator-tests", "contract-simulator",
                             "contract-remote")),
    ("framework/plugins/mpris/", ("mpris-tests", "contract-mpris")),
    ("framework/plugins/upnp/", ("upnp-tests", "upnp-network-tests", "contract-upnp")),
    ("framework/plugins/gst-renderer/", ("gst-parts-tests", "gst-sinks-tests", "gst-tests", "gst-video-tests",
                                         "contract-gst-renderer")),
    ("framework/plugins/", ("tracker-tests", "integration-tracker-store", "tracker-plugin-tests")),
)


def programs_for(path):
    return next(programs for start, programs in AREAS if path.startswith(start))
