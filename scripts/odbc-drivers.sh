#!/bin/sh
# Registers the driver of mdbtools, for the user who runs this, under the name that the library asks for to open an Access
# file: in $HOME/.odbcinst.ini, which the driver manager reads beside the system's list. Where a driver of that name is
# registered already, nothing changes.
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
