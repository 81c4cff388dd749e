// What a file has beside its bytes. Private to this port.
#pragma once

namespace quillet::platform {

// Copies the extended attributes and the access list of an open file to another one. Returns the error, or 0.
// Attributes that the system or the file system does not let us set are left out. A list is not: without it
// the file might be open to more people. Of the system's own attributes only the label of the security module
// is copied: the others vouch for the old bytes.
int CopyAttributes(int from, int to);

}  // namespace quillet::platform
