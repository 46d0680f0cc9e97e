// Files, file specifications, directories, the search for files, and modules loaded at run time.
//
// A file specification, or spec, is a path as text: its parts are separated by "/". True of all
// that is here:
//
//   Names    A spec goes to the system in its 8-bit form, a byte for a unit, and names come back
//            the same way, so every name on disk can be found and opened. A unit above U+00FF has
//            no byte and becomes "?". A zero unit ends the name.
//   Failure  false, 0, -1, null or an empty spec. errno is as the system's call left it. Without
//            memory nothing is opened, created, renamed or removed, and a spec that cannot be built
//            is empty, never a part of itself.
//   Threads  No locking: an object serves one thread at a time. The static functions keep no state;
//            one spec given to two threads at once is not safe, as with every TBstr.
//   Examples examples/files/files.cpp, examples/modules/modules.cpp
//
// The static functions under "Platform layer" take handles and are what a port to another system
// replaces. Handles are opaque; pass none of your own making and no null.

#ifndef KEST_FILE_H
#define KEST_FILE_H

#include "kest/collections.h"
#include "kest/string.h"

namespace KEST {

// One directory entry. A plain record, copied freely. Times are seconds since 1970-01-01 UTC.
struct KEST_API TFileInfo {
  TBstr name;  // without the directory
  bool isDirectory;
  long long size;     // bytes
  long creationTime;  // of the last change of the entry's status
  long lastWriteTime;
  long lastAccessTime;

  // An empty name, false and zeros.
  TFileInfo();

  // Sets all six fields.
  void Init(const TBstr& name, bool isDirectory, long long size, long creationTime,
            long lastWriteTime, long lastAccessTime);
};

// An open file, and the functions on specs.
//
// Reading and writing is buffered by the C library. As there, put Flush or SetPosition between
// writing and reading. Files of 2 GiB and more are not supported: offsets and lengths are cut to
// their low 32 bits, and what is returned is sign-extended from 32 bits. (TFileInfo::size has no
// such limit.)
class KEST_API TFile {
 public:
  enum { kOpenReadWrite = 0x2 };

  // "/".
  static const unsigned short kDirectorySeparator;
  // U+2044, U+2215, U+FF0F and U+FF0E: what a conversion to some 8-bit encoding may turn into a
  // separator or a dot. Zero-terminated.
  static const unsigned short kUnsafeConversions[];

  // A closed file: every call but Open then gives false or 0.
  TFile();
  TFile(const TFile&) = delete;
  TFile& operator=(const TFile&) = delete;

  // Closes the file, also when its data can no longer be written. Call Close to learn of that.
  ~TFile();

  // Opens a file for reading, with kOpenReadWrite in flags for writing as well; other flags are
  // ignored. With create, which takes kOpenReadWrite, the file is created, or emptied when it
  // exists; otherwise it has to exist. False when the object is open already (and stays so), spec
  // is empty or the system refuses.
  bool Open(const TBstr& spec, unsigned int flags, bool create);

  // Writes what is buffered and closes. When the writing fails, gives false and leaves the file
  // open, to save what can be saved; the next Close then closes it in any case. When only the
  // closing fails, gives false and the file is closed.
  bool Close();

  // Whether there is a file to read, write and close.
  bool IsOpen() const;

  // Transfer up to count bytes at the position and move it. The number of bytes transferred: less
  // than count at the end of the file or after an error, 0 for null and for a negative count.
  int Read(void* buffer, int count);
  int Write(const void* buffer, int count);

  // Hands what is buffered to the system.
  bool Flush();

  // In bytes from the start; -1 when the system has none.
  long long GetPosition() const;

  // Moves to offset bytes from the origin: 0 the start, 1 the current position, 2 the end. Behind
  // the end is allowed, before the start is not.
  bool SetPosition(long long offset, int origin);

  // In bytes, with what is buffered; the position stays. Failures on the way are not reported.
  long long GetLength() const;

  // Cuts the file off or extends it with zero bytes; the position stays. Data that is still
  // buffered is not written first but later, behind the cut: call Flush before.
  bool SetLength(long long length);

  // As given to Open; empty while closed.
  const TBstr& GetFileSpec() const;

