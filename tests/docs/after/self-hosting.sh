# shellcheck shell=bash
# The programs take every configuration that the page shows. Those with a heading are the service's.
(umask 077 && echo secret >~/.config/vemo-service/key)
/usr/bin/python3 -B - <<'PYTHON'
import os
import pathlib
import sys
sys.path.insert(0, os.environ["VEMO_SOURCE"] + "/tests/docs")
from pages import SOURCE, blocks
for number, (mark, block) in enumerate(blocks(SOURCE / "docs/self-hosting.md")):
    if mark == "ini":
        kind = "service" if "[" in block else "vemo"
        folder = pathlib.Path(kind, str(number), "vemo")
        folder.mkdir(parents=True)
        (folder / "vemo.conf").write_text(block.replace("/home/me", os.environ["HOME"]))
PYTHON

taken=0
for file in service/*/vemo/vemo.conf; do
  vemo-service --config "$file" >"$file.output" &
  until curl -sf --retry 60 --retry-all-errors --retry-delay 1 http://127.0.0.1:8750/health; do kill -0 $!; done
  kill $!
  wait $!
  taken=$((taken + 1))
done
echo ": the service has taken $taken"               #=> …"engine":"openai"…: the service has taken 4

# With a file that it can't use, it wouldn't come to look for a display.
for folder in vemo/*; do
  ! env -u DISPLAY XDG_CONFIG_HOME="$PWD/$folder" vemo      #=> Vemo needs an X display; DISPLAY isn't set.
done

# Neither does nginx refuse what stands there.
openssl req -x509 -newkey rsa:2048 -nodes -subj /CN=localhost -keyout key.pem -out certificate.pem 2>/dev/null
# shellcheck disable=SC2016 # the quotes are those of the page
{
  echo "pid $PWD/nginx.pid; error_log stderr; events {} http { access_log off;"
  sed -n '/^```nginx/,/^```$/{/^```/d;p}' "$VEMO_SOURCE/docs/self-hosting.md" |
    sed "s|/etc/ssl/vemo-key.pem|$PWD/key.pem|; s|/etc/ssl/vemo.pem|$PWD/certificate.pem|"
  echo '}'
} >nginx.conf
/usr/sbin/nginx -t -c "$PWD/nginx.conf" 2>&1           #=> …test is successful
