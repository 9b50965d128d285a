# SPDX-License-Identifier: MIT
# Seconds that the longest tests take under the sanitizers: CTest begins with what costs most, and the short ones fill the
# gaps at the end. Where it has run before, it knows the others' by itself.
set(KELVO_TEST_SECONDS
    contract-upnp 96 integration-upnp-searches 94 contract-mpris 54 integration-gst-errors 48 e2e-kelvo-test-ear 46
    integration-mpris-beginnings 42 contract-gst-renderer 42 e2e-playlist_menu 41 integration-gst-playback 40
    e2e-kelvo-test-eye 38 e2e-playlist_from_start 37 integration-upnp-events 33 faults-servers 33 faults-clock 29
    e2e-closing 29 e2e-single_item 28 e2e-video 28 integration-upnp-peers 25 e2e-kelvo-test-play 25
    integration-mpris-ends 25 faults-store 23 integration-tracker-store 23 e2e-kelvo-test-run 23
    integration-gst-playlist-files 22 unit-remote-position 22 integration-upnp-network 21
    integration-upnp-peer-quirks 21 e2e-bad_starts 21 integration-tracker-lengths 21 contract-example 20
    build-package 20 e2e-main_menu 20 e2e-window 19 e2e-query 19 integration-picture-trial 18
    integration-sound-trial 18 integration-gst-video 17 e2e-query_menu 16 e2e-kelvo-test-many_machines 16
    e2e-pictures 16 e2e-kelvo-test-why 16 contract-remote 15 e2e-keyboard 15 e2e-screen_lock 15 unit-program 15
    faults-home 14 e2e-accessibility_registry 14 e2e-plug_in_author 14 integration-gst-network 13 unit-upnp-items 13
    e2e-session_player 13 e2e-display_gone 12 e2e-screen_reader 12 e2e-network_renderer 12 integration-mpris-rogues 12
    e2e-kelvo-test-report_page 12 integration-tracker-index 12 integration-gst-lifecycle 12
    integration-shared-rogue-items 12 mutation-self-test 12 integration-shared-silent-items 11
    integration-shared-processes 10 integration-gst-metadata 10 integration-gst-playlist 10 model-sparql 10
    e2e-kelvo-test-media 10 integration-upnp-identities 10 model-tracker-rest 9 integration-gst-pause-frame 9
    integration-shared-rogue-files 9)
