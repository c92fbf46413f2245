// Nothing but its precompiled header, which the tests share.
