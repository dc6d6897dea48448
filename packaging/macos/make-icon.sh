#!/usr/bin/env bash
# Renders Lumora.svg into the bundle icon Lumora.icns: PNG images of the standard sizes in
# the icon container format (a four-byte type and a big-endian length per image after an
# "icns" header). Needs rsvg-convert (librsvg2-bin) and python3; run it after editing the SVG.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Image types by pixel size: 32 (icp5), 64 (icp6), 128 (ic07), 256 (ic08), 512 (ic09),
# 1024 (ic10).
for size in 32 64 128 256 512 1024; do
  rsvg-convert -w "$size" -h "$size" "$here/Lumora.svg" -o "$work/$size.png"
done

python3 - "$work" "$here/Lumora.icns" <<'PY'
import struct, sys
work, out = sys.argv[1], sys.argv[2]
types = {32: b"icp5", 64: b"icp6", 128: b"ic07", 256: b"ic08", 512: b"ic09", 1024: b"ic10"}
body = b""
for size, kind in types.items():
    with open(f"{work}/{size}.png", "rb") as f:
        png = f.read()
    body += kind + struct.pack(">I", len(png) + 8) + png
with open(out, "wb") as f:
    f.write(b"icns" + struct.pack(">I", len(body) + 8) + body)
PY
echo "wrote $here/Lumora.icns"
