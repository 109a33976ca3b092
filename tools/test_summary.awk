# The closing lines of ./test.sh, out of the log that ctest leaves. The numbers are those of the
# tests in the programs; a program that tells none, or dies without a word, counts as one.
/^[0-9]+\/[0-9]+ Testing: / {
  name = $3
  kind = "Linux"
  if (match(name, /^(asan|tsan|fuzz|windows):/)) kind = substr(name, 1, RLENGTH - 1)
  told = failedHere = 0
  next
}
/^\[  PASSED  \] [0-9]+ test/ { passed[kind] += $4; told = 1 }
/^\[  SKIPPED \] [0-9]+ test/ { skipped[kind] += $4 }
/^\[  FAILED  \] [0-9]+ test/ { failed[kind] += $4; failedHere = told = 1 }
/^Test Passed\.$/ {
  if (!told && name !~ /^windows:(start|stop)$/) ++passed[kind]
}
/^Test (Failed|Timeout)/ {
  if (!failedHere) ++failed[kind]
}
function counts(of) {
  return sprintf("%d passed, %d skipped, %d failed", passed[of], skipped[of], failed[of])
}
END {
  print "Linux: " counts("Linux")
  print "Linux, address and undefined-behaviour sanitizers: " counts("asan")
  print "Linux, thread sanitizer: " counts("tsan")
  print "Fuzzing programs: " counts("fuzz")
  print "Windows (under Wine): " counts("windows")
}
