// Files, file specifications, directories, the search for files, and modules loaded at run time.
//
// A file specification, or spec, is a path as text: its parts are separated by "/". True of all
// that is here:
//
//   Names    A spec goes to the system in its 8-bit form, a byte for a unit, and names come back
//            the same way, so every name on disk can be found and opened. A unit above U+00FF has
//            no byte and becomes "?". A zero unit ends the name.
//   Failure  False, 0, -1, null or an empty spec. errno is as the system's call left it. Without
//            memory nothing is opened, created, renamed or removed, and a spec that cannot be built
//            is empty, never a part of itself.
//   Ownership  Specs and names are copied. Nothing that is passed is kept.
//   Threads  No locking: an object serves one thread at a time. The static functions keep no state;
//            one spec given to two threads at once is not safe, as with every TBstr.
//   Blocking  As long as the file system takes.
//   Cost     A call of the system or a few.
//   Example  examples/files/files.cpp, examples/modules/modules.cpp
//   See      docs/files.md
//
//   spec     the path; of the empty one there is no file
//   name     a name without a directory
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
  TBstr name;           // The name, without the directory.
  bool isDirectory;     // Whether it is a directory.
  long long size;       // The size in bytes.
  long creationTime;    // When the entry's status was changed last.
  long lastWriteTime;   // When it was written last.
  long lastAccessTime;  // When it was read last.

  // An empty name, false and zeros.
  //   Failure   none
  //   Blocking  never
  //   Cost      constant
  TFileInfo();

  // Sets all six fields.
  //   name            without the directory
  //   isDirectory     whether it is a directory
  //   size            in bytes
  //   creationTime    of the last change of the entry's status, in seconds since 1970-01-01 UTC
  //   lastWriteTime   in seconds since 1970-01-01 UTC
  //   lastAccessTime  in seconds since 1970-01-01 UTC
  //   Failure         without memory the name is empty
  //   Blocking        never
  //   Cost            a copy of the name
  //   Width           times end on 19 January 2038 in the 32-bit target
  void Init(const TBstr& name, bool isDirectory, long long size, long creationTime,
            long lastWriteTime, long lastAccessTime);
};

// An open file, and the functions on specs.
//
// Reading and writing is buffered by the C library. As there, put Flush or SetPosition between
// writing and reading. Files of 2 GiB and more are not supported: offsets and lengths are cut to
// their low 32 bits, and what is returned is sign-extended from 32 bits. (TFileInfo::size has no
// such limit.)
//
//   h          what FileOpen returned, never null
//   See        TFileFinder, docs/files.md
class KEST_API TFile {
 public:
  // Flags of Open.
  enum { kOpenReadWrite = 0x2 };

  // "/", which separates the parts of a spec.
  static const unsigned short kDirectorySeparator;

  // U+2044, U+2215, U+FF0F and U+FF0E: what a conversion to some 8-bit encoding may turn into a
  // separator or a dot. Zero-terminated.
  static const unsigned short kUnsafeConversions[];

  // A closed file: every call but Open then gives false or 0.
  //   Failure   none
  //   Blocking  never
  //   Cost      constant
  TFile();
  TFile(const TFile&) = delete;
  TFile& operator=(const TFile&) = delete;

  // Closes the file, also when its data can no longer be written. Call Close to learn of that.
  //   Failure  not reported
  ~TFile();

  // Opens a file for reading, or for reading and writing.
  //   spec     the path, relative to the working directory unless it begins with "/"
  //   flags    kOpenReadWrite for writing as well; other flags are ignored
  //   create   with kOpenReadWrite the file is created, or emptied when it exists; otherwise it has
  //            to exist
  //   Result   true; false when the object is open already (and stays so), spec is empty, there is
  //            no memory or the system refuses
  bool Open(const TBstr& spec, unsigned int flags, bool create);

  // Writes what is buffered and closes.
  //   Result   true; false without a file, and when writing or closing fails
  //   Failure  when the writing fails the file stays open, to save what can be saved, and the next
  //            Close then closes it in any case; when only the closing fails the file is closed
  bool Close();

  // Whether there is a file to read, write and close.
  //   Failure   none
  //   Blocking  never
  //   Cost      constant
  bool IsOpen() const;

  // Reads up to count bytes at the position and moves it.
  //   buffer   room for count bytes; null reads nothing
  //   count    in bytes; a negative count reads nothing
  //   Result   the bytes read: less than count at the end of the file or after an error, and 0
  //            without a file
  int Read(void* buffer, int count);

