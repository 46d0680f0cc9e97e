// What an output format has to export: a module that the census finds and loads at run time.
// Besides the entry pair (kest/file.h) these two, with C linkage:
//
//   const char* CensusFormatName(void);                      // of its file in the output folder
//   bool CensusFormatWrite(const census::SFormatHost* host);  // false for a file that is no good
//
// Names, paths and text are bytes. Both run on the main thread.

#ifndef CENSUS_FORMAT_H
#define CENSUS_FORMAT_H

namespace census {

// A file to tell of. The first ones are the results written so far, named without a folder; the
// others are from the tree, and their paths begin with "./".
struct SFormatFile {
  const char* path;
  const char* spec;  // by which it can be opened
};

// Pointers that it gives are good until the next call.
struct SFormatHost {
  void* self;
  int fileCount;
  bool (*getFile)(void* self, int index, SFormatFile* file);
  void (*put)(void* self, const char* text);
};

using FormatNameProc = const char* (*)();
using FormatWriteProc = bool (*)(const SFormatHost* host);

}  // namespace census

#endif  // CENSUS_FORMAT_H
