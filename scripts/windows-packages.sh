#!/bin/sh
# Provides what the Windows port needs besides its compiler: pugixml and libcsv, compiled for Windows from their Debian
# source packages, and the headers of CLI11 and nlohmann-json, copied from their installed packages.
#
#   scripts/windows-packages.sh [folder]
#
# The folder is build/windows-packages without an argument; cmake/windows.cmake looks for packages there. The sources
# come from where this machine's apt gets its packages, and apt verifies them in the same way. Packages that have the
# right version already are left alone.
set -eu
cd "$(dirname "$0")/.."
toolchain=$PWD/cmake/windows.cmake
folder=${1:-build/windows-packages}
mkdir -p "$folder"
folder=$(cd "$folder" && pwd)

version_of() {
    dpkg-query -W -f '${Version}' "$1"
}

wanted="pugixml $(version_of libpugixml-dev)
libcsv $(version_of libcsv-dev)
CLI11 $(version_of libcli11-dev)
nlohmann-json $(version_of nlohmann-json3-dev)
recipe $(cksum <scripts/windows-packages.sh)"
if [ "$(cat "$folder/versions" 2>/dev/null || true)" = "$wanted" ]; then
    exit 0
fi
rm -f "$folder/versions"
work=$folder/work
rm -rf "$work" "$folder/include" "$folder/lib" "$folder/share"
mkdir -p "$work/apt/parts" "$work/apt/lists/partial" "$work/apt/cache/archives/partial" "$work/sources" "$folder/include" "$folder/lib" "$folder/share"

# The machine's package sources, with source packages enabled.
for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -f "$list" ] || continue
    sed -n 's/^[[:blank:]]*deb[[:blank:]]/deb-src /p' "$list" >>"$work/apt/parts/one-line.list"
done
for list in /etc/apt/sources.list.d/*.sources; do
    [ -f "$list" ] || continue
    sed 's/^Types:.*/Types: deb-src/' "$list" >"$work/apt/parts/$(basename "$list")"
done
apt_here() {
    apt-get -qq -o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$work/apt/parts" \
        -o "Dir::State::Lists=$work/apt/lists" -o "Dir::Cache=$work/apt/cache" -o APT::Sandbox::User= "$@"
}
echo "windows-packages.sh: getting the sources of pugixml and libcsv"
apt_here update
(
    cd "$work/sources"
    for source in "pugixml=$(version_of libpugixml-dev)" "libcsv=$(version_of libcsv-dev)"; do
        # A rebuilt binary package has a version that its source does not have.
        apt_here source "$source" >/dev/null 2>&1 || apt_here source "${source%+b*}" >/dev/null
    done
)

echo "windows-packages.sh: compiling them"
for source in "$work"/sources/pugixml-*/; do
    cmake -S "$source" -B "$work/pugixml" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
        -DBUILD_SHARED_LIBS=OFF -DCMAKE_INSTALL_PREFIX="$folder" -DCMAKE_INSTALL_LIBDIR=lib >/dev/null
    cmake --build "$work/pugixml" --target install >/dev/null
done
for source in "$work"/sources/libcsv-*/; do
    x86_64-w64-mingw32-gcc-posix -O2 -c "$source/libcsv.c" -o "$work/libcsv.o"
    x86_64-w64-mingw32-ar rcs "$folder/lib/libcsv.a" "$work/libcsv.o"
    cp "$source/csv.h" "$folder/include/"
done

# Headers are the same for every system.
for package in libcli11-dev nlohmann-json3-dev; do
    dpkg -L "$package" | while read -r file; do
        case $file in
            /usr/include/* | /usr/share/cmake/*)
                [ ! -f "$file" ] || install -D -m 644 "$file" "$folder/${file#/usr/}"
                ;;
        esac
    done
done

rm -rf "$work"
printf '%s\n' "$wanted" >"$folder/versions"
