# Tests of the in-process server, for scripts/test-windows, which defines `wine`, `check`, `work` and `x64`: what the
# built files are, and its clients under Wine.

dll_x64=build/windows-x64/bin/TALMRebateRuleMgr.dll
dll_x86=build/windows-x86/bin/TALMRebateRuleMgr.dll

# The path of a file of this system for a Windows program; with backslashes, since some take a slash for an option.
windows_path() { echo "Z:$(realpath "$1" | tr / '\\')"; }

exports_of() { x86_64-w64-mingw32-objdump -p "$1" | sed -n '/Ordinal\/Name Pointer/,$p' | grep -oE 'Dll[A-Za-z]+$'; }

# exactly_four_exports DLL
exactly_four_exports() {
  diff <(exports_of "$1") <(printf '%s\n' DllCanUnloadNow DllGetClassObject DllRegisterServer DllUnregisterServer)
}

# imports_of_the_system DLL: nothing that doesn't come with Windows.
imports_of_the_system() {
  diff <(x86_64-w64-mingw32-objdump -p "$1" | sed -n 's/.*DLL Name: //p' | tr a-z A-Z | sort) \
    <(printf '%s\n' ADVAPI32.DLL KERNEL32.DLL MSVCRT.DLL ODBC32.DLL OLE32.DLL OLEAUT32.DLL USER32.DLL)
}

# Each member of the vtables with the bytes of its arguments, the object's own pointer among them: a VARIANT takes 16, all
# else 4.
argument_bytes() {
  tr '\n' ' ' <com/TALMRebateRuleMgr.idl | grep -oE '\[id\([0-9]+\)(, propget)?\] HRESULT [A-Za-z]+\([^;]*\);' |
    sed -E 's/\[id\([0-9]+\), propget\] HRESULT /get_/; s/\[id\([0-9]+\)\] HRESULT //' |
    awk '{ name = $0; sub(/\(.*/, "", name); count = gsub(/\[(in|out)/, "&"); variants = gsub(/\] VARIANT /, "&")
           print name, 4 + 4 * count + 12 * variants }'
}

# The 32-bit vtables can't be called here; their functions bear the bytes that they take from the stack.
stdcall_takes_its_arguments() {
  local object=build/windows-x86/com/CMakeFiles/rebate_com.dir/dual_classes.cpp.obj symbols name bytes count=0
  symbols=$(i686-w64-mingw32-nm "$object")
  while read -r name bytes; do
    if ! grep -qE "Bridge${#name}${name}E[A-Za-z0-9_]*@$bytes\$" <<<"$symbols"; then
      echo "$name takes other bytes than $bytes"
      return 1
    fi
    count=$((count + 1))
  done < <(argument_bytes)
  [ "$count" = 28 ]
}

# The keys that regsvr32 writes are gone when it has taken them away.
registration_leaves_nothing() {
  local file=$work/classes.reg
  registered() {
    rm -f "$file"
    wine reg export 'HKLM\Software\Classes' "$(windows_path "$work")\\classes.reg" /y >/dev/null
    iconv -f UTF-16 -t UTF-8 "$file" | grep -ciE 'TALMRebateRuleMgr|10EE77DD-EB6E-4F76|A3CA1589-EB41|8D93EA6A-FC40' || true
  }
  local before there after
  before=$(registered)
  wine regsvr32 /s "$(windows_path $dll_x64)"
  there=$(registered)
  wine regsvr32 /s /u "$(windows_path $dll_x64)"
  after=$(registered)
  echo "keys before $before, registered $there, behind $after"
  [ "$before" = 0 ] && [ "$there" -gt 20 ] && [ "$after" = 0 ]
}

# script_holds NAME: a script client runs on a fresh sample account; each of its checks holds. The script host ends with 0
# whatever happens, so the last line tells.
script_holds() {
  local account=$work/$1.db output=$work/$1.txt
  wine "$x64/rebate.exe" init "$(windows_path "$work")\\$1.db" --sample
  wine cscript.exe "$(windows_path "tests/com/$1")" "$(windows_path "$account")" | tr -d '\r' >"$output"
  cat "$output"
  tail -1 "$output" | grep -qE '^[1-9][0-9]* held, 0 failed$'
}

# The process keeps its size over thousands of calls.
calls_leak_nothing() {
  wine "$x64/rebate.exe" init "$(windows_path "$work")\\leak.db" --sample
  wine "$x64/rebate_com_leak.exe" "$(windows_path "$work")\\leak.db" "$1"
}

# The tests in C++, in one process after the other tests: they register the component for all of this Windows.
run_client_tests() {
  local logs=$work/com broken=0
  mkdir -p "$logs"
  REBATE_OTHER_LIBRARY=$(windows_path $dll_x86) wine "$x64/rebate_com_tests.exe" --gtest_color=no >"$logs/raw" 2>&1 ||
    broken=1
  tr -d '\r' <"$logs/raw" >"$logs/tests.log"
  [ "$broken" = 0 ] || cat "$logs/tests.log"
  count_unit_tests "$logs" "$broken"
}

run_com_tests() {
  local dll
  for dll in $dll_x64 $dll_x86; do
    check "$dll exports what a server does" exactly_four_exports $dll
    check "$dll stands on the system alone" imports_of_the_system $dll
  done
  check 'the 32-bit vtables take their arguments' stdcall_takes_its_arguments
  check 'regsvr32 /u leaves nothing' registration_leaves_nothing
  run_client_tests
  wine regsvr32 /s "$(windows_path $dll_x64)"
  check 'a VBScript client' script_holds scheme_life.vbs
  check 'a JScript client' script_holds scheme_life.js
  check 'calls leak nothing' calls_leak_nothing 8000
}
