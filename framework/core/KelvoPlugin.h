// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoApiVersion.h"

#include <QtPlugin>

class KelvoRegistry;
class QString;

/// A back end in a library that is loaded at run time: it puts renderers, sources and playlists into the
/// registry while it runs.
///
/// The root object of the library (Q_PLUGIN_METADATA) derives from QObject and from this class. Its JSON
/// metadata names it without running code:
///     { "name": "...", "description": "...", "version": "...", "brings": ["renderers"], "startsByDefault": false }
/// All operations are called on the GUI thread and must not block it: slow starts go to a thread of the
/// plug-in's own.
class KelvoPlugin
{
public:
    virtual ~KelvoPlugin() = default;

    /// Starts the back end. The objects may be added to the registry at once or later. On failure: false, with
    /// the reason in *error, nothing left in the registry. The registry outlives the plug-in.
    virtual bool start(KelvoRegistry *registry, QString *error) = 0;

    /// Takes everything out of the registry that this back end added, before it returns; what it must still
    /// wait for (a thread, a device) may end later. Afterwards the root object is deleted; the library's code
    /// stays mapped.
    virtual void stop() = 0;
};

/// What a library may export under the name "kelvoPrepareAhead" beside its root object, when its metadata also says
///     "preparesAhead": true
/// For a back end whose engine takes long to get ready, and which a program starts with: while the program makes its
/// window, the library is mapped and this is called, on a worker thread, maybe before there is an application object. It
/// comes back soon, having set a thread of its own to work. That thread should map few libraries: the window needs some,
/// too, and the dynamic linker serves one at a time. Nobody relies on it: start() may come without it, or before what it
/// has begun is done.
extern "C" using KelvoPrepareAhead = void();

/// What Q_PLUGIN_METADATA writes into the library: that it is a back end, and for which version of the API.
#define KelvoPlugin_iid "org.kelvo.Plugin/" KELVO_API_VERSION

// The interface's own name, by which the root object is asked for it: the same for all versions of one major number.
Q_DECLARE_INTERFACE(KelvoPlugin, "org.kelvo.Plugin/1.0")
