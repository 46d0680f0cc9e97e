// What the directory functions need from the platform beyond TFile's own static members.

#ifndef KEST_SRC_FILE_DIRECTORY_H
#define KEST_SRC_FILE_DIRECTORY_H

namespace KEST {

// Creates the directory that path names in its 8-bit form. True when it has been created or when
// an entry of that name, of whatever kind, exists.
bool InternalCreateDirectory(const char* path);

}  // namespace KEST

#endif  // KEST_SRC_FILE_DIRECTORY_H
