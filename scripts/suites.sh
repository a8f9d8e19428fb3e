# The suites of ./check: running them, and saying at the end what was left out. Sourced by check.

jobs=$(nproc)
mode=quick
only=()
failed=()
left_out=()
summary=

# Exit status of a suite that can't run here; it has said why by `skip`.
SKIPPED=77
skip() {
  left_out+=("$1")
  return $SKIPPED
}

# Lines of a log that tell of parts left out: what a configuration does without, what the test runner skipped.
note_left_out() {
  local suite=$1 log=$2 line
  while IFS= read -r line; do left_out+=("$suite: $line"); done < <(
    sed -nE -e 's/^-- (.* left out: .*)$/\1/p' \
      -e 's/^ *[0-9]+\/[0-9]+ Test +#[0-9]+: (.*[^ .]) ?\.*\*\*\*Skipped.*$/test skipped: \1/p' \
      -e 's/^ *[0-9]+\/[0-9]+ Test +#[0-9]+: (.*[^ .]) ?\.*\*\*\*Not Run.*$/test not run: \1/p' "$log" | sort -u)
}

# build PRESET [CMAKE OPTION...]
build() {
  local preset=$1 log=build/$1.log
  shift
  mkdir -p build
  if cmake --preset "$preset" "$@" > "$log" 2>&1 && cmake --build --preset "$preset" -j"$jobs" >> "$log" 2>&1; then
    note_left_out "$preset" "$log"
    return 0
  fi
  tail -n 80 "$log"
  echo "== $preset does not build; all of it is in $log"
  return 1
}

# tests_of PRESET [CMAKE OPTION...]: builds the preset and runs its tests. The release build's are shown one by one.
tests_of() {
  local preset=$1 log=build/$1-tests.log status
  shift
  grep -q "\"configurePreset\": \"$preset\"" CMakePresets.json || { skip "$preset: there is no such preset"; return; }
  build "$preset" -DPPL_BUILD_BENCH=OFF "$@" || return
  if [ "$preset" = release ]; then
    # The summary is held back until it has been said what was left out.
    ctest --preset "$preset" -j"$jobs" 2>&1 | tee "$log" | sed '/^[0-9]*% tests passed/,$d'
    status=${PIPESTATUS[0]}
    summary=$(sed -n '/^[0-9]*% tests passed/,$p' "$log")
  else
    ctest --preset "$preset" -j"$jobs" > "$log" 2>&1
    status=$?
    if [ $status -ne 0 ]; then
      grep -E -A30 '\*\*\*(Failed|Timeout|Exception)' "$log" | head -n 200
      echo "== tests of $preset failed; all of it is in $log"
    fi
    grep -E '^[0-9]+% tests passed' "$log"
  fi
  note_left_out "$preset" "$log"
  return $status
}

# digests_of PRESET [CMAKE OPTION...]: the frozen digests and the random comparisons alone, for builds that are slow.
digests_of() {
  local preset=$1 log=build/$1.log
  shift
  mkdir -p build
  if ! cmake --preset "$preset" -DPPL_BUILD_BENCH=OFF -DPPL_BUILD_TOOLS=OFF \
    -DPPL_BUILD_GSTREAMER=OFF "$@" > "$log" 2>&1 ||
    ! cmake --build --preset "$preset" -j"$jobs" --target digests compare_bayer compare_convert >> "$log" 2>&1; then
    tail -n 80 "$log"
    echo "== $preset does not build; all of it is in $log"
    return 1
  fi
  ctest --preset "$preset" -j"$jobs" -R '^digests$|^compare_' > "build/$preset-tests.log" 2>&1 ||
    { tail -n 60 "build/$preset-tests.log"; return 1; }
  grep -E '^[0-9]+% tests passed' "build/$preset-tests.log"
}

# The Debian packages in a clean system, where there is one to be had.
packages_of() {
  local log=build/packages-tests.log status
  mkdir -p build
  tests/packages/run > "$log" 2>&1
  status=$?
  if [ $status -eq $SKIPPED ]; then
    skip "packages: $(tail -n 1 "$log")"
    return
  fi
  [ $status -eq 0 ] || { tail -n 40 "$log"; return 1; }
  note_left_out packages "$log"
  tail -n 1 "$log"
}

# suite SIZE NAME WHAT COMMAND...
suite() {
  local size=$1 name=$2 what=$3 start=$SECONDS status
  shift 3
  if [ $mode = list ]; then
    printf '%-12s %-6s %s\n' "$name" "$size" "$what"
    return
  fi
  if [ ${#only[@]} -gt 0 ]; then
    [[ " ${only[*]} " = *" $name "* ]] || return
  elif [ "$size" = full ] && [ $mode = quick ]; then
    left_out+=("$name ($what): ./check full does it")
    return
  fi
  echo "== $name: $what"
  "$@"
  status=$?
  if [ $status -eq $SKIPPED ]; then
    echo "   left out"
    [[ "${left_out[*]-}" = *"$name"* ]] || left_out+=("$name: $1 can't run here")
  elif [ $status -ne 0 ]; then
    failed+=("$name")
    echo "   FAILED after $((SECONDS - start)) s"
  else
    echo "   $((SECONDS - start)) s"
  fi
}

run_suites() {
  local argument
  for argument in "$@"; do
    case $argument in
      full) mode=full ;;
      --list) mode=list ;;
      -*) echo "check: $argument is unknown; ./check, ./check full, ./check [full] SUITE..., ./check --list" >&2; exit 2 ;;
      *) only+=("$argument") ;;
    esac
  done
  if [ $mode = list ]; then
    suites
    exit
  fi
  local names
  names=$(mode=list suites | cut -d' ' -f1)
  for argument in "${only[@]}"; do
    grep -qx -- "$argument" <<< "$names" || { echo "check: no suite $argument; ./check --list names them" >&2; exit 2; }
  done

  install_packages $PACKAGES_BUILD $PACKAGES_TOOL $PACKAGES_CHECK
  install_optional_packages $PACKAGES_QUICK
  if [ $mode = full ] || [ ${#only[@]} -gt 0 ]; then
    install_optional_packages $PACKAGES_FULL
    install_commands $COMMANDS_FULL
  fi

  suites
  echo "== took $((SECONDS / 60)) min $((SECONDS % 60)) s"
  if [ ${#left_out[@]} -gt 0 ]; then
    echo "== left out:"
    printf '%s\n' "${left_out[@]}" | awk '!seen[$0]++ { print "   " $0 }'
  else
    echo "== nothing was left out"
  fi
  [ ${#failed[@]} -eq 0 ] || echo "== FAILED: ${failed[*]}"
  [ -z "$summary" ] || printf '%s\n' "$summary"
  [ ${#failed[@]} -eq 0 ]
}
