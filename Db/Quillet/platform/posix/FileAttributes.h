// What a file has beside its bytes. Private to this port.
#pragma once

namespace quillet::platform {

// Gives an open file the extended attributes and the access list of another one; the error, or 0. Attributes
// that the system or the file system does not let us set are left out; a list is not, for without it the file
// might be open to more people. Of the system's own attributes only the label of the security module is
// taken: the others vouch for the old bytes.
int CopyAttributes(int from, int to);

}  // namespace quillet::platform
