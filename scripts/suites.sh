# The suites of ./check: running them, and saying at the end what was left out. Sourced by check.

jobs=$(nproc)
mode=quick
only=()
failed=()
left_out=()
why=()
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

# A line or a few of why a suite failed; they are told at the end, too.
because() {
  local line
  while IFS= read -r line; do why+=("   ${line:0:160}"); done
}

# because_of LOG: what a failed command's log has to say, by its first error, else by its last lines.
because_of() {
  local said
  said=$(grep -m 1 -A5 -i -E '\berror\b|\bFAILED\b|not formatted' "$1") || said=$(tail -n 6 "$1")
  because <<< "$said"
}

# because_of_tests LOG: the failed tests of a test runner's log, and the first words of the first few.
because_of_tests() {
  local failed name
  failed=$(sed -n '/^The following tests FAILED:/,$s/^[\t ]*[0-9]* - //p' "$1")
  because <<< "$(head -n 12 <<< "$failed")"
  while IFS= read -r name; do
    because < <(awk -v name="${name% (*}" '
      function tell() {
        first = at ? at : n > 4 ? n - 3 : 1
        for (i = first; here && i <= n && i < first + 6; ++i) print "  " line[i]
      }
      /^ *[0-9]+\/[0-9]+ Test +#[0-9]+: / {
        tell()
        here = index($0, ": " name " ") && /\*\*\*/
        n = at = 0
        if (here) print name ":"
        next
      }
      /^[0-9]+% tests passed/ { exit }
      /^ +Start +[0-9]+: / || !here || NF == 0 { next }
      { line[++n] = $0 }
      !at && /Failure$|[Ee]rror|FAILED:|differ|[Aa]ssert|Traceback/ { at = n }
      END { tell() }' "$1")
  done < <(head -n 3 <<< "$failed")
}

# sanitized PRESET COMMAND...: with fixed addresses where the preset has a sanitizer. Those of these compilers find no
# room now and then where the kernel draws addresses from more bits than they know of.
sanitized() {
  local preset=$1
  shift
  case $preset in
    asan | msan | tsan | fuzz) setarch "$(uname -m)" -R true 2> /dev/null && set -- setarch "$(uname -m)" -R "$@" ;;
  esac
  "$@"
}

# configure PRESET LOG [CMAKE OPTION...]: a preset whose compiler is not there is left out.
configure() {
  local preset=$1 log=$2 needs
  shift 2
  cmake --preset "$preset" "$@" > "$log" 2>&1 && return
  needs=$(tr -s ' \n' ' ' < "$log" |
    grep -o -m 1 -E "The preset '$preset' needs [^.]*\.|clang(\+\+)? is not a full path and was not found in the PATH")
  [ -z "$needs" ] || { skip "$preset: ${needs%%$'\n'*}"; return; }
  return 1
}

# build PRESET [CMAKE OPTION...]
build() {
  local preset=$1 log=build/$1.log status
  shift
  mkdir -p build
  configure "$preset" "$log" "$@"
  status=$?
  [ $status -ne $SKIPPED ] || return $SKIPPED
  if [ $status -eq 0 ] && sanitized "$preset" cmake --build --preset "$preset" -j"$jobs" >> "$log" 2>&1; then
    note_left_out "$preset" "$log"
    return 0
  fi
  tail -n 80 "$log"
  echo "== $preset does not build; all of it is in $log"
  because_of "$log"
  return 1
}

# run_of NAME COMMAND...: a command that is a suite by itself.
run_of() {
  local name=$1 log=build/$1.log status
  shift
  mkdir -p build
  "$@" > "$log" 2>&1
  status=$?
  case $status in
    0) tail -n 1 "$log" ;;
    "$SKIPPED") skip "$name: $(tail -n 1 "$log")" ;;
    *)
      tail -n 40 "$log"
      because_of "$log"
      ;;
  esac
  return $status
}

# tests_of PRESET [CMAKE OPTION...]: builds the preset and runs its tests. The release build's are shown one by one on a
# terminal. Elsewhere only those that failed are: a long log is cut where it matters.
tests_of() {
  local preset=$1 log=build/$1-tests.log status
  shift
  grep -q "\"configurePreset\": \"$preset\"" CMakePresets.json || { skip "$preset: there is no such preset"; return; }
  build "$preset" -DPPL_BUILD_BENCH=OFF "$@" || return
  if [ "$preset" = release ]; then
    # The summary is held back until it has been said what was left out.
    if [ -t 1 ]; then
      ctest --preset "$preset" -j"$jobs" 2>&1 | tee "$log" | sed '/^[0-9]*% tests passed/,$d'
      status=${PIPESTATUS[0]}
    else
      ctest --preset "$preset" -j"$jobs" > "$log" 2>&1
      status=$?
    fi
    summary=$(sed -n '/^[0-9]*% tests passed/,$p' "$log")
  else
    sanitized "$preset" ctest --preset "$preset" -j"$jobs" > "$log" 2>&1
    status=$?
    grep -E '^[0-9]+% tests passed' "$log"
  fi
  if [ $status -ne 0 ]; then
    grep -E -A30 '\*\*\*(Failed|Timeout|Exception)' "$log" | cut -c-200 | head -n 200
    echo "== tests of $preset failed; all of it is in $log"
    because_of_tests "$log"
  fi
  note_left_out "$preset" "$log"
  return $status
}

# digests_of PRESET [CMAKE OPTION...]: the frozen digests and the random comparisons alone, for builds that are slow.
digests_of() {
  local preset=$1 log=build/$1.log tests=build/$1-tests.log status
  shift
  mkdir -p build
  configure "$preset" "$log" -DPPL_BUILD_BENCH=OFF -DPPL_BUILD_TOOLS=OFF -DPPL_BUILD_GSTREAMER=OFF "$@"
  status=$?
  [ $status -ne $SKIPPED ] || return $SKIPPED
  if [ $status -ne 0 ] ||
    ! cmake --build --preset "$preset" -j"$jobs" --target digests compare_bayer compare_convert >> "$log" 2>&1; then
    tail -n 80 "$log"
    echo "== $preset does not build; all of it is in $log"
    because_of "$log"
    return 1
  fi
  if ! ctest --preset "$preset" -j"$jobs" -R '^digests$|^compare_' > "$tests" 2>&1; then
    tail -n 60 "$tests"
    because_of_tests "$tests"
    return 1
  fi
  grep -E '^[0-9]+% tests passed' "$tests"
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
  if [ $status -ne 0 ]; then
    tail -n 40 "$log"
    because <<< "$(tail -n 8 "$log")"
    return 1
  fi
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
  local told=${#why[@]}
  "$@"
  status=$?
  if [ $status -eq $SKIPPED ]; then
    echo "   left out"
    [[ "${left_out[*]-}" = *"$name"* ]] || left_out+=("$name: $1 can't run here")
  elif [ $status -ne 0 ]; then
    failed+=("$name")
    why=("${why[@]:0:told}" "$name:" "${why[@]:told}")
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
  if [ ${#failed[@]} -gt 0 ]; then
    echo "== FAILED: ${failed[*]}"
    printf '%s\n' "${why[@]}"
  fi
  [ -z "$summary" ] || printf '%s\n' "$summary"
  [ ${#failed[@]} -eq 0 ]
}
