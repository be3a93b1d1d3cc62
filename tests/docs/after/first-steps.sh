# shellcheck shell=bash
# What the page configures: Vemo asks for the sign-in, its page opens, and the service shows the button.
# shellcheck disable=SC2016 # the variables are the browser's own
printf '#!/bin/sh\nprintf %%s "$1" >"$HOME/page"\n' >browser
chmod +x browser
mkdir -p ~/.local/share/applications
printf '[Desktop Entry]\nType=Application\nName=Browser\nExec=%s %%u\nMimeType=x-scheme-handler/http;\n' ~/browser \
  >~/.local/share/applications/browser.desktop
printf '[Default Applications]\nx-scheme-handler/http=browser.desktop\n' >~/.config/mimeapps.list
vemo-service >output &
until grep -q '^Local sign-in on http://127.0.0.1:8751' output; do kill -0 %1; done
vemo &
until vemo status | grep 'Sign in to connect'; do kill -0 %2; done
vemo sign-in
until [[ -s page ]]; do kill -0 %2; done
curl -sf "$(cat page)"          #=> …<button…
vemo cancel-sign-in
vemo quit
