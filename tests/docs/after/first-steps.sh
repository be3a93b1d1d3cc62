# shellcheck shell=bash
# What the page configures: Vemo asks for the sign-in, its page opens, and the service shows the button.
. "$VEMO_SOURCE/tests/docs/browser.sh"
vemo-service >output &
until grep -q '^Local sign-in on http://127.0.0.1:8751' output; do kill -0 %1; done
vemo &
until vemo status | grep 'Sign in to connect'; do kill -0 %2; done
vemo sign-in
until [[ -s page ]]; do kill -0 %2; done
curl -sf "$(cat page)"          #=> …<button…
vemo cancel-sign-in
vemo quit
wait %2
