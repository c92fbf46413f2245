// Nothing but its precompiled header, which the host platform and the examples share.
