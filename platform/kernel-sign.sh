#!/usr/bin/env bash
# Signs the kernel image for a test machine.
#
#   kernel-sign.sh IN.sys OUT.sys
#
# KEY and CERTIFICATE name the files to sign with; if they do not exist, a self-signed pair is made there. The default
# is test.key and test.crt in ~/.config/ppl, away from any checkout. Keep the key to yourself.
set -euo pipefail
[ $# -eq 2 ] || { sed -n '2,7s/^# \{0,1\}//p' "$0" >&2; exit 2; }
command -v osslsigncode >/dev/null || { echo "osslsigncode is missing. On Debian: apt-get install osslsigncode" >&2; exit 1; }
keys=${XDG_CONFIG_HOME:-$HOME/.config}/ppl
key=${KEY:-$keys/test.key}
certificate=${CERTIFICATE:-$keys/test.crt}

if [ ! -f "$key" ]; then
  umask 077
  mkdir -p "$(dirname "$key")" "$(dirname "$certificate")"
  openssl req -x509 -newkey rsa:3072 -nodes -keyout "$key" -out "$certificate" -days 3650 -subj "/CN=ppl test signing" \
    -addext basicConstraints=critical,CA:FALSE -addext keyUsage=critical,digitalSignature \
    -addext extendedKeyUsage=codeSigning 2>/dev/null
fi
rm -f "$2"
osslsigncode sign -certs "$certificate" -key "$key" -h sha256 -n ppl -in "$1" -out "$2" >/dev/null
osslsigncode verify -CAfile "$certificate" -in "$2" >/dev/null || { echo "the signature does not verify" >&2; exit 1; }
echo "$2 is signed with $certificate"
