# Sourced by the scripts that run tests: runs a test program and counts.

passed=0
failed=0
skipped=0

# run_unit_tests LOGS COMMAND...: runs the test program on all cores, its output in the folder LOGS; shows that of failing
# tests and adds to passed, failed and skipped.
run_unit_tests() {
  local logs=$1 shards i broken=0 runs=()
  shift
  shards=$(nproc)
  rm -rf "$logs"
  mkdir -p "$logs"
  for ((i = 0; i < shards; ++i)); do
    GTEST_TOTAL_SHARDS=$shards GTEST_SHARD_INDEX=$i "$@" --gtest_color=no >"$logs/$i.raw" 2>&1 &
    runs+=($!)
  done
  for ((i = 0; i < shards; ++i)); do
    local status=0
    wait "${runs[$i]}" || status=$?
    tr -d '\r' <"$logs/$i.raw" >"$logs/$i.log"
    [ "$status" != 0 ] || continue
    broken=$((broken + 1))
    # A failing test's own output; all of it where the run ended before its summary.
    grep -q '^\[  FAILED  \] .*listed below' "$logs/$i.log" || echo "Shard $i ended early:"
    awk '/^\[ RUN      \]/ { text = "" } { text = text $0 "\n" } /^\[  FAILED  \].* ms\)$/ { printf "%s", text }
         END { if (text !~ /FAILED TEST/) printf "%s", text }' "$logs/$i.log"
  done
  count_unit_tests "$logs" "$broken"
}

# count_unit_tests LOGS BROKEN: adds what the logs tell, of which runs BROKEN ended with a failure.
count_unit_tests() {
  local logs=$1 broken=$2 started ok left_out bad
  count() { cat "$logs"/*.log | grep -cE "$1" || true; }
  started=$(count '^\[ RUN      \] ')
  ok=$(count '\[       OK \] .* ms\)$')
  left_out=$(count '\[  SKIPPED \] .* ms\)$')
  bad=$((started - ok - left_out))
  # A run that fails outside a test has failed as well, and so has one without any test.
  if [ "$bad" = 0 ] && { [ "$broken" != 0 ] || [ "$started" = 0 ]; }; then bad=1; fi
  passed=$((passed + ok))
  failed=$((failed + bad))
  skipped=$((skipped + left_out))
}

# check NAME COMMAND...: one more test, which passes where the command does; its output is shown where it doesn't.
check() {
  local name=$1 log
  log=$(mktemp)
  shift
  if "$@" >"$log" 2>&1; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "FAILED: $name"
    cat "$log"
  fi
  rm -f "$log"
}

# tell_count: the last line, `N passed, N failed`, with `, N skipped` behind it where there were such; fails where tests
# failed.
tell_count() {
  local summary="$passed passed, $failed failed"
  [ "$skipped" = 0 ] || summary+=", $skipped skipped"
  echo "$summary"
  [ "$failed" = 0 ]
}
