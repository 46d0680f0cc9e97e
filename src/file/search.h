// What the finder needs from the platform beyond TFileFinder's own static members, whose results do
// not tell the end of a search from a lack of memory.

#ifndef KEST_SRC_FILE_SEARCH_H
#define KEST_SRC_FILE_SEARCH_H

#include "kest/file.h"

namespace KEST {

enum class EFound { kEntry, kNone, kNoMemory };

// As TFileFinder::FileFinderFind. handle is the search when there is an entry, else null.
EFound InternalFindFirst(const TBstr& spec, TFileInfo& info, void*& handle);

// As TFileFinder::FileFinderFindNext. Without memory the entry that it was about to give is still
// the next one.
EFound InternalFindNext(void* handle, TFileInfo& info);

}  // namespace KEST

#endif  // KEST_SRC_FILE_SEARCH_H
