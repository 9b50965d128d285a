// SPDX-License-Identifier: MIT
#pragma once

/// GLib makes the table of its quarks from its library constructor, and replaces it without freeing it when it is full,
/// for readers without a lock. Call this before anything fills it (GStreamer does): the leak checker then leaves out
/// that one table, and nothing else that any library constructor allocates. Without a leak checker it does nothing.
void ignoreGlibTables();
