#!/usr/bin/env bash
# The installed layout, used as a new user would: install the build into a
# temporary prefix, build a consumer of the public headers with pkg-config
# and with find_package, run the installed simulator on the example
# configuration with no path options, and the installed platform check.
#   install_test.sh BUILD_DIR SOURCE_DIR VERSION
set -euo pipefail
build=$1
source=$2
version=$3
major=${version%%.*}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
fail() { echo "installed layout: $*" >&2; exit 1; }

cmake --install "$build" --prefix "$prefix" >"$work/install.log" || { cat "$work/install.log"; fail "cmake --install failed"; }

# Libraries: real file, SONAME link and development link, SONAME carrying the major version.
libdir=$(dirname "$(find "$prefix" -name "libmdtlm_vraldcn.so.$version" | head -1)")
[ -d "$libdir" ] || fail "no libmdtlm_vraldcn.so.$version under $prefix"
for lib in mdtlm_vraldcn mdtlm_platform; do
  [ -f "$libdir/lib$lib.so.$version" ] || fail "lib$lib.so.$version missing"
  [ "$(readlink "$libdir/lib$lib.so.$major")" = "lib$lib.so.$version" ] || fail "lib$lib.so.$major does not link to .$version"
  [ "$(readlink "$libdir/lib$lib.so")" = "lib$lib.so.$major" ] || fail "lib$lib.so does not link to .so.$major"
  soname=$(readelf -d "$libdir/lib$lib.so.$version" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
  [ "$soname" = "lib$lib.so.$major" ] || fail "lib$lib SONAME is '$soname', not lib$lib.so.$major"
done
# The plug-in still leaves the platform to its host process.
if readelf -d "$libdir/libmdtlm_vraldcn.so.$version" | grep -q 'libmdtlm_platform'; then
  fail "the installed plug-in links the host platform"
fi

expect_files() {
  local dir=$1; shift
  for f in "$@"; do [ -f "$prefix/$dir/$f" ] || fail "$dir/$f missing"; done
}
expect_files include/mdtlm_vraldcn mdtlm_types.h mdtlm_layout_checks.h mdtlm_vraldcn.h mdtlm_platform.h \
  mdtlm_host.h mdtlm_version.h
expect_files bin mdtlm-sim mdtlm-send mdtlm-platform-check
expect_files share/man/man1 mdtlm-sim.1 mdtlm-send.1 mdtlm-platform-check.1
for proto in "$source"/proto/*.proto; do expect_files share/mdtlm_vraldcn/proto "$(basename "$proto")"; done
expect_files "${libdir#"$prefix"/}/pkgconfig" mdtlm_vraldcn.pc mdtlm_platform.pc
expect_files "${libdir#"$prefix"/}/cmake/mdtlm_vraldcn" mdtlm_vraldcnConfig.cmake mdtlm_vraldcnConfigVersion.cmake

# One version everywhere.
for tool in mdtlm-sim mdtlm-send mdtlm-platform-check; do
  [ "$("$prefix/bin/$tool" --version)" = "$tool $version" ] || fail "$tool --version does not say $version"
done
export PKG_CONFIG_PATH=$libdir/pkgconfig
[ "$(pkg-config --modversion mdtlm_vraldcn)" = "$version" ] || fail "pkg-config version is not $version"

expected="ipv4 10.0.1.2
mac 001B-2C3D-4E5F
varint300 2 bytes
version $version"

# Consumer built with pkg-config (the .pc files locate the prefix themselves).
cc -std=c11 -Wall -Werror -o "$work/consumer-pc" "$source/tests/porting/consumer/consumer.c" \
  $(pkg-config --cflags --libs mdtlm_vraldcn mdtlm_platform) -Wl,-rpath,"$libdir" || fail "pkg-config consumer does not build"
[ "$("$work/consumer-pc")" = "$expected" ] || fail "pkg-config consumer printed: $("$work/consumer-pc")"

# Consumer built with find_package.
cmake -S "$source/tests/porting/consumer" -B "$work/consumer-build" -DCMAKE_PREFIX_PATH="$prefix" \
  >"$work/consumer.log" 2>&1 || { cat "$work/consumer.log"; fail "find_package consumer does not configure"; }
cmake --build "$work/consumer-build" >>"$work/consumer.log" 2>&1 || { cat "$work/consumer.log"; fail "find_package consumer does not build"; }
[ "$("$work/consumer-build/consumer")" = "$expected" ] || fail "find_package consumer printed: $("$work/consumer-build/consumer")"

# The installed simulator, run from elsewhere with no path options, finds
# the installed plug-in and schemas and delivers samples.
mkdir "$work/run"
cp "$source/examples/demo.json" "$work/run/"
(cd "$work/run" && "$prefix/bin/mdtlm-sim" --config demo.json --duration 3 --port 0 --quiet --out samples.ndjson \
  >sim.log 2>&1) || { cat "$work/run/sim.log"; fail "the installed simulator failed"; }
grep -q "$libdir/libmdtlm_vraldcn.so" "$work/run/sim.log" || { cat "$work/run/sim.log"; fail "the simulator did not load the installed plug-in"; }
[ -s "$work/run/samples.ndjson" ] || { cat "$work/run/sim.log"; fail "the installed simulator wrote no samples"; }
if grep -q '"problem"' "$work/run/samples.ndjson"; then
  fail "the installed simulator could not decode samples: $(grep -m1 '"problem"' "$work/run/samples.ndjson")"
fi

# The installed platform check passes the installed host platform.
"$prefix/bin/mdtlm-platform-check" "$libdir/libmdtlm_platform.so" >"$work/check.log" 2>&1 \
  || { cat "$work/check.log"; fail "mdtlm-platform-check fails the installed host platform"; }

echo "installed layout: libraries, headers, tools, schemas, man pages, pkg-config and CMake package work from $prefix"
