# shellcheck shell=bash
# Nothing is left of Vemo and its service.
! find .config .local .cache -iname '*vemo*' | grep .
! grep -ri vemo .config .local/share/applications .cache
! secret-tool search --all service brelmox.Vemo 2>&1 | grep .
