#!/usr/bin/env bash
# Builds the .deb and the .rpm from a configured, built tree and checks them as a distribution
# would: lintian without errors, valid AppStream and desktop entry, the expected files in both
# packages, and one version everywhere.
# Usage: check-packages.sh BUILD_DIR PROJECT_VERSION
set -uo pipefail
build=$1 version=$2
for tool in cpack lintian appstreamcli desktop-file-validate rpm rpmbuild dpkg-deb; do
  command -v "$tool" >/dev/null || { echo "SKIP: $tool is not installed"; exit 77; }
done
out=$(mktemp -d) && trap 'rm -rf "$out"' EXIT
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

cpack --config "$build/CPackConfig.cmake" -G "DEB;RPM" -B "$out" >"$out/cpack.log" 2>&1 ||
  { cat "$out/cpack.log"; fail "cpack"; exit 1; }
deb=$(ls "$out"/lumora_*.deb) rpm=$(ls "$out"/lumora-*.rpm)

lintian --fail-on error "$deb" 2>&1 | grep -v 'root privileges' | tee "$out/lintian.log"
[ "${PIPESTATUS[0]}" -eq 0 ] || fail "lintian reports errors"

root="$out/root"
dpkg-deb -x "$deb" "$root"
appstreamcli validate --no-net "$root/usr/share/metainfo/io.github.lumora.Lumora.metainfo.xml" ||
  fail "AppStream metadata"
desktop-file-validate "$root/usr/share/applications/io.github.lumora.Lumora.desktop" ||
  fail "desktop entry"
grep -qx 'ExecStart=/usr/bin/lumora' "$root/usr/lib/systemd/user/lumora.service" ||
  fail "the user unit starts /usr/bin/lumora"

expected="/usr/bin/lumora
/usr/lib/modules-load.d/lumora.conf
/usr/lib/systemd/user/lumora.service
/usr/lib/udev/rules.d/60-lumora-i2c.rules
/usr/share/applications/io.github.lumora.Lumora.desktop
/usr/share/bash-completion/completions/lumora
/usr/share/doc/lumora/changelog.gz
/usr/share/doc/lumora/copyright
/usr/share/icons/hicolor/scalable/apps/lumora.svg
/usr/share/man/man1/lumora.1.gz
/usr/share/metainfo/io.github.lumora.Lumora.metainfo.xml
/usr/share/zsh/site-functions/_lumora"
deb_files=$(dpkg-deb -c "$deb" | awk '$1 !~ /^d/ {sub(/^\./, "", $6); print $6}' | sort)
rpm_files=$(rpm -qp --qf '[%{FILEMODES:perms} %{FILENAMES}\n]' "$rpm" | awk '$1 !~ /^d/ {print $2}' | sort)
[ "$deb_files" = "$expected" ] || fail "files in the .deb:"$'\n'"$deb_files"
[ "$rpm_files" = "$expected" ] || fail "files in the .rpm:"$'\n'"$rpm_files"
[ "$(rpm -qp --qf '%{LICENSE}' "$rpm")" = MIT ] || fail "RPM licence"
grep -q '^License: Expat' "$root/usr/share/doc/lumora/copyright" || fail "Debian copyright licence"

# One version: the project's, in the program, both packages, man page, changelog and AppStream.
declare -A versions=(
  [program]=$("$root/usr/bin/lumora" --version | sed -n 's/^Lumora //p')
  [deb]=$(dpkg-deb -f "$deb" Version)
  [rpm]=$(rpm -qp --qf '%{VERSION}' "$rpm")
  [man]=$(zcat "$root/usr/share/man/man1/lumora.1.gz" | sed -n '1s/.*"Lumora \([^"]*\)".*/\1/p')
  [changelog]=$(zcat "$root/usr/share/doc/lumora/changelog.gz" | sed -n '1s/^lumora (\([^)]*\)).*/\1/p')
  [metainfo]=$(sed -n 's/.*<release version="\([^"]*\)".*/\1/p' \
    "$root/usr/share/metainfo/io.github.lumora.Lumora.metainfo.xml"))
for where in "${!versions[@]}"; do
  [ "${versions[$where]}" = "$version" ] || fail "version in the $where: '${versions[$where]}', not $version"
done

[ "$failures" -eq 0 ] && echo "packages OK: $(basename "$deb") $(basename "$rpm")"
exit $((failures > 0))
