// SPDX-License-Identifier: MIT
#pragma once

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

#define KelvoPlugin_iid "org.kelvo.Plugin/1.0"
Q_DECLARE_INTERFACE(KelvoPlugin, KelvoPlugin_iid)
