// Watches this process wait for the disk: fdatasync passes through here, LMDB's too.
#pragma once

int disk_waits();
void fail_disk_waits(bool fail);  // as a disk does that is broken: EIO