  // spec with "/" at the end; an empty spec stays empty.
  static TBstr AddTrailingSeparator(const TBstr& spec);
  // spec without any "/" at the end; so "/" becomes empty.
  static TBstr RemoveTrailingSeparator(const TBstr& spec);
  // dirSpec, a "/" if it lacks one, and name.
  static TBstr AppendFileNameToSpec(const TBstr& dirSpec, const TBstr& name);

  // The two halves of spec: up to and including the last "/", and behind it. Without a "/" all of
  // it is the name.
  static TBstr DirSpecFromFullSpec(const TBstr& spec);
  static TBstr FileNameFromFullSpec(const TBstr& spec);

  // spec with "." parts removed and ".." parts removed together with the part before; empty when a
  // ".." would climb above the start. The file system is not asked. No security filter: it goes
  // from left to right once, and ".." parts may remain ("/a/b/../../c" gives "/a/../c").
  static TBstr CanonicalizeSpec(const TBstr& spec);

  // A copy of spec: no name needs changing on this platform. The flag is ignored.
  static TBstr MakeValidSpec(const TBstr& spec, bool flag);

  // True when spec has none of kUnsafeConversions. It does not look for units above U+00FF, which
  // become "?"; spec.GetBestEncoding() names "utf-8" when there are any.
  static bool SafeToConvert(const TBstr& spec);

  // "/tmp/".
  static TBstr GetTempDirectory();

  // "/tmp/kest0a3f.tmp", with the low 16 bits of rand() in it. The name is predictable, may be
  // taken, and nothing is created. Not for secrets, nor where others can write.
  static TBstr CreateTempFileSpec();

  // Describes the entry that spec names, a link itself and not its target. spec is a pattern, as
  // for TFileFinder::Find: the first match counts. When there is none, info stays as it was.
  static bool GetInfo(const TBstr& spec, TFileInfo& info);

  // Creates a directory, with rights 0775 less the umask. True as well when an entry of that name
  // exists, of whatever kind. False for "/", which is empty without its separator.
  static bool CreateDirectory(const TBstr& spec);
  // The same with all directories above it that are missing. What has been created before a failure
  // stays.
  static bool CreatePath(const TBstr& spec);

  // Removes an empty directory.
  static bool RemoveDirectory(const TBstr& spec);
  // Removes a file, a link or an empty directory.
  static bool Remove(const TBstr& spec);
  // Renames or moves within a file system; a file called to is replaced.
  static bool Rename(const TBstr& from, const TBstr& to);

  // Sets the modification time, in seconds since 1970, and the access time to now.
  static bool SetLastWriteTime(const TBstr& spec, long time);

  // Platform layer. FileOpen does not check its arguments against each other; counts below 1
  // transfer nothing. FileClose ends the stream whatever it returns.
  static void* FileOpen(const TBstr& spec, unsigned int flags, bool create);
  static bool FileClose(void* h);
  static int FileRead(void* h, void* buffer, int count);
  static int FileWrite(void* h, const void* buffer, int count);
  static bool FileFlush(void* h);
  static long long FileGetPosition(void* h);
  static bool FileSetPosition(void* h, long long offset, int origin);
  static long long FileGetLength(void* h);
  static bool FileSetLength(void* h, long long length);

 private:
  void* handle;
  TBstr spec;
};

// Finds the entries that match a spec with wildcards. The finder is itself the current entry.
//
//   TFileFinder finder;
//   for (bool more = finder.Find(spec, true); more; more = finder.FindNext(false)) ...
//
// Wildcards are those of the shell: "*", "?", "[abc]" and "\" before a character that is meant
// literally. A name that begins with "." takes a pattern that does. More than 256 "/" behind the
// first wildcard match nothing. The order is the directory's own.
class KEST_API TFileFinder : public TFileInfo {
 public:
  static const unsigned short kCurrentDirectory[];  // "."
  static const unsigned short kParentDirectory[];   // ".."

  // No search and an empty entry.
  TFileFinder();
  TFileFinder(const TFileFinder&) = delete;
  TFileFinder& operator=(const TFileFinder&) = delete;
  ~TFileFinder();

