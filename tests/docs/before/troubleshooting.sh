# shellcheck shell=bash
# The service runs.
vemo-service >/dev/null 2>&1 &
