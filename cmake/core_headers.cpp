// Nothing but the precompiled header that the sources of the core share.