  // Writes up to count bytes at the position and moves it.
  //   buffer   the bytes to write; null writes nothing
  //   count    in bytes; a negative count writes nothing
  //   Result   the bytes written: less than count after an error, and 0 without a file
  int Write(const void* buffer, int count);

  // Hands what is buffered to the system.
  //   Result  true; false without a file or when the system refuses
  bool Flush();

  // The position in bytes from the start.
  //   Result  in bytes; -1 when the system has none, 0 without a file
  long long GetPosition() const;

  // Moves the position. Behind the end is allowed, before the start is not.
  //   offset  in bytes from the origin, cut to its low 32 bits
  //   origin  0 the start, 1 the current position, 2 the end
  //   Result  true; false without a file or when the system refuses
  bool SetPosition(long long offset, int origin);

  // The length of the file, with what is buffered; the position stays.
  //   Result   in bytes; 0 without a file
  //   Failure  failures on the way are not reported
  long long GetLength() const;

  // Cuts the file off or extends it with zero bytes; the position stays. Data that is still
  // buffered is not written first but later, behind the cut: call Flush before.
  //   length  in bytes, cut to its low 32 bits
  //   Result  true; false without a file or when the system refuses
  bool SetLength(long long length);

  // The spec that was given to Open; empty while closed.
  //   Failure   none
  //   Blocking  never
  //   Cost      constant
  const TBstr& GetFileSpec() const;

  // Specs, as text: the file system is not asked.
  //
  //   spec       the path; may be empty
  //   Failure    an empty spec without memory
  //   Ownership  the result is a string of the caller's
  //   Threads    any
  //   Blocking   never, save for what the allocator hooks do
  //   Cost       linear in the spec, and a request for memory
  //   See        docs/files.md

  // The spec with "/" at the end; an empty spec stays empty.
  static TBstr AddTrailingSeparator(const TBstr& spec);
  // The spec without any "/" at the end; so "/" becomes empty.
  static TBstr RemoveTrailingSeparator(const TBstr& spec);
  // The spec of a directory, a "/" if it lacks one, and a name.
  //   dirSpec  the directory
  //   name     what to put behind it
  static TBstr AppendFileNameToSpec(const TBstr& dirSpec, const TBstr& name);

  // The spec up to and including the last "/"; empty without a "/".
  static TBstr DirSpecFromFullSpec(const TBstr& spec);

  // The spec behind the last "/"; all of it without a "/".
  static TBstr FileNameFromFullSpec(const TBstr& spec);

  // The spec with "." parts removed and ".." parts removed together with the part before. The file
  // system is not asked. No security filter: it goes from left to right once, and ".." parts may
  // remain ("/a/b/../../c" gives "/a/../c").
  //   Result  the spec; empty when a ".." would climb above the start
  static TBstr CanonicalizeSpec(const TBstr& spec);

  // A copy of spec: no name needs changing on this platform.
  //   flag  ignored
  static TBstr MakeValidSpec(const TBstr& spec, bool flag);

  // Whether spec has none of kUnsafeConversions. It does not look for units above U+00FF, which
  // become "?"; spec.GetBestEncoding() names "utf-8" when there are any.
  //   Failure  none
  //   Cost     linear in the spec
  static bool SafeToConvert(const TBstr& spec);

  // The directory of temporary files, "/tmp/".
  static TBstr GetTempDirectory();

  // A spec like "/tmp/kest0a3f.tmp", with the low 16 bits of rand() in it. The name is predictable,
  // may be taken, and nothing is created. Not for secrets, nor where others can write.
  //   Threads  any, as far as rand allows
  static TBstr CreateTempFileSpec();

  // Entries of the file system.
  //
  //   spec     the path; of the empty one there is no entry
  //   Result   true; false when the system refuses or there is no memory
  //   Threads  any
  //   See      TFileFinder, docs/files.md

  // Describes the entry that spec names, a link itself and not its target.
  //   spec    a pattern, as for TFileFinder::Find: the first match counts
  //   info    receives the description; when there is no match it stays as it was
  //   Result  true; false when nothing matches, something could not be read or there is no memory
  static bool GetInfo(const TBstr& spec, TFileInfo& info);

  // Creates a directory, with rights 0775 less the umask.
  //   Result  true, as well when an entry of that name exists, of whatever kind; false when the
  //           system refuses, without memory, and for "/", which is empty without its separator
  static bool CreateDirectory(const TBstr& spec);
  // Creates a directory with all directories above it that are missing.
  //   Result   true, as well when an entry of that name exists, of whatever kind; false when the
  //            system refuses, without memory, and for "/"
  //   Failure  what has been created before a failure stays
  //   Cost     a call of the system for each directory that is missing
  static bool CreatePath(const TBstr& spec);

