#!/bin/sh
# Creates the locales that tests use besides that of the environment, in the build folder, and prints the folder. With
# it as LOCPATH the C library, and through it Wine, finds them.
set -eu
cd "$(dirname "$0")/.."
folder=$PWD/build/locales
if [ ! -d "$folder/de_DE.UTF-8" ]; then
    mkdir -p "$folder"
    localedef -i de_DE -f UTF-8 "$folder/de_DE.UTF-8"
fi
echo "$folder"
