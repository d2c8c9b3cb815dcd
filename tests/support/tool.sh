# What the tests of the tool share; they set `tool` and stand in a scratch folder.
fail() { echo "${test_name:-$(basename "$0")}: $*" >&2; exit 1; }
# expect CODE WORDS COMMAND...: exit code and words on standard error.
expect() {
  local code=$1 words=$2 got=0
  shift 2
  "$@" >out.txt 2>err.txt || got=$?
  [ "$got" -eq "$code" ] || fail "$*: exit $got, not $code: $(cat err.txt)"
  [ -z "$words" ] || grep -qF -- "$words" err.txt || fail "$*: '$words' not in: $(cat err.txt)"
}
