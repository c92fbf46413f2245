# shellcheck shell=bash
# Whether this machine can run commands in a box, and the tests of them.

# must_run_boxes: fails when bubblewrap cannot do here what spbox needs. A build of minutes would be in vain.
must_run_boxes() {
  local words
  if words=$(bwrap --ro-bind / / --dev /dev --ro-bind /proc /proc --tmpfs /tmp --cap-drop ALL true 2>&1); then return 0; fi
  die "this machine does not let a command have a root directory of its own, which a command in a box needs.
       bubblewrap says:
         $words
       An ordinary user needs user namespaces. As root, type these lines; a machine knows one of them:
         sysctl -w kernel.unprivileged_userns_clone=1
         sysctl -w kernel.apparmor_restrict_unprivileged_userns=0
       In a container, allow them when it is started, as in:
         docker run --security-opt seccomp=unconfined --cap-add SYS_ADMIN"
}

# must_trace_programs: fails when strace cannot do here what the tests need: to let spbox die at each of its calls.
must_trace_programs() {
  local words
  if words=$(strace -qq -o /dev/null true 2>&1); then return 0; fi
  die "this machine does not let a program be traced, which the tests of spbox create need.
       strace says:
         $words
       In a container, allow it when it is started, as in:
         docker run --security-opt seccomp=unconfined --cap-add SYS_ADMIN --cap-add SYS_PTRACE"
}