  // Removes an empty directory.
  static bool RemoveDirectory(const TBstr& spec);
  // Removes a file, a link or an empty directory.
  static bool Remove(const TBstr& spec);
  // Renames or moves within a file system; a file called to is replaced.
  //   from  the entry to rename
  //   to    its new spec
  static bool Rename(const TBstr& from, const TBstr& to);

  // Sets the modification time, and the access time to now.
  //   time   in seconds since 1970-01-01 UTC
  //   Width  times end on 19 January 2038 in the 32-bit target
  static bool SetLastWriteTime(const TBstr& spec, long time);

  // Platform layer, called by the members of the same name without File.
  //
  //   buffer   not null
  //   count    in bytes; below 1 nothing is transferred
  //   Result   true; false when the system refuses
  //   Threads  that of the object
  //   Example  None: the library makes these calls.
  //   See      docs/files.md

  // Opens a file. The arguments are not checked against each other.
  //   spec    the path
  //   flags   as for Open
  //   create  as for Open
  //   Result  a handle; null without memory or when the system refuses
  static void* FileOpen(const TBstr& spec, unsigned int flags, bool create);

  // Closes a file. It ends the stream whatever it returns.
  static bool FileClose(void* h);

  // Reads up to count bytes.
  //   Result  the bytes read
  static int FileRead(void* h, void* buffer, int count);

  // Writes up to count bytes.
  //   Result  the bytes written
  static int FileWrite(void* h, const void* buffer, int count);

  // Hands what is buffered to the system.
  static bool FileFlush(void* h);

  // The position in bytes from the start; -1 when the system has none.
  static long long FileGetPosition(void* h);

  // Moves the position.
  //   offset  in bytes from the origin
  //   origin  0 the start, 1 the current position, 2 the end
  static bool FileSetPosition(void* h, long long offset, int origin);

  // The length of the file in bytes.
  static long long FileGetLength(void* h);

  // Cuts the file off or extends it.
  //   length  in bytes
  static bool FileSetLength(void* h, long long length);

 private:
  void* handle;
  TBstr spec;
};

// Finds the entries that match a spec with wildcards. The finder is itself the current entry.
//
//     TFileFinder finder;
//     for (bool more = finder.Find(spec, true); more; more = finder.FindNext(false)) ...
//
// Wildcards are those of the shell: "*", "?", "[abc]" and "\" before a character that is meant
// literally. A name that begins with "." takes a pattern that does. More than 256 "/" behind the
// first wildcard match nothing. The order is the directory's own.
//
//   handle     what FileFinderFind returned
//   info       receives the entry
//   See        docs/files.md
class KEST_API TFileFinder : public TFileInfo {
 public:
  static const unsigned short kCurrentDirectory[];  // "."
  static const unsigned short kParentDirectory[];   // ".."

  // No search and an empty entry.
  //   Failure   none
  //   Blocking  never
  //   Cost      constant
  TFileFinder();
  TFileFinder(const TFileFinder&) = delete;
  TFileFinder& operator=(const TFileFinder&) = delete;

  // Ends all searches.
  //   Failure   none
  //   Blocking  never
  //   Cost      linear in the entries that are held
  ~TFileFinder();

  // Starts a search and moves to the first entry. A spec that ends in "/" finds the directory
  // alone, without a name, and never enters it. An earlier search is not closed: it goes on when
  // this one has ended.
  //   spec       a pattern; null and empty text stand for "*"
  //   recursive  whether FindNext enters every directory found and looks for the same pattern
  //              there: with "*" that is the whole tree, with "*.txt" only what lies in directories
  //              that are called so
  //   Result     true; false when nothing matches, something could not be read or there is no
  //              memory
  //   Failure    the finder is then as it was
  //   Cost       the directories of the pattern are read as a whole
  bool Find(const unsigned short* spec, bool recursive);

  // Moves to the next entry, after a directory to the first entry in it. Links are not entered.
  // Entries that have vanished are left out.
  //   skipSubdirectory  whether the current directory is not entered
  //   Result            true; false at the end, and without memory
  //   Failure           the entry then stays
  //   Cost              one call of the system; a directory that is entered is read as a whole
  bool FindNext(bool skipSubdirectory);

  // Ends all searches and empties the entry. GetFileSpec then gives the last directory.
  //   Failure   none
  //   Blocking  never
  //   Cost      linear in the entries that are held
  void Close();

