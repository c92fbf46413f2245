# shellcheck shell=bash
# Whether this machine can run commands in a box.

# must_run_boxes: tries out what spbox asks of bubblewrap, before minutes go into a build that could show nothing.
must_run_boxes() {
  local words
  if words=$(bwrap --ro-bind / / --dev /dev --ro-bind /proc /proc --tmpfs /tmp --cap-drop ALL true 2>&1); then return 0; fi
  die "this machine lets nobody have a root of their own, which a command in a box needs. bubblewrap says:
         $words
       An ordinary user needs user namespaces. As root, type what this machine knows of:
         sysctl -w kernel.unprivileged_userns_clone=1
         sysctl -w kernel.apparmor_restrict_unprivileged_userns=0
       In a container, allow them when it is started, as in: docker run --security-opt seccomp=unconfined
       --cap-add SYS_ADMIN"
}
