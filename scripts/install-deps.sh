#!/usr/bin/env bash
# Installs the Debian packages the project needs, and only those that are missing.
#   install-deps.sh         what building, testing, the demo and the benchmarks need
#   install-deps.sh fuzz    also clang and its fuzzer runtime
#   install-deps.sh format  also clang-format
#   install-deps.sh package also what make package needs (dpkg-shlibdeps, file)
#   install-deps.sh cluster also what make test-cluster needs: the Galera
#                           provider, and mariadb-server for its rsync state-
#                           transfer script (wsrep_sst_rsync, found only in that
#                           package) and the system user mysql the cluster's
#                           servers run as. It also sets up Debian's own server
#                           in /var/lib/mysql, which the cluster test leaves alone.
# mariadb-server-core holds the server binaries without a system service, so
# installing it starts nothing and touches no system database. The tests make
# their TLS certificates with openssl and compile a Turkish locale from the
# sources in locales.
set -euo pipefail

packages=(
  g++ cmake make ninja-build pkg-config
  libmariadb-dev mariadb-server-core
  libpugixml-dev uuid-dev
  libxslt1-dev locales
  libgtest-dev libgmock-dev libbenchmark-dev
  openssl
)
case "${1:-}" in
  fuzz) packages+=(clang libclang-rt-14-dev) ;;
  format) packages+=(clang-format) ;;
  package) packages+=(dpkg-dev file) ;;
  cluster) packages+=(galera-4 mariadb-server rsync) ;;
esac

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

sudo=""
if [ "$(id -u)" -ne 0 ]; then
  sudo="sudo"
fi

if [ ${#missing[@]} -ne 0 ]; then
  echo "Installing missing packages: ${missing[*]}"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# The demo and the language tests run with the program's messages in German:
# make the German locale available (Debian builds the locales listed in
# /etc/locale.gen).
if ! locale -a 2>/dev/null | grep -qix 'de_DE\.utf-\?8'; then
  echo "Generating the locale de_DE.UTF-8"
  if ! grep -q '^de_DE.UTF-8 UTF-8' /etc/locale.gen 2>/dev/null; then
    echo 'de_DE.UTF-8 UTF-8' | $sudo tee -a /etc/locale.gen >/dev/null
  fi
  $sudo locale-gen >/dev/null
fi