  // The directory of the current entry and its name. Where the directory part of the spec has
  // wildcards, they are still in it.
  //   Blocking  never
  //   Cost      a copy of the spec
  TBstr GetFileSpec() const;

  // Compares a name with a pattern of "*" and "?", case and all, without the file system. "*"
  // stretches to the first occurrence of the unit behind it and no further: "a*c" matches "abc",
  // not "acbc".
  //   name      text up to its terminator; null is empty
  //   pattern   text up to its terminator; null is empty
  //   Result    0 when they match, else the difference of the first units that do not
  //   Failure   none
  //   Threads   any
  //   Blocking  never
  //   Cost      linear in both
  static int ComparePattern(const unsigned short* name, const unsigned short* pattern);

  // Platform layer, called by the members of the same name without FileFinder.
  //
  //   Threads  that of the object
  //   Example  None: the library makes these calls.
  //   See      docs/files.md

  // Starts a search and fills info with the first entry.
  //   Result  a handle; null when nothing matches, something could not be read or there is no
  //           memory
  static void* FileFinderFind(const TBstr& spec, TFileInfo& info);

  // Fills info with the next entry.
  //   handle  what FileFinderFind returned, not null
  //   Result  true; false at the end, and without memory
  static bool FileFinderFindNext(void* handle, TFileInfo& info);

  // Ends a search.
  //   handle   what FileFinderFind returned; null is ignored
  //   Failure  none
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
//     bool SharedLibInit(const char* path);  // path is absolute and 8-bit, the caller's: copy it
//     void SharedLibTerm(void);
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
  //   Failure   none
  //   Blocking  never
  //   Cost      constant
  TLibrary();
  TLibrary(const TLibrary&) = delete;
  TLibrary& operator=(const TLibrary&) = delete;

  // Stops the module and unloads it.
  //   Failure  not reported
  ~TLibrary();

  // Loads a module and starts it. Only the file that spec names is tried: there is no search path,
  // and A BARE NAME IS LOADED FROM THE WORKING DIRECTORY. The directory part is made absolute and
  // free of links; in the root it has to be written "//name". Functions that the module calls are
  // bound when they are first called, and its symbols are not visible to other modules.
  //   spec      the module's file
  //   Result    true; false when a module is loaded already (it stays), spec is empty or has 4096
  //             bytes or more, the directory does not exist, the system refuses the file or there
  //             is no memory; and, with the module stopped and unloaded again, when it has no
  //             SharedLibInit or that returned false
  //   Blocking  as the file system and the module's SharedLibInit do
  //   Cost      that of loading and of SharedLibInit
  bool Load(const TBstr& spec);

  // Stops the module and unloads it.
  //   Result    true; false without a module, or when the system refuses
  //   Failure   when the system refuses the object keeps the module, which has been stopped all the
  //             same
  //   Blocking  as the module's SharedLibTerm does
  //   Cost      that of SharedLibTerm and of unloading
  bool Free();

  // Whether there is a module to look up names in and to free.
  //   Failure   none
  //   Blocking  never
  //   Cost      constant
  bool IsLoaded() const;

  // The address of a function or variable by the name it is exported under, of the module itself or
  // of a library that it depends on. Not to be used after Free.
  //   name      the name as it is exported, mangled where it is
  //   Result    the address; null when there is none, without a module and without memory
  //   Blocking  never for long
  //   Cost      a look-up by the system
  void* GetProcAddress(const TBstr& name) const;

  // The spec that was given to Load; empty without a module.
  //   Failure   none
  //   Blocking  never
  //   Cost      constant
  const TBstr& GetFileSpec() const;

  // Platform layer, called by the members of the same name without Library.
  //
  //   handle    what LibraryLoad returned, never null
  //   Threads   that of the object
  //   Blocking  as the file system and the module do
  //   Example   None: the library makes these calls.
  //   See       docs/modules.md

  // Loads a module and starts it, as Load says.
  //   Result  a handle; null for what Load refuses
  static void* LibraryLoad(const TBstr& spec);

  // Stops a module and unloads it. The module is stopped whatever the result.
  //   Result  true; false when the system refuses
  static bool LibraryFree(void* handle);

  // Looks up a name in a module, as GetProcAddress says.
  //   Result  the address, or null
  static void* LibraryGetProcAddress(void* handle, const TBstr& name);

 private:
  void* handle;
  TBstr spec;
};

}  // namespace KEST

#endif  // KEST_FILE_H
