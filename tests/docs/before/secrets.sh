# shellcheck shell=bash
# Somebody is signed in.
printf secret | secret-tool store --label=Vemo service brelmox.Vemo account authToken
