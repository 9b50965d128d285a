// SPDX-License-Identifier: MIT
#pragma once

/// How many files the process may have open.
namespace FileLimit {

/// As many as the system lets it have, within reason, and not only the 1024 that are usual: where none is left GLib
/// ends the program as soon as a thread begins.
void raise();

} // namespace FileLimit
