# shellcheck shell=bash
# The lines for a better recogniser are what the service takes.
# shellcheck disable=SC2016 # the quotes are those of the page
sed -n '/^## A better recogniser/,/^## /p' "$VEMO_SOURCE/docs/self-hosting.md" | sed -n '/^```ini/,/^```$/{/^```/d;p}' |
  sed "s|/home/me|$HOME|" >better.conf
(umask 077 && echo secret >~/.config/vemo-service/key)
vemo-service --config better.conf >better.output &
until grep -q Listening better.output; do kill -0 $!; done
until curl -sf http://127.0.0.1:8750/health; do kill -0 $!; done     #=> {"status":"ready","engine":"openai"}
