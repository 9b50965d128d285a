// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The version of what a back end is built with: these headers, the libraries that they belong to, and what its metadata
/// holds. It is not that of the programs.
///
/// A back end runs in a program of the same major number whose minor number is the same or higher. The minor number grows
/// when something is added, the major one when something that was there has changed or is gone. The numbers of the
/// headers are written into each library that is built with them (KelvoPlugin_iid), and read before its code runs.

/// Grows with what back ends must be changed or built anew for.
#define KELVO_API_VERSION_MAJOR 1
/// Grows with what is added; 0 again with each major number.
#define KELVO_API_VERSION_MINOR 0
/// Both, as a text.
#define KELVO_API_VERSION "1.0"
