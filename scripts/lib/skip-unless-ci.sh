#!/usr/bin/env bash
# skip-unless-ci.sh REASON [LOG...]: ends a test that can't run here. It is skipped (77), but fails where
# the environment variable CI is set, or where a LOG of npm shows another fault than a registry that
# can't be reached.
echo "$1" >&2
shift
[[ -z ${CI-} ]] || exit 1
unreachable='ENOTFOUND|EAI_AGAIN|ECONNREFUSED|ECONNRESET|ENETUNREACH|EHOSTUNREACH|TIMEOUT|ETIMEDOUT'
for log in "$@"; do
  if [[ -f $log ]] && ! grep -qE "$unreachable" -- "$log"; then
    cat -- "$log" >&2
    exit 1
  fi
done
exit 77
