#!/bin/sh
# Makes the locales that tests ask for beside that of the environment, in a folder of the project's own, and prints the
# folder: the value of LOCPATH under which the C library, and through it Wine, knows them.
set -eu
cd "$(dirname "$0")/.."
folder=$PWD/build/locales
if [ ! -d "$folder/de_DE.UTF-8" ]; then
    mkdir -p "$folder"
    localedef -i de_DE -f UTF-8 "$folder/de_DE.UTF-8"
fi
echo "$folder"