  // Starts a search and moves to the first entry. Null and empty text stand for "*". With recursive
  // FindNext enters every directory found and looks for the same pattern there: with "*" that is
  // the whole tree, with "*.txt" only what lies in directories that are called so. A spec that ends
  // in "/" finds the directory alone, without a name, and never enters it.
  //
  // False when nothing matches, something could not be read or there is no memory; the finder is
  // then as it was. An earlier search is not closed: it goes on when this one has ended.
  bool Find(const unsigned short* spec, bool recursive);

  // Moves to the next entry, after a directory to the first entry in it unless skipSubdirectory is
  // set. Links are not entered. Entries that have vanished are left out. False at the end, and
  // without memory; the entry then stays.
  bool FindNext(bool skipSubdirectory);

  // Ends all searches and empties the entry. GetFileSpec then gives the last directory.
  void Close();

  // The directory of the current entry and its name. Where the directory part of the spec has
  // wildcards, they are still in it.
  TBstr GetFileSpec() const;

  // Compares a name with a pattern of "*" and "?", case and all, without the file system. 0 when
  // they match, else the difference of the first units that do not. "*" stretches to the first
  // occurrence of the unit behind it and no further: "a*c" matches "abc", not "acbc". Null is empty
  // text.
  static int ComparePattern(const unsigned short* name, const unsigned short* pattern);

  // Platform layer. FileFinderFind fills info with the first entry or gives null; FileFinderClose
  // ignores null.
  static void* FileFinderFind(const TBstr& spec, TFileInfo& info);
  static bool FileFinderFindNext(void* handle, TFileInfo& info);
  static void FileFinderClose(void* handle);

 private:
  TPtrArray handles;
  TBstr directory;
  TBstr pattern;
  bool recursive;
};

// A module: a shared object that is loaded at run time, with an entry pair that starts and stops
// it. A module exports, with C linkage:
//
//   bool SharedLibInit(const char* path);  // path is absolute and 8-bit, and the caller's: copy it
//   void SharedLibTerm(void);
//
// Without SharedLibInit a module is not loaded; SharedLibTerm may be missing. Both have to be
// defined in the module itself: those of a library that it depends on, this one say, do not count.
// SharedLibTerm is called before every unloading, also when SharedLibInit returned false or is
// missing, so it has to be safe without a successful start. Both run on the thread that calls Load
// or Free.
//
// Modules are counted by the system: one that two objects have loaded is started twice and stopped
// twice, and leaves memory with the last.
class KEST_API TLibrary {
 public:
  // "so", without a dot: for building names. Load adds nothing to a name.
  static const unsigned short kLibraryExtension[];

  // No module: every call but Load then gives false or null.
  TLibrary();
  TLibrary(const TLibrary&) = delete;
  TLibrary& operator=(const TLibrary&) = delete;

  // Frees the module.
  ~TLibrary();

  // Loads a module and starts it. Only the file that spec names is tried: there is no search path,
  // and A BARE NAME IS LOADED FROM THE WORKING DIRECTORY. The directory part is made absolute and
  // free of links; in the root it has to be written "//name". Functions that the module calls are
  // bound when they are first called, and its symbols are not visible to other modules.
  //
  // False when a module is loaded already (it stays), spec is empty or has 4096 bytes or more, the
  // directory does not exist, the system refuses the file or there is no memory; and, with the
  // module stopped and unloaded again, when it has no SharedLibInit or that returned false.
  bool Load(const TBstr& spec);

  // Stops the module and unloads it. False without a module, or when the system refuses; the object
  // then keeps the module, which has been stopped all the same.
  bool Free();

  // Whether there is a module to look up names in and to free.
  bool IsLoaded() const;

  // The address of a function or variable by the name it is exported under, of the module itself or
  // of a library that it depends on. Null when there is none. Not to be used after Free.
  void* GetProcAddress(const TBstr& name) const;

  // As given to Load; empty without a module.
  const TBstr& GetFileSpec() const;

  // Platform layer. LibraryLoad gives null for what Load refuses; LibraryFree stops the module
  // whatever it returns.
  static void* LibraryLoad(const TBstr& spec);
  static bool LibraryFree(void* handle);
  static void* LibraryGetProcAddress(void* handle, const TBstr& name);

 private:
  void* handle;
  TBstr spec;
};

}  // namespace KEST

#endif  // KEST_FILE_H
