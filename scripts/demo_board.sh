# shellcheck shell=bash
# The demonstrations in which a board is replaced: by an operator with a technician (replace), by one person at two terminals
# (both), and in the box that the last demonstration left (again). For scripts/demo.

# The box, and the board in it that has failed: its number is that on the operator's list.
readonly box=build/demo-box model=qe3 unit=/CMU#2 number=3

# One demonstration at a time uses the box. The lock is held until all programs of the demonstration have ended.
lock_box() {
  exec 9>build/demo.lock
  flock -n 9 || die 'another demonstration uses the box. End it first.'
}

make_box() {
  lock_box
  spbox create "$box" --model "$model" --force >/dev/null || die 'the box cannot be made anew. Is a command still running in it?'
  spbox fault "$box" "$unit" >/dev/null
}

# The technician of "replace" works when the operator says so: when the command watches the unit, they pull it out; when it
# watches again, they put a new one in. There are several rounds, because the new unit may fail its test.
technician() {
  local steps="when detached $unit yes" round
  for round in 1 2 3 4 5; do
    steps+="
      when trace lmainte_chk_fru_install entry; after 1; pull $unit   # round $round
      when trace lmainte_chk_fru_install exit
      when trace lmainte_chk_fru_install entry; after 1; insert $unit
      when trace lmainte_chk_fru_install exit"
  done
  exec spbox technician "$box" --limit 3600 --do "$steps"
}

# condition_of_unit: faulted; out, a place that is empty or a good unit that is out of operation; or good.
condition_of_unit() {
  local state
  state=$(spbox show "$box" "$unit")
  if grep -qE '^State +Faulted' <<<"$state"; then
    echo faulted
  elif grep -qE '^(State +Not installed|Flag +.*detached)' <<<"$state"; then
    echo out
  else
    echo good
  fi
}

# what_again: what another procedure in this box would do
what_again() {
  case $(condition_of_unit) in
    faulted) echo 'go on in this box: replace_unit cmu' ;;
    out) echo 'go on in this box: add_unit cmu' ;;
    good) echo 'exchange the good board once more' ;;
  esac
}

meaning_of() {
  case $1 in
    0) echo 'done' ;;
    1) echo failed ;;
    2) echo 'given up' ;;
    *) echo 'ended by a signal' ;;
  esac
}

# tell_operator PROCEDURE
tell_operator() {
  cat <<END
$1 shows the list and asks for the number of the unit. $unit has
number $number.
Where the last line says --More--, Space shows the next page and q leaves it.
At any question, q gives up. Then $1 says what is left to do.
END
}

# tell_second_terminal: how the technician comes to the server.
tell_second_terminal() {
  cat <<END

  cd $(printf '%q' "$PWD")
  ./dev spbox watch $box

It shows the server. Type $unit behind / to go to the board: p pulls it out, i
puts a new one in, f lets it fail, b bends a control program, q ends.
./dev demo technician shows the same as commands.

END
}

# run_procedure PROCEDURE: when the operator wants to begin.
run_procedure() {
  local status=0 answer
  answer=$(asked_for 'Press Enter to begin, or type q to leave: ') || exit 0
  if [[ $answer == q ]]; then exit 0; fi
  spbox run "$box" -- "$1" cmu || status=$?
  printf '\n%s ended with exit status %d: %s.\n' "$1" "$status" "$(meaning_of "$status")"
  printf '\nThe log of the service processor:\n\n'
  spbox log "$box"
  printf '\nThe box stays in %s. In the folder %s, type:\n\n' "$box" "$PWD"
  printf '  %-39s  %s\n' \
    "./dev spbox trace $box | less" 'what the library did' \
    "./dev spbox show $box $unit" 'the state of the board now' \
    './dev demo again' "$(what_again)" \
    './dev demo' 'begin with a new box'
}

show_replace() {
  make_box
  cat <<END

A qe3 server has 16 boards, and $unit has failed. You are the operator.
$(tell_operator replace_unit)
When replace_unit asks you to pull the board out, or to put the new one in, type
1: a technician stands at the server and does it.

To let something go wrong, open a second terminal:
$(tell_second_terminal)

END
  technician >/dev/null 2>&1 &
  hands=$!
  trap 'kill "$hands" 2>/dev/null || true' EXIT
  run_procedure replace_unit
}

# as_both PROCEDURE
as_both() {
  cat <<END
$(tell_operator "$1")

You are also the technician. Open a second terminal now, before you begin:
$(tell_second_terminal)

END
  run_procedure "$1"
}

show_both() {
  make_box
  printf '\nA qe3 server has 16 boards, and %s has failed. You are the operator.\n' "$unit"
  as_both replace_unit
}

must_have_box() {
  if [[ ! -d $box ]]; then die "there is no box of an earlier demonstration. './dev demo both' makes one."; fi
}

show_again() {
  local procedure
  must_have_box
  lock_box
  printf '\nThe board in the box of the last demonstration:\n\n'
  spbox show "$box" "$unit"
  procedure=replace_unit
  if [[ $(condition_of_unit) == out ]]; then procedure=add_unit; fi
  printf '\nYou are the operator. The procedure for it is %s.\n' "$procedure"
  as_both "$procedure"
}

show_technician() {
  cat <<END

The technician's commands, for the box of the demonstration.

The operator is asked to pull the board out. Type this, then type 1 there:
  ./dev spbox pull $box $unit
The operator is asked to put the new board in. Type this, then type 1 there:
  ./dev spbox insert $box $unit
At any time, the state of the board, its LED and its maintenance flag:
  ./dev spbox show $box $unit

Let something go wrong.

A faulty new board. Type this as soon as it is in:
  ./dev spbox fault $box $unit
A server that does not release the board. Type this before the operator says how
the board is to be used:
  ./dev spbox program $box detachfru --exit 205
To release it again. Type this before ./dev demo again:
  ./dev spbox program $box detachfru --reset

END
}
