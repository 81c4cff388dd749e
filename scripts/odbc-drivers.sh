#!/bin/sh
# Registers the driver of mdbtools, for the current user, under the name that the library uses to open Access files: in
# $HOME/.odbcinst.ini, which the driver manager reads in addition to the system's list. If a driver of that name is
# already registered, nothing changes.
#
#   scripts/odbc-drivers.sh
set -eu
name='Microsoft Access Driver (*.mdb)'
if odbcinst -q -d -n "$name" >/dev/null 2>&1; then
    exit 0
fi
entry=$(mktemp)
trap 'rm -f "$entry"' EXIT
printf '[%s]\nDescription=Access files, by mdbtools: reads only\nDriver=libmdbodbc.so\n' "$name" >"$entry"
ODBCSYSINI=$HOME ODBCINSTINI=.odbcinst.ini odbcinst -i -d -f "$entry" >/dev/null
echo "odbc-drivers.sh: registered $name in $HOME/.odbcinst.ini"
